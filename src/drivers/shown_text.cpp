#include "drivers/shown_text.h"

#include <cstdint>

namespace kelmio {

namespace {

struct CodePoint {
  std::uint32_t value;
  std::size_t length; // bytes read
};

// A byte that begins no valid sequence stands for itself, as in Latin-1.
CodePoint ReadCodePoint(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<std::uint8_t>(text[i]); };
  const std::uint8_t first = byte(0);
  const CodePoint as_latin1{first, 1};
  std::size_t length = 0;
  std::uint32_t value = 0;
  std::uint32_t smallest = 0;
  if (first < 0x80)
    return as_latin1;
  if ((first & 0xE0U) == 0xC0U) {
    length = 2, value = first & 0x1FU, smallest = 0x80;
  } else if ((first & 0xF0U) == 0xE0U) {
    length = 3, value = first & 0x0FU, smallest = 0x800;
  } else if ((first & 0xF8U) == 0xF0U) {
    length = 4, value = first & 0x07U, smallest = 0x10000;
  } else {
    return as_latin1;
  }
  if (text.size() < length)
    return as_latin1;
  for (std::size_t i = 1; i < length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80U)
      return as_latin1;
    value = (value << 6U) | (byte(i) & 0x3FU);
  }
  const bool surrogate = value >= 0xD800 && value <= 0xDFFF;
  return value < smallest || value > 0x10FFFF || surrogate ? as_latin1 : CodePoint{value, length};
}

void AppendUtf8(std::string& text, std::uint32_t value) {
  const auto put = [&](std::uint32_t byte) { text += static_cast<char>(byte); };
  if (value < 0x80) {
    put(value);
  } else if (value < 0x800) {
    put(0xC0U | (value >> 6U));
    put(0x80U | (value & 0x3FU));
  } else if (value < 0x10000) {
    put(0xE0U | (value >> 12U));
    put(0x80U | ((value >> 6U) & 0x3FU));
    put(0x80U | (value & 0x3FU));
  } else {
    put(0xF0U | (value >> 18U));
    put(0x80U | ((value >> 12U) & 0x3FU));
    put(0x80U | ((value >> 6U) & 0x3FU));
    put(0x80U | (value & 0x3FU));
  }
}

// Besides the control characters those that turn the direction of writing or break a line: with them a name
// could make the text around it read as something else.
bool IsShown(std::uint32_t value) {
  const bool control = value < 0x20 || (value >= 0x7F && value < 0xA0);
  const bool direction = value == 0x061C || value == 0x200E || value == 0x200F ||
                         (value >= 0x202A && value <= 0x202E) || (value >= 0x2066 && value <= 0x2069);
  const bool line_break = value == 0x2028 || value == 0x2029;
  return !control && !direction && !line_break && value != 0xFEFF;
}

} // namespace

std::string ShownText(std::string_view bytes, std::size_t longest) {
  std::string text;
  while (!bytes.empty() && text.size() < longest) {
    const CodePoint point = ReadCodePoint(bytes);
    bytes.remove_prefix(point.length);
    if (IsShown(point.value))
      AppendUtf8(text, point.value);
  }
  const std::size_t first = text.find_first_not_of(' ');
  if (first == std::string::npos)
    return {};
  return text.substr(first, text.find_last_not_of(' ') - first + 1);
}

} // namespace kelmio
