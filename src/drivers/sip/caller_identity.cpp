#include "drivers/sip/caller_identity.h"

#include <algorithm>
#include <optional>

#include "drivers/shown_text.h"

namespace kelmio {

namespace {

// No list or pane shows more, and a hostile name is not stored at length.
constexpr std::size_t kLongestText = 200;

std::optional<unsigned> HexDigit(char c) {
  if (c >= '0' && c <= '9')
    return static_cast<unsigned>(c - '0');
  if (c >= 'a' && c <= 'f')
    return static_cast<unsigned>(c - 'a' + 10);
  if (c >= 'A' && c <= 'F')
    return static_cast<unsigned>(c - 'A' + 10);
  return std::nullopt;
}

std::string WithoutBackslashes(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size())
      ++i;
    plain += text[i];
  }
  return plain;
}

std::string WithoutPercents(std::string_view text) {
  std::string plain;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto high = text[i] == '%' && i + 2 < text.size() ? HexDigit(text[i + 1]) : std::nullopt;
    const auto low = high ? HexDigit(text[i + 2]) : std::nullopt;
    if (low) {
      plain += static_cast<char>(*high * 16 + *low);
      i += 2;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

bool SaysAnonymous(std::string_view text) {
  constexpr std::string_view kWord = "anonymous";
  return std::equal(text.begin(), text.end(), kWord.begin(), kWord.end(),
                    [](char a, char b) { return (a >= 'A' && a <= 'Z' ? static_cast<char>(a - 'A' + 'a') : a) == b; });
}

} // namespace

CallerIdentity ReadCallerIdentity(std::string_view display_name, std::string_view user) {
  CallerIdentity caller;
  caller.name = ShownText(WithoutBackslashes(display_name), kLongestText);
  // What follows a semicolon are parameters of a telephone number (RFC 3966), not part of it.
  caller.number = ShownText(WithoutPercents(user.substr(0, user.find(';'))), kLongestText);
  if (SaysAnonymous(caller.number))
    caller.number.clear();
  if (SaysAnonymous(caller.name))
    caller.name.clear();
  return caller;
}

} // namespace kelmio
