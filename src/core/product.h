// What the program is called, which version it is, and where its makers are found.
#pragma once

namespace kelmio::product {

inline constexpr const char* kName = "Kelmio Standard";

/// The version of the build's project.
const char* Version();
/// Address of the website, set at build time.
const char* Website();
/// The makers' mail address, set at build time.
const char* Contact();

} // namespace kelmio::product
