// The multimedia device, as far as it tells the length of a wave file.
#pragma once

#include <string>
#include <string_view>

#include "platform/multimedia_device.h"

namespace kelmio {

/// Reads the length when the file is opened. It plays nothing, so "Stop" has nothing to act on.
class WaveDevice : public MultimediaDevice {
public:
  void SetDeviceType(const std::string& /*type*/) override {}
  void SetFrom(long /*position*/) override {}
  void SetUpdateInterval(int /*interval*/) override {}
  long Position() const override { return 0; }
  void SetFileName(const std::string& path) override { path_ = path; }
  void Command(std::string_view word) override;
  long Length() const override { return length_; }

private:
  std::string path_;
  long length_ = 0; // milliseconds; 0 while nothing is open
};

} // namespace kelmio
