// Where the characters of a text begin.
#pragma once

#include <string>

namespace kelmio {

/// Whether a byte of UTF-8 begins a character: all but those of the form 10xxxxxx do (RFC 3629).
constexpr bool BeginsCharacter(char byte) {
  return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
}

/// Takes the last character off, of however many bytes. An empty text stays.
inline void RemoveLastCharacter(std::string& text) {
  while (!text.empty() && !BeginsCharacter(text.back()))
    text.pop_back();
  if (!text.empty())
    text.pop_back();
}

} // namespace kelmio
