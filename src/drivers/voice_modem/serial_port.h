// A serial device, taken for this program alone.
#pragma once

#include <memory>
#include <string>

#include "drivers/voice_modem/modem_port.h"

namespace kelmio {

enum class PortTrouble : std::uint8_t { None, NotThere, NoRights, InUse, Other };

struct PortResult {
  std::unique_ptr<ModemPort> port; // nothing in case of trouble
  PortTrouble trouble = PortTrouble::None;
  std::string text; // what to do about it, for the user
};

/// Where programs that use serial devices leave word of it (Filesystem Hierarchy Standard 3.0, section 5.9).
inline constexpr const char* kLockFolder = "/run/lock";

/// Opens `path` for samples: 115200 bit/s, raw, the kernel's echo off before a byte can come, and old bytes dropped.
/// The device is refused to other programs in three ways, each known to some: exclusive mode, flock, and a lock file in
/// `lock_folder`, which is left away where the folder can't be written.
PortResult OpenSerialPort(const std::string& path, const std::string& lock_folder = kLockFolder);

} // namespace kelmio
