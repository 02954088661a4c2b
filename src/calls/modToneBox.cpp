#include "calls/modToneBox.h"

#include <algorithm>
#include <array>

namespace kelmio::modToneBox {

namespace {

constexpr std::array<std::int16_t, 4> kLow = {697, 770, 852, 941};
constexpr std::array<std::int16_t, 4> kHigh = {1209, 1336, 1477, 1633};

constexpr std::int32_t kRate = 8000; // samples a second
constexpr std::int16_t kBits = 16;
constexpr double kAmplitude = 0.25;
constexpr double kVolume = 0.5;

} // namespace

TonePair PairOfKey(std::int16_t key_number) {
  constexpr int kPlaces = static_cast<int>(kLow.size() * kHigh.size());
  const auto place = static_cast<std::size_t>(std::clamp<int>(key_number, 1, kPlaces) - 1);
  return {kLow[place / kHigh.size()], kHigh[place % kHigh.size()]};
}

WaveImage MakeTonePair(TonePair pair, double seconds) {
  std::array<ToneSpec, 2> tones = {ToneSpec{static_cast<double>(pair.low), 0, kAmplitude, kAmplitude},
                                   ToneSpec{static_cast<double>(pair.high), 0, kAmplitude, kAmplitude}};
  WaveImage wave;
  const WaveFormatState format = modWAV::WaveInit(wave, kRate, kBits, ChannelMode::Stereo, kVolume, kVolume);
  modWAV::WaveAddTones(wave, format, tones, seconds);
  return wave;
}

void PlayTonePair(WaveImagePlayer& player, std::int16_t low_frequency, std::int16_t high_frequency, double seconds) {
  modWAV::WaveStop(player);
  modWAV::WavePlay(player, MakeTonePair({low_frequency, high_frequency}, seconds));
}

} // namespace kelmio::modToneBox
