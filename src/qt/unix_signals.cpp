#include "qt/unix_signals.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>

#include "qt/handler_guard.h"

namespace kelmio {

namespace {

constexpr int kSignals[] = {SIGTERM, SIGINT, SIGHUP};

std::atomic<int> write_end{-1};
static_assert(std::atomic<int>::is_always_lock_free, "a signal handler may use nothing else");

// Only what is safe in a signal handler; a full pipe holds enough requests to end already.
extern "C" void TellSignal(int signal) {
  const int saved_errno = errno;
  const auto byte = static_cast<unsigned char>(signal);
  [[maybe_unused]] const ssize_t written = write(write_end.load(), &byte, 1);
  errno = saved_errno;
}

} // namespace

UnixSignals::UnixSignals(std::function<void(int)> on_signal) : on_signal_(std::move(on_signal)) {
  if (pipe2(pipe_, O_CLOEXEC | O_NONBLOCK) != 0)
    return;
  write_end = pipe_[1];
  notifier_ = std::make_unique<QSocketNotifier>(pipe_[0], QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { Read(); });
  struct sigaction action = {};
  action.sa_handler = TellSignal;
  action.sa_flags = SA_RESTART;
  sigemptyset(&action.sa_mask);
  for (const int signal : kSignals) {
    Saved saved = {signal, {}};
    if (sigaction(signal, &action, &saved.action) == 0)
      saved_.push_back(saved);
  }
}

UnixSignals::~UnixSignals() {
  for (const Saved& saved : saved_)
    sigaction(saved.signal, &saved.action, nullptr);
  write_end = -1;
  notifier_.reset();
  for (const int end : pipe_)
    if (end >= 0)
      close(end);
}

void UnixSignals::Read() {
  unsigned char byte = 0;
  while (read(pipe_[0], &byte, 1) == 1)
    RunHandler([&] { on_signal_(byte); });
}

} // namespace kelmio
