// The one line and the one call that the program acts on.
#pragma once

#include <memory>
#include <string>

#include "telephony/tapi_control/TAPIExCtl.h"

namespace kelmio {

/// What stands for a name or number that isn't known.
inline constexpr const char* kUnknown = "Unknown";

/// Shared by the main window's call subjects and the windows that show the call. User interface thread only.
struct CallContext {
  std::shared_ptr<TAPILine> CurrentLine; // the open line, or nothing
  CallRef CurrentCall;                   // nothing between calls
  std::string CallerName;                // empty when not known
  std::string CallerNumber;              // empty when not known
  /// The user has taken charge: no greeting and no automatic recording on connect.
  bool ManualCall = false;

  void ForgetCaller() {
    CallerName.clear();
    CallerNumber.clear();
  }
};

} // namespace kelmio
