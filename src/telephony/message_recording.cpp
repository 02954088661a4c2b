#include "telephony/message_recording.h"

#include "core/date_time.h"
#include "core/mIni.h"
#include "core/text.h"

namespace kelmio {

namespace {

constexpr long kNoLengthLimit = 2147483646;

} // namespace

MessageRecording::MessageRecording(const House& house) : tmrSilence(house.timers, kDesignSilenceMs), house_(house) {
  tmrSilence.Tick = [this] { tmrSilence_Timer(); };
}

void MessageRecording::ResolveCaller() {
  CallContext& context = house_.context;
  std::string contact_id;
  if (!context.CallerNumber.empty() && context.CallerName.empty() && AsciiUpper(context.CallerNumber) != "UNKNOWN")
    contact_id = house_.contacts.GetMessageContactID(context.CallerNumber);
  if (context.CallerName.empty() && !contact_id.empty())
    context.CallerName = mIni::IniRead(contact_id, "Name", house_.app.ContactsFile);
  if (context.CallerName.empty())
    context.CallerName = kUnknown;
  if (context.CallerNumber.empty())
    context.CallerNumber = kUnknown;
}

void MessageRecording::StartCallRecording(const std::string& mode) {
  CallContext& context = house_.context;
  // What follows may end the call; the handle keeps it until the last step.
  const CallRef call = context.CurrentCall;
  if (call == nullptr)
    return;
  ResolveCaller();

  house_.control.MaxRecordSeconds =
      house_.settings.StopRecordingAfter == 1 ? house_.settings.MaxRecordingLength * kSecondsPerMinute : kNoLengthLimit;
  if (context.CurrentLine == nullptr)
    return;
  TAPIWaveFormat& format = context.CurrentLine->WaveFormat();
  format.SetID(house_.settings.RecordFormatID);
  constexpr int kBlockBytes = 2048;
  house_.control.WaveInBufferSize = kBlockBytes;
  house_.control.WaveOutBufferSize = kBlockBytes;
  house_.host.SetWaveViewFormat(format.NumberB(), format.NumberA());

  house_.host.EnableCommand(kCommandAnswer, false);
  house_.host.EnableCommand(kCommandRecord, false);
  house_.host.EnableCommand(kCommandHangUp, true);

  call->SetSilenceTime(house_.settings.RecordingSilenceLength);
  tmrSilence.SetInterval(house_.settings.RecordingSilenceLength);

  const NewMessageInfo message = house_.messages.GetNewMessageInfo(context.CurrentLine->DeviceID());
  const std::string path = message.FilePath();
  house_.messages.WriteRecord(message, context.CallerName, context.CallerNumber, mode);
  if (call->RecordFile(path + std::string(kFieldSeparator) + std::string(kMonitorSignal) +
                       std::string(kFieldSeparator) + std::string(kAccessWaveInBuffer)) != TAPIResult::Ok)
    return;
  house_.messages.SetRecording(path);
  recorded_ = call;
  if (mode == kModeAuto)
    house_.watcher.MessageBegun(call);
  house_.host.SetPanel(kPanelActivity, "Recording call...");
  tmrSilence.SetEnabled(false);
  call->RecordMark = 1;
  house_.monitor.tmrCallTime.SetEnabled(true);
}

void MessageRecording::StopMarkedRecording(const CallRef& call) {
  call->StopRecord();
  call->RecordMark = 0;
  if (recorded_.lock() == call)
    house_.messages.ClearRecording();
}

void MessageRecording::StopRecord() {
  if (const CallRef call = house_.context.CurrentCall) {
    house_.watcher.CallDropped(call);
    if (call->RecordMark == 1) {
      call->StopPlay();
      StopMarkedRecording(call);
    }
    call->Hangup();
  }
  house_.host.EnableCommand(kCommandRecord, true);
  house_.context.ManualCall = false;
  house_.monitor.tmrCallTime.SetEnabled(false);
  house_.context.ForgetCaller();
  house_.host.RefreshMessageList();
}

void MessageRecording::OnSilence(const CallRef& call) {
  silent_ = call;
  house_.host.SetPanel(kPanelLine, "Silence...");
  tmrSilence.SetEnabled(true);
}

void MessageRecording::OnVoice() {
  house_.host.SetPanel(kPanelLine, "Voice...");
  tmrSilence.SetEnabled(false);
}

void MessageRecording::OnBusy() {
  // A line that gives the busy tone has nothing more to say, recorded or not.
  if (const CallRef call = house_.context.CurrentCall)
    call->Hangup();
  tmrSilence.SetEnabled(false);
  house_.host.SetPanel(kPanelLine, "Busy...");
}

void MessageRecording::OnRecordDone(const CallRef& call) {
  if (recorded_.lock() == call)
    house_.messages.ClearRecording();
  house_.host.SetPanel(kPanelActivity, "Recording completed. Waiting for a call.");
  house_.host.SetPanel(kPanelLine, "Idle");
}

void MessageRecording::tmrSilence_Timer() {
  tmrSilence.SetEnabled(false);
  // The timer outlives a call that ended in silence: a next caller, who may ring by now, is none of its business.
  if (const CallRef call = house_.context.CurrentCall; call != nullptr && call == silent_.lock()) {
    if (call->RecordMark == 1)
      StopMarkedRecording(call);
    call->Hangup();
  }
  house_.host.SetPanel(kPanelLine, "Idle");
  house_.host.RefreshMessageList();
}

} // namespace kelmio
