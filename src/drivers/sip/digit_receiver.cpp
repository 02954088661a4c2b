#include "drivers/sip/digit_receiver.h"

#include <string_view>

namespace kelmio {

namespace {

constexpr std::size_t kEventBytes = 4;
// RFC 4733 section 3.2: event codes 0 to 15 in this order.
constexpr std::string_view kDigits = "0123456789*#ABCD";
// Some senders move the timestamp along with every packet of one key. Packets of a key come at least this
// often; a key pressed again has a longer pause before it or its start marked.
constexpr std::chrono::milliseconds kOneKey{150};

} // namespace

std::optional<char> DigitReceiver::Put(const RtpPacket& packet, Time now) {
  if (packet.payload.size() < kEventBytes || packet.payload[0] >= kDigits.size())
    return std::nullopt;
  const Event event{packet.payload[0], packet.timestamp, (packet.payload[1] & 0x80U) != 0, now};

  bool same_key = false;
  if (last_ && last_->code == event.code) {
    const bool still_held = !last_->ended && !packet.marker && now - last_->heard < kOneKey;
    same_key = last_->timestamp == event.timestamp || still_held;
    // A packet of an earlier key that was overtaken on its way.
  } else if (last_ && static_cast<std::int32_t>(event.timestamp - last_->timestamp) < 0 && !packet.marker) {
    return std::nullopt;
  }
  last_ = event;
  if (same_key)
    return std::nullopt;
  return kDigits[event.code];
}

} // namespace kelmio
