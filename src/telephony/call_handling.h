// One call on the one line, from its first sign to the filed message.
#pragma once

#include <string>

#include "calls/log/call_log.h"
#include "contacts/store/contact_table.h"
#include "core/app_state.h"
#include "core/settings.h"
#include "telephony/call_context.h"
#include "telephony/call_host.h"
#include "telephony/call_monitor.h"
#include "telephony/call_watcher.h"
#include "telephony/message_recording.h"

namespace kelmio {

/// The main window's handlers of the telephony events. There is no state machine: each handler reads a handful
/// of shared variables, does its work and returns. User interface thread only; where a handler lets pending
/// events run, another handler can enter.
///
/// The desk's microphone is opened in two places: once a call is up that is the user's and not the machine's, and when
/// the user records with no call. A call that the machine answers is played to and recorded with the microphone closed,
/// whatever the user records of it later.
class CallHandling {
public:
  struct House {
    const AppState& app;
    const Settings& settings;
    CallContext& context;
    CallHost& host;
    CallWatcher& watcher;
    CallMonitor& monitor;
    MessageRecording& recording;
    ContactTable& contacts;
    CallLog& call_log;
  };
  explicit CallHandling(const House& house) : house_(house) {}

  /// Takes the events of the main window's control.
  void Listen(TAPIExCtl& control);

  void OnNewCall(const CallRef& call);
  void OnOffering(const CallRef& call);
  void OnRing(const CallRef& call, int ring_count);
  void OnCallerID(const CallRef& call, const std::string& name, const std::string& number);
  void OnCallState(const CallRef& call, CallState state);
  void OnConnected(const CallRef& call);
  void OnPlayDone();
  void OnDisConnected(const CallRef& call);
  void OnIdle(const CallRef& call);
  void OnEndCall(const CallRef& call);

  /// The user answers `CurrentCall`.
  void AnswerCall();
  /// The user calls a number. Nothing happens without a line.
  void DialCall(const std::string& number);
  /// Records now, taking the line off hook when there is no call.
  void RecordCallManual();

private:
  House house_;
};

} // namespace kelmio
