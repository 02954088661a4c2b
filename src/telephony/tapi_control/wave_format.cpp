#include "telephony/tapi_control/wave_format.h"

#include <array>
#include <cstdio>

namespace kelmio {

namespace {

constexpr std::size_t kRecordBytes = 18;

std::optional<unsigned> HexDigit(char c) {
  if (c >= '0' && c <= '9')
    return static_cast<unsigned>(c - '0');
  if (c >= 'A' && c <= 'F')
    return static_cast<unsigned>(c - 'A') + 10U;
  if (c >= 'a' && c <= 'f')
    return static_cast<unsigned>(c - 'a') + 10U;
  return std::nullopt;
}

class ByteReader {
public:
  explicit ByteReader(const std::array<std::uint8_t, kRecordBytes>& bytes) : bytes_(bytes) {}

  std::uint16_t Word() { return static_cast<std::uint16_t>(Take(2)); }
  std::uint32_t Long() { return Take(4); }

private:
  std::uint32_t Take(std::size_t count) {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < count; ++i)
      value |= static_cast<std::uint32_t>(bytes_.at(position_++)) << (8 * i);
    return value;
  }

  const std::array<std::uint8_t, kRecordBytes>& bytes_;
  std::size_t position_ = 0;
};

void AppendLittleEndian(std::string& text, std::uint32_t value, std::size_t bytes) {
  static constexpr std::string_view kDigits = "0123456789ABCDEF";
  for (std::size_t i = 0; i < bytes; ++i) {
    const std::uint32_t byte = (value >> (8 * i)) & 0xFFU;
    text += kDigits[byte >> 4U];
    text += kDigits[byte & 0xFU];
  }
}

} // namespace

std::string ToFormatText(const WaveFormatRecord& format) {
  std::string text;
  AppendLittleEndian(text, format.format_tag, 2);
  AppendLittleEndian(text, format.channels, 2);
  AppendLittleEndian(text, format.samples_per_second, 4);
  AppendLittleEndian(text, format.average_bytes_per_second, 4);
  AppendLittleEndian(text, format.block_align, 2);
  AppendLittleEndian(text, format.bits_per_sample, 2);
  AppendLittleEndian(text, format.extra_size, 2);
  return text;
}

std::optional<WaveFormatRecord> FromFormatText(std::string_view text) {
  if (text.size() != 2 * kRecordBytes)
    return std::nullopt;
  std::array<std::uint8_t, kRecordBytes> bytes{};
  for (std::size_t i = 0; i < kRecordBytes; ++i) {
    const auto high = HexDigit(text[2 * i]);
    const auto low = HexDigit(text[2 * i + 1]);
    if (!high || !low)
      return std::nullopt;
    bytes.at(i) = static_cast<std::uint8_t>(*high << 4U | *low);
  }
  ByteReader reader(bytes);
  WaveFormatRecord format;
  format.format_tag = reader.Word();
  format.channels = reader.Word();
  format.samples_per_second = reader.Long();
  format.average_bytes_per_second = reader.Long();
  format.block_align = reader.Word();
  format.bits_per_sample = reader.Word();
  format.extra_size = reader.Word();
  return format;
}

std::string CodeNameOf(const WaveFormatRecord& format) {
  switch (format.format_tag) {
  case wave_format_tag::kPcm:
    return "PCM";
  case wave_format_tag::kALaw:
    return "CCITT A-Law";
  case wave_format_tag::kMuLaw:
    return "CCITT u-Law";
  case wave_format_tag::kImaAdpcm:
    return "IMA ADPCM";
  case wave_format_tag::kGsm610:
    return "GSM 6.10";
  default:
    return {};
  }
}

std::string DetailOf(const WaveFormatRecord& format) {
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%u.%03u kHz; %u Bit; ", format.samples_per_second / 1000U,
                format.samples_per_second % 1000U, static_cast<unsigned>(format.bits_per_sample));
  const std::string channels = format.channels == 1   ? "Mono"
                               : format.channels == 2 ? "Stereo"
                                                      : std::to_string(format.channels) + " Channels";
  return text.data() + channels;
}

} // namespace kelmio
