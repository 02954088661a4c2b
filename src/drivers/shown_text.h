// Texts of strangers, made fit to be shown.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kelmio {

/// The text as valid UTF-8 without control characters, without marks that turn the direction of writing, and without
/// blanks at its ends. A byte that begins no UTF-8 is taken as Latin-1. What would begin behind `longest` bytes is cut.
std::string ShownText(std::string_view bytes, std::size_t longest);

} // namespace kelmio
