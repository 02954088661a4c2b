// Opus (RFC 6716) on the line, as RTP carries it (RFC 7587).
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

struct OpusDecoder;
struct OpusEncoder;

namespace kelmio {

/// Encoder and decoder of one direction pair of a call, at 16000 samples a second. The frames of a call are counted by
/// the byte, and an Opus packet is one of any size: so a received packet is kept here, and goes through the call's
/// buffer as a run of its place's number, one for each 1/8000 s that it lasts. Any one thread.
class OpusCodec {
public:
  static constexpr int kRate = 16000;
  /// RTP time of Opus goes by 48000, whatever is coded, and so by this for each 1/8000 s.
  static constexpr std::uint32_t kClockPerUnit = 6;

  OpusCodec();
  ~OpusCodec();
  OpusCodec(const OpusCodec&) = delete;
  OpusCodec& operator=(const OpusCodec&) = delete;

  struct Run {
    std::uint32_t timestamp = 0; // in 1/8000 s
    std::span<const std::uint8_t> units;
  };
  /// Keeps a packet. The run is good until the next one; nothing for what is no packet of Opus.
  std::optional<Run> Keep(std::uint32_t timestamp, std::span<const std::uint8_t> packet);

  /// The sound of a part of a run, two samples each. Parts of one packet are taken in their order.
  void Decode(std::span<const std::uint8_t> units, std::span<std::int16_t> samples);

  /// The number of bytes that `samples`, 20 ms of them, have become; 0 when they don't fit.
  std::size_t Encode(std::span<const std::int16_t> samples, std::span<std::uint8_t> bytes);

private:
  struct Deleter {
    void operator()(OpusDecoder* decoder) const;
    void operator()(OpusEncoder* encoder) const;
  };
  static constexpr std::size_t kPlaces = 256; // as many as a unit can name

  void Open(std::uint8_t place);

  std::unique_ptr<OpusDecoder, Deleter> decoder_;
  std::unique_ptr<OpusEncoder, Deleter> encoder_;
  std::array<std::vector<std::uint8_t>, kPlaces> packets_;
  std::uint8_t next_ = 0; // place
  std::vector<std::uint8_t> run_;
  std::optional<std::uint32_t> last_timestamp_; // of the network's clock,
  std::int64_t clock_ = std::int64_t{1} << 32;  // which turns over; this one doesn't
  std::optional<std::uint8_t> open_;            // the place whose packet is being taken,
  std::vector<std::int16_t> sound_;             // its sound,
  std::size_t taken_ = 0;                       // and how much of that is gone
};

} // namespace kelmio
