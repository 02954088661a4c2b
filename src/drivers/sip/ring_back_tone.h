// What the user hears while it rings at the other end and the network sends no sound of its own.
#pragma once

#include <cstdint>
#include <memory>
#include <utility>

#include "drivers/sip/monotonic_timer.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// The European ring-back tone: 425 Hz, 1 s in 5 s, at -15 dBm0 (ITU-T E.180, supplement 2). It is no part of what is
/// sent. Engine thread only, and so are its calls of the port.
class RingBackTone {
public:
  /// Who hears it; null for nobody.
  void SetPort(std::shared_ptr<SoundPort> port) { port_ = std::move(port); }
  /// Until `Stop`. Nothing happens when it sounds already.
  void Start();
  void Stop();

private:
  void Sound(std::uint64_t frames);

  std::shared_ptr<SoundPort> port_;
  bool sounds_ = false;
  std::uint64_t sample_ = 0; // since the start
  MonotonicTimer timer_;
};

} // namespace kelmio
