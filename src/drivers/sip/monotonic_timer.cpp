#include "drivers/sip/monotonic_timer.h"

#include <sys/timerfd.h>
#include <unistd.h>

#include <algorithm>

#include "drivers/sip/libre.h"

namespace kelmio {

namespace {

timespec ToTimespec(std::chrono::milliseconds time) {
  return {time.count() / 1000, (time.count() % 1000) * 1'000'000};
}

} // namespace

MonotonicTimer::MonotonicTimer() : descriptor_(timerfd_create(CLOCK_MONOTONIC, TFD_NONBLOCK | TFD_CLOEXEC)) {
  if (descriptor_ >= 0)
    fd_listen(descriptor_, FD_READ, &MonotonicTimer::Ready, this);
}

MonotonicTimer::~MonotonicTimer() {
  if (descriptor_ < 0)
    return;
  fd_close(descriptor_);
  close(descriptor_);
}

void MonotonicTimer::StartOnce(std::chrono::milliseconds delay, Tick tick) {
  Arm(delay, std::chrono::milliseconds{0}, std::move(tick));
}

void MonotonicTimer::StartRepeating(std::chrono::milliseconds first, std::chrono::milliseconds interval, Tick tick) {
  Arm(first, interval, std::move(tick));
}

void MonotonicTimer::Stop() {
  const itimerspec never{};
  timerfd_settime(descriptor_, 0, &never, nullptr);
  tick_ = nullptr;
}

void MonotonicTimer::Arm(std::chrono::milliseconds first, std::chrono::milliseconds interval, Tick tick) {
  tick_ = std::move(tick);
  itimerspec times{};
  times.it_interval = ToTimespec(interval);
  times.it_value = ToTimespec(first);
  // A first time of zero would stop the timer.
  if (first.count() <= 0)
    times.it_value = {0, 1};
  timerfd_settime(descriptor_, 0, &times, nullptr);
}

void MonotonicTimer::Ready(int, void* self) {
  auto* timer = static_cast<MonotonicTimer*>(self);
  std::uint64_t elapsed = 0;
  if (read(timer->descriptor_, &elapsed, sizeof(elapsed)) != static_cast<ssize_t>(sizeof(elapsed)) || !timer->tick_)
    return;
  // A copy, for the tick may destroy the timer or start it anew.
  const Tick tick = timer->tick_;
  tick(elapsed);
}

} // namespace kelmio
