// A timer control: enabled or not, with an interval.
#pragma once

#include <functional>

#include "platform/event_loop.h"

namespace kelmio {

/// Ticks every `Interval` milliseconds while enabled. Enabling an enabled timer changes nothing; disabling
/// rewinds it. An interval of 0 (or below) makes a timer that never ticks, however it is enabled.
/// User interface thread only. The service outlives the timer.
class Timer {
public:
  Timer(TimerService& service, int interval_ms) : service_(service), interval_ms_(interval_ms) {}
  Timer(const Timer&) = delete;
  Timer& operator=(const Timer&) = delete;
  ~Timer();

  bool Enabled() const { return enabled_; }
  void SetEnabled(bool enabled);

  int Interval() const { return interval_ms_; }
  /// A different interval starts the wait of an enabled timer anew.
  void SetInterval(int interval_ms);

  std::function<void()> Tick = [] {};

private:
  void Restart();

  TimerService& service_;
  int interval_ms_;
  bool enabled_ = false;
  TimerService::Token token_ = TimerService::kNoTimer;
};

} // namespace kelmio
