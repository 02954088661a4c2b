#include "drivers/sip/sip_account.h"

#include <arpa/inet.h>

#include <algorithm>
#include <charconv>

#include "drivers/sip/dial_target.h"

namespace kelmio {

namespace {

bool IsNameCharacter(char c) {
  return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '-' || c == '.' || c == '_';
}

bool IsName(std::string_view text) {
  // RFC 1035 2.3.4 allows no longer one.
  constexpr std::size_t kLongestName = 253;
  return !text.empty() && text.size() <= kLongestName && text.front() != '.' &&
         std::all_of(text.begin(), text.end(), IsNameCharacter);
}

bool IsV6Address(std::string_view text) {
  in6_addr unused{};
  return inet_pton(AF_INET6, std::string(text).c_str(), &unused) == 1;
}

bool HasControl(std::string_view text) {
  return std::any_of(text.begin(), text.end(),
                     [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; });
}

} // namespace

std::string ServerName::Text() const {
  const std::string name = IsV6() ? "[" + host + "]" : host;
  return port == 0 ? name : name + ":" + std::to_string(port);
}

std::optional<ServerName> ParseServerName(std::string_view text) {
  if (IsV6Address(text))
    return ServerName{std::string(text), 0};
  ServerName server;
  std::string_view host = text;
  const std::size_t colon = text.rfind(':');
  if (colon != std::string_view::npos && !text.ends_with(']')) {
    const std::string_view digits = text.substr(colon + 1);
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), server.port);
    if (error != std::errc() || end != digits.data() + digits.size() || server.port == 0)
      return std::nullopt;
    host = text.substr(0, colon);
  }
  const bool brackets = host.size() > 2 && host.front() == '[' && host.back() == ']';
  if (brackets)
    host = host.substr(1, host.size() - 2);
  if (brackets ? !IsV6Address(host) : !IsName(host))
    return std::nullopt;
  server.host = host;
  return server;
}

bool IsSetUp(const SipAccount& account) {
  return !account.server.empty();
}

std::string FaultOf(const SipAccount& account) {
  if (!IsSetUp(account))
    return "The account has no server.";
  if (!ParseServerName(account.server))
    return "\"" + account.server + "\" is no server.";
  if (account.user.empty())
    return "The account has no user name.";
  if (!account.proxy.empty() && !ParseServerName(account.proxy))
    return "\"" + account.proxy + "\" is no proxy.";
  if (!account.stun_server.empty() && !ParseServerName(account.stun_server))
    return "\"" + account.stun_server + "\" is no STUN server.";
  for (const std::string& text : {account.user, account.auth_user, account.password, account.display_name})
    if (HasControl(text))
      return "The account holds a character that can't be typed.";
  return {};
}

std::string AddressOfRecord(const SipAccount& account) {
  ServerName server = ParseServerName(account.server).value_or(ServerName{});
  server.port = 0;
  return "sip:" + EscapedUser(account.user) + "@" + server.Text();
}

std::string QuotedName(const SipAccount& account) {
  std::string quoted;
  for (const char c : account.display_name) {
    if (c == '"' || c == '\\')
      quoted += '\\';
    quoted += c;
  }
  return quoted;
}

ServerName NextHop(const SipAccount& account) {
  return ParseServerName(account.proxy.empty() ? account.server : account.proxy).value_or(ServerName{});
}

} // namespace kelmio
