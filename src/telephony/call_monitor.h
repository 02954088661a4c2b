// What the user sees of the line: the state texts of panel 2 and the call clock of panel 3.
#pragma once

#include <optional>
#include <string>

#include "controls/timer.h"
#include "telephony/call_host.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// The clock's text when the line is opened or closed.
inline constexpr const char* kClockAtStart = "00:00:00";

/// Nothing for a state that has no text of its own.
std::optional<std::string> CallStateText(CallState state);

/// User interface thread only.
class CallMonitor {
public:
  CallMonitor(TimerService& timers, CallHost& host);

  void OnCallState(CallState state);
  void OnDTMF(int digit);
  void OnTone();

  /// Runs while a call is being recorded.
  Timer tmrCallTime;

  /// Seconds of all recordings since the program started; never set back.
  long CallSeconds() const { return call_seconds_; }

private:
  void tmrCallTime_Timer();

  static constexpr int kTickMs = 1000;

  CallHost& host_;
  long call_seconds_ = 0;
};

} // namespace kelmio
