#include "media/recording_format.h"

#include <algorithm>
#include <array>
#include <cstdint>

namespace kelmio {
namespace {

constexpr std::array<std::uint32_t, 7> kRates{8000, 11025, 16000, 22050, 32000, 44100, 48000};
constexpr std::array<std::uint32_t, 4> kGsmRates{8000, 11025, 22050, 44100};

// GSM 6.10 in wave files packs two frames of 160 samples into one block of 65 bytes.
constexpr std::uint16_t kGsmBlockBytes = 65;
constexpr std::uint32_t kGsmBlockSamples = 320;
// The word with the samples of a block, which follows the record in the file.
constexpr std::uint16_t kBlockFormatExtra = 2;

// An IMA ADPCM block starts with 4 bytes a channel that hold its first sample; two samples a byte follow.
constexpr std::uint32_t kImaPreamble = 4;
constexpr std::uint16_t kImaSmallestBlock = 64;
constexpr std::uint16_t kImaLargestBlock = 8192;

template <std::size_t N> bool IsOneOf(const std::array<std::uint32_t, N>& rates, std::uint32_t rate) {
  return std::find(rates.begin(), rates.end(), rate) != rates.end();
}

std::uint32_t ImaBlockSamples(std::uint32_t block_bytes, std::uint32_t channels) {
  return (block_bytes - kImaPreamble * channels) * 2 / channels + 1;
}

std::uint32_t BlockBytesPerSecond(std::uint32_t rate, std::uint32_t block_bytes, std::uint32_t block_samples) {
  return static_cast<std::uint32_t>(std::uint64_t{rate} * block_bytes / block_samples);
}

// Writers differ in how they round the bytes per second of a coding in blocks.
bool IsAbout(std::uint32_t value, std::uint32_t expected) {
  return value >= expected && value <= expected + 1;
}

bool IsConsistentIma(const WaveFormatRecord& format) {
  const std::uint32_t unit = kImaPreamble * format.channels;
  return format.bits_per_sample == 4 && format.extra_size == kBlockFormatExtra &&
         format.block_align >= kImaSmallestBlock && format.block_align <= kImaLargestBlock &&
         format.block_align % unit == 0 &&
         IsAbout(format.average_bytes_per_second,
                 BlockBytesPerSecond(format.samples_per_second, format.block_align,
                                     ImaBlockSamples(format.block_align, format.channels)));
}

bool IsConsistentGsm(const WaveFormatRecord& format) {
  return IsOneOf(kGsmRates, format.samples_per_second) && format.channels == 1 && format.bits_per_sample == 0 &&
         format.extra_size == kBlockFormatExtra && format.block_align == kGsmBlockBytes &&
         IsAbout(format.average_bytes_per_second,
                 BlockBytesPerSecond(format.samples_per_second, kGsmBlockBytes, kGsmBlockSamples));
}

// Codings that store each sample by itself. The extra size means nothing to them.
bool IsConsistentPlain(const WaveFormatRecord& format) {
  return format.block_align == format.channels * format.bits_per_sample / 8 &&
         format.average_bytes_per_second == format.samples_per_second * format.block_align;
}

WaveFormatRecord Plain(std::uint16_t tag, std::uint32_t rate, std::uint16_t channels, std::uint16_t bits) {
  const auto align = static_cast<std::uint16_t>(channels * bits / 8);
  return {tag, channels, rate, rate * align, align, bits, 0};
}

WaveFormatRecord Ima(std::uint32_t rate, std::uint16_t channels) {
  // The block sizes that wave writers agree on, by the samples per second of all channels.
  const std::uint32_t load = rate * channels;
  const std::uint16_t align = load < 12000 ? 256 : load < 23000 ? 512 : load < 44000 ? 1024 : 2048;
  const std::uint32_t bytes = BlockBytesPerSecond(rate, align, ImaBlockSamples(align, channels));
  return {wave_format_tag::kImaAdpcm, channels, rate, bytes, align, 4, kBlockFormatExtra};
}

} // namespace

bool IsRecordable(const WaveFormatRecord& format) {
  if (!IsOneOf(kRates, format.samples_per_second) || format.channels < 1 || format.channels > 2)
    return false;
  switch (format.format_tag) {
  case wave_format_tag::kPcm:
    return (format.bits_per_sample == 8 || format.bits_per_sample == 16) && IsConsistentPlain(format);
  case wave_format_tag::kMuLaw:
  case wave_format_tag::kALaw:
    return format.bits_per_sample == 8 && IsConsistentPlain(format);
  case wave_format_tag::kGsm610:
    return IsConsistentGsm(format);
  case wave_format_tag::kImaAdpcm:
    return IsConsistentIma(format);
  default:
    return false;
  }
}

std::vector<WaveFormatRecord> RecordableFormats() {
  std::vector<WaveFormatRecord> formats;
  const auto add_plain = [&formats](std::uint16_t tag, std::uint16_t bits) {
    for (const std::uint32_t rate : kRates)
      for (const std::uint16_t channels : {std::uint16_t{1}, std::uint16_t{2}})
        formats.push_back(Plain(tag, rate, channels, bits));
  };
  add_plain(wave_format_tag::kPcm, 8);
  add_plain(wave_format_tag::kPcm, 16);
  add_plain(wave_format_tag::kALaw, 8);
  add_plain(wave_format_tag::kMuLaw, 8);
  for (const std::uint32_t rate : kRates)
    for (const std::uint16_t channels : {std::uint16_t{1}, std::uint16_t{2}})
      formats.push_back(Ima(rate, channels));
  for (const std::uint32_t rate : kGsmRates)
    formats.push_back({wave_format_tag::kGsm610, 1, rate, BlockBytesPerSecond(rate, kGsmBlockBytes, kGsmBlockSamples),
                       kGsmBlockBytes, 0, kBlockFormatExtra});
  return formats;
}

} // namespace kelmio
