// A list of files in the platform's file-drop format.
#pragma once

#include <string>
#include <vector>

namespace kelmio {

/// The clipboard's number of this format.
inline constexpr int kFileDropFormat = 15;

/// A header of 20 bytes (offset of the list, drop point, two flags; little-endian) and the paths in 8-bit characters,
/// each closed by a zero, with one more zero at the end.
std::string FileDropBlock(const std::vector<std::string>& paths);

} // namespace kelmio
