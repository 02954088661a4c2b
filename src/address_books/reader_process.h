// A child process and the pipe from its standard output.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace kelmio {

/// Owns the child: it is killed and reaped when this object goes, so that no process and no zombie is left. The child
/// gets nothing of ours but standard error: no open files, no ignored signals. One thread.
class ReaderProcess {
public:
  /// Starts `program` with `arguments` behind its name.
  ReaderProcess(const std::string& program, const std::vector<std::string>& arguments);
  ~ReaderProcess();
  ReaderProcess(const ReaderProcess&) = delete;
  ReaderProcess& operator=(const ReaderProcess&) = delete;

  /// False when the program isn't there or the system refuses.
  bool Started() const { return pid_ > 0; }

  enum class Output { Bytes, NothingYet, Closed };
  /// Waits for output, at most for `patience`, and puts a piece of it in `bytes`, which stays valid until the next
  /// call.
  Output Read(std::chrono::milliseconds patience, std::string_view& bytes);

  /// The exit code once the child has ended; a child that a signal ended has -1. Doesn't wait.
  std::optional<int> ExitCode();

private:
  pid_t pid_ = -1;
  int output_ = -1;
  std::optional<int> exit_code_;
  std::vector<char> buffer_;
};

} // namespace kelmio
