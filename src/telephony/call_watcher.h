// What becomes of an incoming call, for those who show it outside the main window.
#pragma once

#include <string>

#include "telephony/tapi_control/TAPIExCtl.h"

namespace kelmio {

/// Told by the call subjects. User interface thread only; no call of these lets pending events run. Of calls that are
/// dialled from here only `CallTaken`, `MessageBegun`, `CallDropped` and `CallOver` may be told.
class CallWatcher {
public:
  virtual ~CallWatcher() = default;
  virtual void CallBegan(const CallRef& call) = 0;
  virtual void CallRings(const CallRef& call) = 0;
  /// May come before the first ring or after it, more than once or never. The name may come from the contacts.
  virtual void CallerKnown(const CallRef& call, const std::string& name, const std::string& number) = 0;
  /// The line is up: somebody answered, and it is the machine's call or the user's.
  virtual void CallTaken(const CallRef& call, bool by_machine) = 0;
  /// The machine records a message, which is filed by now.
  virtual void MessageBegun(const CallRef& call) = 0;
  /// The user hangs up.
  virtual void CallDropped(const CallRef& call) = 0;
  virtual void CallOver(const CallRef& call) = 0;
};

} // namespace kelmio
