// Who is calling, out of what a SIP message claims.
#pragma once

#include <string>
#include <string_view>

namespace kelmio {

/// Name and number as shown texts: valid UTF-8 without control characters. Either may be empty.
struct CallerIdentity {
  std::string name;
  std::string number;
  bool Known() const { return !name.empty() || !number.empty(); }
};

/// `display_name` and `user` are raw as they stand in the From header: the name without its surrounding
/// quotes, with its backslash escapes; the user part of the address with its percent escapes. An anonymous
/// caller (RFC 3323) has neither name nor number.
CallerIdentity ReadCallerIdentity(std::string_view display_name, std::string_view user);

} // namespace kelmio
