// The way back from a thread that may outlive its owner.
#pragma once

#include <functional>
#include <memory>
#include <mutex>

#include "platform/event_loop.h"

namespace kelmio {

/// Carries words to the user interface thread until it is closed, and holds nothing of the loop afterwards.
class PulseMailbox : public std::enable_shared_from_this<PulseMailbox> {
public:
  explicit PulseMailbox(EventLoop& loop) : loop_(&loop) {}
  /// Any thread. `work` runs on the user interface thread, later, unless the box has been closed by then.
  void Post(std::function<void()> work);
  /// User interface thread.
  void Close();

private:
  bool Open();

  std::mutex mutex_;
  EventLoop* loop_; // nothing once closed
};

} // namespace kelmio
