#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "media/signal_watch.h"
#include "media/signals.h"
#include "media/spandsp.h"

namespace kelmio {
namespace {

using namespace test;

// Writes down what is heard: "S" silence, "V" voice, "T" tone, "B" busy tone, digits as they are.
class Listener : private SignalSink {
public:
  Listener() { watch_.StartWatching(); }

  std::string Hear(const Samples& samples) {
    heard_.clear();
    for (std::size_t i = 0; i < samples.size(); i += kFrame) {
      const auto count = std::min(kFrame, samples.size() - i);
      now_ += static_cast<double>(count) / SignalWatch::kRate;
      watch_.Process(std::span(samples).subspan(i, count));
    }
    return heard_;
  }
  /// The same without silence and voice.
  std::string Tones(const Samples& samples) {
    std::string tones = Hear(samples);
    std::erase_if(tones, [](char c) { return c == 'S' || c == 'V'; });
    return tones;
  }

  SignalWatch& Watch() { return watch_; }
  double Now() const { return now_; }
  double LastChange() const { return last_change_; }
  int Hertz() const { return hertz_; }

private:
  static constexpr std::size_t kFrame = 160;

  void Heard(char what) {
    heard_ += what;
    last_change_ = now_;
  }
  void HeardSilence() override { Heard('S'); }
  void HeardVoice() override { Heard('V'); }
  void HeardTone(int hertz) override { heard_ += 'T', hertz_ = hertz; }
  void HeardBusyTone() override { heard_ += 'B'; }
  void HeardDigit(char digit) override { heard_ += digit; }

