// Timers of the engine thread that the wall clock can't disturb.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace kelmio {

/// A timer of the kernel's monotonic clock, in absolute time: ticks that could not be served in time are counted
/// and come together, so that a slow moment shifts nothing. Engine thread only.
class MonotonicTimer {
public:
  /// `elapsed` is the number of ticks since the last call, at least 1.
  using Tick = std::function<void(std::uint64_t elapsed)>;

  MonotonicTimer();
  ~MonotonicTimer();
  MonotonicTimer(const MonotonicTimer&) = delete;
  MonotonicTimer& operator=(const MonotonicTimer&) = delete;

  /// One tick after `delay`. Replaces what was started before. `tick` may destroy the timer.
  void StartOnce(std::chrono::milliseconds delay, Tick tick);
  /// A tick now and one in each `interval`.
  void StartRepeating(std::chrono::milliseconds first, std::chrono::milliseconds interval, Tick tick);
  void Stop();

private:
  static void Ready(int flags, void* self);
  void Arm(std::chrono::milliseconds first, std::chrono::milliseconds interval, Tick tick);

  int descriptor_ = -1;
  Tick tick_;
};

} // namespace kelmio
