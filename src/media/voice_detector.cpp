#include "media/voice_detector.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <limits>

namespace kelmio {
namespace {

// Until the call has shown its own noise it is taken for an ordinary line, with noise of about -46 dBm0.
// (In G.711 a level in dBm0 reads some 6 dB lower here.)
constexpr double kUsualNoise = -52.0;
// The smallest steps of G.711 make -72 dB; a floor below that is the silence of a machine, over which the
// first faint noise of a line would otherwise pass for voice.
constexpr double kLowestFloor = -68.0;
constexpr double kNothing = -120.0;

// On a line that has only samples of eight bits, what is softer than their steps is a scatter of single steps. So far
// below one step nothing is believed: a voice at -34 dBm0 is still heard (samples of 16 bits have no such floor).
constexpr double kBelowStep = 8.0;

// Steady noise in blocks of 10 ms stays within some 4 dB over its lowest smoothed level.
constexpr double kMarginToVoice = 6.0;
constexpr double kMarginToStay = 4.5;

// A lost packet is filled with digital silence, which says nothing about the line; a pause of a source that
// sends nothing in silence lasts longer.
constexpr std::size_t kPacketGap = 30;

constexpr unsigned kRecentBlocks = 0xFF; // sound is heard when, of the last eight blocks,
constexpr int kLoudOfRecent = 5;         // so many are loud
constexpr std::size_t kFirstVerdict = 8;
// Sound counts as heard for some 40 ms after its end, which makes the hangover about 250 ms.
constexpr std::size_t kHangover = 21;

// Of the last 16 blocks, so many are loud in one band: some clicks and the edges of lost packets are not.
constexpr unsigned kBandBlocks = 0xFFFF;
constexpr int kLoudOfBand = 9;
// Noise varies more in a narrow band.
constexpr double kBandMargin = 9.0;

constexpr double kRate = 8000.0;
constexpr double kThirdOctave = 4.3; // middle by width

/// What is left of the level of white noise.
double NarrowedBy(double hertz) {
  return 10 * std::log10(hertz / kThirdOctave / (kRate / 2));
}

double Decibels(double power) {
  return power > 0 ? std::max(kNothing, 10.0 * std::log10(power / (32768.0 * 32768.0))) : kNothing;
}

} // namespace

NoiseFloor::NoiseFloor(double usual, double lowest) : lowest_level_(lowest) {
  lowest_.fill(usual);
}

void NoiseFloor::Add(double power, bool constant) {
  constant_run_ = constant ? constant_run_ + 1 : 0;
  if (constant && constant_run_ <= kPacketGap)
    return;
  powers_[power_count_++ % kSmoothed] = power;
  if (power_count_ < kSmoothed)
    return;
  double sum = 0;
  for (const double each : powers_)
    sum += each;
  lowest_[window_] = std::min(lowest_[window_], Decibels(sum / static_cast<double>(kSmoothed)));
  if (++blocks_in_window_ < kWindowBlocks)
    return;
  blocks_in_window_ = 0;
  window_ = (window_ + 1) % kWindows;
  lowest_[window_] = std::numeric_limits<double>::max();
}

double NoiseFloor::Level() const {
  return std::max(lowest_level_, *std::min_element(lowest_.begin(), lowest_.end()));
}

VoiceDetector::Band::Band(double middle)
    : hertz(middle), filters{Biquad::BandPass(middle, kThirdOctave, kRate),
                             Biquad::BandPass(middle, kThirdOctave, kRate)},
      floor(kUsualNoise + NarrowedBy(middle), kLowestFloor + NarrowedBy(middle)) {}

// Middles of bands of a third of an octave (IEC 61260), as far as a telephone carries them.
VoiceDetector::VoiceDetector()
    : floor_(kUsualNoise, kLowestFloor), bands_{Band(315),  Band(400),  Band(500),  Band(630),  Band(800), Band(1000),
                                                Band(1250), Band(1600), Band(2000), Band(2500), Band(3150)} {}

void VoiceDetector::BelieveSteps(unsigned bits) {
  if ((steps_ | bits) == steps_)
    return;
  steps_ |= bits;
  const auto step = static_cast<double>(1U << static_cast<unsigned>(std::countr_zero(steps_)));
  const double lowest = std::max(kLowestFloor, Decibels(step * step) - kBelowStep);
  floor_.SetLowest(lowest);
  for (Band& band : bands_)
    band.floor.SetLowest(lowest + NarrowedBy(band.hertz));
}

VoiceDetector::State VoiceDetector::Process(std::span<const std::int16_t, kBlock> block, bool is_tone) {
  double sum = 0;
  bool constant = true;
  unsigned bits = 0;
  for (Band& band : bands_)
    band.power = 0;
  for (const std::int16_t sample : block) {
    // A slow high-pass, since a constant offset is no sound.
    constexpr double kDecay = 0.97;
    last_output_ = sample - last_input_ + kDecay * last_output_;
    last_input_ = sample;
    bits |= static_cast<std::uint16_t>(sample);
    sum += last_output_ * last_output_;
    constant = constant && sample == last_sample_;
    last_sample_ = sample;
    for (Band& band : bands_) {
      const double out = band.filters[1].Process(band.filters[0].Process(sample));
      band.power += out * out;
    }
  }
  BelieveSteps(bits);
  const double power = sum / static_cast<double>(kBlock);
  floor_.Add(power, constant);

  const double margin = state_ == State::Voice ? kMarginToStay : kMarginToVoice;
  const bool loud = !is_tone && Decibels(power) > floor_.Level() + margin;
  loud_blocks_ = loud_blocks_ << 1U | (loud ? 1U : 0U);
  bool heard = std::popcount(loud_blocks_ & kRecentBlocks) >= kLoudOfRecent;
  for (Band& band : bands_) {
    const double band_power = band.power / static_cast<double>(kBlock);
    band.floor.Add(band_power, constant);
    const bool loud_in_band = !is_tone && Decibels(band_power) > band.floor.Level() + kBandMargin;
    band.loud_blocks = band.loud_blocks << 1U | (loud_in_band ? 1U : 0U);
    heard = heard || std::popcount(band.loud_blocks & kBandBlocks) >= kLoudOfBand;
  }
  quiet_blocks_ = heard ? 0 : quiet_blocks_ + 1;
  ++blocks_seen_;
  if (heard)
    state_ = State::Voice;
  else if (quiet_blocks_ >= kHangover || (state_ == State::Unknown && blocks_seen_ >= kFirstVerdict))
    state_ = State::Silence;
  return state_;
}

} // namespace kelmio
