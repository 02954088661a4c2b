// An event loop whose time is moved by hand.
#pragma once

#include <deque>
#include <functional>
#include <map>
#include <mutex>

#include "platform/clock.h"
#include "platform/event_loop.h"

namespace kelmio {

/// Loop, timers and clock of a test. Posting is safe from any thread; all else belongs to the test's thread.
/// Time stands still until `Advance`, so that the order of everything is the test's own.
class FakeLoop : public EventLoop, public TimerService, public Clock {
public:
  explicit FakeLoop(LocalDateTime start = {2026, 11, 15, 9, 7, 42}) : start_(start) {}

  void Post(std::function<void()> work) override;
  /// Runs what has been posted, and what that posts, until nothing is left.
  void RunPending() override;
  void RunFor(std::chrono::milliseconds time) override { Advance(time); }
  void Quit() override { quit_asked_ = true; }
  bool QuitAsked() const { return quit_asked_; }

  Token Start(std::chrono::milliseconds interval, std::function<void()> tick) override;
  void Stop(Token token) override;
  std::size_t RunningTimers() const { return timers_.size(); }

  /// The start time and what has been advanced since.
  LocalDateTime Now() const override;
  /// Moves the wall clock alone, as a user or a time server does.
  void SetNow(LocalDateTime now);

  /// Moves time forward, tick by tick in their order, running what is pending before and after each.
  void Advance(std::chrono::milliseconds by);

private:
  struct Entry {
    std::chrono::milliseconds interval;
    std::chrono::milliseconds due;
    std::function<void()> tick;
  };

  std::mutex mutex_;
  std::deque<std::function<void()>> pending_;
  std::map<Token, Entry> timers_;
  Token next_token_ = 1;
  std::chrono::milliseconds elapsed_{0};
  std::chrono::milliseconds clock_origin_{0};
  LocalDateTime start_;
  bool quit_asked_ = false;
};

} // namespace kelmio
