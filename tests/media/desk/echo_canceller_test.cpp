#include "media/desk/echo_canceller.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

#include "media/desk/wideband.h"

namespace kelmio {
namespace {

using namespace test;

/// What the microphone hears of `played`: later by `delay_ms`, through a room that rings for an eighth of a second, at
/// half the strength.
Samples ThroughTheRoom(const Samples& played, int delay_ms) {
  constexpr std::size_t kRing = kDeskRate / 8;
  constexpr double kDecay = 6.9; // by 60 dB at the end
  std::mt19937 random(9);
  std::normal_distribution<double> normal(0, 1);
  std::vector<double> room(kRing);
  double power = 0;
  for (std::size_t i = 0; i < kRing; ++i) {
    room[i] = normal(random) * std::exp(-kDecay * static_cast<double>(i) / kRing);
    power += room[i] * room[i];
  }
  Samples heard(played.size());
  const auto delay = static_cast<std::size_t>(delay_ms) * kDeskRate / 1000;
  for (std::size_t at = delay; at < heard.size(); ++at) {
    double sum = 0;
    for (std::size_t i = 0; i < std::min(kRing, at - delay + 1); ++i)
      sum += room[i] * played[at - delay - i];
    heard[at] = static_cast<std::int16_t>(std::lround(0.5 * sum / std::sqrt(power)));
  }
  return heard;
}

/// `hint_ms` is the delay that the device names.
Samples Clean(const Samples& played, Samples heard, int hint_ms) {
  EchoCanceller canceller;
  for (std::size_t at = 0; at + kDeskFrame <= heard.size(); at += kDeskFrame) {
    canceller.Played(std::span(played).subspan(at, kDeskFrame));
    canceller.Clean(std::span(heard).subspan(at, kDeskFrame), hint_ms);
  }
  return heard;
}

TEST(EchoCanceller, TakesOutTheEchoAndLeavesTheVoice) {
  const Samples far = At(kDeskRate, Speech(-20, 12, 1));
  const Samples voice = At(kDeskRate, Quiet(6) + Speech(-24, 6, 2));
  const Samples noise = At(kDeskRate, Noise(-65, 12));
  for (const int delay : {20, 60, 120, 200}) {
    const Samples heard = Mix(Mix(ThroughTheRoom(far, delay), voice), noise);
    for (const int wrong_by : {0, -20, 20}) {
      SCOPED_TRACE(std::to_string(delay) + " ms, told wrong by " + std::to_string(wrong_by));
      const Samples clean = Clean(far, heard, delay + wrong_by);
      const double before = LevelOf(Seconds(heard, kDeskRate, 3, 6));
      const double after = LevelOf(Seconds(clean, kDeskRate, 3, 6));
      EXPECT_GT(before - after, 30);
      // Both speak at once now, and the echo is as loud as the voice.
      const Likeness likeness =
          Compare(Seconds(voice, kDeskRate, 7, 12), Seconds(clean, kDeskRate, 7, 12), kDeskRate / 50);
      EXPECT_GT(likeness.correlation, 0.75);
      EXPECT_NEAR(LevelOf(Seconds(clean, kDeskRate, 7, 12)), -24, 5);
    }
  }
}

TEST(EchoCanceller, QuietensNoiseAndBringsAFaintVoiceUp) {
  const Samples nothing(static_cast<std::size_t>(16) * kDeskRate);
  const Samples heard = At(kDeskRate, Mix(Noise(-50, 16), Quiet(8) + Speech(-34, 8)));
  const Samples clean = Clean(nothing, heard, 60);
  EXPECT_LT(LevelOf(Seconds(clean, kDeskRate, 5, 8)), -55);
  EXPECT_GT(LevelOf(Seconds(clean, kDeskRate, 12, 16)), -30);
}

} // namespace
} // namespace kelmio
