// An open SIP line: the engine that runs, and the call that is up.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "drivers/sip/engine_messages.h"
#include "drivers/sip/sip_engine.h"
#include "drivers/sip/sip_settings.h"
#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// What a session tells its line, besides the events. User interface thread only.
class SipSessionOwner {
public:
  virtual ~SipSessionOwner() = default;
  virtual void CallBegan() = 0;
  /// Behind the report of a call's end.
  virtual void CallOver() = 0;
  /// How the account stands. `reason` is the same without what changes with each attempt.
  virtual void AccountStands(LineStatus::Health health, const std::string& words, const std::string& reason) = 0;
};

/// Owns the engine and gives its reports to the line's events. What it posts holds it weakly, and once it is
/// closed nothing is reported, not even from a closure that runs inside one of its own reports. User interface
/// thread only.
class SipSession : public std::enable_shared_from_this<SipSession> {
public:
  /// All three outlive the open session.
  SipSession(EventLoop& loop, LineEvents& events, SipSessionOwner& owner)
      : loop_(loop), events_(&events), owner_(owner) {}

  /// Gives 0, or the error number of what was in the way.
  int Start(const SipSettings& settings);

  /// Goes on with `next`, or with `back` when that can't be opened. Gives 0 or the error number; nothing, and nothing
  /// is changed, while a call is up.
  std::optional<int> Move(const SipSettings& next, const SipSettings& back);

  void Close();
  bool IsOpen() const { return events_ != nullptr; }

  /// Whether calls can come. False in an open session only after a `Move` from which there was no way back.
  bool IsRunning() const { return engine_ != nullptr; }
  /// The bound port, 0 when it doesn't run.
  std::uint16_t Port() const { return engine_ ? engine_->Port() : std::uint16_t{0}; }
  bool HasCall() const { return call_ != nullptr; }

  std::shared_ptr<DeviceCall> MakeCall(const std::string& number);

private:
  class Call;

  void Push(SipCommand command);
  void Handle(const SipReport& report);

  EventLoop& loop_;
  LineEvents* events_; // nothing once closed
  SipSessionOwner& owner_;
  std::unique_ptr<SipEngine> engine_;
  SipCallNumber next_call_ = 1; // of the next engine
  std::shared_ptr<Call> call_;  // the one that is up
};

} // namespace kelmio
