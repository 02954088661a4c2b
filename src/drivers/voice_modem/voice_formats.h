// The codings of sound that a modem offers, the choice among them, and the samples in them.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kelmio {

enum class VoiceCoding : std::uint8_t { Linear8, MuLaw, ALaw, Linear16 };

/// What is asked of a modem with `+VSM`.
struct VoiceFormat {
  int id = 0; // the modem's own number; the same one means different codings on different chips
  VoiceCoding coding = VoiceCoding::Linear8;
  bool is_signed = false; // of linear samples
};

/// Samples per second of every format that is chosen.
inline constexpr int kModemRate = 8000;

/// One row of the answer to `+VSM=?`, such as `1,"UNSIGNED PCM",8,0,8000,0,0`. Ranges are as they came.
struct VoiceFormatRow {
  int first_id = 0;
  std::string name;
  int bits = 0;
  std::string rates;
};

/// Reads one line of the answer, with or without the command's name before it. Nothing for a line that is no row.
std::optional<VoiceFormatRow> ReadVoiceFormatRow(std::string_view line);

/// The best format of those offered: unsigned linear of 8 bits, u-law, A-law, linear of 16 bits; none at another rate
/// than 8000 and none that needs a vendor's own codec. Nothing when there is none of these.
std::optional<VoiceFormat> ChooseVoiceFormat(const std::vector<VoiceFormatRow>& rows);

int BytesPerSample(VoiceCoding coding);

/// Appends the modem's bytes for `samples`.
void EncodeVoice(const VoiceFormat& format, std::span<const std::int16_t> samples, std::string& bytes);

/// Appends the samples of whole samples in `bytes` and returns how many bytes were taken; half of a sample is left.
std::size_t DecodeVoice(const VoiceFormat& format, std::string_view bytes, std::vector<std::int16_t>& samples);

} // namespace kelmio
