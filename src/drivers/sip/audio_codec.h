// The codings of sound on the line: Opus, and G.711 and G.722, which take 64 kilobits a second each.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "drivers/sip/opus_codec.h"

namespace kelmio {

enum class AudioCoding : std::uint8_t { Pcmu, Pcma, G722, Opus };

/// In order of preference, wideband first.
inline constexpr std::array kAllCodings{AudioCoding::Opus, AudioCoding::G722, AudioCoding::Pcma, AudioCoding::Pcmu};

/// The name by which peers know the coding (RFC 3551 section 6).
const char* NameOf(AudioCoding coding);

/// Static payload types (RFC 3551 section 6).
namespace payload_type {
inline constexpr int kPcmu = 0;
inline constexpr int kPcma = 8;
inline constexpr int kG722 = 9;
} // namespace payload_type

/// The older three codings carry this many bytes a second, and count RTP time by the byte (RFC 3551 section 4.5.2
/// says why this holds for G.722 too). Opus has units in their place (see `OpusCodec`).
inline constexpr int kCodedBytesPerSecond = 8000;

/// Encoder and decoder of one direction pair of a call. Any one thread.
class AudioCodec {
public:
  explicit AudioCodec(AudioCoding coding);
  ~AudioCodec();
  AudioCodec(const AudioCodec&) = delete;
  AudioCodec& operator=(const AudioCodec&) = delete;

  AudioCoding Coding() const { return coding_; }
  /// Whether the sound is of 16000 samples a second, else of 8000.
  bool IsWideband() const { return coding_ == AudioCoding::G722 || coding_ == AudioCoding::Opus; }
  int Rate() const;
  std::size_t SamplesPerByte() const { return IsWideband() ? 2 : 1; }
  /// What RTP time counts for each byte.
  std::uint32_t ClockPerByte() const { return coding_ == AudioCoding::Opus ? OpusCodec::kClockPerUnit : 1; }
  /// Whether a byte decodes the same whatever came before it.
  bool Stateless() const { return !IsWideband(); }

  /// The bytes of a packet's payload for `Decode`, each of 1/8000 s, and when the first is due, in the same. They are
  /// good until the next packet; nothing when it is damaged.
  struct Arrival {
    std::uint32_t timestamp = 0;
    std::span<const std::uint8_t> bytes;
  };
  std::optional<Arrival> Take(std::uint32_t timestamp, std::span<const std::uint8_t> payload);

  /// `samples` holds `SamplesPerByte` for each byte.
  void Decode(std::span<const std::uint8_t> bytes, std::span<std::int16_t> samples);
  /// The payload of 20 ms, at the beginning of `bytes`, of which there is one for each `SamplesPerByte`.
  std::span<const std::uint8_t> Encode(std::span<const std::int16_t> samples, std::span<std::uint8_t> bytes);

private:
  struct Wideband; // the state of G.722, where there is one
  AudioCoding coding_;
  std::unique_ptr<Wideband> wideband_;
  std::unique_ptr<OpusCodec> opus_;
};

} // namespace kelmio
