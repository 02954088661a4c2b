#include "fakes/fake_loop.h"

#include <algorithm>
#include <chrono>

namespace kelmio {

void FakeLoop::Post(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  pending_.push_back(std::move(work));
}

void FakeLoop::RunPending() {
  for (;;) {
    std::function<void()> work;
    {
      const std::lock_guard lock(mutex_);
      if (pending_.empty())
        return;
      work = std::move(pending_.front());
      pending_.pop_front();
    }
    work();
  }
}

TimerService::Token FakeLoop::Start(std::chrono::milliseconds interval, std::function<void()> tick) {
  const Token token = next_token_++;
  timers_[token] = {interval, elapsed_ + interval, std::move(tick)};
  return token;
}

void FakeLoop::Stop(Token token) {
  timers_.erase(token);
}

LocalDateTime FakeLoop::Now() const {
  using namespace std::chrono;
  const sys_days day = year(start_.year) / month(static_cast<unsigned>(start_.month)) / start_.day;
  const auto moment = sys_seconds(day) + hours(start_.hour) + minutes(start_.minute) + seconds(start_.second) +
                      duration_cast<seconds>(elapsed_ - clock_origin_);
  const auto midnight = floor<days>(moment);
  const year_month_day date(midnight);
  const hh_mm_ss time(moment - midnight);
  return {static_cast<int>(date.year()),
          static_cast<int>(static_cast<unsigned>(date.month())),
          static_cast<int>(static_cast<unsigned>(date.day())),
          static_cast<int>(time.hours().count()),
          static_cast<int>(time.minutes().count()),
          static_cast<int>(time.seconds().count())};
}

void FakeLoop::SetNow(LocalDateTime now) {
  start_ = now;
  clock_origin_ = elapsed_;
}

void FakeLoop::Advance(std::chrono::milliseconds by) {
  const auto end = elapsed_ + by;
  RunPending();
  for (;;) {
    auto next = timers_.end();
    for (auto it = timers_.begin(); it != timers_.end(); ++it)
      if (it->second.due <= end && (next == timers_.end() || it->second.due < next->second.due))
        next = it;
    if (next == timers_.end())
      break;
    elapsed_ = std::max(elapsed_, next->second.due); // a tick may have let time pass itself
    next->second.due += next->second.interval;
    // The tick may stop its own timer.
    const std::function<void()> tick = next->second.tick;
    tick();
    RunPending();
  }
  elapsed_ = std::max(elapsed_, end);
}

} // namespace kelmio
