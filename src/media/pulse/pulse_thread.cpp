#include "media/pulse/pulse_thread.h"

#include <pulse/mainloop.h>

#include <algorithm>
#include <condition_variable>
#include <limits>
#include <mutex>
#include <utility>

namespace kelmio {
namespace {

using namespace std::chrono_literals;

/// An ordinary end takes a few milliseconds.
constexpr std::chrono::milliseconds kEndPatience = 300ms;

struct FreeLoop {
  void operator()(pa_mainloop* loop) const noexcept { pa_mainloop_free(loop); }
};

int LoopTimeout(std::chrono::microseconds pause) {
  using Count = std::chrono::microseconds::rep;
  return static_cast<int>(std::clamp<Count>(pause.count(), 0, std::numeric_limits<int>::max()));
}

} // namespace

struct PulseThread::Shared {
  std::mutex mutex;
  std::condition_variable over_changed;
  pa_mainloop* loop = nullptr; // while it can be woken
  bool ending = false;
  bool over = false;

  bool Ending() {
    const std::lock_guard lock(mutex);
    return ending;
  }
  void SetLoop(pa_mainloop* new_loop) {
    const std::lock_guard lock(mutex);
    loop = new_loop;
  }
};

PulseThread::PulseThread(std::unique_ptr<PulseWork> work) : shared_(std::make_shared<Shared>()) {
  thread_ = std::thread([shared = shared_, work = std::move(work)]() mutable {
    Run(*shared, std::move(work));
    const std::lock_guard lock(shared->mutex);
    shared->over = true;
    shared->over_changed.notify_one();
  });
}

PulseThread::~PulseThread() {
  bool over = false;
  {
    std::unique_lock lock(shared_->mutex);
    shared_->ending = true;
    if (shared_->loop)
      pa_mainloop_wakeup(shared_->loop);
    over = shared_->over_changed.wait_for(lock, kEndPatience, [this] { return shared_->over; });
  }
  if (over)
    thread_.join();
  else
    thread_.detach();
}

void PulseThread::Run(Shared& shared, std::unique_ptr<PulseWork> work) {
  const std::unique_ptr<pa_mainloop, FreeLoop> loop(pa_mainloop_new());
  if (!loop)
    return;
  shared.SetLoop(loop.get());
  pa_mainloop_api& api = *pa_mainloop_get_api(loop.get());
  auto pause = work->Turn(api, PulseClock::now());
  // The library forgets earlier wakings when it prepares, so the end is looked for after that and not before.
  while (pause && pa_mainloop_prepare(loop.get(), LoopTimeout(*pause)) >= 0 && !shared.Ending() &&
         pa_mainloop_poll(loop.get()) >= 0 && pa_mainloop_dispatch(loop.get()) >= 0)
    pause = work->Turn(api, PulseClock::now());
  shared.SetLoop(nullptr);
  work.reset(); // before the loop, which its parts need
}

} // namespace kelmio
