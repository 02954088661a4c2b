// A real event loop for tests whose other threads are real.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

#include "platform/event_loop.h"

namespace kelmio {

class LoopOfTest : public EventLoop {
public:
  void Post(std::function<void()> work) override {
    const std::lock_guard lock(mutex_);
    work_.push_back(std::move(work));
    arrived_.notify_one();
  }

  void RunPending() override {
    while (RunOne(std::chrono::steady_clock::now())) {
    }
  }

  void Quit() override {}

  /// Runs what comes until `done` holds; false when it doesn't in time.
  bool RunUntil(const std::function<bool()>& done, std::chrono::milliseconds limit = std::chrono::seconds{10}) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!done()) {
      const auto now = std::chrono::steady_clock::now();
      if (now >= end)
        return false;
      // What is waited for need not come through the loop.
      RunOne(std::min(end, now + kLook));
    }
    return true;
  }

  /// Runs what comes for this long.
  void RunFor(std::chrono::milliseconds time) override {
    RunUntil([] { return false; }, time);
  }

private:
  static constexpr std::chrono::milliseconds kLook{5};

  bool RunOne(std::chrono::steady_clock::time_point end) {
    std::function<void()> work;
    {
      std::unique_lock lock(mutex_);
      if (!arrived_.wait_until(lock, end, [this] { return !work_.empty(); }))
        return false;
      work = std::move(work_.front());
      work_.pop_front();
    }
    work();
    return true;
  }

  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<std::function<void()>> work_;
};

} // namespace kelmio
