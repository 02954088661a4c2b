#include "telephony/tapi_control/TAPICall.h"

#include <limits>
#include <optional>

#include "telephony/tapi_control/TAPIExCtl.h"
#include "telephony/tapi_control/TAPILine.h"
#include "telephony/tapi_control/line_service.h"
#include "telephony/tapi_control/shared_line.h"

namespace kelmio {

namespace {

struct RecordSpecification {
  std::string path;
  bool monitor_signal = false;
  bool access_wave_in_buffer = false;
};

/// Takes the option words off the end; what is left is the path, whatever it holds.
RecordSpecification ReadSpecification(std::string text) {
  RecordSpecification specification;
  const auto take = [&](std::string_view word) {
    const std::string field = std::string(kFieldSeparator) + std::string(word);
    if (!text.ends_with(field))
      return false;
    text.resize(text.size() - field.size());
    return true;
  };
  for (bool taken = true; taken;) {
    const bool access = take(kAccessWaveInBuffer);
    const bool monitor = take(kMonitorSignal);
    specification.access_wave_in_buffer |= access;
    specification.monitor_signal |= monitor;
    taken = access || monitor;
  }
  specification.path = std::move(text);
  return specification;
}

} // namespace

TAPICall::TAPICall(SharedLine& line, std::shared_ptr<DeviceCall> device, Origin origin)
    : line_(&line), device_(std::move(device)), origin_(origin) {
  if (origin_ == Origin::OffHook)
    device_->Answer();
  // A call from here has sound before it is answered: ring-back and busy tones come that way.
  if (origin_ != Origin::Incoming)
    Sound();
  if (origin_ == Origin::OffHook)
    phase_ = Phase::Up;
}

TAPICall::~TAPICall() {
  device_->SetSoundPort(nullptr);
}

CallSound* TAPICall::Sound() {
  if (sound_ == nullptr && line_ != nullptr) {
    sound_ = line_->Service().Sounds().Create(*this);
    device_->SetSoundPort(sound_->Port());
  }
  return sound_.get();
}

TAPIResult TAPICall::Accept(const std::string& /*user_information*/) {
  if (Ended())
    return TAPIResult::CallEnded;
  if (!device_->Accept())
    return TAPIResult::NotPossible;
  const auto self = shared_from_this();
  line_->Service().Loop().Post([self] {
    if (!self->Ended())
      self->line_->Tell([&](TAPIExCtl& control) { control.OnCallState(self, CallState::Accepted); });
  });
  return TAPIResult::Ok;
}

TAPIResult TAPICall::Answer() {
  if (phase_ == Phase::Up)
    return TAPIResult::Ok;
  if (phase_ != Phase::Waiting)
    return TAPIResult::CallEnded;
  return device_->Answer() ? TAPIResult::Ok : TAPIResult::NotPossible;
}

void TAPICall::Hangup() {
  if (phase_ == Phase::HangingUp || phase_ == Phase::Ended)
    return;
  phase_ = Phase::HangingUp;
  device_->Hangup();
  line_->PostEnd(shared_from_this());
}

TAPIResult TAPICall::PlayFile(const std::string& path) {
  if (Ended())
    return TAPIResult::CallEnded;
  if (!Sound()->Play(path)) {
    // The end of a file with nothing to play comes at once: a damaged greeting must not cost the message.
    line_->Service().Log("Can't play " + path);
    line_->Service().Loop().Post([self = shared_from_this()] { self->PlayDone(); });
    return TAPIResult::BadFile;
  }
  line_->Service().Log("Playing " + path);
  const auto self = shared_from_this();
  line_->Service().Loop().Post([self] {
    if (!self->Ended())
      self->line_->Tell([&](TAPIExCtl& control) { control.OnPlayStart(self, 0); });
  });
  return TAPIResult::Ok;
}

void TAPICall::StopPlay() {
  if (sound_ != nullptr)
    sound_->StopPlay();
}

TAPIResult TAPICall::RecordFile(const std::string& specification) {
  if (Ended())
    return TAPIResult::CallEnded;
  TAPILine* const owner = line_->FirstOpen();
  if (owner == nullptr)
    return TAPIResult::NotPossible;

  const RecordSpecification asked = ReadSpecification(specification);
  RecordRequest request;
  request.path = asked.path;
  request.format = owner->WaveFormat().Recordable();
  request.watch_signal = asked.monitor_signal;
  request.report_blocks = asked.access_wave_in_buffer;
  request.block_bytes = static_cast<std::size_t>(owner->Control()->WaveInBufferSize);
  request.max_seconds = owner->Control()->MaxRecordSeconds;

  LineService& service = line_->Service();
  if (!owner->WaveFormat().Supported())
    service.Log("This line can't record in the chosen format; recording in " + DetailOf(request.format));
  if (!Sound()->Record(request)) {
    service.Log("Can't record to " + request.path);
    return TAPIResult::BadFile;
  }
  service.Log("Recording to " + request.path);
  return TAPIResult::Ok;
}

void TAPICall::StopRecord() {
  if (sound_ != nullptr)
    sound_->StopRecord();
}

void TAPICall::UseDesk() {
  if (Ended() || line_->Device().Caps().phone)
    return;
  desk_wanted_ = true;
  JoinDesk();
}

void TAPICall::JoinDesk() {
  if (desk_wanted_ && (phase_ == Phase::Up || origin_ != Origin::Incoming))
    Sound()->UseDesk();
}

void TAPICall::DeviceConnected() {
  if (phase_ != Phase::Waiting)
    return;
  phase_ = Phase::Up;
  Sound();
  JoinDesk();
  const auto self = shared_from_this();
  line_->Service().Log("Connected");
  line_->Tell([&](TAPIExCtl& control) { control.OnCallState(self, CallState::Connected); });
  if (!Ended())
    line_->Tell([&](TAPIExCtl& control) { control.OnConnected(self, 0); });
}

void TAPICall::DeviceDigit(char digit) {
  digits_by_signalling_ = true;
  const auto self = shared_from_this();
  line_->Service().Log(std::string("Digit ") + digit);
  line_->Tell([&](TAPIExCtl& control) { control.OnDTMF(self, digit, 0, 0); });
}

void TAPICall::End(const std::vector<TAPIExCtl*>& audience) {
  if (Ended())
    return;
  LineService& service = line_->Service();
  phase_ = Phase::Ended;
  device_->SetSoundPort(nullptr);
  // This object and its sound may be held for long: the microphone isn't.
  if (sound_ != nullptr)
    sound_->ReleaseDesk();
  StopPlay();
  const auto self = shared_from_this();
  service.Log("Call ended");
  service.Tell(audience, [&](TAPIExCtl& control) { control.OnCallState(self, CallState::Disconnected); });
  service.Tell(audience, [&](TAPIExCtl& control) { control.OnDisConnected(self, 0); });
  service.Tell(audience, [&](TAPIExCtl& control) { control.OnCallState(self, CallState::Idle); });
  service.Tell(audience, [&](TAPIExCtl& control) { control.OnIdle(self); });
  service.Tell(audience, [&](TAPIExCtl& control) { control.OnEndCall(self); });
  StopRecord();
  // The last reports of the sound are on their way; after them the call may go.
  service.Loop().Post([self] { self->line_ = nullptr; });
}

void TAPICall::PlayDone() {
  if (Ended())
    return;
  const auto self = shared_from_this();
  line_->Tell([&](TAPIExCtl& control) { control.OnPlayDone(self); });
}

void TAPICall::RecordDone() {
  if (line_ == nullptr)
    return;
  const auto self = shared_from_this();
  line_->Service().Log("Recording finished");
  line_->Tell([&](TAPIExCtl& control) { control.OnRecordDone(self); });
}

void TAPICall::Silence() {
  if (Ended())
    return;
  const auto self = shared_from_this();
  line_->Tell([&](TAPIExCtl& control) { control.OnSilence(self, 0); });
}

void TAPICall::Voice() {
  if (Ended())
    return;
  const auto self = shared_from_this();
  line_->Tell([&](TAPIExCtl& control) { control.OnVoice(self, 0, 0); });
}

void TAPICall::Tone(int hertz) {
  if (Ended())
    return;
  const auto self = shared_from_this();
  line_->Tell([&](TAPIExCtl& control) { control.OnTone(self, hertz); });
}

void TAPICall::BusyTone() {
  if (Ended())
    return;
  const auto self = shared_from_this();
  line_->Service().Log("Busy tone");
  line_->Tell([&](TAPIExCtl& control) { control.OnBusy(self, 0); });
}

void TAPICall::Digit(char digit) {
  // A client that signals its digits often plays them too: each would come twice.
  if (Ended() || digits_by_signalling_)
    return;
  const auto self = shared_from_this();
  line_->Service().Log(std::string("Digit ") + digit);
  line_->Tell([&](TAPIExCtl& control) { control.OnDTMF(self, digit, 0, 0); });
}

void TAPICall::Block(std::span<const std::byte> samples) {
  if (Ended())
    return;
  wave_in_.assign(samples.begin(), samples.end());
  const auto self = shared_from_this();
  line_->Tell([&](TAPIExCtl& control) { control.OnWaveInBuffer(self); });
}

void TAPICall::Trouble(const std::string& text) {
  if (line_ != nullptr)
    line_->Service().Log(text);
}

} // namespace kelmio
