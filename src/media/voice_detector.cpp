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

// Steady noise in blocks of 10 ms stays within some 4 dB over its lowest smoothed level.
constexpr double kMarginToVoice = 6.0;
constexpr double kMarginToStay = 4.5;

// A lost packet is filled with digital silence, which says nothing about the line; a pause of a source that
// sends nothing in silence lasts longer.
constexpr std::size_t kPacketGap = 30;

constexpr unsigned kRecentBlocks = 0xFF; // sound is heard when, of the last eight blocks,
constexpr int kLoudOfRecent = 4;         // so many are loud
constexpr std::size_t kFirstVerdict = 8;
// Sound counts as heard for some 40 ms after its end, which makes the hangover about 250 ms.
constexpr std::size_t kHangover = 21;

double Decibels(double power) {
  return power > 0 ? std::max(kNothing, 10.0 * std::log10(power / (32768.0 * 32768.0))) : kNothing;
}

} // namespace

NoiseFloor::NoiseFloor() {
  lowest_.fill(kUsualNoise);
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
  return std::max(kLowestFloor, *std::min_element(lowest_.begin(), lowest_.end()));
}

VoiceDetector::State VoiceDetector::Process(std::span<const std::int16_t, kBlock> block) {
  double sum = 0;
  bool constant = true;
  for (const std::int16_t sample : block) {
    // A slow high-pass, since a constant offset is no sound.
    constexpr double kDecay = 0.97;
    last_output_ = sample - last_input_ + kDecay * last_output_;
    last_input_ = sample;
    sum += last_output_ * last_output_;
    constant = constant && sample == last_sample_;
    last_sample_ = sample;
  }
  const double power = sum / static_cast<double>(kBlock);
  floor_.Add(power, constant);

  const double margin = state_ == State::Voice ? kMarginToStay : kMarginToVoice;
  const bool loud = Decibels(power) > floor_.Level() + margin;
  loud_blocks_ = loud_blocks_ << 1U | (loud ? 1U : 0U);
  const bool heard = std::popcount(loud_blocks_ & kRecentBlocks) >= kLoudOfRecent;
  quiet_blocks_ = heard ? 0 : quiet_blocks_ + 1;
  ++blocks_seen_;
  if (heard)
    state_ = State::Voice;
  else if (quiet_blocks_ >= kHangover || (state_ == State::Unknown && blocks_seen_ >= kFirstVerdict))
    state_ = State::Silence;
  return state_;
}

} // namespace kelmio
