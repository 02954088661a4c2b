#include "address_books/reader_process.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>

namespace kelmio {

namespace {

/// What a pipe holds on Linux unless it is told otherwise.
constexpr std::size_t kPieceBytes = 65536;

/// -1 when the program can't be started.
pid_t Spawn(const std::string& program, const std::vector<std::string>& arguments, int output) {
  posix_spawn_file_actions_t files;
  posix_spawn_file_actions_init(&files);
  posix_spawn_file_actions_addopen(&files, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&files, output, STDOUT_FILENO);
  posix_spawn_file_actions_addclosefrom_np(&files, STDERR_FILENO + 1);

  posix_spawnattr_t attributes;
  posix_spawnattr_init(&attributes);
  // A signal that we ignore would stay ignored in the child, which is meant to end when nobody reads from it.
  sigset_t all;
  sigfillset(&all);
  posix_spawnattr_setsigdefault(&attributes, &all);
  sigset_t none;
  sigemptyset(&none);
  posix_spawnattr_setsigmask(&attributes, &none);
  posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGDEF | POSIX_SPAWN_SETSIGMASK);

  std::vector<char*> words{const_cast<char*>(program.c_str())};
  for (const std::string& argument : arguments)
    words.push_back(const_cast<char*>(argument.c_str()));
  words.push_back(nullptr);

  pid_t pid = -1;
  if (posix_spawn(&pid, program.c_str(), &files, &attributes, words.data(), environ) != 0)
    pid = -1;
  posix_spawnattr_destroy(&attributes);
  posix_spawn_file_actions_destroy(&files);
  return pid;
}

} // namespace

ReaderProcess::ReaderProcess(const std::string& program, const std::vector<std::string>& arguments)
    : buffer_(kPieceBytes) {
  int ends[2];
  if (pipe2(ends, O_CLOEXEC) != 0)
    return;
  output_ = ends[0];
  pid_ = Spawn(program, arguments, ends[1]);
  close(ends[1]);
}

ReaderProcess::~ReaderProcess() {
  if (pid_ > 0 && !exit_code_) {
    kill(pid_, SIGKILL);
    while (waitpid(pid_, nullptr, 0) < 0 && errno == EINTR) {
    }
  }
  if (output_ >= 0)
    close(output_);
}

ReaderProcess::Output ReaderProcess::Read(std::chrono::milliseconds patience, std::string_view& bytes) {
  pollfd descriptor{output_, POLLIN, 0};
  if (poll(&descriptor, 1, static_cast<int>(patience.count())) <= 0)
    return Output::NothingYet;
  const ssize_t count = read(output_, buffer_.data(), buffer_.size());
  if (count < 0)
    return errno == EINTR ? Output::NothingYet : Output::Closed;
  bytes = {buffer_.data(), static_cast<std::size_t>(count)};
  return count == 0 ? Output::Closed : Output::Bytes;
}

std::optional<int> ReaderProcess::ExitCode() {
  int status = 0;
  if (pid_ > 0 && !exit_code_ && waitpid(pid_, &status, WNOHANG) == pid_)
    exit_code_ = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return exit_code_;
}

} // namespace kelmio
