// Hears busy, congestion and steady tones by how long they sound and pause.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "media/tone_spectrum.h"

namespace kelmio {

/// Countries differ in the frequency and the cadence of busy and congestion tone (0.5/0.5 s of 480 + 620 Hz,
/// 0.25/0.25 s of 425 Hz, 0.375/0.375 s of 400 Hz, ...), but have this in common: the same tone comes and
/// goes in equal turns shorter than those of ringing tone. Three such turns are a busy tone, whatever the
/// country. One thread at a time; no allocation.
class ToneDetector {
public:
  static constexpr std::size_t kBlock = 80; // 10 ms at 8000 samples per second

  struct Finding {
    bool busy = false;    // a busy tone has just been recognised; once for as long as it goes on
    int steady_hertz = 0; // strongest frequency of a steady tone just recognised, else 0; once a tone
  };
  Finding Process(std::span<const std::int16_t, kBlock> block);

private:
  static constexpr std::size_t kWindowBlocks = ToneSpectrum::kWindow / kBlock;

  enum class Phase : std::uint8_t { Idle, On, Off };
  struct Turn { // in blocks
    int on = 0;
    int off = 0;
  };

  void Idle(double level);
  Finding On(double level);
  Finding Off(double level);
  void Reset();
  bool IsBusy() const;

  ToneSpectrum spectrum_;
  std::array<float, ToneSpectrum::kWindow> recent_{};
  std::array<double, kWindowBlocks> levels_{}; // of the blocks in `recent_`, in decibels

  Phase phase_ = Phase::Idle;
  TonePair tone_;         // what is followed while not idle,
  double tone_level_ = 0; // and its level in decibels
  Turn turn_;
  std::array<Turn, 4> turns_{}; // completed ones, newest first
  int turn_count_ = 0;
  int loud_run_ = 0;   // blocks on end at the tone's level
  int odd_blocks_ = 0; // blocks that don't fit the tone
  bool busy_told_ = false;
  bool steady_told_ = false;
};

} // namespace kelmio
