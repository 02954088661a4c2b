// The lock file of a serial device, as programs have left it since UUCP: `LCK..ttyACM0` with a process's number in it.
#pragma once

#include <memory>
#include <string>

namespace kelmio {

/// Held by this program; the file goes with the object.
class DeviceLock {
public:
  enum class Outcome { Held, Taken, NoFolder };

  /// `device` is the device's own path, without links. A lock whose process is gone is replaced. `NoFolder` when the
  /// folder can't be written, which is no reason not to use the device.
  static Outcome Take(const std::string& folder, const std::string& device, std::unique_ptr<DeviceLock>& lock);

  ~DeviceLock();
  DeviceLock(const DeviceLock&) = delete;
  DeviceLock& operator=(const DeviceLock&) = delete;

private:
  explicit DeviceLock(std::string path) : path_(std::move(path)) {}
  std::string path_;
};

} // namespace kelmio
