#include "qt/qt_event_loop.h"

#include <QCoreApplication>

#include <utility>

#include "qt/handler_guard.h"

namespace kelmio {

QtEventLoop::QtEventLoop() {
  rest_.setInterval(0);
  QObject::connect(&rest_, &QTimer::timeout, &wake_, [this] { Drain(); });
}

void QtEventLoop::Post(std::function<void()> work) {
  const std::lock_guard lock(mutex_);
  queue_.push_back(std::move(work));
  if (drain_to_come_)
    return;
  drain_to_come_ = true;
  QMetaObject::invokeMethod(
      &wake_, [this] { Drain(); }, Qt::QueuedConnection);
}

// Runs what waits at the start and no more: a closure that posts itself again must not keep out input and painting.
// The timer runs meanwhile, so that a loop inside a closure goes on with the closure after it.
void QtEventLoop::Drain() {
  rest_.start();
  std::unique_lock lock(mutex_);
  for (std::size_t budget = queue_.size(); budget > 0 && !queue_.empty(); --budget) {
    const std::function<void()> work = std::move(queue_.front());
    queue_.pop_front();
    lock.unlock();
    RunHandler(work);
    lock.lock();
  }
  drain_to_come_ = !queue_.empty();
  if (drain_to_come_)
    rest_.start();
  else
    rest_.stop();
}

void QtEventLoop::RunPending() {
  QCoreApplication::processEvents();
}

void QtEventLoop::RunFor(std::chrono::milliseconds time) {
  QTimer end;
  end.setSingleShot(true);
  end.setTimerType(Qt::PreciseTimer);
  end.start(time);
  while (end.isActive())
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
}

// Not QCoreApplication::quit: that asks the windows first, and a window that hides instead would keep the loop.
void QtEventLoop::Quit() {
  QMetaObject::invokeMethod(
      &wake_, [] { QCoreApplication::exit(0); }, Qt::QueuedConnection);
}

class QtTimerService::Ticking : public QTimer {
public:
  using QTimer::QTimer;
  std::function<void()> tick;
};

TimerService::Token QtTimerService::Start(std::chrono::milliseconds interval, std::function<void()> tick) {
  const Token token = ++last_;
  auto* timer = new Ticking(&owner_);
  timer->tick = std::move(tick);
  timer->setTimerType(interval < std::chrono::seconds(1) ? Qt::PreciseTimer : Qt::CoarseTimer);
  QObject::connect(timer, &QTimer::timeout, timer, [timer] { RunHandler(timer->tick); });
  timers_.emplace(token, timer);
  timer->start(interval);
  return token;
}

void QtTimerService::Stop(Token token) {
  const auto found = timers_.find(token);
  if (found == timers_.end())
    return;
  // A tick may stop its own timer, so the timer lives until that tick is over.
  found->second->stop();
  found->second->deleteLater();
  timers_.erase(found);
}

} // namespace kelmio
