#include "media/desk/drift_buffer.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>
#include <random>

#include "media/desk/wideband.h"

namespace kelmio {
namespace {

using namespace test;

constexpr double kAmplitude = 10000;
constexpr double kStep = 2 * std::numbers::pi * 440 / kDeskRate; // of the tone's phase

DriftBuffer::Clock::time_point now;

/// A tone goes in by one clock and comes out by another, in simulated time.
class Clocks {
public:
  Clocks(double ppm, std::uint32_t longest_burst)
      : buffer([] { return now; }), put_interval_(0.02 / (1 + ppm * 1e-6)), bursts_(longest_burst) {}

  /// Counts broken frames and the most that was held anew.
  void Run(double seconds, bool putting = true, bool taking = true) {
    broken_frames = 0;
    longest = 0;
    for (const double end = now_ + seconds; now_ < end; now_ += 0.02) {
      for (; next_put_ <= now_; next_put_ += put_interval_) {
        if (burst_ == 0)
          burst_ = 1 + static_cast<std::uint32_t>(random_()) % bursts_;
        ++late_frames_;
        if (--burst_ != 0 || !putting)
          continue;
        SetTime(next_put_);
        for (; late_frames_ > 0; --late_frames_)
          Put();
      }
      SetTime(now_);
      if (taking)
        Take();
    }
  }

  DriftBuffer buffer;
  int broken_frames = 0;   // with less than the tone's power
  double steepest = 0;     // the largest step between neighbours
  std::size_t longest = 0; // most samples held after a take

private:
  static void SetTime(double seconds) {
    now = DriftBuffer::Clock::time_point(
        std::chrono::duration_cast<DriftBuffer::Clock::duration>(std::chrono::duration<double>(100 + seconds)));
  }
  void Put() {
    Samples frame(kDeskFrame);
    for (auto& sample : frame)
      sample = static_cast<std::int16_t>(std::lround(kAmplitude * std::sin(kStep * static_cast<double>(put_++))));
    buffer.Put(frame, kDeskRate);
  }
  void Take() {
    Samples frame(kDeskFrame);
    buffer.Take(frame, kDeskRate);
    for (const std::int16_t sample : frame) {
      steepest = std::max(steepest, std::abs(static_cast<double>(sample) - last_));
      last_ = sample;
    }
    // The level of a tone, and that of a frame with a millisecond missing, differ by more.
    if (std::abs(LevelOf(frame) - 20 * std::log10(kAmplitude / 32768 / std::numbers::sqrt2)) > 0.2)
      ++broken_frames;
    longest = std::max(longest, buffer.Held());
  }

  const double put_interval_;
  const std::uint32_t bursts_;
  std::mt19937 random_{3};
  double now_ = 0;
  double next_put_ = 0.007;
  std::uint32_t burst_ = 0; // frames until one is delivered, with those before it
  int late_frames_ = 0;
  std::uint64_t put_ = 0;
  double last_ = 0;
};

constexpr double kTonesSteepest = kAmplitude * kStep;
/// A break is smoothed over 80 samples.
constexpr double kBreaksSteepest = kTonesSteepest + 2 * kAmplitude / 80;

class Drift : public ::testing::TestWithParam<std::pair<double, std::uint32_t>> {};

TEST_P(Drift, LosesNothingInTenMinutesAndStaysShort) {
  const auto [ppm, longest_burst] = GetParam();
  Clocks clocks(ppm, longest_burst);
  clocks.Run(5); // until the buffer knows how late frames come
  clocks.steepest = 0;
  clocks.Run(25);
  EXPECT_EQ(clocks.broken_frames, 0);
  clocks.Run(570);
  EXPECT_EQ(clocks.broken_frames, 0);
  EXPECT_LT(clocks.steepest, kTonesSteepest * 1.02) << "no click, and no change of pitch to speak of";
  EXPECT_LE(clocks.longest, kDeskFrame * (longest_burst == 1 ? 2 : 5));
}

INSTANTIATE_TEST_SUITE_P(Clocks, Drift,
                         ::testing::Values(std::pair{0.0, 1U}, std::pair{300.0, 1U}, std::pair{-300.0, 1U},
                                           std::pair{300.0, 3U}, std::pair{-300.0, 3U}));

TEST(DriftBuffer, IsSilentUntilItHasItsReserveAndWhenNothingComes) {
  DriftBuffer buffer;
  Samples frame(kDeskFrame, 1);
  buffer.Put(Samples(kDeskFrame, 5000), kDeskRate);
  buffer.Take(frame, kDeskRate);
  EXPECT_EQ(frame, Samples(kDeskFrame));
  Clocks clocks(0, 1);
  clocks.Run(2);
  clocks.Run(2, false);
  EXPECT_GE(clocks.broken_frames, 98);
  clocks.Run(0.1);
  clocks.Run(10);
  EXPECT_EQ(clocks.broken_frames, 0);
  EXPECT_LT(clocks.steepest, kBreaksSteepest);
}

TEST(DriftBuffer, DropsWhatAStallOfEitherSideHasPiledUp) {
  Clocks clocks(0, 1);
  clocks.Run(2);
  clocks.Run(1, false); // what was not put in time comes all at once
  clocks.Run(0.5);
  EXPECT_LE(clocks.longest, 2 * kDeskFrame);
  clocks.Run(10, true, false);
  clocks.Run(0.5);
  EXPECT_LE(clocks.longest, 2 * kDeskFrame);
  clocks.Run(20);
  EXPECT_EQ(clocks.broken_frames, 0);
  EXPECT_LE(clocks.buffer.Held(), 2 * kDeskFrame);
  EXPECT_LT(clocks.steepest, kBreaksSteepest);
}

} // namespace
} // namespace kelmio
