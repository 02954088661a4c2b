// Finds one or two pure tones in a short stretch of sound.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace kelmio {

/// One or two frequencies in hertz, the lower one first; `high` is 0 when there is one.
struct TonePair {
  double low = 0;
  double high = 0;
  double strongest = 0;
};

/// True when the same tones may have made both.
bool IsSameTone(const TonePair& a, const TonePair& b);

/// Looks where call progress tones lie, from 300 to 700 hertz (ITU-T E.180 and its list of national tones).
class ToneSpectrum {
public:
  static constexpr std::size_t kWindow = 320; // 40 ms at 8000 samples per second

  ToneSpectrum();
  /// The window that the rest is about.
  void Look(std::span<const float, kWindow> samples);
  /// Nothing unless almost all power of the window is in one or two steady frequencies of the range.
  std::optional<TonePair> Tones() const;
  /// Mean square of the window, and of the part of it that lies at the frequencies of `tones`.
  double Power() const { return power_; }
  double PowerOf(const TonePair& tones) const;

private:
  /// The share of all power that belongs to a tone at this bin.
  double LobeShare(std::size_t peak) const;
  double HertzAt(std::size_t peak) const;

  static constexpr std::size_t kFirstBin = 11; // 275 Hz
  static constexpr std::size_t kBins = 20;     // up to 750 Hz, in steps of 25 Hz

  std::array<float, kWindow> shape_{};
  std::array<double, kBins> coefficients_{};
  double power_ = 0;
  std::array<double, kBins> share_{}; // of each bin in the whole power
};

} // namespace kelmio
