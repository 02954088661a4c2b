#include "fakes/scripted_line.h"

#include <functional>

namespace kelmio {

ScriptedCall::ScriptedCall(ScriptedLine& line, std::string number, Phase phase)
    : line_(&line), number_(std::move(number)), phase_(phase) {}

bool ScriptedCall::Accept() {
  accepted_ = phase_ == Phase::Ringing;
  return accepted_;
}

bool ScriptedCall::Answer() {
  if (phase_ == Phase::Up)
    return true;
  if (phase_ != Phase::Ringing && phase_ != Phase::OffHook)
    return false;
  phase_ = Phase::Up;
  ++answers_;
  line_->Report([call = shared_from_this()](LineEvents& events) { events.Connected(*call); });
  return true;
}

void ScriptedCall::Hangup() {
  End();
}

void ScriptedCall::End() {
  if (phase_ == Phase::Over)
    return;
  phase_ = Phase::Over;
  line_->Report([call = shared_from_this()](LineEvents& events) { events.Disconnected(*call); });
}

void ScriptedCall::Ring(int count) {
  line_->Report([call = shared_from_this(), count](LineEvents& events) { events.Ring(*call, count); });
}

void ScriptedCall::SendCallerID(const std::string& name, const std::string& number) {
  line_->Report(
      [call = shared_from_this(), name, number](LineEvents& events) { events.CallerID(*call, name, number); });
}

void ScriptedCall::SendDigit(char digit) {
  line_->Report([call = shared_from_this(), digit](LineEvents& events) { events.Digit(*call, digit); });
}

void ScriptedCall::FarEndAnswers() {
  phase_ = Phase::Up;
  line_->Report([call = shared_from_this()](LineEvents& events) { events.Connected(*call); });
}

void ScriptedCall::FarEndIsBusy() {
  line_->Report([call = shared_from_this()](LineEvents& events) { events.Busy(*call); });
}

void ScriptedCall::FarEndHangsUp() {
  End();
}

void ScriptedLine::TellStatus() {
  Report([](LineEvents& events) { events.StatusChanged(); });
}

LineCaps ScriptedLine::Caps() const {
  LineCaps caps;
  caps.line_name = "Scripted line " + std::to_string(device_id_);
  caps.media_modes = media_modes_;
  caps.phone = phone;
  return caps;
}

bool ScriptedLine::Open(LineEvents& events) {
  if (taken || events_ != nullptr) {
    events.Log(Caps().line_name + " is in use");
    return false;
  }
  events_ = &events;
  ++opened_;
  return true;
}

void ScriptedLine::Close() {
  if (last_call_ != nullptr)
    last_call_->phase_ = ScriptedCall::Phase::Over;
  events_ = nullptr;
}

std::shared_ptr<DeviceCall> ScriptedLine::MakeCall(const std::string& number) {
  const bool in_use = last_call_ != nullptr && last_call_->phase_ != ScriptedCall::Phase::Over;
  if (events_ == nullptr || in_use)
    return nullptr;
  const auto phase = number.empty() ? ScriptedCall::Phase::OffHook : ScriptedCall::Phase::Dialing;
  last_call_ = std::make_shared<ScriptedCall>(*this, number, phase);
  return last_call_;
}

std::shared_ptr<ScriptedCall> ScriptedLine::Incoming() {
  last_call_ = std::make_shared<ScriptedCall>(*this, "", ScriptedCall::Phase::Ringing);
  Report([call = last_call_](LineEvents& events) { events.NewCall(call); });
  return last_call_;
}

void ScriptedLine::Report(std::function<void(LineEvents&)> report) {
  loop_.Post([self = weak_from_this(), opened = opened_, report = std::move(report)] {
    const auto line = self.lock();
    if (line != nullptr && line->events_ != nullptr && line->opened_ == opened)
      report(*line->events_);
  });
}

} // namespace kelmio
