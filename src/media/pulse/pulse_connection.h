// The connection to the desktop's sound server, and what is made through it.
#pragma once

#include <pulse/context.h>
#include <pulse/operation.h>
#include <pulse/stream.h>

#include <chrono>
#include <memory>

#include "media/pulse/pulse_thread.h"

namespace kelmio {

struct ClosePulse {
  void operator()(pa_context* context) const noexcept;
  void operator()(pa_stream* stream) const noexcept;
  void operator()(pa_operation* operation) const noexcept;
};
using PulseContext = std::unique_ptr<pa_context, ClosePulse>;
using PulseStream = std::unique_ptr<pa_stream, ClosePulse>;
using PulseOperation = std::unique_ptr<pa_operation, ClosePulse>;

/// How far something that is being opened has come.
enum class PulseState { Opening, Ready, Gone };

/// One attempt to reach the server, which begins with the object. It never starts a server: that is the desktop's
/// business. On the thread of a `PulseWork` only.
class PulseConnection {
public:
  /// A server that hasn't answered after `patience` is given up.
  PulseConnection(pa_mainloop_api& loop, PulseClock::time_point now, std::chrono::microseconds patience);

  PulseState State(PulseClock::time_point now) const;
  /// How long a connection that is opening may still take.
  std::chrono::microseconds Left(PulseClock::time_point now) const;
  /// A stream that isn't connected to a device yet; null when the server can't have it. `role` is the server's word
  /// for the purpose of a sound, or null for an ordinary one.
  PulseStream MakeStream(const char* name, const char* role, const pa_sample_spec& format) const;

private:
  PulseContext context_;
  PulseClock::time_point given_up_;
};

PulseState StateOf(const pa_stream& stream);

} // namespace kelmio
