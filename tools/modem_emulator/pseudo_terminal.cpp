#include "modem_emulator/pseudo_terminal.h"

#include <cstdlib>
#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <utility>

namespace kelmio::emulated {

bool PseudoTerminal::Plug() {
  Unplug();
  master_ = posix_openpt(O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (master_ < 0 || grantpt(master_) != 0 || unlockpt(master_) != 0) {
    return false;
  }
  char name[128] = {};
  if (ptsname_r(master_, name, sizeof name) != 0) {
    return false;
  }
  device_ = name;
  // Only after a first close does the master tell whether the other end is open.
  const int slave = open(name, O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (slave < 0) {
    return false;
  }
  close(slave);
  if (link_.empty()) {
    return true;
  }
  const std::filesystem::path fresh = link_.string() + ".new";
  std::error_code error;
  std::filesystem::remove(fresh, error);
  std::filesystem::create_symlink(device_, fresh, error);
  if (!error) {
    std::filesystem::rename(fresh, link_, error);
  }
  return !error;
}

void PseudoTerminal::Unplug() {
  if (master_ >= 0) {
    close(std::exchange(master_, -1));
    std::error_code error;
    if (!link_.empty()) {
      std::filesystem::remove(link_, error);
    }
  }
}

bool PseudoTerminal::IsOpen() const {
  pollfd entry{master_, 0, 0};
  return master_ >= 0 && poll(&entry, 1, 0) >= 0 && (entry.revents & POLLHUP) == 0;
}

int PseudoTerminal::Speed() const {
  termios settings{};
  if (master_ < 0 || tcgetattr(master_, &settings) != 0) {
    return 0;
  }
  constexpr std::pair<speed_t, int> Speeds[] = {{B9600, 9600},     {B19200, 19200},   {B38400, 38400},
                                                {B57600, 57600},   {B115200, 115200}, {B230400, 230400},
                                                {B460800, 460800}, {B921600, 921600}};
  for (const auto& [code, speed] : Speeds) {
    if (cfgetospeed(&settings) == code) {
      return speed;
    }
  }
  return 1200;
}

bool PseudoTerminal::RefuseRights() {
  return chmod(device_.c_str(), 0) == 0;
}

bool PseudoTerminal::RefuseAsBusy() {
  const int slave = open(device_.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK);
  if (slave < 0) {
    return false;
  }
  const bool done = ioctl(slave, TIOCEXCL) == 0;
  close(slave); // the pseudo terminal lives on with the master, and so does the mark
  return done;
}

} // namespace kelmio::emulated
