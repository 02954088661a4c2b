// Hears busy, congestion and steady tones by how long they sound and pause.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "media/biquad.h"
#include "media/tone_spectrum.h"

namespace kelmio {

/// Countries differ in the frequency and the cadence of busy and congestion tone (0.5/0.5 s of 480 + 620 Hz,
/// 0.25/0.25 s of 425 Hz, 0.375/0.375 s of 400 Hz, ...), but have this in common: the same tone comes and
/// goes in equal turns shorter than those of ringing tone. Three such turns are a busy tone, whatever the
/// country. One thread at a time; no allocation.
class ToneDetector {
public:
  ToneDetector();

  static constexpr std::size_t kBlock = 80; // 10 ms at 8000 samples per second

  struct Finding {
    bool busy = false;    // a busy tone has just been recognised; once for as long as it goes on
    int steady_hertz = 0; // strongest frequency of a steady tone just recognised, else 0; once a tone
  };
  Finding Process(std::span<const std::int16_t, kBlock> block);
  /// Whether a tone sounds now, or did a moment ago in what may be a cadence.
  bool Follows() const { return phase_ != Phase::Idle; }

private:
  static constexpr std::size_t kWindowBlocks = ToneSpectrum::kWindow / kBlock;

  enum class Phase : std::uint8_t { Idle, On, Off };
  struct Turn { // in blocks
    int on = 0;
    int off = 0;
  };

  bool IsLevel() const;
  void Idle();
  Finding On();
  Finding Off();
  bool IsPresent() const;
  /// True when too much at once doesn't fit what is followed, which then is forgotten.
  bool IsTooOdd(bool fits);
  void Reset();
  bool IsBusy() const;

  Biquad high_pass_;
  ToneSpectrum spectrum_;
  std::array<float, ToneSpectrum::kWindow> recent_{};
  std::array<double, 2 * kWindowBlocks> powers_{}; // mean squares of the latest blocks, the last four in `recent_`

  Phase phase_ = Phase::Idle;
  TonePair tone_;         // what is followed while not idle,
  double tone_power_ = 0; // and its mean square
  double hertz_ = 0;      // its strongest frequency, as heard last
  Turn turn_;
  std::array<Turn, 6> turns_{}; // completed ones, newest first
  int turn_count_ = 0;
  int loud_run_ = 0;   // blocks on end at the tone's level
  int odd_blocks_ = 0; // blocks on end that don't fit the tone
  bool busy_told_ = false;
  bool steady_told_ = false;
};

} // namespace kelmio
