// A thread with a loop of the sound library on it.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <thread>

struct pa_mainloop_api;

namespace kelmio {

using PulseClock = std::chrono::steady_clock;

/// What runs on such a thread. Everything of the sound library is made, used and freed there, so no lock of the
/// library can ever hold up another thread.
class PulseWork {
public:
  virtual ~PulseWork() = default;
  /// Does what is due. Called at first, after everything that the library has handled, and after the pause that it
  /// gives; no pause: the work is over and is destroyed, on its thread.
  virtual std::optional<std::chrono::microseconds> Turn(pa_mainloop_api& loop, PulseClock::time_point now) = 0;
};

/// Runs one piece of work. The thread sleeps while nothing is due, and ends with the work.
class PulseThread {
public:
  explicit PulseThread(std::unique_ptr<PulseWork> work);
  /// Ends the work. A library that hangs is waited for only briefly: its thread is then left behind, and ends when
  /// the library returns. So the work must not refer to anything that it doesn't keep alive itself.
  ~PulseThread();
  PulseThread(const PulseThread&) = delete;
  PulseThread& operator=(const PulseThread&) = delete;

private:
  struct Shared;
  static void Run(Shared& shared, std::unique_ptr<PulseWork> work);

  std::shared_ptr<Shared> shared_;
  std::thread thread_;
};

} // namespace kelmio
