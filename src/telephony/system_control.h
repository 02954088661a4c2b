// The system switch: the line open and waiting for calls, or closed.
#pragma once

#include <functional>

#include "core/settings.h"
#include "platform/registry_store.h"
#include "telephony/call_context.h"
#include "telephony/call_host.h"
#include "telephony/tapi_control/TAPIExCtl.h"

namespace kelmio {

/// User interface thread only. A failure ends a procedure where it stands, with no text beyond the panels'.
class SystemControl {
public:
  SystemControl(Settings& settings, RegistryStore& registry, CallContext& context, CallHost& host, TAPIExCtl& control)
      : settings_(settings), registry_(registry), context_(context), host_(host), control_(control) {}

  /// `StartSystem` when the setting `SystemStatus` is 1, otherwise `StopSystem`.
  void SetSystemStatus();
  void StartSystem();
  /// Leaves the current call alone: closing the line ends it through the control's own events.
  void StopSystem();
  void RestartSystem();
  /// Chooses the first voice modem, or else the first voice line, and saves its number. Nothing changes when
  /// there is neither.
  void AutoDetectCommDevice();
  /// Opens the chosen line when the system is on without one: its device may have come back.
  void LinesChanged();

  /// The line of the context has been opened or closed, or couldn't be opened.
  std::function<void()> LineSwitched = [] {};

private:
  void OpenLine();
  void CloseLine();

  Settings& settings_;
  RegistryStore& registry_;
  CallContext& context_;
  CallHost& host_;
  TAPIExCtl& control_;
};

} // namespace kelmio
