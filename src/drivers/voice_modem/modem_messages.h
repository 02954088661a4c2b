// What crosses between the user interface thread and the thread of a modem.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// Calls are known on both sides by a number that is never used twice while a line is open.
using ModemCallNumber = std::uint64_t;

/// From the user interface thread to the modem's.
struct ModemCommand {
  enum class Kind : std::uint8_t { Answer, Hangup, SetSoundPort, Dial, Look, Quit };
  Kind kind = Kind::Quit;
  ModemCallNumber call = 0;
  std::string text{};                // what to dial; empty takes the line off hook
  std::shared_ptr<SoundPort> port{}; // for `SetSoundPort`
};

/// From the modem's thread to the user interface thread.
struct ModemReport {
  enum class Kind : std::uint8_t {
    NewCall,
    Ring,
    CallerID,
    State,
    Connected,
    Busy,
    Digit,
    Disconnected,
    Log,
    Status,
    Model,
    Trace
  };
  Kind kind = Kind::Log;
  ModemCallNumber call = 0;
  int count = 0;      // of a ring
  std::string name{}; // of a caller
  std::string text{}; // number of a caller, or words
  CallState state = CallState::Unknown;
  char digit = 0;
  LineStatus::Health health = LineStatus::Health::Off; // of a status, whose words are in `text`
};

/// Called on the modem's thread.
using ModemReportSink = std::function<void(ModemReport)>;

} // namespace kelmio
