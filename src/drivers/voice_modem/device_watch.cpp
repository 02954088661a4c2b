#include "drivers/voice_modem/device_watch.h"

#include <sys/inotify.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <string_view>
#include <system_error>
#include <utility>

namespace kelmio {
namespace {

bool IsModemName(std::string_view name) {
  return name.starts_with("ttyACM") || name.starts_with("ttyUSB");
}

} // namespace

DeviceWatch::DeviceWatch(std::string folder) : folder_(std::move(folder)) {
  watch_ = ::inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
  // Rights count too: a device that has come gets those of its group a moment later.
  constexpr auto kChanges = IN_CREATE | IN_DELETE | IN_MOVED_TO | IN_MOVED_FROM | IN_ATTRIB;
  if (watch_ >= 0 && ::inotify_add_watch(watch_, folder_.c_str(), kChanges) < 0) {
    ::close(watch_);
    watch_ = -1;
  }
}

DeviceWatch::~DeviceWatch() {
  if (watch_ >= 0)
    ::close(watch_);
}

std::vector<std::string> DeviceWatch::Devices() const {
  std::vector<std::string> devices;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(folder_, error), end; !error && entry != end; entry.increment(error)) {
    if (IsModemName(entry->path().filename().string()))
      devices.push_back(entry->path().string());
  }
  std::sort(devices.begin(), devices.end());
  return devices;
}

bool DeviceWatch::Changed() {
  bool changed = false;
  alignas(inotify_event) char buffer[4096];
  for (ssize_t got = 0; watch_ >= 0 && (got = ::read(watch_, buffer, sizeof buffer)) > 0;) {
    for (ssize_t at = 0; at < got;) {
      inotify_event event{};
      std::memcpy(&event, buffer + at, sizeof event);
      const char* const name = buffer + at + sizeof event;
      // What was lost in an overflow may have been a device.
      changed = changed || (event.mask & IN_Q_OVERFLOW) != 0 || (event.len > 0 && IsModemName(name));
      at += static_cast<ssize_t>(sizeof event + event.len);
    }
  }
  return changed;
}

} // namespace kelmio
