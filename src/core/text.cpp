#include "core/text.h"

#include <algorithm>
#include <array>
#include <limits>

namespace kelmio {
namespace {

constexpr char32_t kFirstSurrogate = 0xD800;
constexpr char32_t kFirstLowSurrogate = 0xDC00;
constexpr char32_t kLastSurrogate = 0xDFFF;
constexpr char32_t kFirstSupplementary = 0x10000;
constexpr char32_t kLastCharacter = 0x10FFFF;

// Windows-1252 where it differs from Latin 1: 0x80 to 0x9F. The five bytes without a character stay controls.
constexpr std::array<char16_t, 32> kWindows1252 = {0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
                                                   0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
                                                   0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
                                                   0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char UpperOf(char c) {
  return c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
}
char LowerOf(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}
bool IsSurrogate(char32_t c) {
  return c >= kFirstSurrogate && c <= kLastSurrogate;
}

void AppendUtf8(std::string& out, char32_t c) {
  const auto tail = [&](int shift) { out += static_cast<char>(0x80U | ((c >> shift) & 0x3FU)); };
  if (c < 0x80) {
    out += static_cast<char>(c);
  } else if (c < 0x800) {
    out += static_cast<char>(0xC0U | (c >> 6));
    tail(0);
  } else if (c < kFirstSupplementary) {
    out += static_cast<char>(0xE0U | (c >> 12));
    tail(6);
    tail(0);
  } else {
    out += static_cast<char>(0xF0U | (c >> 18));
    tail(12);
    tail(6);
    tail(0);
  }
}

struct Decoded {
  char32_t character;
  std::size_t length;
};

// The character at `at`, or nothing when no well-formed one stands there. Surrogates are let through: the
// callers know whether they want them.
std::optional<Decoded> DecodeUtf8(std::string_view text, std::size_t at) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(at);
  if (first < 0x80)
    return Decoded{first, 1};
  const std::size_t length = first >= 0xF0 ? 4 : first >= 0xE0 ? 3 : 2;
  constexpr std::array<char32_t, 5> kSmallest = {0, 0, 0x80, 0x800, kFirstSupplementary};
  if (first < 0xC2 || first > 0xF4 || at + length > text.size())
    return std::nullopt;
  char32_t character = first & (0x7FU >> length);
  for (std::size_t i = at + 1; i < at + length; ++i) {
    if ((byte(i) & 0xC0U) != 0x80)
      return std::nullopt;
    character = (character << 6) | (byte(i) & 0x3FU);
  }
  if (character < kSmallest[length] || character > kLastCharacter)
    return std::nullopt;
  return Decoded{character, length};
}

char32_t CharacterOf1252(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return byte >= 0x80 && byte < 0xA0 ? kWindows1252[byte - 0x80U] : byte;
}

} // namespace

std::string AsciiUpper(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), UpperOf);
  return result;
}

std::string AsciiLower(std::string_view text) {
  std::string result(text);
  std::transform(result.begin(), result.end(), result.begin(), LowerOf);
  return result;
}

bool EqualsIgnoringAsciiCase(std::string_view left, std::string_view right) {
  return std::equal(left.begin(), left.end(), right.begin(), right.end(),
                    [](char a, char b) { return LowerOf(a) == LowerOf(b); });
}

std::string_view Trimmed(std::string_view text, std::string_view blanks) {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string_view::npos)
    return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

bool IsValidUtf8(std::string_view bytes) {
  for (std::size_t at = 0; at < bytes.size();) {
    const std::optional<Decoded> decoded = DecodeUtf8(bytes, at);
    if (!decoded || IsSurrogate(decoded->character))
      return false;
    at += decoded->length;
  }
  return true;
}

std::string DisplayText(std::string_view bytes) {
  if (IsValidUtf8(bytes))
    return std::string(bytes);
  std::string result;
  for (const char c : bytes)
    AppendUtf8(result, CharacterOf1252(c));
  return result;
}

