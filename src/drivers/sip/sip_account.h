// What an account is called by on the wire.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "drivers/sip/sip_settings.h"

namespace kelmio {

/// A server as a user writes it.
struct ServerName {
  std::string host;       // a name, or a numeric address without brackets
  std::uint16_t port = 0; // 0: found by itself
  bool IsV6() const { return host.find(':') != std::string::npos; }
  /// As it stands in an address: with brackets where needed, and with the port when there is one.
  std::string Text() const;
  bool operator==(const ServerName&) const = default;
};

/// "name", "name:port", "1.2.3.4", "[::1]:port" or "::1". Nothing when the text is anything else.
std::optional<ServerName> ParseServerName(std::string_view text);

/// Whether an account has been entered at all.
bool IsSetUp(const SipAccount& account);

/// What makes an account unusable, as a sentence; empty when nothing does.
std::string FaultOf(const SipAccount& account);

/// "sip:user@server", by which an account is known (RFC 3261 10.2). The account has no fault.
std::string AddressOfRecord(const SipAccount& account);

/// The display name as a quoted string's inside (RFC 3261 25.1), empty when there is none.
std::string QuotedName(const SipAccount& account);

/// The server whose addresses are asked: the proxy, where there is one.
ServerName NextHop(const SipAccount& account);

} // namespace kelmio
