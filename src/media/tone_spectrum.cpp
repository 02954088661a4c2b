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

std::size_t LobeBegin(std::size_t peak) {
  return peak < kLobe ? 0 : peak - kLobe;
}

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

void ToneSpectrum::Look(std::span<const float, kWindow> samples) {
  std::array<double, kWindow> shaped{};
  double total = 0;
  for (std::size_t i = 0; i < kWindow; ++i) {
    shaped[i] = static_cast<double>(samples[i] * shape_[i]);
    total += shaped[i] * shaped[i];
  }
  constexpr double kShapePower = 0.375; // mean square of the window's shape
  power_ = total / (kShapePower * static_cast<double>(kWindow));
  if (power_ < kLeastPower)
    return;
  // Goertzel: the power of each bin, as its share of the whole (by Parseval, both halves of the spectrum).
  std::array<double, kBins> s1{};
  std::array<double, kBins> s2{};
  for (const double sample : shaped) {
    for (std::size_t bin = 0; bin < kBins; ++bin) {
      const double s0 = sample + coefficients_[bin] * s1[bin] - s2[bin];
      s2[bin] = s1[bin];
      s1[bin] = s0;
    }
  }
  for (std::size_t bin = 0; bin < kBins; ++bin) {
    const double power = s1[bin] * s1[bin] + s2[bin] * s2[bin] - coefficients_[bin] * s1[bin] * s2[bin];
    share_[bin] = power * 2 / (static_cast<double>(kWindow) * total);
  }
}

double ToneSpectrum::LobeShare(std::size_t peak) const {
  double sum = 0;
  for (std::size_t bin = LobeBegin(peak); bin < std::min(peak + kLobe + 1, kBins); ++bin)
    sum += share_[bin];
  return sum;
}

double ToneSpectrum::HertzAt(std::size_t peak) const {
  // For this window's shape the magnitudes beside the peak give the exact place between the bins.
  const double middle = std::sqrt(share_[peak]);
  const double left = peak > 0 ? std::sqrt(share_[peak - 1]) : 0;
  const double right = peak + 1 < kBins ? std::sqrt(share_[peak + 1]) : 0;
  const double ratio = std::max(left, right) / middle;
  const double shift = (2 * ratio - 1) / (1 + ratio);
  const double place = static_cast<double>(peak + kFirstBin) + (right > left ? shift : -shift);
  return place * kBinHertz;
}

double ToneSpectrum::PowerOf(const TonePair& tones) const {
  if (power_ < kLeastPower)
    return 0;
  std::array<bool, kBins> belongs{};
  for (const double hertz : {tones.low, tones.high}) {
    const auto bin = static_cast<std::size_t>(std::lround(std::max(hertz / kBinHertz, 1.0 * kFirstBin))) - kFirstBin;
    for (std::size_t i = LobeBegin(bin); hertz > 0 && i < std::min(bin + kLobe + 1, kBins); ++i)
      belongs[i] = true;
  }
  double sum = 0;
  for (std::size_t bin = 0; bin < kBins; ++bin)
    sum += belongs[bin] ? share_[bin] : 0;
  return sum * power_;
}

std::optional<TonePair> ToneSpectrum::Tones() const {
  if (power_ < kLeastPower)
    return std::nullopt;
  const auto first = static_cast<std::size_t>(std::max_element(share_.begin(), share_.end()) - share_.begin());
  TonePair tones{HertzAt(first), 0, HertzAt(first)};
  double tone_share = LobeShare(first);

  std::array<double, kBins> rest = share_;
  for (std::size_t bin = LobeBegin(first); bin < std::min(first + kLobe + 1, kBins); ++bin)
    rest[bin] = 0;
  const auto second = static_cast<std::size_t>(std::max_element(rest.begin(), rest.end()) - rest.begin());
  const bool is_peak = rest[second] >= kPairShare * share_[first];
  if (is_peak) {
    const double other = HertzAt(second);
    tones.low = std::min(tones.strongest, other);
    tones.high = std::max(tones.strongest, other);
    tone_share = PowerOf(tones) / power_;
  }
  if (tone_share < kPureShare || tones.low < kLowestTone || std::max(tones.low, tones.high) > kHighestTone)
    return std::nullopt;
  return tones;
}

} // namespace kelmio
