// The event loop and the timers of the user interface thread, on Qt's own loop.
#pragma once

#include <QObject>
#include <QTimer>

#include <deque>
#include <map>
#include <mutex>

#include "platform/event_loop.h"

namespace kelmio {

/// Made on the user interface thread, after the QApplication and gone before it. Closures that still wait when
/// it goes are dropped. An exception that leaves a closure is logged and goes no further.
class QtEventLoop : public EventLoop {
public:
  QtEventLoop();

  void Post(std::function<void()> work) override;
  void RunPending() override;
  void RunFor(std::chrono::milliseconds time) override;
  void Quit() override;

private:
  void Drain();

  std::mutex mutex_;
  std::deque<std::function<void()>> queue_; // guarded by mutex_
  bool drain_to_come_ = false;              // guarded by mutex_; true whenever the queue holds anything
  QObject wake_;                            // receives the one queued call that starts a drain
  QTimer rest_;                             // brings what a drain leaves, and serves loops inside a closure
};

/// Timers of less than a second are exact to the millisecond; longer ones may be late by a twentieth.
class QtTimerService : public TimerService {
public:
  Token Start(std::chrono::milliseconds interval, std::function<void()> tick) override;
  void Stop(Token token) override;

private:
  class Ticking;

  QObject owner_; // of every timer, also of those that are stopped and wait for their deletion
  std::map<Token, Ticking*> timers_;
  Token last_ = kNoTimer;
};

} // namespace kelmio
