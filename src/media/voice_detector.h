// Tells voice from silence over the noise of this call.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

#include "media/biquad.h"

namespace kelmio {

/// The lowest level of the last second and a half. Speech has gaps in which the noise of the line shows, and a noise
/// that never stops becomes the floor by itself, so soon that a call left in noise ends like one left in silence.
/// Levels in decibels against a full-scale square wave.
class NoiseFloor {
public:
  /// Decibels of the noise that is assumed until the call has shown its own, and of the lowest level believed.
  NoiseFloor(double usual, double lowest);
  void SetLowest(double lowest) { lowest_level_ = lowest; }
  /// One block of 10 ms. `constant`: all its samples are equal, as nothing but a digital source makes them.
  void Add(double power, bool constant);
  double Level() const;

private:
  static constexpr std::size_t kSmoothed = 10;     // blocks in one smoothed level
  static constexpr std::size_t kWindows = 3;       // windows remembered,
  static constexpr std::size_t kWindowBlocks = 50; // of half a second each

  double lowest_level_;
  std::array<double, kSmoothed> powers_{};
  std::size_t power_count_ = 0;
  std::array<double, kWindows> lowest_{};
  std::size_t window_ = 0;
  std::size_t blocks_in_window_ = 0;
  std::size_t constant_run_ = 0;
};

/// A voice is heard over the noise floor of the whole and over that of each of eleven bands. Silence comes 250 ms after
/// the last sound, voice with some 50 ms of sound: a click is none.
/// One thread at a time; no allocation.
class VoiceDetector {
public:
  VoiceDetector();

  enum class State : std::uint8_t { Unknown, Silence, Voice };
  static constexpr std::size_t kBlock = 80; // 10 ms at 8000 samples per second

  /// A block of a tone (`is_tone`) is no sound that a caller makes.
  State Process(std::span<const std::int16_t, kBlock> block, bool is_tone = false);

private:
  /// Takes note of the bits that samples had set, and so of how coarse their steps are.
  void BelieveSteps(unsigned bits);

  /// A third of an octave: in one band a voice stands out from a hum, and a melody from a chord that is held, though
  /// the whole is no louder than before.
  struct Band {
    explicit Band(double middle);
    double hertz;
    std::array<Biquad, 2> filters;
    NoiseFloor floor;
    double power = 0;
    std::uint32_t loud_blocks = 0; // as below
  };

  State state_ = State::Unknown; // for the first 80 ms of a call
  NoiseFloor floor_;
  std::array<Band, 11> bands_;
  unsigned steps_ = 0; // every bit that a sample had set
  double last_input_ = 0;
  double last_output_ = 0;
  std::int16_t last_sample_ = 0;
  std::uint32_t loud_blocks_ = 0; // one bit a block, the newest lowest
  std::size_t blocks_seen_ = 0;
  std::size_t quiet_blocks_ = 0; // since sound was last heard
};

} // namespace kelmio
