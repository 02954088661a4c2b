// The wave images of key tones and beep, byte by byte, and the numbers that a paste reads.
#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <optional>

#include "calls/modToneBox.h"
#include "calls/numeric_text.h"
#include "fakes/fake_desktop.h"

namespace kelmio {
namespace {

using testing::ElementsAre;
using testing::Optional;

std::uint32_t Number(const WaveImage& wave, std::size_t at, std::size_t bytes) {
  std::uint32_t number = 0;
  for (std::size_t i = 0; i < bytes; ++i)
    number |= std::to_integer<std::uint32_t>(wave.at(at + i)) << (8 * i);
  return number;
}

int Sample(const WaveImage& wave, std::size_t index) {
  return static_cast<std::int16_t>(Number(wave, modWAV::kHeaderBytes + 2 * index, 2));
}

std::string Text(const WaveImage& wave, std::size_t at) {
  std::string text;
  for (std::size_t i = 0; i < 4; ++i)
    text += static_cast<char>(wave.at(at + i));
  return text;
}

TEST(TonesTest, WritesTheHeaderOfAKeyToneAndOfTheBeep) {
  for (const auto& [seconds, data] : {std::pair{0.25, 8000U}, {0.6, 19200U}}) {
    const WaveImage wave = modToneBox::MakeTonePair({1100, 1100}, seconds);
    ASSERT_EQ(wave.size(), 44 + data);
    EXPECT_THAT((std::vector{Text(wave, 0), Text(wave, 8), Text(wave, 12), Text(wave, 36)}),
                ElementsAre("RIFF", "WAVE", "fmt ", "data"));
    EXPECT_EQ(Number(wave, 4, 4), data + 36);
    EXPECT_EQ(Number(wave, 16, 4), 16U);
    EXPECT_EQ(Number(wave, 20, 2), 1U);
    EXPECT_EQ(Number(wave, 22, 2), 2U);
    EXPECT_EQ(Number(wave, 24, 4), 8000U);
    EXPECT_EQ(Number(wave, 28, 4), 32000U);
    EXPECT_EQ(Number(wave, 32, 2), 4U);
    EXPECT_EQ(Number(wave, 34, 2), 16U);
    EXPECT_EQ(Number(wave, 40, 4), data);
  }
}

TEST(TonesTest, FloorsEachSampleAndSaysTheSameOnBothSides) {
  const WaveImage wave = modToneBox::MakeTonePair({697, 1209}, 0.25);
  EXPECT_EQ(Sample(wave, 0), 0);
  int lowest = 0;
  int highest = 0;
  for (std::size_t frame = 0; frame < 2000; ++frame) {
    const double t = static_cast<double>(frame) / 8000;
    const double sum = 0.25 * (std::sin(2 * std::numbers::pi * 697 * t) + std::sin(2 * std::numbers::pi * 1209 * t));
    // The tolerance is for a value on the very edge between two numbers; rounding towards zero would miss by one.
    EXPECT_NEAR(Sample(wave, 2 * frame), 0.5 * sum * 32767 - 0.5, 0.5 + 1e-6) << frame;
    EXPECT_EQ(Sample(wave, 2 * frame), Sample(wave, 2 * frame + 1));
    lowest = std::min(lowest, Sample(wave, 2 * frame));
    highest = std::max(highest, Sample(wave, 2 * frame));
  }
  EXPECT_NEAR(highest, 8191, 100);
  EXPECT_NEAR(lowest, -8191, 100);
}

TEST(TonesTest, KnowsEightBitsAndSoundOnOneSide) {
  struct Case {
    ChannelMode mode;
    std::vector<std::uint32_t> second_frame; // of a tone whose second sample is at its peak
  };
  const Case cases[] = {{ChannelMode::Mono, {254}},
                        {ChannelMode::Stereo, {254, 127}},
                        {ChannelMode::StereoLeftOnly, {254, 0}},
                        {ChannelMode::StereoRightOnly, {0, 127}}};
  for (const Case& c : cases) {
    WaveImage wave;
    std::vector<ToneSpec> tones = {{2000, 0, 1.0, 0.0}}; // a quarter of a turn each sample
    const WaveFormatState format = modWAV::WaveInit(wave, 8000, 8, c.mode, 1.0, 1.0);
    EXPECT_EQ(Number(wave, 40, 4), 0U);
    modWAV::WaveAddTones(wave, format, tones, 0.0005);
    const std::size_t channels = c.second_frame.size();
    ASSERT_EQ(wave.size(), 44 + 4 * channels);
    for (std::size_t channel = 0; channel < channels; ++channel)
      EXPECT_EQ(Number(wave, 44 + channels + channel, 1), c.second_frame[channel]) << channel;
  }
  WaveImage odd;
  std::vector<ToneSpec> tone = {{1000, 0, 1.0, 1.0}};
  modWAV::WaveAddTones(odd, modWAV::WaveInit(odd, 8000, 12, ChannelMode::Stereo, 1, 1), tone, 0.25);
  EXPECT_EQ(odd.size(), modWAV::kHeaderBytes);
  EXPECT_EQ(Number(odd, 32, 4), 0U) << "neither a block size nor bits are written for 12 bits";
}

TEST(TonesTest, LaysTheKeysOverTheStandardsGridRowByRow) {
  const int low[] = {697, 770, 852, 941};
  const int high[] = {1209, 1336, 1477, 1633};
  for (std::int16_t key = 1; key <= 16; ++key) {
    EXPECT_EQ(modToneBox::PairOfKey(key).low, low[(key - 1) / 4]);
    EXPECT_EQ(modToneBox::PairOfKey(key).high, high[(key - 1) % 4]);
  }
  FakeWaveImagePlayer player;
  modToneBox::PlayTonePair(player, 1100, 1100, 0.6);
  EXPECT_EQ(player.stops, 1);
  EXPECT_THAT(player.played, ElementsAre(modToneBox::MakeTonePair({1100, 1100}, 0.6)));
}

TEST(NumericTextTest, ReadsTheNumberAtTheBeginning) {
  const std::pair<const char*, const char*> cases[] = {
      {"0044 20 7946", "44207946"},
      {"555-1234", "555"},
      {"+49 30\t12\n3", "4930123"},
      {"(555) 12", "0"},
      {"", "0"},
      {"-", "0"},
      {"-0", "0"},
      {"-12a", "-12"},
      {".50", "0.5"},
      {"1e5", "100000"},
      {"5D-1x", "0.5"},
      {"1e+", "1"},
      {"123456789012345", "123456789012345"},
      {"1234567890123456", "1.23456789012346E+15"},
  };
  for (const auto& [text, number] : cases)
    EXPECT_THAT(NumericText(text), Optional(std::string(number))) << text;
  EXPECT_EQ(NumericText("1e999"), std::nullopt);
}

} // namespace
} // namespace kelmio
