// Tells when the network is not the one it was.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>

#include "drivers/sip/monotonic_timer.h"

namespace kelmio {

/// Watches addresses and routes of this computer, and whether it has been asleep. Engine thread only.
class NetworkWatch {
public:
  enum class Change : std::uint8_t {
    Network, // an address or a way has come or gone
    Woke,    // the computer has slept, and nobody knows what became of its connections
  };
  using Told = std::function<void(Change)>;

  /// `told` may destroy the watch.
  explicit NetworkWatch(Told told);
  ~NetworkWatch();
  NetworkWatch(const NetworkWatch&) = delete;
  NetworkWatch& operator=(const NetworkWatch&) = delete;

private:
  static void Heard(int flags, void* self);
  void LookAtClock();

  Told told_;
  int descriptor_ = -1;
  std::chrono::nanoseconds asleep_;
  MonotonicTimer settle_;
  MonotonicTimer clock_;
};

} // namespace kelmio
