// What crosses between the user interface thread and the engine thread of a SIP line.
#pragma once

#include <cstdint>
#include <functional>
#include <future>
#include <memory>
#include <string>

#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// Calls are known on both sides by a number that is never used twice while a line is open.
using SipCallNumber = std::uint64_t;

/// From the user interface thread to the engine.
struct SipCommand {
  enum class Kind { Answer, Hangup, SetSoundPort, Dial, Quit, QuitIfIdle };
  Kind kind = Kind::Quit;
  SipCallNumber call = 0;
  std::string text{};                // what to dial
  std::shared_ptr<SoundPort> port{}; // for `SetSoundPort`
  std::promise<bool> quits{};        // told by `QuitIfIdle`
};

/// From the engine to the user interface thread.
struct SipReport {
  enum class Kind { NewCall, Ring, CallerID, State, Connected, Busy, Digit, Disconnected, Log, Standing };
  Kind kind = Kind::Log;
  SipCallNumber call = 0;
  int count = 0;      // of a ring
  std::string name{}; // of a caller
  std::string text{}; // number of a caller, a word for the log, or how an account stands
  LineStatus::Health health = LineStatus::Health::Off;
  std::string reason{}; // of how an account stands, without what changes with each attempt
  CallState state = CallState::Unknown;
  char digit = 0;
};

/// Called on the engine thread.
using SipReportSink = std::function<void(SipReport)>;

} // namespace kelmio
