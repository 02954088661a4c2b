// Digits that come as telephone events in RTP (RFC 4733).
#pragma once

#include <chrono>
#include <cstdint>
#include <optional>

#include "drivers/sip/rtp_packet.h"

namespace kelmio {

/// Turns the many packets of one pressed key into one digit, at the first of them that arrives. Pure code.
class DigitReceiver {
public:
  using Time = std::chrono::steady_clock::time_point;

  /// The digit (0-9, *, #, A-D) that this packet brings for the first time.
  std::optional<char> Put(const RtpPacket& packet, Time now);

private:
  struct Event {
    std::uint8_t code = 0;
    std::uint32_t timestamp = 0;
    bool ended = false;
    Time heard{};
  };
  std::optional<Event> last_;
};

} // namespace kelmio
