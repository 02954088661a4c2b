// The one doorway into the user interface thread, and its timers.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

namespace kelmio {

/// The loop of the user interface thread. Every piece of logic runs on that thread.
/// Ownership: `app/` owns the loop and keeps it alive longer than anyone who holds a reference.
class EventLoop {
public:
  virtual ~EventLoop() = default;

  /// Runs `work` later on the user interface thread, in the order of posting. Any thread may call.
  /// A closure must hold a weak token of what it touches: its target may be gone when it runs.
  virtual void Post(std::function<void()> work) = 0;

  /// User interface thread only. Runs what is pending now (closures, due timers, input, painting) and
  /// returns. May be called from inside a handler: another event can then enter.
  virtual void RunPending() = 0;

  /// User interface thread only. Runs what comes during that time, as `RunPending` does, and returns once it has
  /// passed. The thread sleeps while nothing comes.
  virtual void RunFor(std::chrono::milliseconds time) = 0;

  /// Asks the loop to end once the present handler has returned. Any thread.
  virtual void Quit() = 0;
};

/// Repeating timers of the user interface thread. All calls and all ticks happen on that thread.
class TimerService {
public:
  using Token = std::uint64_t;
  static constexpr Token kNoTimer = 0;

  virtual ~TimerService() = default;

  /// Starts a repeating timer; the first tick comes one interval from now. `interval` is above zero.
  virtual Token Start(std::chrono::milliseconds interval, std::function<void()> tick) = 0;

  /// Stops a timer; no tick follows, even one that was due. An unknown token is ignored.
  virtual void Stop(Token token) = 0;
};

} // namespace kelmio