  SignalWatch watch_{*this};
  std::string heard_;
  double now_ = 0;
  double last_change_ = 0;
  int hertz_ = 0;
};

TEST(SignalWatch, TellsSilenceAtOnceAndAfterAShortHangover) {
  Listener listener;
  EXPECT_EQ(listener.Hear(Quiet(0.1)), "S");
  EXPECT_EQ(listener.Hear(Quiet(1) + Speech(-25, 3)), "V");
  const double end = listener.Now();
  EXPECT_EQ(listener.Hear(Quiet(2)), "S");
  EXPECT_GT(listener.LastChange() - end, 0.15);
  EXPECT_LT(listener.LastChange() - end, 0.35);
}

TEST(SignalWatch, AWatchThatBeginsLateTellsThePresentState) {
  Listener listener;
  listener.Watch().StopWatching();
  EXPECT_EQ(listener.Hear(Noise(-50, 3) + Mix(Speech(-25, 2), Noise(-50, 2))), "");
  listener.Watch().StartWatching();
  EXPECT_EQ(listener.Hear(Mix(Speech(-25, 1), Noise(-50, 1))), "V");
  EXPECT_EQ(listener.Hear(Noise(-50, 1)), "S");
  listener.Watch().StartWatching();
  EXPECT_EQ(listener.Hear(Noise(-50, 0.02)), "S");
}

TEST(SignalWatch, FollowsTheNoiseOfTheLine) {
  for (const double noise : {-72.0, -60.0, -51.0, -42.0, -35.0}) {
    SCOPED_TRACE(noise);
    Listener listener;
    listener.Hear(ThroughMuLaw(Noise(noise, 6)));
    EXPECT_EQ(listener.Hear(ThroughMuLaw(Noise(noise, 10))), "") << "noise alone changes nothing";
    const Samples speaker = Mix(Noise(noise, 6), Speech(std::max(noise + 12, -52.0), 4));
    EXPECT_EQ(listener.Hear(ThroughMuLaw(speaker)), "VS") << "a soft speaker 12 dB over the noise";
  }
}

TEST(SignalWatch, ASpeakerWithoutPausesStaysVoice) {
  Listener listener;
  EXPECT_EQ(listener.Hear(Mix(Speech(-25, 90), Noise(-55, 90))), "V");
}

TEST(SignalWatch, SteadyHumBecomesSilenceAndNoiseStepsAreLearnt) {
  Listener listener;
  EXPECT_EQ(listener.Hear(Sines({50, 150}, -20, 8)), "VS") << "a loud hum";
  EXPECT_EQ(listener.Hear(Noise(-70, 5)), "");
  EXPECT_EQ(listener.Hear(Noise(-50, 8)), "VS") << "comfort noise switches to a louder one";
  EXPECT_EQ(listener.Hear(Noise(-70, 8)), "");
}

TEST(SignalWatch, ClicksOffsetsAndLostPacketsAreNoVoice) {
  Listener listener;
  listener.Hear(Noise(-60, 5));
  Samples clicks = Noise(-60, 5);
  for (std::size_t i = 2000; i < clicks.size(); i += 4000)
    clicks[i] = 20000, clicks[i + 1] = -20000;
  EXPECT_EQ(listener.Hear(clicks), "");
  Samples gaps = Noise(-45, 6);
  listener.Hear(Noise(-45, 8));
  for (std::size_t i = 4000; i < gaps.size(); i += 8000)
    std::fill_n(gaps.begin() + static_cast<std::ptrdiff_t>(i), 800, std::int16_t{0});
  EXPECT_EQ(listener.Hear(gaps), "");
  Samples offset(16000, 3000);
  Listener fresh;
  EXPECT_EQ(fresh.Hear(Quiet(1) + offset), "S");
}

struct Cadence {
  const char* name;
  std::initializer_list<double> hertz;
  double on, off;
};

// The tones of all countries stand in the corpus.
TEST(SignalWatch, TellsABusyToneOnceAndTheNextOneAgain) {
  const Cadence cadences[] = {{"North America busy", {480, 620}, 0.5, 0.5},
                              {"United Kingdom", {400}, 0.375, 0.375},
                              {"congestion 0.2/0.3", {425}, 0.2, 0.3},
                              {"India, uneven", {400}, 0.75, 0.75},
                              {"handset left off", {1400, 2060, 2450, 2600}, 0.1, 0.1}};
  for (const Cadence& cadence : cadences) {
    SCOPED_TRACE(cadence.name);
    for (const double level : {-12.0, -32.0}) {
      const int turns = cadence.on < 0.15 ? 20 : 10;
      const Samples tone = Repeat(Sines(cadence.hertz, level, cadence.on) + Quiet(cadence.off), turns);
      Listener listener;
      EXPECT_EQ(listener.Tones(Speech(-20, 3) + Quiet(0.4) + ThroughMuLaw(Mix(tone, Noise(-55, 15)))), "B");
      EXPECT_EQ(listener.Tones(Quiet(3) + tone), "B") << "a second occurrence";
    }
  }
  const Samples uk_congestion = Sines({400}, -15, 0.4) + Quiet(0.35) + Sines({400}, -15, 0.225) + Quiet(0.525);
  EXPECT_EQ(Listener().Tones(Repeat(uk_congestion, 6)), "B");
}

TEST(SignalWatch, OtherTonesAreNotBusy) {
  Listener dial;
  EXPECT_EQ(dial.Tones(Sines({350, 440}, -16, 6)), "T");
  EXPECT_TRUE(std::abs(dial.Hertz() - 350) <= 5 || std::abs(dial.Hertz() - 440) <= 5) << dial.Hertz();
  EXPECT_EQ(Listener().Hear(Quiet(2) + Sines({425}, -16, 6)), "ST") << "what a caller's silence ends in is no voice";
  Listener single;
  EXPECT_EQ(single.Tones(Sines({425}, -16, 6)), "T");
  EXPECT_NEAR(single.Hertz(), 425, 3);
  EXPECT_EQ(Listener().Tones(Repeat(Sines({425}, -16, 1) + Quiet(4), 5)), "") << "ringing";
  const Samples uk_ringing = Sines({400, 450}, -16, 0.4) + Quiet(0.2) + Sines({400, 450}, -16, 0.4) + Quiet(2);
  EXPECT_EQ(Listener().Tones(Repeat(uk_ringing, 5)), "");
  const Samples italian_dial = Sines({425}, -16, 0.2) + Quiet(0.2) + Sines({425}, -16, 0.6) + Quiet(1);
  EXPECT_EQ(Listener().Tones(Repeat(italian_dial, 5)), "");
  const Samples special_information = Sines({950}, -16, 0.33) + Sines({1400}, -16, 0.33) + Sines({1800}, -16, 0.33);
  EXPECT_EQ(Listener().Tones(Repeat(special_information + Quiet(1), 5)), "");
}

TEST(SignalWatch, SpeechAndMusicMakeNoTonesAndNoDigits) {
  for (unsigned seed = 1; seed <= 4; ++seed)
    EXPECT_EQ(Listener().Tones(ThroughMuLaw(Speech(-20, 60, seed))), "");
  Samples melody;
  for (const double note : {392.0, 440.0, 494.0, 523.0, 587.0, 523.0, 494.0, 440.0})
    melody = melody + Sines({note, note * 1.5, note * 2}, -20, 0.3) + Quiet(0.1);
  EXPECT_EQ(Listener().Tones(Repeat(melody, 10)), "");
}

TEST(SignalWatch, TellsEachDigitOnce) {
  const std::string keys = "147*2580369#ABCD";
  constexpr double kLow[] = {697, 770, 852, 941};
  constexpr double kHigh[] = {1209, 1336, 1477, 1633};
  Samples dialled = Quiet(0.2);
  for (const std::size_t column : {0U, 1U, 2U, 3U})
    for (const double low : kLow)
      dialled = dialled + Sines({low, kHigh[column]}, -16, column == 1 ? 1.0 : 0.06) + Quiet(0.06);
  EXPECT_EQ(Listener().Tones(ThroughMuLaw(Mix(dialled, Noise(-50, 60)))), keys);
  Listener unwatched;
  unwatched.Watch().StopWatching();
  EXPECT_EQ(unwatched.Hear(dialled), keys);
}

} // namespace
} // namespace kelmio
