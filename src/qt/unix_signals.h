// The signals that ask the program to end.
#pragma once

#include <QSocketNotifier>

#include <csignal>
#include <functional>
#include <memory>
#include <vector>

namespace kelmio {

/// While it lives, SIGTERM, SIGINT and SIGHUP call `on_signal` on the user interface thread instead of ending the
/// process. One at a time; made and destroyed on that thread, after the QApplication. Where no pipe can be had, the
/// signals keep their usual effect.
class UnixSignals {
public:
  explicit UnixSignals(std::function<void(int signal)> on_signal);
  UnixSignals(const UnixSignals&) = delete;
  UnixSignals& operator=(const UnixSignals&) = delete;
  ~UnixSignals();

private:
  void Read();

  struct Saved {
    int signal;
    struct sigaction action;
  };

  std::function<void(int)> on_signal_;
  int pipe_[2] = {-1, -1};
  std::unique_ptr<QSocketNotifier> notifier_;
  std::vector<Saved> saved_;
};

} // namespace kelmio
