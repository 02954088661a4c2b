#include "calls/modWAV.h"

#include <cmath>
#include <numbers>
#include <string_view>

namespace kelmio::modWAV {

namespace {

// Places in the header of a wave file with PCM samples.
constexpr std::size_t kRiffSizeAt = 4;
constexpr std::size_t kFormatSizeAt = 16;
constexpr std::size_t kFormatTagAt = 20;
constexpr std::size_t kChannelsAt = 22;
constexpr std::size_t kRateAt = 24;
constexpr std::size_t kByteRateAt = 28;
constexpr std::size_t kBlockSizeAt = 32;
constexpr std::size_t kBitsAt = 34;
constexpr std::size_t kDataSizeAt = 40;

constexpr std::int32_t kFormatSize = 16;
constexpr std::int32_t kPcm = 1;
constexpr std::int32_t kHeaderBeyondRiffSize = 36;

constexpr std::int16_t kBits8 = 8;
constexpr std::int16_t kBits16 = 16;
constexpr int kPeak8 = 127;
constexpr int kPeak16 = 32767;
constexpr int kMiddle8 = 127;

/// The lowest `count` bytes of `value`, the lowest first.
void Put(WaveImage& wave, std::size_t at, std::int32_t value, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    wave[at + i] = static_cast<std::byte>((static_cast<std::uint32_t>(value) >> (8 * i)) & 0xFFU);
}

void PutText(WaveImage& wave, std::size_t at, std::string_view text) {
  for (const char c : text)
    wave[at++] = static_cast<std::byte>(c);
}

/// To the nearest whole number, ties to the even one.
std::int32_t Rounded(double value) {
  return static_cast<std::int32_t>(std::nearbyint(value));
}

bool IsKnown(std::int16_t bits_per_sample) {
  return bits_per_sample == kBits8 || bits_per_sample == kBits16;
}

/// One sample of a channel: rounded towards minus infinity.
std::int32_t Sample(const WaveFormatState& format, double volume, double sum) {
  const bool wide = format.BitsPerSample == kBits16;
  const auto level = static_cast<std::int32_t>(std::floor(volume * sum * (wide ? kPeak16 : kPeak8)));
  return wide ? level : level + kMiddle8;
}

} // namespace

WaveFormatState WaveInit(WaveImage& wave, std::int32_t sample_rate, std::int16_t bits_per_sample, ChannelMode mode,
                         double left_volume, double right_volume) {
  WaveFormatState format;
  format.SampleRate = sample_rate;
  format.BitsPerSample = bits_per_sample;
  format.Mode = mode;
  format.BytesPerSample = bits_per_sample == kBits8 ? 1 : 2;
  format.ChannelCount = mode == ChannelMode::Mono ? 1 : 2;
  format.LeftVolume = left_volume;
  format.RightVolume = right_volume;

  wave.assign(kHeaderBytes, std::byte{0});
  PutText(wave, 0, "RIFF");
  PutText(wave, 8, "WAVEfmt ");
  Put(wave, kFormatSizeAt, kFormatSize, 4);
  Put(wave, kFormatTagAt, kPcm, 2);
  Put(wave, kChannelsAt, format.ChannelCount, 2);
  Put(wave, kRateAt, sample_rate, 4);
  Put(wave, kByteRateAt, format.ChannelCount * sample_rate * format.BytesPerSample, 4);
  if (IsKnown(bits_per_sample)) {
    Put(wave, kBlockSizeAt, format.ChannelCount * format.BytesPerSample, 2);
    Put(wave, kBitsAt, bits_per_sample, 2);
  }
  PutText(wave, 36, "data");
  return format;
}

void WaveAddTones(WaveImage& wave, const WaveFormatState& format, std::span<ToneSpec> tones, double seconds) {
  if (!IsKnown(format.BitsPerSample))
    return; // a sample of such a size has no place in the image
  const double sample_time = 1.0 / format.SampleRate;
  for (ToneSpec& tone : tones) {
    const double period = 1.0 / tone.Frequency;
    tone.Omega = 2 * std::numbers::pi / (period / sample_time);
  }
  const std::int32_t frames = Rounded(seconds / sample_time);
  const std::int32_t data_size = Rounded(format.ChannelCount * static_cast<double>(frames) * format.BitsPerSample / 8);
  wave.resize(kHeaderBytes + static_cast<std::size_t>(data_size), std::byte{0});
  Put(wave, kDataSizeAt, data_size, 4);
  Put(wave, kRiffSizeAt, data_size + kHeaderBeyondRiffSize, 4);

  const auto sample_bytes = static_cast<std::size_t>(format.BytesPerSample);
  const bool has_left = format.Mode != ChannelMode::StereoRightOnly;
  const bool has_right = format.Mode == ChannelMode::Stereo || format.Mode == ChannelMode::StereoRightOnly;
  std::size_t at = kHeaderBytes;
  for (std::int32_t frame = 0; frame < frames; ++frame) {
    double left = 0;
    double right = 0;
    for (const ToneSpec& tone : tones) {
      // Anew from the frame's number each time: a running phase would drift.
      const double sine = std::sin(frame * tone.Omega);
      left += sine * tone.LeftAmplitude;
      right += sine * tone.RightAmplitude;
    }
    if (has_left)
      Put(wave, at, Sample(format, format.LeftVolume, left), sample_bytes);
    at += sample_bytes;
    if (format.ChannelCount == 1)
      continue;
    if (has_right)
      Put(wave, at, Sample(format, format.RightVolume, right), sample_bytes);
    at += sample_bytes;
  }
}

bool WavePlay(WaveImagePlayer& player, const WaveImage& wave) {
  return player.Play(wave);
}

void WaveStop(WaveImagePlayer& player) {
  player.Stop();
}

} // namespace kelmio::modWAV
