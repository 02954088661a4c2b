#include "drivers/sip/sip_line.h"

#include <system_error>

#include "drivers/sip/sip_engine.h"

namespace kelmio {

/// Owns the engine and gives its reports to the line's events. What it posts holds it weakly, and once it is
/// closed nothing is reported, not even from a closure that runs inside one of its own reports.
class SipLine::Session : public std::enable_shared_from_this<SipLine::Session> {
public:
  Session(EventLoop& loop, LineEvents& events) : loop_(loop), events_(&events) {}

  int Start(const SipSettings& settings);
  void Close();
  bool IsOpen() const { return events_ != nullptr; }
  std::uint16_t Port() const { return engine_->Port(); }
  std::shared_ptr<DeviceCall> MakeCall(const std::string& number);
  void Push(SipCommand command);

private:
  void Handle(const SipReport& report);

  EventLoop& loop_;
  LineEvents* events_; // nothing once closed
  std::unique_ptr<SipEngine> engine_;
  std::shared_ptr<Call> call_; // the one that is up
};

class SipLine::Call : public DeviceCall {
public:
  enum class Phase { Offered, OffHook, Outgoing, Answered, Over };

  Call(std::weak_ptr<Session> session, SipCallNumber number, Phase phase)
      : session_(std::move(session)), number_(number), phase_(phase) {}

  SipCallNumber Number() const { return number_; }
  void SetPhase(Phase phase) { phase_ = phase; }

  bool Accept() override { return phase_ == Phase::Offered; }

  bool Answer() override {
    if (phase_ == Phase::Answered)
      return true;
    if (phase_ != Phase::Offered && phase_ != Phase::OffHook)
      return false;
    phase_ = Phase::Answered;
    Push({.kind = SipCommand::Kind::Answer, .call = number_});
    return true;
  }

  void Hangup() override {
    if (phase_ != Phase::Over)
      Push({.kind = SipCommand::Kind::Hangup, .call = number_});
  }

  void SetSoundPort(std::shared_ptr<SoundPort> port) override {
    if (phase_ != Phase::Over)
      Push({.kind = SipCommand::Kind::SetSoundPort, .call = number_, .port = std::move(port)});
  }

private:
  void Push(SipCommand command) const {
    if (const auto session = session_.lock())
      session->Push(std::move(command));
  }

  std::weak_ptr<Session> session_;
  SipCallNumber number_;
  Phase phase_;
};

int SipLine::Session::Start(const SipSettings& settings) {
  engine_ = std::make_unique<SipEngine>(settings, [&loop = loop_, self = weak_from_this()](SipReport report) {
    loop.Post([self, report = std::move(report)] {
      if (const auto session = self.lock(); session && session->IsOpen())
        session->Handle(report);
    });
  });
  return engine_->Start();
}

void SipLine::Session::Close() {
  if (call_)
    call_->SetPhase(Call::Phase::Over);
  call_.reset();
  events_ = nullptr;
  engine_->Stop();
}

void SipLine::Session::Push(SipCommand command) {
  if (IsOpen())
    engine_->Push(std::move(command));
}

std::shared_ptr<DeviceCall> SipLine::Session::MakeCall(const std::string& number) {
  if (call_)
    return nullptr;
  call_ = std::make_shared<Call>(weak_from_this(), engine_->NextCallNumber(),
                                 number.empty() ? Call::Phase::OffHook : Call::Phase::Outgoing);
  Push({.kind = SipCommand::Kind::Dial, .call = call_->Number(), .text = number});
  return call_;
}

void SipLine::Session::Handle(const SipReport& report) {
  // Kept through the report: its handler may end the call or close the line.
  LineEvents& events = *events_;
  if (report.kind == SipReport::Kind::Log) {
    events.Log(report.text);
    return;
  }
  if (report.kind == SipReport::Kind::NewCall && !call_) {
    call_ = std::make_shared<Call>(weak_from_this(), report.call, Call::Phase::Offered);
    events.NewCall(call_);
    return;
  }
  const std::shared_ptr<Call> call = call_;
  if (!call || call->Number() != report.call) {
    // Dialled here in the moment in which it came: the engine refuses what was dialled, and this one is let go.
    if (report.kind == SipReport::Kind::NewCall)
      Push({.kind = SipCommand::Kind::Hangup, .call = report.call});
    return;
  }
  switch (report.kind) {
  case SipReport::Kind::Ring:
    events.Ring(*call, report.count);
    break;
  case SipReport::Kind::CallerID:
    events.CallerID(*call, report.name, report.text);
    break;
  case SipReport::Kind::State:
    events.StateChanged(*call, report.state);
    break;
  case SipReport::Kind::Connected:
    call->SetPhase(Call::Phase::Answered);
    events.Connected(*call);
    break;
  case SipReport::Kind::Busy:
    events.Busy(*call);
    break;
  case SipReport::Kind::Digit:
    events.Digit(*call, report.digit);
    break;
  case SipReport::Kind::Disconnected:
    call->SetPhase(Call::Phase::Over);
    call_.reset();
    events.Disconnected(*call);
    break;
  case SipReport::Kind::NewCall:
  case SipReport::Kind::Log:
    break;
  }
}

SipLine::SipLine(EventLoop& loop, SipSettings settings) : loop_(loop), settings_(std::move(settings)) {}

SipLine::~SipLine() {
  Close();
}

LineCaps SipLine::Caps() const {
  LineCaps caps;
  caps.line_name = "SIP line (" + ToText(settings_.listen) + ")";
  caps.provider_info = "libre " + std::string(sys_libre_version_get());
  caps.switch_info = "SIP";
  caps.bearer_modes = kBearerModeVoice;
  caps.media_modes = media_mode::kInteractiveVoice | media_mode::kAutomatedVoice;
  caps.max_data_rate = 64'000;
  for (const CallState state :
       {CallState::Idle, CallState::Offering, CallState::Accepted, CallState::Dialing, CallState::Ringback,
        CallState::Busy, CallState::Connected, CallState::Proceeding, CallState::Disconnected})
    caps.call_states |= static_cast<std::uint32_t>(state);
  return caps;
}

bool SipLine::Open(LineEvents& events) {
  if (session_)
    return false;
  for (const std::string& note : settings_.notes)
    events.Log(note);
  auto session = std::make_shared<Session>(loop_, events);
  if (const int error = session->Start(settings_)) {
    events.Log("SIP line: " + ToText(settings_.listen) + " can't be opened: " + std::generic_category().message(error));
    return false;
  }
  session_ = std::move(session);
  return true;
}

void SipLine::Close() {
  if (session_)
    session_->Close();
  session_.reset();
}

std::shared_ptr<DeviceCall> SipLine::MakeCall(const std::string& number) {
  return session_ ? session_->MakeCall(number) : nullptr;
}

std::uint16_t SipLine::Port() const {
  return session_ ? session_->Port() : std::uint16_t{0};
}

} // namespace kelmio
