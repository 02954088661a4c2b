#include "telephony/tapi_control/shared_line.h"

#include <algorithm>
#include <utility>

#include "telephony/tapi_control/TAPIExCtl.h"
#include "telephony/tapi_control/TAPILine.h"
#include "telephony/tapi_control/line_service.h"

namespace kelmio {

SharedLine::SharedLine(LineService& service, std::shared_ptr<LineDevice> device)
    : service_(service), device_(std::move(device)) {}

bool SharedLine::Open(TAPILine& line) {
  if (open_lines_.empty() && !device_->Open(*this))
    return false;
  const auto place = std::find_if(open_lines_.begin(), open_lines_.end(), [&](const TAPILine* other) {
    return service_.HearsBefore(line.Control(), other->Control());
  });
  open_lines_.insert(place, &line);
  return true;
}

void SharedLine::Close(TAPILine& line) {
  const std::vector<TAPIExCtl*> audience = Audience();
  std::erase(open_lines_, &line);
  // The main window answers the calls: what it lets go of must not stay up behind its back.
  if (!open_lines_.empty() && !(line.Control() != nullptr && line.Control()->IsMain()))
    return;
  // The closing window hears the end too, so that what the device reports of it meanwhile must not come first.
  for (const auto& call : std::exchange(calls_, {})) {
    call->Device().Hangup();
    service_.Loop().Post([self = shared_from_this(), call, audience] { self->EndNow(call, audience); });
  }
  if (open_lines_.empty())
    device_->Close();
}

std::shared_ptr<TAPICall> SharedLine::MakeCall(const std::string& number) {
  std::shared_ptr<DeviceCall> device = device_->MakeCall(number);
  if (device == nullptr)
    return nullptr;
  const auto origin = number.empty() ? TAPICall::Origin::OffHook : TAPICall::Origin::Outgoing;
  auto call = std::make_shared<TAPICall>(*this, std::move(device), origin);
  calls_.push_back(call);
  service_.Log(number.empty() ? "Line taken off hook" : "Dialing " + number);
  return call;
}

std::vector<TAPIExCtl*> SharedLine::Audience() const {
  std::vector<TAPIExCtl*> audience;
  for (const TAPILine* line : open_lines_)
    if (std::find(audience.begin(), audience.end(), line->Control()) == audience.end())
      audience.push_back(line->Control());
  return audience;
}

void SharedLine::Tell(const std::function<void(TAPIExCtl&)>& event) const {
  service_.Tell(Audience(), event);
}

TAPILine* SharedLine::FirstOpen() const {
  return open_lines_.empty() ? nullptr : open_lines_.front();
}

void SharedLine::PostEnd(const std::shared_ptr<TAPICall>& call) {
  service_.Loop().Post([self = shared_from_this(), call] { self->EndNow(call, self->Audience()); });
}

void SharedLine::EndNow(const std::shared_ptr<TAPICall>& call, const std::vector<TAPIExCtl*>& audience) {
  std::erase(calls_, call);
  call->End(audience);
}

std::shared_ptr<TAPICall> SharedLine::CallOf(const DeviceCall& device) const {
  for (const auto& call : calls_)
    if (&call->Device() == &device)
      return call;
  return nullptr;
}

void SharedLine::NewCall(std::shared_ptr<DeviceCall> device) {
  auto call = std::make_shared<TAPICall>(*this, std::move(device), TAPICall::Origin::Incoming);
  calls_.push_back(call);
  service_.Log("New call");
  Tell([&](TAPIExCtl& control) { control.OnNewCall(call); });
  Tell([&](TAPIExCtl& control) { control.OnCallState(call, CallState::Offering); });
  Tell([&](TAPIExCtl& control) { control.OnOffering(call, 0); });
}

void SharedLine::Ring(DeviceCall& device, int count) {
  const auto call = CallOf(device);
  if (!call)
    return;
  service_.Log("Ring " + std::to_string(count));
  Tell([&](TAPIExCtl& control) { control.OnRing(call, count, 0); });
}

void SharedLine::CallerID(DeviceCall& device, const std::string& name, const std::string& number) {
  const auto call = CallOf(device);
  // A caller who gives neither is left to the second ring, which logs an unknown caller once.
  if (!call || (name.empty() && number.empty()))
    return;
  service_.Log("Caller: " + name + (name.empty() || number.empty() ? "" : ", ") + number);
  Tell([&](TAPIExCtl& control) { control.OnCallerID(call, name, number); });
}

void SharedLine::StateChanged(DeviceCall& device, CallState state) {
  if (const auto call = CallOf(device))
    Tell([&](TAPIExCtl& control) { control.OnCallState(call, state); });
}

void SharedLine::Connected(DeviceCall& device) {
  if (const auto call = CallOf(device))
    call->DeviceConnected();
}

void SharedLine::Busy(DeviceCall& device) {
  const auto call = CallOf(device);
  if (!call)
    return;
  service_.Log("The far end is busy");
  Tell([&](TAPIExCtl& control) { control.OnCallState(call, CallState::Busy); });
  Tell([&](TAPIExCtl& control) { control.OnBusy(call, 0); });
}

void SharedLine::Digit(DeviceCall& device, char digit) {
  if (const auto call = CallOf(device))
    call->DeviceDigit(digit);
}

void SharedLine::Disconnected(DeviceCall& device) {
  if (const auto call = CallOf(device))
    EndNow(call, Audience());
}

void SharedLine::Log(const std::string& text) {
  service_.Log(text);
}

void SharedLine::StatusChanged() {
  const LineStatus status = device_->Status();
  Tell([&](TAPIExCtl& control) { control.OnLineStatus(status); });
}

} // namespace kelmio
