// Wave files made in memory, and how they are played.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/wave_image_player.h"

namespace kelmio {

/// A complete wave file: a header of `modWAV::kHeaderBytes`, then the samples.
using WaveImage = std::vector<std::byte>;

/// One sine of a sound.
struct ToneSpec {
  double Frequency = 0; // hertz
  double Omega = 0;     // radians a sample; filled in when the sound is made
  double LeftAmplitude = 0;
  double RightAmplitude = 0;
};

/// Which channels a wave image has, and on which of them the sound is.
enum class ChannelMode : std::int16_t { Mono = 0, Stereo = 1, StereoLeftOnly = 2, StereoRightOnly = 3 };

/// The format that `modWAV::WaveInit` has begun an image in.
struct WaveFormatState {
  std::int32_t SampleRate = 0;    // samples a second of each channel
  std::int16_t BitsPerSample = 0; // 8 or 16
  ChannelMode Mode = ChannelMode::Mono;
  std::int16_t BytesPerSample = 0;
  std::int16_t ChannelCount = 0;
  double LeftVolume = 0;
  double RightVolume = 0;
};

namespace modWAV {

inline constexpr std::size_t kHeaderBytes = 44;

/// Begins `wave`: a header whose two size fields are zero. For other than 8 or 16 bits the block size and the bits stay
/// unwritten.
WaveFormatState WaveInit(WaveImage& wave, std::int32_t sample_rate, std::int16_t bits_per_sample, ChannelMode mode,
                         double left_volume, double right_volume);

/// Adds the sum of `tones` for so many seconds and fills in the sizes; nothing for other than 8 or 16 bits. In 8 bits
/// the idle channel of a sound on one side holds zero bytes, which is the least level and not the middle.
void WaveAddTones(WaveImage& wave, const WaveFormatState& format, std::span<ToneSpec> tones, double seconds);

/// Plays it to its end. False where there is no sound device.
bool WavePlay(WaveImagePlayer& player, const WaveImage& wave);
/// Ends any sound that plays.
void WaveStop(WaveImagePlayer& player);

} // namespace modWAV
} // namespace kelmio
