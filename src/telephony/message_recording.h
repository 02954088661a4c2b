// From a call that is up to a message in the inbox, and every way in which the recording stops.
#pragma once

#include <memory>
#include <string>

#include "contacts/store/contact_table.h"
#include "controls/timer.h"
#include "core/app_state.h"
#include "core/settings.h"
#include "messages/store/message_store.h"
#include "telephony/call_context.h"
#include "telephony/call_host.h"
#include "telephony/call_monitor.h"
#include "telephony/call_watcher.h"

namespace kelmio {

/// How a recording came about, as the index keeps it.
inline constexpr const char* kModeAuto = "Auto";
inline constexpr const char* kModeManual = "Manual";

/// User interface thread only. The index entry is written in full before the first sample: a crash leaves a
/// row that heals, never a file that no one finds.
class MessageRecording {
public:
  struct House {
    const AppState& app;
    const Settings& settings;
    CallContext& context;
    CallHost& host;
    CallWatcher& watcher;
    TAPIExCtl& control;
    CallMonitor& monitor;
    ContactTable& contacts;
    MessageStore& messages;
    TimerService& timers;
  };
  explicit MessageRecording(const House& house);

  /// Records `CurrentCall` into a new message. Nothing happens without a call.
  void StartCallRecording(const std::string& mode);
  /// Ends a recording if one runs, hangs up and tidies up.
  void StopRecord();

  void OnSilence(const CallRef& call);
  void OnVoice();
  void OnBusy();
  void OnRecordDone(const CallRef& call);
  /// Stops the recording of a call that is being recorded.
  void StopMarkedRecording(const CallRef& call);

  /// Runs while the line is silent; its tick ends the recording.
  Timer tmrSilence;

private:
  void tmrSilence_Timer();
  void ResolveCaller();

  static constexpr int kDesignSilenceMs = 10000;

  House house_;
  std::weak_ptr<TAPICall> recorded_;
  std::weak_ptr<TAPICall> silent_; // the call that `tmrSilence` waits for
};

} // namespace kelmio
