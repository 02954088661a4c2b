// The sound of key tones, and the numbers that a paste reads.
#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <string>

#include "calls/modToneBox.h"
#include "calls/numeric_text.h"

namespace kelmio {
namespace {

using testing::Optional;

int Sample(const WaveImage& wave, std::size_t index) {
  const std::size_t at = modWAV::kHeaderBytes + 2 * index;
  return static_cast<std::int16_t>(std::to_integer<int>(wave.at(at)) | std::to_integer<int>(wave.at(at + 1)) << 8);
}

TEST(TonesTest, FloorsEachSampleAndSaysTheSameOnBothSides) {
  const WaveImage wave = modToneBox::MakeTonePair({697, 1209}, 0.25);
  ASSERT_EQ(wave.size(), 8044U);
  std::string header;
  for (std::size_t at = 0; at < 44; ++at)
    header += static_cast<char>(wave[at]);
  EXPECT_EQ(header, std::string("RIFF\x64\x1F\0\0WAVEfmt \x10\0\0\0\1\0\2\0\x40\x1F\0\0\0\x7D\0\0\4\0\x10\0data"
                                "\x40\x1F\0\0",
                                44));
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

TEST(TonesTest, LaysTheKeysOverTheStandardsGridRowByRow) {
  const int low[] = {697, 770, 852, 941};
  const int high[] = {1209, 1336, 1477, 1633};
  for (std::int16_t key = 1; key <= 16; ++key) {
    EXPECT_EQ(modToneBox::PairOfKey(key).low, low[(key - 1) / 4]);
    EXPECT_EQ(modToneBox::PairOfKey(key).high, high[(key - 1) % 4]);
  }
}

TEST(NumericTextTest, ReadsTheNumberAtTheBeginning) {
  const std::pair<const char*, const char*> cases[] = {
      {"0044 20 7946", "44207946"},
      {"+49 30\t12\n3", "4930123"},
      {"(555) 12", "0"},
      {"", "0"},
      {"-0", "0"},
      {"-12a", "-12"},
      {".50", "0.5"},
      {"5D-1x", "0.5"},
      {"1e+", "1"},
      {"1234567890123456", "1.23456789012346E+15"},
  };
  for (const auto& [text, number] : cases)
    EXPECT_THAT(NumericText(text), Optional(std::string(number))) << text;
  EXPECT_EQ(NumericText("1e999"), std::nullopt);
}

} // namespace
} // namespace kelmio
