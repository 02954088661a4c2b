#include "telephony/call_handling.h"

#include "core/mGeneral.h"
#include "core/mIni.h"

namespace kelmio {

namespace {

/// The ring at which a call that brought no number counts as one from an unknown caller.
constexpr int kFallbackRing = 2;
constexpr long kAcceptOption = 2;

} // namespace

void CallHandling::Listen(TAPIExCtl& control) {
  control.OnNewCall = [this](const CallRef& call) { OnNewCall(call); };
  control.OnOffering = [this](const CallRef& call, long) { OnOffering(call); };
  control.OnRing = [this](const CallRef& call, int ring_count, long) { OnRing(call, ring_count); };
  control.OnCallerID = [this](const CallRef& call, const std::string& name, const std::string& number) {
    OnCallerID(call, name, number);
  };
  control.OnCallState = [this](const CallRef& call, CallState state) { OnCallState(call, state); };
  control.OnConnected = [this](const CallRef& call, long) { OnConnected(call); };
  control.OnPlayDone = [this](const CallRef&) { OnPlayDone(); };
  control.OnDisConnected = [this](const CallRef& call, long) { OnDisConnected(call); };
  control.OnIdle = [this](const CallRef& call) { OnIdle(call); };
  control.OnEndCall = [this](const CallRef& call) { OnEndCall(call); };
  control.OnDTMF = [this](const CallRef&, int digit, long, long) { house_.monitor.OnDTMF(digit); };
  control.OnTone = [this](const CallRef&, long) { house_.monitor.OnTone(); };
  control.OnSilence = [this](const CallRef& call, long) { house_.recording.OnSilence(call); };
  control.OnVoice = [this](const CallRef&, long, long) { house_.recording.OnVoice(); };
  control.OnBusy = [this](const CallRef&, long) { house_.recording.OnBusy(); };
  control.OnRecordDone = [this](const CallRef& call) { house_.recording.OnRecordDone(call); };
  control.OnWaveInBuffer = [this](const CallRef& call) { house_.host.DrawWave(call->WaveInBuffer()); };
}

void CallHandling::OnNewCall(const CallRef& call) {
  house_.context.ForgetCaller();
  house_.context.CurrentCall = call;
  house_.host.EnableCommand(kCommandAnswer, true);
  house_.watcher.CallBegan(call);
}

void CallHandling::OnOffering(const CallRef& call) {
  house_.context.CurrentCall = call;
  if (house_.context.ManualCall || house_.settings.AutoAnswerIncoming != 1)
    return;
  if (house_.settings.AcceptOnOffering != 0) {
    call->Accept("");
    call->SetAcceptOption(kAcceptOption);
  }
  if (house_.settings.AnswerOnOffering != 0)
    call->Answer();
}

void CallHandling::OnRing(const CallRef& call, int ring_count) {
  CallContext& context = house_.context;
  house_.host.SetPanel(kPanelActivity, "New call. Ringing: " + std::to_string(ring_count));
  context.CurrentCall = call;
  context.ManualCall = false;
  house_.watcher.CallRings(call);
  if (context.CallerNumber.empty() && ring_count >= kFallbackRing) {
    if (context.CallerName.empty())
      context.CallerName = kUnknown;
    context.CallerNumber = kUnknown;
    // The alert lets events run, so that the end of this call may empty the texts before they are logged.
    const std::string name = context.CallerName;
    const std::string number = context.CallerNumber;
    if (house_.settings.NewCallAlert == 1)
      house_.host.ShowNewCallAlert(name, number);
    house_.call_log.LogNewCall(name, number);
  }
  if (house_.settings.AutoAnswerIncoming == 1 && ring_count >= house_.settings.AutoAnswerRingCount)
    call->Answer();
}

void CallHandling::OnCallerID(const CallRef& call, const std::string& name, const std::string& number) {
  CallContext& context = house_.context;
  context.CallerName = name;
  context.CallerNumber = number;
  if (context.CurrentCall == nullptr)
    return;
  std::string contact_id;
  if (context.CallerName.empty() && !number.empty())
    contact_id = house_.contacts.GetMessageContactID(number);
  if (context.CallerName.empty() && !contact_id.empty())
    context.CallerName = mIni::IniRead(contact_id, "Name", house_.app.ContactsFile);
  if (context.CallerName.empty())
    context.CallerName = kUnknown;
  context.ManualCall = false;
  const std::string shown_name = context.CallerName;
  house_.watcher.CallerKnown(call, shown_name, number);
  house_.call_log.LogNewCall(shown_name, number);
  if (house_.settings.NewCallAlert == 1)
    house_.host.ShowNewCallAlert(shown_name, number);
}

void CallHandling::OnCallState(const CallRef& call, CallState state) {
  house_.monitor.OnCallState(state);
  if (state == CallState::Accepted && call->AnswerMark == 1) {
    call->Answer();
    call->AnswerMark = 0;
  }
}

void CallHandling::OnConnected(const CallRef& call) {
  house_.host.SetPanel(kPanelLine, "Connected");
  house_.host.EnableCommand(kCommandAnswer, false);
  const bool by_machine = !house_.context.ManualCall && house_.settings.AutoAnswerIncoming == 1;
  house_.watcher.CallTaken(call, by_machine);
  if (!by_machine) {
    call->UseDesk();
    return;
  }
  if (mGeneral::FileExists(house_.settings.GreetingFile))
    call->PlayFile(house_.settings.GreetingFile);
  else
    house_.recording.StartCallRecording(kModeAuto);
}

void CallHandling::OnPlayDone() {
  if (house_.settings.AutoAnswerIncoming == 1)
    house_.recording.StartCallRecording(kModeAuto);
}

void CallHandling::OnDisConnected(const CallRef& call) {
  if (call->RecordMark == 1) {
    call->StopPlay();
    house_.recording.StopMarkedRecording(call);
  }
  house_.context.ForgetCaller();
}

void CallHandling::OnIdle(const CallRef& call) {
  if (call->RecordMark == 1)
    house_.recording.StopMarkedRecording(call);
  house_.context.CurrentCall = nullptr;
  house_.monitor.tmrCallTime.SetEnabled(false);
  house_.context.ForgetCaller();
}

void CallHandling::OnEndCall(const CallRef& call) {
  house_.host.EnableCommand(kCommandAnswer, false);
  house_.host.EnableCommand(kCommandRecord, true);
  house_.context.ManualCall = false;
  house_.context.ForgetCaller();
  house_.monitor.tmrCallTime.SetEnabled(false);
  house_.watcher.CallOver(call);
  // The refresh lets events run: a quick next call's handlers may run inside it, so that it comes last.
  house_.host.RefreshMessageList();
}

void CallHandling::AnswerCall() {
  const CallRef call = house_.context.CurrentCall;
  if (call == nullptr)
    return;
  house_.context.ManualCall = true;
  call->Answer();
}

void CallHandling::DialCall(const std::string& number) {
  CallContext& context = house_.context;
  if (context.CurrentLine == nullptr)
    return;
  if (context.CurrentLine->IsOpen()) {
    context.ManualCall = true;
    context.CurrentCall = context.CurrentLine->MakeCall(number);
    // Who dials hears it ring, and what the network says on why it doesn't.
    if (context.CurrentCall != nullptr)
      context.CurrentCall->UseDesk();
  } else {
    context.CurrentCall = nullptr;
  }
}

void CallHandling::RecordCallManual() {
  CallContext& context = house_.context;
  if (context.CurrentCall == nullptr) {
    if (context.CurrentLine == nullptr)
      return;
    context.CurrentCall = context.CurrentLine->MakeCall("");
    // With nobody on the line it is the microphone that is recorded.
    if (context.CurrentCall != nullptr)
      context.CurrentCall->UseDesk();
  }
  const CallRef call = context.CurrentCall;
  if (call == nullptr || call->Answer() != TAPIResult::Ok)
    return;
  house_.recording.StartCallRecording(kModeManual);
}

} // namespace kelmio
