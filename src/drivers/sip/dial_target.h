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

} // namespace kelmio
