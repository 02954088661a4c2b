// Places in a stored text and in the text on the screen.
#pragma once

#include <cstddef>
#include <string_view>

namespace kelmio {

/// How a stored text is shown: as UTF-8 or byte by byte, and whether the widget shows CR LF as one line break.
struct TextForm {
  bool utf8 = true;
  bool folds_line_ends = false;
};

/// The number of UTF-16 units on the screen before byte `offset` of the text. An offset inside a character or
/// past the end counts as the next place that exists.
std::size_t ShownOffset(std::string_view text, std::size_t offset, TextForm form);

/// The first byte of the text that stands `shown` UTF-16 units into the screen's text; its size past the end.
std::size_t StoredOffset(std::string_view text, std::size_t shown, TextForm form);

} // namespace kelmio
