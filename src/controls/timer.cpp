#include "controls/timer.h"

namespace kelmio {

Timer::~Timer() {
  service_.Stop(token_);
}

void Timer::SetEnabled(bool enabled) {
  if (enabled == enabled_)
    return;
  enabled_ = enabled;
  Restart();
}

void Timer::SetInterval(int interval_ms) {
  if (interval_ms == interval_ms_)
    return;
  interval_ms_ = interval_ms;
  Restart();
}

void Timer::Restart() {
  service_.Stop(token_);
  token_ = TimerService::kNoTimer;
  if (enabled_ && interval_ms_ > 0)
    token_ = service_.Start(std::chrono::milliseconds(interval_ms_), [this] { Tick(); });
}

} // namespace kelmio
