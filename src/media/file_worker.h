// The thread that reads and writes the wave files of one call.
#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

namespace kelmio {

/// Something with a file behind a ring of samples.
class FileStream {
public:
  virtual ~FileStream() = default;
  /// Moves samples between ring and file. Called about ten times a second on the worker's thread;
  /// may wait for the disk.
  virtual void Service() = 0;
};

/// Serves each stream for as long as somebody else holds it. The thread starts with the first stream and
/// sleeps while there is none. Add and destroy on one thread.
class FileWorker {
public:
  FileWorker() = default;
  /// Waits for a service that is under way.
  ~FileWorker();
  FileWorker(const FileWorker&) = delete;
  FileWorker& operator=(const FileWorker&) = delete;

  void Add(const std::shared_ptr<FileStream>& stream);

private:
  void Run();

  std::mutex mutex_;
  std::condition_variable changed_;
  std::vector<std::weak_ptr<FileStream>> streams_;
  bool stopping_ = false;
  std::thread thread_;
};

} // namespace kelmio
