#include "media/file_worker.h"

#include <chrono>

namespace kelmio {
namespace {

// Looking at the rings now and then spares the sound thread every kind of waking. It is short against what
// the rings hold, and lets the signal display move smoothly.
constexpr auto kInterval = std::chrono::milliseconds(100);

} // namespace

FileWorker::~FileWorker() {
  {
    const std::lock_guard lock(mutex_);
    stopping_ = true;
  }
  changed_.notify_one();
  if (thread_.joinable())
    thread_.join();
}

void FileWorker::Add(const std::shared_ptr<FileStream>& stream) {
  {
    const std::lock_guard lock(mutex_);
    streams_.push_back(stream);
  }
  if (!thread_.joinable())
    thread_ = std::thread([this] { Run(); });
  changed_.notify_one();
}

void FileWorker::Run() {
  std::unique_lock lock(mutex_);
  while (!stopping_) {
    std::erase_if(streams_, [](const auto& stream) { return stream.expired(); });
    if (streams_.empty()) {
      changed_.wait(lock, [this] { return stopping_ || !streams_.empty(); });
      continue;
    }
    const auto streams = streams_;
    lock.unlock();
    for (const auto& entry : streams)
      if (const auto stream = entry.lock())
        stream->Service();
    lock.lock();
    changed_.wait_for(lock, kInterval, [this] { return stopping_; });
  }
}

} // namespace kelmio
