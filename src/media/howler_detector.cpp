#include "media/howler_detector.h"

#include <algorithm>

namespace kelmio {
namespace {

constexpr double kRate = 8000;
// The two highest tones share a band. Each is wide enough for frequencies that are 2 % off.
constexpr double kNarrow = 12;
constexpr double kWide = 5;
// Of all power, each band's share at least; equal tones give a quarter to each.
constexpr double kLeastOfOne = 0.1;
constexpr double kLeastOfTwo = 0.15;
constexpr double kLeastOfAll = 0.65;
// What is so much softer than the tone is its pause.
constexpr double kQuiet = 0.25;
constexpr double kHumBelow = 250.0; // hertz
// Below some -45 dBm0 (mean square of 16-bit samples) nothing is a tone.
constexpr double kLeastPower = 3000.0;

// In blocks of 10 ms.
constexpr int kEnough = 60;
constexpr int kGone = 100;

} // namespace

HowlerDetector::HowlerDetector()
    : high_pass_(Biquad::HighPass(kHumBelow, kRate)), bands_{Biquad::BandPass(1400, kNarrow, kRate),
                                                             Biquad::BandPass(2060, kNarrow, kRate),
                                                             Biquad::BandPass(2525, kWide, kRate)} {}

bool HowlerDetector::Process(std::span<const std::int16_t, kBlock> block) {
  std::array<double, 3> powers{};
  double power = 0;
  for (const std::int16_t sample : block) {
    const double in = high_pass_.Process(sample);
    power += in * in;
    for (std::size_t band = 0; band < bands_.size(); ++band) {
      const double out = bands_[band].Process(in);
      powers[band] += out * out;
    }
  }
  const bool loud = power > kLeastPower * static_cast<double>(kBlock);
  const bool fits = loud && powers[0] > kLeastOfOne * power && powers[1] > kLeastOfOne * power &&
                    powers[2] > kLeastOfTwo * power && powers[0] + powers[1] + powers[2] > kLeastOfAll * power;
  absent_ = fits ? 0 : absent_ + 1;
  if (absent_ > kGone) {
    heard_ = 0;
    tone_power_ = 0;
    told_ = false;
  }
  if (fits) {
    ++heard_;
    tone_power_ = std::max(tone_power_, power);
  } else if (power > kQuiet * tone_power_)
    heard_ = std::max(0, heard_ - 1);
  if (told_ || heard_ < kEnough)
    return false;
  told_ = true;
  return true;
}

} // namespace kelmio
