// One refresh for a burst of changes.
#pragma once

#include <QObject>

#include <functional>
#include <utility>

namespace kelmio {

/// Runs its work once from the event loop, however often it was requested before.
class Refresh : public QObject {
public:
  explicit Refresh(std::function<void()> work) : work_(std::move(work)) {}

  void Request() {
    if (std::exchange(pending_, true))
      return;
    QMetaObject::invokeMethod(
        this, [this] { RunIfPending(); }, Qt::QueuedConnection);
  }

  bool Pending() const { return pending_; }

  void RunIfPending() {
    if (std::exchange(pending_, false))
      work_();
  }

private:
  std::function<void()> work_;
  bool pending_ = false;
};

} // namespace kelmio
