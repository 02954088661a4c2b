// Hears the tone that tells of a handset left off.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "media/biquad.h"

namespace kelmio {

/// The off-hook tone of North America: 1400, 2060, 2450 and 2600 Hz at once, 100 ms in turn with 100 ms of pause
/// (Telcordia GR-506). No sound of a caller has its power in these three places alone. One thread at a time; no
/// allocation.
class HowlerDetector {
public:
  static constexpr std::size_t kBlock = 80; // 10 ms at 8000 samples per second

  HowlerDetector();
  /// True when the tone has just been recognised, after some 1.5 s; once for as long as it goes on.
  bool Process(std::span<const std::int16_t, kBlock> block);

private:
  Biquad high_pass_;
  std::array<Biquad, 3> bands_;
  double tone_power_ = 0; // of the loudest block that fits
  int heard_ = 0;         // blocks of the tone, less what doesn't fit
  int absent_ = 0;        // blocks since the last one
  bool told_ = false;
};

} // namespace kelmio
