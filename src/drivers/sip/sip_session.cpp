#include "drivers/sip/sip_session.h"

namespace kelmio {

class SipSession::Call : public DeviceCall {
public:
  enum class Phase { Offered, OffHook, Outgoing, Answered, Over };

  Call(std::weak_ptr<SipSession> session, SipCallNumber number, Phase phase)
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

  std::weak_ptr<SipSession> session_;
  SipCallNumber number_;
  Phase phase_;
};

int SipSession::Start(const SipSettings& settings) {
  const auto post = [&loop = loop_, self = weak_from_this()](SipReport report) {
    loop.Post([self, report = std::move(report)] {
      const auto session = self.lock();
      if (session && session->IsOpen())
        session->Handle(report);
      if (session && session->IsOpen() && report.kind == SipReport::Kind::Disconnected)
        session->owner_.CallOver();
    });
  };
  engine_ = std::make_unique<SipEngine>(settings, post, next_call_);
  const int error = engine_->Start();
  if (error != 0)
    engine_.reset();
  return error;
}

std::optional<int> SipSession::Move(const SipSettings& next, const SipSettings& back) {
  // A call whose end the engine has reported is up for as long as nobody has been told of it.
  if (call_ || (engine_ && !engine_->StopIfIdle()))
    return std::nullopt;
  // What the old engine has reported is still on its way, so that no number may mean two calls.
  if (engine_)
    next_call_ = engine_->NextCallNumber();
  const int error = Start(next);
  if (error != 0)
    Start(back);
  return error;
}

void SipSession::Close() {
  if (call_)
    call_->SetPhase(Call::Phase::Over);
  call_.reset();
  events_ = nullptr;
  if (engine_)
    engine_->Stop();
}

void SipSession::Push(SipCommand command) {
  if (IsOpen() && engine_)
    engine_->Push(std::move(command));
}

std::shared_ptr<DeviceCall> SipSession::MakeCall(const std::string& number) {
  if (call_ || !engine_)
    return nullptr;
  call_ = std::make_shared<Call>(weak_from_this(), engine_->NextCallNumber(),
                                 number.empty() ? Call::Phase::OffHook : Call::Phase::Outgoing);
  Push({.kind = SipCommand::Kind::Dial, .call = call_->Number(), .text = number});
  return call_;
}

void SipSession::Handle(const SipReport& report) {
  // Kept through the report: its handler may end the call or close the line.
  LineEvents& events = *events_;
  if (report.kind == SipReport::Kind::Standing) {
    owner_.AccountStands(report.health, report.text, report.reason);
    return;
  }
  if (report.kind == SipReport::Kind::Log) {
    events.Log(report.text);
    return;
  }
  if (report.kind == SipReport::Kind::NewCall && !call_) {
    call_ = std::make_shared<Call>(weak_from_this(), report.call, Call::Phase::Offered);
    owner_.CallBegan();
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
  case SipReport::Kind::Standing:
    break;
  }
}

} // namespace kelmio
