#include "drivers/voice_modem/device_lock.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <fstream>

namespace kelmio {
namespace {

/// Whether the process that made the lock runs. One of our own number is left from an earlier life: who holds the
/// device within this program is told by flock.
bool IsAlive(const std::string& path) {
  long process = 0;
  if (!(std::ifstream(path) >> process) || process <= 0)
    return false;
  return process != ::getpid() && (::kill(static_cast<pid_t>(process), 0) == 0 || errno == EPERM);
}

/// Writes the number beside the lock and links it, so that nobody reads a lock without a number.
int LinkLock(const std::string& path) {
  constexpr mode_t kReadableByAll = 0644;
  const std::string own = path + "." + std::to_string(::getpid());
  const int file = ::open(own.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW, kReadableByAll);
  if (file < 0)
    return errno;
  char number[16]; // ten places and a line end, by the same tradition
  const int length = std::snprintf(number, sizeof number, "%10ld\n", static_cast<long>(::getpid()));
  int error = ::write(file, number, static_cast<std::size_t>(length)) == length ? 0 : EIO;
  ::close(file);
  if (error == 0 && ::link(own.c_str(), path.c_str()) != 0)
    error = errno;
  ::unlink(own.c_str());
  return error;
}

} // namespace

DeviceLock::Outcome DeviceLock::Take(const std::string& folder, const std::string& device,
                                     std::unique_ptr<DeviceLock>& lock) {
  const std::string path = folder + "/LCK.." + device.substr(device.rfind('/') + 1);
  int error = LinkLock(path);
  if (error == EEXIST) {
    if (IsAlive(path))
      return Outcome::Taken;
    if (::unlink(path.c_str()) == 0)
      error = LinkLock(path);
    if (error == EEXIST && IsAlive(path))
      return Outcome::Taken;
  }
  if (error != 0)
    return Outcome::NoFolder;
  lock.reset(new DeviceLock(path));
  return Outcome::Held;
}

DeviceLock::~DeviceLock() {
  ::unlink(path_.c_str());
}

} // namespace kelmio
