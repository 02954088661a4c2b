#include "media/tone_spectrum.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace kelmio {
namespace {

constexpr double kBinHertz = 25.0;
constexpr double kLowestTone = 300.0;
constexpr double kHighestTone = 700.0;
// A tone's power falls into its own bin and two on each side, by the width of the window's main lobe.
constexpr std::size_t kLobe = 2;
// Of all power, so much must be the tones'. Voiced speech spreads over more harmonics.
constexpr double kPureShare = 0.85;
// The weaker of a pair is within 10 dB of the stronger.
constexpr double kPairShare = 0.1;
// Below some -45 dBm0 (mean square of 16-bit samples) nothing is a tone.
constexpr double kLeastPower = 3000.0;
constexpr double kSameHertz = 15.0;

} // namespace

bool IsSameTone(const TonePair& a, const TonePair& b) {
  return std::abs(a.low - b.low) <= kSameHertz && std::abs(a.high - b.high) <= kSameHertz;
}

ToneSpectrum::ToneSpectrum() {
  constexpr double kTurn = 2 * std::numbers::pi / static_cast<double>(kWindow);
  for (std::size_t i = 0; i < kWindow; ++i)
    shape_[i] = static_cast<float>(0.5 - 0.5 * std::cos(kTurn * static_cast<double>(i)));
  for (std::size_t bin = 0; bin < kBins; ++bin)
    coefficients_[bin] = 2 * std::cos(kTurn * static_cast<double>(bin + kFirstBin));
}

std::optional<TonePair> ToneSpectrum::Analyse(std::span<const float, kWindow> samples) const {
  std::array<double, kWindow> shaped{};
  double total = 0;
  for (std::size_t i = 0; i < kWindow; ++i) {
    shaped[i] = static_cast<double>(samples[i] * shape_[i]);
    total += shaped[i] * shaped[i];
  }
  constexpr double kShapePower = 0.375; // mean square of the window's shape
  if (total < kLeastPower * kShapePower * static_cast<double>(kWindow))
    return std::nullopt;

  // Goertzel: the power of each bin, as its share of the whole (by Parseval, both halves of the spectrum).
  std::array<double, kBins> share{};
  for (std::size_t bin = 0; bin < kBins; ++bin) {
    double s1 = 0;
    double s2 = 0;
    for (const double sample : shaped) {
      const double s0 = sample + coefficients_[bin] * s1 - s2;
      s2 = s1;
      s1 = s0;
    }
    const double power = s1 * s1 + s2 * s2 - coefficients_[bin] * s1 * s2;
    share[bin] = power * 2 / (static_cast<double>(kWindow) * total);
  }

  const auto lobe_begin = [](std::size_t peak) { return peak < kLobe ? 0 : peak - kLobe; };
  const auto lobe_end = [](std::size_t peak) { return std::min(peak + kLobe + 1, kBins); };
  const auto lobe_share = [&](std::size_t peak) {
    double sum = 0;
    for (std::size_t bin = lobe_begin(peak); bin < lobe_end(peak); ++bin)
      sum += share[bin];
    return sum;
  };
  const auto hertz = [&](std::size_t peak) {
    // For this window's shape the magnitudes beside the peak give the exact place between the bins.
    const double middle = std::sqrt(share[peak]);
    const double left = peak > 0 ? std::sqrt(share[peak - 1]) : 0;
    const double right = peak + 1 < kBins ? std::sqrt(share[peak + 1]) : 0;
    const double ratio = std::max(left, right) / middle;
    const double shift = (2 * ratio - 1) / (1 + ratio);
    const double place = static_cast<double>(peak + kFirstBin) + (right > left ? shift : -shift);
    return place * kBinHertz;
  };

  const auto first = static_cast<std::size_t>(std::max_element(share.begin(), share.end()) - share.begin());
  const double first_share = lobe_share(first);
  TonePair tones{hertz(first), 0, hertz(first)};
  double tone_share = first_share;

  std::array<double, kBins> rest = share;
  std::fill(rest.begin() + static_cast<std::ptrdiff_t>(lobe_begin(first)),
            rest.begin() + static_cast<std::ptrdiff_t>(lobe_end(first)), 0.0);
  const auto second = static_cast<std::size_t>(std::max_element(rest.begin(), rest.end()) - rest.begin());
  const bool is_peak = rest[second] >= kPairShare * share[first];
  if (is_peak) {
    const double other = hertz(second);
    tones.low = std::min(tones.strongest, other);
    tones.high = std::max(tones.strongest, other);
    tone_share += lobe_share(second);
  }
  if (tone_share < kPureShare || tones.low < kLowestTone || std::max(tones.low, tones.high) > kHighestTone)
    return std::nullopt;
  return tones;
}

} // namespace kelmio
