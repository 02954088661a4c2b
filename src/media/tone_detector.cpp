#include "media/tone_detector.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

namespace kelmio {
namespace {

// Times in blocks of 10 ms.
constexpr int kShortestTurn = 13; // 0.15 s, less what edges cost
constexpr int kLongestTurn = 78;  // 0.75 s, and what edges add
constexpr int kTurnSlack = 3;     // between turns that count as equal
constexpr int kDropout = 4;       // a gap so short does not end a tone
constexpr int kEnd = 100;         // a pause so long ends a tone and all that belongs to it
constexpr int kSteady = 120;      // a tone so long is steady
constexpr int kOddAllowed = 5;    // in one turn: clicks, the edges of the tone
constexpr int kTurnsOfBusy = 3;

// Decibels around the tone's level.
constexpr double kSameLevel = 6.0;
constexpr double kSteadyLevel = 4.0; // from block to block, where two frequencies beat
constexpr double kQuiet = 12.0;

bool IsAlike(int a, int b) {
  return std::abs(a - b) <= kTurnSlack;
}

bool IsTurnOfBusy(int blocks) {
  return blocks >= kShortestTurn && blocks <= kLongestTurn;
}

double LevelOf(std::span<const std::int16_t> samples) {
  double sum = 0;
  for (const std::int16_t sample : samples)
    sum += static_cast<double>(sample) * sample;
  return 10 * std::log10(sum / static_cast<double>(samples.size()) + 0.01);
}

} // namespace

ToneDetector::Finding ToneDetector::Process(std::span<const std::int16_t, kBlock> block) {
  std::shift_left(recent_.begin(), recent_.end(), static_cast<std::ptrdiff_t>(kBlock));
  std::copy(block.begin(), block.end(), recent_.end() - static_cast<std::ptrdiff_t>(kBlock));
  const double level = LevelOf(block);
  std::shift_left(levels_.begin(), levels_.end(), 1);
  levels_.back() = level;
  switch (phase_) {
  case Phase::On:
    return On(level);
  case Phase::Off:
    return Off(level);
  default:
    Idle(level);
    return {};
  }
}

void ToneDetector::Idle(double level) {
  // Most sound is told from a tone by its level alone, and a tone is looked at once it fills the window.
  const auto [lowest, highest] = std::minmax_element(levels_.begin(), levels_.end());
  if (*highest - *lowest > kSteadyLevel)
    return;
  const auto tone = spectrum_.Analyse(recent_);
  if (!tone)
    return;
  phase_ = Phase::On;
  tone_ = *tone;
  tone_level_ = level;
  turn_ = {static_cast<int>(kWindowBlocks), 0};
  loud_run_ = static_cast<int>(kWindowBlocks);
  odd_blocks_ = 0;
}

ToneDetector::Finding ToneDetector::On(double level) {
  if (level < tone_level_ - kSameLevel) {
    phase_ = Phase::Off;
    turn_.off = 1;
    loud_run_ = 0;
    return {};
  }
  ++turn_.on;
  ++loud_run_;
  bool fits = level <= tone_level_ + kSameLevel;
  if (fits && loud_run_ >= static_cast<int>(kWindowBlocks)) {
    const auto tone = spectrum_.Analyse(recent_);
    fits = tone && IsSameTone(*tone, tone_);
  }
  if (!fits && ++odd_blocks_ > kOddAllowed) {
    Reset();
    return {};
  }
  if (turn_.on < kSteady || steady_told_)
    return {};
  steady_told_ = true;
  return {false, static_cast<int>(std::lround(tone_.strongest))};
}

ToneDetector::Finding ToneDetector::Off(double level) {
  const bool quiet = level < tone_level_ - kQuiet;
  if (level < tone_level_ - kSameLevel) {
    ++turn_.off;
    if (turn_.off > kEnd || (!quiet && ++odd_blocks_ > kOddAllowed))
      Reset();
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
  // Turns either all equal each other, or every second one does, as in a congestion tone of two lengths.
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
  return repeats(1, kTurnsOfBusy) || repeats(2, static_cast<int>(turns_.size()));
}

void ToneDetector::Reset() {
  phase_ = Phase::Idle;
  turn_count_ = 0;
  busy_told_ = false;
  steady_told_ = false;
}

} // namespace kelmio
