// Keys for encrypted sound that travel with the call's signalling (RFC 4568).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "drivers/sip/libre.h"

namespace kelmio {

/// What one side encrypts with: master key and salt (RFC 3711) for one cipher.
struct SrtpKey {
  srtp_suite suite = SRTP_AES_CM_128_HMAC_SHA1_80;
  std::vector<std::uint8_t> bytes; // with its salt
  bool operator==(const SrtpKey&) const = default;
};

/// A key as it stands in the signalling.
struct SdesKey {
  int tag = 1; // by which an answer names the one of several keys that it takes
  SrtpKey key;
  bool operator==(const SdesKey&) const = default;
};

/// A key that nobody has had before. Nothing when the system has no random numbers to give.
std::optional<SdesKey> MakeSdesKey(int tag, srtp_suite suite);

/// Reads the value of an attribute `crypto`. Nothing for a cipher that isn't known here, for a key of a wrong length,
/// and for parameters that would have to be kept to: what isn't encrypted and authenticated in full isn't taken.
std::optional<SdesKey> ParseSdesKey(std::string_view value);

/// The value of the attribute.
std::string ToText(const SdesKey& key);

} // namespace kelmio
