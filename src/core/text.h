// Texts of the stores: their bytes, their shown form, and the numbers in them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

/// Pure functions; any thread; nothing throws but for want of memory.
namespace kelmio {

/// Upper and lower case of the ASCII letters; every other byte stays.
std::string AsciiUpper(std::string_view text);
std::string AsciiLower(std::string_view text);
bool EqualsIgnoringAsciiCase(std::string_view left, std::string_view right);

/// `text` without the given bytes at both ends.
std::string_view Trimmed(std::string_view text, std::string_view blanks = " \t");

/// A stored text as it is to be shown: as it stands when it is valid UTF-8, otherwise read as Windows-1252,
/// so that a store brought over from a Windows machine shows its umlauts.
std::string DisplayText(std::string_view bytes);
bool IsValidUtf8(std::string_view bytes);

/// UTF-16 LE without its byte order mark, to UTF-8 and back. A lone surrogate survives both ways; an odd
/// last byte is lost. Bytes that aren't UTF-8 go over as Windows-1252.
std::string Utf16LeToUtf8(std::string_view utf16);
std::string Utf8ToUtf16Le(std::string_view text);

/// The whole number at the start of a text: blanks, a sign, digits, up to the first other character; 0 when
/// there are none. Held within the range of the type.
std::int64_t LeadingNumber(std::string_view text);
std::int32_t LeadingNumber32(std::string_view text);

/// A text that is a number as a whole, blanks around it allowed; a fraction is rounded, ties to even.
/// Nothing when the text is no number or the number needs more than 32 bits.
std::optional<std::int32_t> NumberOfText(std::string_view text);

/// "True" and "False" in any case, or a number, of which 0 is false. Nothing for any other text.
std::optional<bool> BooleanOfText(std::string_view text);
/// "True" or "False".
std::string TextOfBoolean(bool value);

} // namespace kelmio
