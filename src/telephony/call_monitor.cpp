#include "telephony/call_monitor.h"

#include "core/mGeneral.h"

namespace kelmio {

std::optional<std::string> CallStateText(CallState state) {
  switch (state) {
  case CallState::Idle:
    return "Idle";
  case CallState::Accepted:
    return "Accepted";
  case CallState::Busy:
    return "Busy";
  case CallState::Connected:
    return "Connected";
  case CallState::Disconnected:
    return "Disconnected";
  case CallState::Unknown:
    return "Unknown";
  default:
    return std::nullopt;
  }
}

CallMonitor::CallMonitor(TimerService& timers, CallHost& host) : tmrCallTime(timers, kTickMs), host_(host) {
  tmrCallTime.Tick = [this] { tmrCallTime_Timer(); };
}

void CallMonitor::OnCallState(CallState state) {
  if (const auto text = CallStateText(state))
    host_.SetPanel(kPanelLine, *text);
}

void CallMonitor::OnDTMF(int digit) {
  host_.SetPanel(kPanelLine, std::string("DTMF: ") + static_cast<char>(digit));
}

void CallMonitor::OnTone() {
  host_.SetPanel(kPanelLine, "Tone...");
}

void CallMonitor::tmrCallTime_Timer() {
  ++call_seconds_;
  host_.SetPanel(kPanelClock, mGeneral::FormatSeconds(call_seconds_));
}

} // namespace kelmio
