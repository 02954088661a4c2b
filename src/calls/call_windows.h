// What the windows of this folder ask of the others.
#pragma once

#include <string>

namespace kelmio {

class Form;

/// The windows that the call log opens. The shell implements it. User interface thread only; each returns when its
/// window has closed again.
class CallLogWindows {
public:
  virtual ~CallLogWindows() = default;
  /// The contact editor on what `AppState` hands over, centred over `owner`.
  virtual void OpenContactEditor(Form& owner) = 0;
  /// The dialer with `AppState::DialNumber`.
  virtual void OpenDialer(Form& owner) = 0;
};

/// The main window's part in a call of the dialer. User interface thread only.
class DialerEngine {
public:
  virtual ~DialerEngine() = default;
  virtual void SetSystemStatus() = 0;
  virtual void DialCall(const std::string& number) = 0;
  virtual void AnswerCall() = 0;
  virtual void RecordCallManual() = 0;
  virtual void StopRecord() = 0;
};

} // namespace kelmio
