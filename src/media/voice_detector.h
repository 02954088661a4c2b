// Tells voice from silence over the noise of this call.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>

namespace kelmio {

/// The lowest level of the last seconds. Speech has gaps in which the noise of the line shows, and a noise
/// that never stops becomes the floor by itself. Levels in decibels against a full-scale square wave.
class NoiseFloor {
public:
  NoiseFloor();
  /// One block of 10 ms. `constant`: all its samples are equal, as nothing but a digital source makes them.
  void Add(double power, bool constant);
  double Level() const;

private:
  static constexpr std::size_t kSmoothed = 5;      // blocks in one smoothed level
  static constexpr std::size_t kWindows = 8;       // windows remembered,
  static constexpr std::size_t kWindowBlocks = 50; // of half a second each

  std::array<double, kSmoothed> powers_{};
  std::size_t power_count_ = 0;
  std::array<double, kWindows> lowest_{};
  std::size_t window_ = 0;
  std::size_t blocks_in_window_ = 0;
  std::size_t constant_run_ = 0;
};

/// Silence comes 250 ms after the last sound, voice with some 50 ms of sound: a click is none.
/// One thread at a time; no allocation.
class VoiceDetector {
public:
  enum class State : std::uint8_t { Unknown, Silence, Voice };
  static constexpr std::size_t kBlock = 80; // 10 ms at 8000 samples per second

  State Process(std::span<const std::int16_t, kBlock> block);

private:
  State state_ = State::Unknown; // for the first 80 ms of a call
  NoiseFloor floor_;
  double last_input_ = 0;
  double last_output_ = 0;
  std::int16_t last_sample_ = 0;
  std::uint32_t loud_blocks_ = 0; // one bit a block, the newest lowest
  std::size_t blocks_seen_ = 0;
  std::size_t quiet_blocks_ = 0; // since sound was last heard
};

} // namespace kelmio
