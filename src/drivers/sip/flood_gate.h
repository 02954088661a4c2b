// Keeps a line usable while more requests come than anyone could mean.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "drivers/sip/libre.h"
#include "drivers/sip/rate_limiter.h"

namespace kelmio {

/// A sender of a UDP datagram may claim any address. So while there are too many requests, an INVITE is sent on to
/// another address of this same line (302, RFC 3261 8.1.3.4), which only who is really there gets to know, and one that
/// comes to that address is let in. Nothing is kept of those who are sent on, and the rest meets silence. Engine thread
/// only.
class FloodGate {
public:
  using Time = RateLimiter::Time;

  FloodGate();

  /// Whether the request, which belongs to no call yet, may be looked at; if not, nothing more is to be done about it.
  /// `own` is the line's address as the sender sees it.
  bool Admits(sip& stack, const sip_msg& request, const sa& own, Time now);

private:
  std::string UserFor(const sa& source) const;

  std::array<std::uint8_t, 20> secret_{};
  RateLimiter claimed_; // by sources that may be made up
  RateLimiter proven_;
  RateLimiter sent_on_;
};

} // namespace kelmio
