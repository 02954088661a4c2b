// The wave format record that crosses the telephony interface as text.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelmio {

/// The 18 bytes of the platform's wave format record (WAVEFORMATEX), field by field.
struct WaveFormatRecord {
  std::uint16_t format_tag = 1;
  std::uint16_t channels = 1;
  std::uint32_t samples_per_second = 8000;
  std::uint32_t average_bytes_per_second = 16000;
  std::uint16_t block_align = 2;
  std::uint16_t bits_per_sample = 16;
  std::uint16_t extra_size = 0;
  bool operator==(const WaveFormatRecord&) const = default;
};

/// Format tags, as registered for RIFF wave files.
namespace wave_format_tag {
inline constexpr std::uint16_t kPcm = 0x0001;
inline constexpr std::uint16_t kALaw = 0x0006;
inline constexpr std::uint16_t kMuLaw = 0x0007;
inline constexpr std::uint16_t kImaAdpcm = 0x0011;
inline constexpr std::uint16_t kGsm610 = 0x0031;
} // namespace wave_format_tag

/// Upper-case hexadecimal text of the record's bytes in memory order, 36 digits.
std::string ToFormatText(const WaveFormatRecord& format);

/// Nothing unless the text is exactly 36 hexadecimal digits.
std::optional<WaveFormatRecord> FromFormatText(std::string_view text);

/// Display name of the coding, such as "PCM"; empty for a coding that has no name here.
std::string CodeNameOf(const WaveFormatRecord& format);

/// Display text of the figures, such as "8.000 kHz; 16 Bit; Mono".
std::string DetailOf(const WaveFormatRecord& format);

} // namespace kelmio
