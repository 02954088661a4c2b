// A disk that is full, for files of this process.
#pragma once

#include <sys/resource.h>

#include <csignal>

namespace kelmio::test {

/// Lets files grow to so many bytes and no further while it lives, as a full disk does.
class FullDisk {
public:
  explicit FullDisk(rlim_t bytes) : handler_(std::signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &limit_);
    const rlimit full{bytes, limit_.rlim_max};
    setrlimit(RLIMIT_FSIZE, &full);
  }
  ~FullDisk() {
    setrlimit(RLIMIT_FSIZE, &limit_);
    std::signal(SIGXFSZ, handler_);
  }
  FullDisk(const FullDisk&) = delete;
  FullDisk& operator=(const FullDisk&) = delete;

private:
  void (*handler_)(int);
  rlimit limit_{};
};

} // namespace kelmio::test
