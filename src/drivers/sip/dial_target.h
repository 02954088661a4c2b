// Where a dialled text leads to.
#pragma once

#include <string>
#include <string_view>

namespace kelmio {

struct DialTarget {
  enum class Kind {
    Address, // `uri` can be called
    Number,  // a plain number or name, which only a registrar could resolve
    Invalid, // can't be dialled at all
  };
  Kind kind = Kind::Invalid;
  std::string uri; // "sip:user@host[:port][;parameters]", for `Address` only
};

/// Takes "sip:user@host[:port]", "user@host[:port]" and plain numbers, blanks around them ignored. Characters
/// that an address can't hold are escaped in the user part and make the rest invalid.
DialTarget ParseDialTarget(std::string_view text);

/// A plain number or name as an address at the registrar `host` (with its port, if any). Of a number, what only makes
/// it easier to read is left out; a leading "+" stays.
std::string NumberAt(std::string_view number, std::string_view host);

/// The text as the user part of an address (RFC 3261 25.1), with escapes where they are needed.
std::string EscapedUser(std::string_view user);

} // namespace kelmio
