#include "drivers/sip/dial_target.h"

#include <algorithm>

namespace kelmio {

namespace {

bool IsAlphanumeric(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

bool OneOf(char c, std::string_view set) {
  return set.find(c) != std::string_view::npos;
}

// RFC 3261 25.1: what may stand unescaped in the user part; a percent sign is taken as an escape already made.
bool IsUserCharacter(char c) {
  return IsAlphanumeric(c) || OneOf(c, "-_.!~*'()&=+$,;?/%");
}

// Host, port and parameters; brackets for IPv6.
bool IsHostCharacter(char c) {
  return IsAlphanumeric(c) || OneOf(c, "-._:[];=%");
}

bool StartsWithScheme(std::string_view text) {
  constexpr std::string_view kScheme = "sip:";
  return text.size() > kScheme.size() && std::equal(kScheme.begin(), kScheme.end(), text.begin(), [](char a, char b) {
           return a == (b >= 'A' && b <= 'Z' ? static_cast<char>(b - 'A' + 'a') : b);
         });
}

std::string_view Trimmed(std::string_view text) {
  while (!text.empty() && text.front() == ' ')
    text.remove_prefix(1);
  while (!text.empty() && text.back() == ' ')
    text.remove_suffix(1);
  return text;
}

} // namespace

std::string EscapedUser(std::string_view user) {
  constexpr std::string_view kHex = "0123456789ABCDEF";
  std::string escaped;
  for (const char c : user) {
    if (IsUserCharacter(c)) {
      escaped += c;
    } else {
      const auto byte = static_cast<unsigned char>(c);
      escaped += {'%', kHex[byte >> 4U], kHex[byte & 0x0FU]};
    }
  }
  return escaped;
}

std::string NumberAt(std::string_view number, std::string_view host) {
  number = Trimmed(number);
  constexpr std::string_view kDialled = "0123456789+*#";
  constexpr std::string_view kOnlyRead = " -/.()";
  const bool is_number =
      std::all_of(number.begin(), number.end(), [&](char c) { return OneOf(c, kDialled) || OneOf(c, kOnlyRead); });
  std::string user(number);
  if (is_number)
    std::erase_if(user, [&](char c) { return OneOf(c, kOnlyRead); });
  return "sip:" + EscapedUser(user) + "@" + std::string(host);
}

DialTarget ParseDialTarget(std::string_view text) {
  text = Trimmed(text);
  const auto is_control = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  if (text.empty() || std::any_of(text.begin(), text.end(), is_control))
    return {};

  const bool scheme = StartsWithScheme(text);
  if (scheme)
    text.remove_prefix(4);
  const std::size_t at = text.rfind('@');
  if (at == std::string_view::npos && !scheme)
    return {DialTarget::Kind::Number, {}};

  const std::string_view user = at == std::string_view::npos ? std::string_view{} : text.substr(0, at);
  const std::string_view host = at == std::string_view::npos ? text : text.substr(at + 1);
  if (host.empty() || !std::all_of(host.begin(), host.end(), IsHostCharacter))
    return {};
  std::string uri = "sip:";
  if (!user.empty())
    uri += EscapedUser(user) + "@";
  return {DialTarget::Kind::Address, uri + std::string(host)};
}

} // namespace kelmio
