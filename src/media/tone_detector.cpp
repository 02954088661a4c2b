#include "media/tone_detector.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <numeric>

namespace kelmio {
namespace {

// Times in blocks of 10 ms.
constexpr int kShortestTurn = 11; // 0.15 s, less what edges and an exchange's clock cost
constexpr int kLongestTurn = 86;  // 0.75 s, and what they add
constexpr int kTurnSlack = 4;     // between turns that count as equal
constexpr int kDropout = 4;       // a gap so short does not end a tone
constexpr int kEnd = 115;         // a pause so long ends a tone and all that belongs to it
constexpr int kSteady = 120;      // a tone so long is steady
constexpr int kOddAllowed = 8;    // on end: a click, a lost packet, the edges of the tone
constexpr int kTurnsOfBusy = 3;

constexpr double kHumBelow = 250.0; // hertz: mains hum and its loudest harmonics

// Between the loudest and the softest block of a window, where two frequencies beat; and between two windows, where
// they beat so slowly that one block has nothing of them (Australia: 413 and 438 Hz).
constexpr double kSteadyBlocks = 2.5;
constexpr double kSteadyWindows = 1.5;
// In a window of 40 ms: a tone of 700 Hz has 56, with noise 10 dB below it some more, and noise alone some 160.
constexpr int kMostCrossings = 100;
// Shares of the tone's power.
constexpr double kPresent = 0.05; // Australia sends a tone at two levels, 10 dB apart
constexpr double kMostOfWindow = 0.5;
constexpr double kLouder = 4.0;
constexpr double kQuiet = 0.25;

bool IsAlike(int a, int b) {
  return std::abs(a - b) <= kTurnSlack;
}

bool IsTurnOfBusy(int blocks) {
  return blocks >= kShortestTurn && blocks <= kLongestTurn;
}

int Crossings(std::span<const float> samples) {
  int count = 0;
  for (std::size_t i = 1; i < samples.size(); ++i)
    count += (samples[i] < 0) != (samples[i - 1] < 0) ? 1 : 0;
  return count;
}

double PowerOf(std::span<const float> samples) {
  double sum = 0;
  for (const float sample : samples)
    sum += static_cast<double>(sample) * static_cast<double>(sample);
  return sum / static_cast<double>(samples.size());
}

} // namespace

ToneDetector::ToneDetector() : high_pass_(Biquad::HighPass(kHumBelow, 8000.0)) {}

ToneDetector::Finding ToneDetector::Process(std::span<const std::int16_t, kBlock> block) {
  std::shift_left(recent_.begin(), recent_.end(), static_cast<std::ptrdiff_t>(kBlock));
  const auto newest = std::span(recent_).last<kBlock>();
  for (std::size_t i = 0; i < kBlock; ++i)
    newest[i] = static_cast<float>(high_pass_.Process(block[i]));
  std::shift_left(powers_.begin(), powers_.end(), 1);
  powers_.back() = PowerOf(newest);
  switch (phase_) {
  case Phase::On:
    return On();
  case Phase::Off:
    return Off();
  default:
    Idle();
    return {};
  }
}

bool ToneDetector::IsLevel() const {
  const auto before = std::span(powers_).first<kWindowBlocks>();
  const auto window = std::span(powers_).last<kWindowBlocks>();
  const auto [lowest, highest] = std::minmax_element(window.begin(), window.end());
  if (*highest <= kSteadyBlocks * *lowest)
    return true;
  const auto [softer, louder] = std::minmax(
      {std::accumulate(before.begin(), before.end(), 0.0), std::accumulate(window.begin(), window.end(), 0.0)});
  return louder <= kSteadyWindows * softer;
}

void ToneDetector::Idle() {
  // Most sound is told from a tone by its level alone, and noise by how often it changes its sign; a tone is looked at
  // once it fills the window.
  if (!IsLevel() || Crossings(recent_) > kMostCrossings)
    return;
  spectrum_.Look(recent_);
  const auto tone = spectrum_.Tones();
  if (!tone)
    return;
  phase_ = Phase::On;
  tone_ = *tone;
  tone_power_ = spectrum_.PowerOf(tone_);
  turn_ = {static_cast<int>(kWindowBlocks) / 2, 0}; // as if the tone had begun in the middle of the window
  loud_run_ = static_cast<int>(kWindowBlocks);
  odd_blocks_ = 0;
}

bool ToneDetector::IsPresent() const {
  const double power = spectrum_.PowerOf(tone_);
  return power > kPresent * tone_power_ && power > kMostOfWindow * spectrum_.Power();
}

bool ToneDetector::IsTooOdd(bool fits) {
  odd_blocks_ = fits ? 0 : odd_blocks_ + 1;
  if (odd_blocks_ <= kOddAllowed)
    return false;
  Reset();
  return true;
}

ToneDetector::Finding ToneDetector::On() {
  spectrum_.Look(recent_);
  if (!IsPresent() && spectrum_.Power() < kQuiet * tone_power_) {
    phase_ = Phase::Off;
    turn_.off = 1;
    loud_run_ = 0;
    return {};
  }
  ++turn_.on;
  ++loud_run_;
  bool fits = spectrum_.Power() < kLouder * tone_power_;
  if (fits && loud_run_ >= static_cast<int>(kWindowBlocks)) {
    const auto tone = spectrum_.Tones();
    fits = tone && IsSameTone(*tone, tone_);
    if (fits)
      hertz_ = tone->strongest;
  }
  if (IsTooOdd(fits) || turn_.on < kSteady || steady_told_)
    return {};
  steady_told_ = true;
  return {false, static_cast<int>(std::lround(hertz_))};
}

ToneDetector::Finding ToneDetector::Off() {
  spectrum_.Look(recent_);
  if (!IsPresent()) {
    ++turn_.off;
    if (turn_.off > kEnd)
      Reset();
    else
      IsTooOdd(spectrum_.Power() < kQuiet * tone_power_);
    return {};
  }
  phase_ = Phase::On;
  loud_run_ = 1;
  if (turn_.off <= kDropout) {
    turn_.on += turn_.off + 1;
    turn_.off = 0;
    return {};
  }
  std::shift_right(turns_.begin(), turns_.end(), 1);
  turns_[0] = turn_;
  turn_count_ = std::min(turn_count_ + 1, static_cast<int>(turns_.size()));
  turn_ = {1, 0};
  odd_blocks_ = 0;
  steady_told_ = false;
  if (busy_told_ || !IsBusy())
    return {};
  busy_told_ = true;
  return {true, 0};
}

bool ToneDetector::IsBusy() const {
  // Turns either all equal each other, or every second or third one does, as in a congestion tone of more lengths.
  const auto repeats = [this](int distance, int turns) {
    if (turn_count_ < turns)
      return false;
    for (int i = 0; i < turns; ++i) {
      const Turn& turn = turns_[static_cast<std::size_t>(i)];
      if (!IsTurnOfBusy(turn.on) || !IsTurnOfBusy(turn.off))
        return false;
      if (i < distance)
        continue;
      const Turn& later = turns_[static_cast<std::size_t>(i - distance)];
      if (!IsAlike(turn.on, later.on) || !IsAlike(turn.off, later.off))
        return false;
    }
    return true;
  };
  return repeats(1, kTurnsOfBusy) || repeats(2, 2 * 2) || repeats(3, 2 * 3);
}

void ToneDetector::Reset() {
  phase_ = Phase::Idle;
  turn_count_ = 0;
  busy_told_ = false;
  steady_told_ = false;
}

} // namespace kelmio
