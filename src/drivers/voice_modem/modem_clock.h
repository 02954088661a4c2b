// The time by which a modem's answers are waited for.
#pragma once

#include <chrono>

namespace kelmio {

/// Seconds of the modem. They are those of the wall clock, but for an emulated modem that runs faster.
class ModemClock {
public:
  using Seconds = std::chrono::duration<double>;

  explicit ModemClock(double speed = 1) : speed_(speed), began_(std::chrono::steady_clock::now()) {}

  Seconds Now() const { return (std::chrono::steady_clock::now() - began_) * speed_; }
  /// How long to wait in real time.
  std::chrono::nanoseconds Real(Seconds time) const {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time / speed_);
  }

private:
  double speed_;
  std::chrono::steady_clock::time_point began_;
};

} // namespace kelmio
