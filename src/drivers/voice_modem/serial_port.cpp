#include "drivers/voice_modem/serial_port.h"

#include <fcntl.h>
#include <grp.h>
#include <poll.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "drivers/voice_modem/device_lock.h"

namespace kelmio {
namespace {

class SerialPort : public ModemPort {
public:
  explicit SerialPort(int device) : device_(device) {}
  ~SerialPort() override {
    // Without this, closing waits for a device that doesn't take its bytes.
    ::tcflush(device_, TCIOFLUSH);
    ::ioctl(device_, TIOCNXCL);
    ::close(device_);
  }
  void Hold(std::unique_ptr<DeviceLock> lock) { lock_ = std::move(lock); }

  bool Read(std::string& bytes) override {
    char buffer[4096];
    for (;;) {
      const ssize_t got = ::read(device_, buffer, sizeof buffer);
      if (got > 0)
        bytes.append(buffer, static_cast<std::size_t>(got));
      else if (got == 0)
        return false;
      else if (errno != EINTR)
        return errno == EAGAIN && !HungUp();
    }
  }

  std::optional<std::size_t> Write(std::string_view bytes) override {
    for (;;) {
      const ssize_t taken = ::write(device_, bytes.data(), bytes.size());
      if (taken >= 0)
        return static_cast<std::size_t>(taken);
      if (errno == EAGAIN)
        return 0;
      if (errno != EINTR)
        return std::nullopt;
    }
  }

  bool SetReady(bool ready) override {
    const int signal = TIOCM_DTR;
    return ::ioctl(device_, ready ? TIOCMBIS : TIOCMBIC, &signal) == 0;
  }

  void DropInput() override { ::tcflush(device_, TCIFLUSH); }

  int Descriptor() const override { return device_; }

  /// False when it is no serial device.
  bool SetUp() {
    termios settings{};
    if (::tcgetattr(device_, &settings) != 0)
      return false;
    settings.c_iflag = IGNBRK;
    settings.c_oflag = 0;
    settings.c_lflag = 0;
    // CLOCAL: a modem without a data call has no carrier. CRTSCTS holds the samples back on real wires.
    settings.c_cflag = CS8 | CREAD | CLOCAL | HUPCL | CRTSCTS;
    // With a least number of 1 a read tells by EAGAIN that nothing came, and 0 is left for the end.
    settings.c_cc[VMIN] = 1;
    settings.c_cc[VTIME] = 0;
    ::cfsetispeed(&settings, B115200);
    ::cfsetospeed(&settings, B115200);
    return ::tcsetattr(device_, TCSANOW, &settings) == 0 && ::tcflush(device_, TCIFLUSH) == 0;
  }

private:
  bool HungUp() const {
    pollfd state{device_, 0, 0};
    return ::poll(&state, 1, 0) > 0 && (state.revents & (POLLHUP | POLLNVAL)) != 0;
  }

  int device_;
  std::unique_ptr<DeviceLock> lock_;
};

/// The group that may use the device, empty when there is none but the owner.
std::string GroupOf(const std::string& path) {
  struct stat node {};
  if (::stat(path.c_str(), &node) != 0 || (node.st_mode & S_IWGRP) == 0)
    return {};
  group found{};
  group* result = nullptr;
  char buffer[4096];
  if (::getgrgid_r(node.st_gid, &found, buffer, sizeof buffer, &result) != 0 || result == nullptr)
    return {};
  return result->gr_name;
}

PortResult Trouble(PortTrouble trouble, std::string text) {
  PortResult result;
  result.trouble = trouble;
  result.text = std::move(text);
  return result;
}

PortResult InUse(const std::string& path) {
  return Trouble(PortTrouble::InUse, path + " is used by another program");
}

PortResult TroubleOf(const std::string& path, int error) {
  if (error == EBUSY)
    return InUse(path);
  if (error == ENOENT || error == ENXIO || error == ENODEV)
    return Trouble(PortTrouble::NotThere, path + " is not there");
  if (error == EACCES || error == EPERM) {
    const std::string group = GroupOf(path);
    std::string text = "No right to use " + path;
    if (!group.empty())
      text += ": join the group \"" + group + "\" and log in again";
    return Trouble(PortTrouble::NoRights, text);
  }
  return Trouble(PortTrouble::Other, path + ": " + std::generic_category().message(error));
}

} // namespace

PortResult OpenSerialPort(const std::string& path, const std::string& lock_folder) {
  // Not blocking: else it would wait for the carrier of a call.
  const int device = ::open(path.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
  if (device < 0)
    return TroubleOf(path, errno);
  if (::flock(device, LOCK_EX | LOCK_NB) != 0) {
    ::close(device); // as it is: the settings are those of who uses it
    return InUse(path);
  }
  std::error_code ignored;
  const std::string real = std::filesystem::canonical(path, ignored).string();
  std::unique_ptr<DeviceLock> lock;
  if (DeviceLock::Take(lock_folder, real.empty() ? path : real, lock) == DeviceLock::Outcome::Taken) {
    ::close(device);
    return InUse(path);
  }
  auto port = std::make_unique<SerialPort>(device);
  port->Hold(std::move(lock));
  if (!port->SetUp())
    return Trouble(PortTrouble::Other, path + " is no serial device");
  ::ioctl(device, TIOCEXCL);
  port->SetReady(true);
  PortResult result;
  result.port = std::move(port);
  return result;
}

} // namespace kelmio
