// The wire to a modem: bytes out and in, and the one signal beside them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace kelmio {

/// An open port. One thread at a time; nothing blocks. Destroying it closes the port, at which the modem hangs up.
class ModemPort {
public:
  virtual ~ModemPort() = default;
  /// Appends what has come. False when the device is gone; what came before is appended all the same.
  virtual bool Read(std::string& bytes) = 0;
  /// Bytes that were taken, which may be none while the device is busy. Nothing when it is gone.
  virtual std::optional<std::size_t> Write(std::string_view bytes) = 0;
  /// Whether the computer is ready. Without it a modem hangs up. False where the port has no such signal.
  virtual bool SetReady(bool ready) = 0;
  /// Forgets what came and was not read yet.
  virtual void DropInput() = 0;
  /// To wait at, for something to read or for the end.
  virtual int Descriptor() const = 0;
};

} // namespace kelmio
