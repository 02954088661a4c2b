// Which serial devices are there, and word of their coming and going.
#pragma once

#include <string>
#include <vector>

namespace kelmio {

/// Watches a folder of devices without asking it again and again. Any one thread.
class DeviceWatch {
public:
  /// `folder` is `/dev`, or another one of devices or links to them. A folder that isn't there is watched for nothing.
  explicit DeviceWatch(std::string folder);
  ~DeviceWatch();
  DeviceWatch(const DeviceWatch&) = delete;
  DeviceWatch& operator=(const DeviceWatch&) = delete;

  /// Full paths of the devices at USB that may be modems, sorted. Ports on the board are not among them: they are there
  /// with or without a modem, and asking one may disturb something else.
  std::vector<std::string> Devices() const;

  /// Readable when something changed; -1 when it can't be watched.
  int Descriptor() const { return watch_; }

  /// Whether a device came, went, or got other rights since the last call.
  bool Changed();

private:
  std::string folder_;
  int watch_ = -1;
};

} // namespace kelmio
