// The codings of sound on the line: G.711 and G.722, each 64 kilobits a second.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace kelmio {

enum class AudioCoding : std::uint8_t { Pcmu, Pcma, G722 };

/// In order of preference, wideband first.
inline constexpr std::array kAllCodings{AudioCoding::G722, AudioCoding::Pcma, AudioCoding::Pcmu};

/// The name by which peers know the coding (RFC 3551 section 6).
const char* NameOf(AudioCoding coding);

/// Static payload types (RFC 3551 section 6).
namespace payload_type {
inline constexpr int kPcmu = 0;
inline constexpr int kPcma = 8;
inline constexpr int kG722 = 9;
} // namespace payload_type

/// All three codings carry this many bytes a second, and count RTP time by the byte (RFC 3551 section 4.5.2
/// says why this holds for G.722 too).
inline constexpr int kCodedBytesPerSecond = 8000;

/// Encoder and decoder of one direction pair of a call. Any one thread.
class AudioCodec {
public:
  explicit AudioCodec(AudioCoding coding);
  ~AudioCodec();
  AudioCodec(const AudioCodec&) = delete;
  AudioCodec& operator=(const AudioCodec&) = delete;

  AudioCoding Coding() const { return coding_; }
  /// Samples per second of the sound: 8000, or 16000 for G.722.
  int Rate() const;
  std::size_t SamplesPerByte() const { return coding_ == AudioCoding::G722 ? 2 : 1; }
  /// Whether a byte decodes the same whatever came before it.
  bool Stateless() const { return coding_ != AudioCoding::G722; }

  /// `samples` holds `SamplesPerByte` for each byte.
  void Decode(std::span<const std::uint8_t> bytes, std::span<std::int16_t> samples);
  void Encode(std::span<const std::int16_t> samples, std::span<std::uint8_t> bytes);

private:
  struct Wideband; // the state of G.722, where there is one
  AudioCoding coding_;
  std::unique_ptr<Wideband> wideband_;
};

} // namespace kelmio