std::string Utf16LeToUtf8(std::string_view utf16) {
  const auto unit = [&](std::size_t at) -> char32_t {
    return static_cast<unsigned char>(utf16[at]) | static_cast<char32_t>(static_cast<unsigned char>(utf16[at + 1]))
                                                       << 8;
  };
  std::string result;
  for (std::size_t at = 0; at + 1 < utf16.size(); at += 2) {
    char32_t character = unit(at);
    if (character >= kFirstSurrogate && character < kFirstLowSurrogate && at + 3 < utf16.size()) {
      const char32_t low = unit(at + 2);
      if (low >= kFirstLowSurrogate && low <= kLastSurrogate) {
        character = kFirstSupplementary + ((character - kFirstSurrogate) << 10) + (low - kFirstLowSurrogate);
        at += 2;
      }
    }
    AppendUtf8(result, character);
  }
  return result;
}

std::string Utf8ToUtf16Le(std::string_view text) {
  std::string result;
  const auto append = [&](char32_t unit) {
    result += static_cast<char>(unit & 0xFFU);
    result += static_cast<char>(unit >> 8);
  };
  for (std::size_t at = 0; at < text.size();) {
    const Decoded decoded = DecodeUtf8(text, at).value_or(Decoded{CharacterOf1252(text[at]), 1});
    at += decoded.length;
    if (decoded.character < kFirstSupplementary) {
      append(decoded.character);
    } else {
      append(kFirstSurrogate + ((decoded.character - kFirstSupplementary) >> 10));
      append(kFirstLowSurrogate + ((decoded.character - kFirstSupplementary) & 0x3FFU));
    }
  }
  return result;
}

std::int64_t LeadingNumber(std::string_view text) {
  constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();
  text.remove_prefix(std::min(text.find_first_not_of(" \t"), text.size()));
  const bool negative = !text.empty() && text.front() == '-';
  if (negative || (!text.empty() && text.front() == '+'))
    text.remove_prefix(1);
  std::int64_t number = 0;
  for (const char c : text) {
    if (!IsDigit(c))
      break;
    const int digit = c - '0';
    number = number > (kMax - digit) / 10 ? kMax : number * 10 + digit;
  }
  return negative ? -number : number;
}

std::int32_t LeadingNumber32(std::string_view text) {
  using Limits = std::numeric_limits<std::int32_t>;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(LeadingNumber(text), Limits::min(), Limits::max()));
}

std::optional<std::int32_t> NumberOfText(std::string_view text) {
  std::string_view rest = Trimmed(text);
  const bool negative = !rest.empty() && rest.front() == '-';
  if (negative || (!rest.empty() && rest.front() == '+'))
    rest.remove_prefix(1);
  const std::size_t whole_length = std::min(rest.find('.'), rest.size());
  const std::string_view whole = rest.substr(0, whole_length);
  const std::string_view fraction = rest.substr(std::min(whole_length + 1, rest.size()));
  if ((whole.empty() && fraction.empty()) || !std::all_of(whole.begin(), whole.end(), IsDigit) ||
      !std::all_of(fraction.begin(), fraction.end(), IsDigit))
    return std::nullopt;

  std::int64_t number = LeadingNumber(whole);
  if (!fraction.empty() && number < std::numeric_limits<std::int64_t>::max()) {
    const bool more_than_half =
        fraction.front() > '5' ||
        (fraction.front() == '5' && fraction.find_first_not_of('0', 1) != std::string_view::npos);
    const bool half = fraction.front() == '5' && !more_than_half;
    if (more_than_half || (half && number % 2 != 0))
      ++number;
  }
  if (negative)
    number = -number;
  using Limits = std::numeric_limits<std::int32_t>;
  if (number < Limits::min() || number > Limits::max())
    return std::nullopt;
  return static_cast<std::int32_t>(number);
}

std::optional<bool> BooleanOfText(std::string_view text) {
  const std::string_view word = Trimmed(text);
  if (EqualsIgnoringAsciiCase(word, "True"))
    return true;
  if (EqualsIgnoringAsciiCase(word, "False"))
    return false;
  if (const std::optional<std::int32_t> number = NumberOfText(word))
    return *number != 0;
  return std::nullopt;
}

std::string TextOfBoolean(bool value) {
  return value ? "True" : "False";
}

} // namespace kelmio
