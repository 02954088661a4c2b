// Packets of sound and digits, and what the reader's clock makes of them.
#include <algorithm>

#include "drivers/sip/digit_receiver.h"
#include "drivers/sip/jitter_buffer.h"
#include "drivers/sip/rtp_packet.h"
#include "fuzz/fuzz_target.h"

namespace kelmio::fuzz {
namespace {

class Receiver {
public:
  void Take(std::string_view bytes) {
    const std::span data(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    const auto packet = ReadRtpPacket(data);
    if (!packet)
      return;
    Check(packet->payload.empty() || (packet->payload.data() >= data.data() &&
                                      packet->payload.data() + packet->payload.size() <= data.data() + data.size()),
          "the payload lies within the packet");
    std::vector<std::uint8_t> written;
    WriteRtpPacket(*packet, written);
    const auto again = ReadRtpPacket(written);
    Check(again && again->timestamp == packet->timestamp && again->sequence == packet->sequence &&
              again->ssrc == packet->ssrc && again->marker == packet->marker &&
              std::ranges::equal(again->payload, packet->payload),
          "what is written reads the same");
    const auto digit = digits_.Put(*packet, now_);
    Check(!digit || std::string_view("0123456789*#ABCD").find(*digit) != std::string_view::npos, "a digit is one");
    jitter_.Put(packet->timestamp, packet->marker, packet->payload);
    came_ += packet->payload.size();
  }

  void Frame() {
    now_ += std::chrono::milliseconds(20);
    const auto ahead = jitter_.Peek(0);
    const auto frame = jitter_.Pull();
    Check(frame.present == ahead.present, "a look ahead tells the truth");
    went_ += static_cast<std::size_t>(std::ranges::count(frame.present, true));
    Check(went_ <= came_, "no more sound goes out than came");
    jitter_.Adjusted(jitter_.Adjustment());
  }

private:
  JitterBuffer jitter_;
  DigitReceiver digits_;
  DigitReceiver::Time now_{};
  std::size_t came_ = 0;
  std::size_t went_ = 0;
};

/// A packet as the input holds it: its length, then its bytes.
std::string Packed(const RtpPacket& packet) {
  std::vector<std::uint8_t> bytes;
  WriteRtpPacket(packet, bytes);
  return static_cast<char>(bytes.size()) + std::string(bytes.begin(), bytes.end());
}

} // namespace

std::vector<std::string> Seeds() {
  const std::vector<std::uint8_t> sound(160, 0x55);
  const std::vector<std::uint8_t> key{5, 0x80, 3, 0x20};
  std::string stream = "\x01";
  std::string jumps = "\x02";
  std::string keys = "\x03";
  for (unsigned i = 0; i < 8; ++i) {
    const auto sequence = static_cast<std::uint16_t>(i);
    stream += Packed({i == 0, 0, sequence, i * 160, 7, sound});
    // Among them half the clock ahead of the reader, where differences turn over.
    jumps += Packed({i % 2 == 1, 0, sequence, i * 0x7FFFFFE0U - i * JitterBuffer::kFirstDepth, 7, sound});
    keys += Packed({i == 0, 101, sequence, 160 * (i / 3), 7, key});
  }
  // Padding, a contributing source, an extension.
  using namespace std::string_literals;
  const std::string odd = "\xB1\x00\x00\x01\x00\x00\x00\x02\x00\x00\x00\x07\x00\x00\x00\x09\xBE\xDE\x00\x01"s
                          "abcdPAYLOAD\x00\x00\x03"s;
  return {stream, jumps, keys, "\x04"s + static_cast<char>(odd.size()) + odd};
}

} // namespace kelmio::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmio::fuzz;
  Cuts cuts(ViewOf(data, size));
  Receiver receiver;
  while (!cuts.Empty()) {
    receiver.Take(cuts.Take(cuts.Byte()));
    // A frame for each packet, now and then some more.
    receiver.Frame();
    if (cuts.Rest().size() % 7 == 0)
      for (int i = 0; i < 8; ++i)
        receiver.Frame();
  }
  return 0;
}
