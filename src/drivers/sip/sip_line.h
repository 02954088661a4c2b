// The SIP line as the telephony control sees it.
#pragma once

#include <memory>
#include <string>

#include "drivers/sip/sip_settings.h"
#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// One line at one address. User interface thread only.
class SipLine : public LineDevice {
public:
  /// `loop` outlives the line.
  SipLine(EventLoop& loop, SipSettings settings);
  /// Closes.
  ~SipLine() override;

  long DeviceID() const override { return settings_.device_id; }
  LineCaps Caps() const override;
  bool Open(LineEvents& events) override;
  void Close() override;
  std::shared_ptr<DeviceCall> MakeCall(const std::string& number) override;

  /// The port that is bound while the line is open; 0 otherwise.
  std::uint16_t Port() const;

private:
  class Session; // from one `Open` to its `Close`
  class Call;

  EventLoop& loop_;
  const SipSettings settings_;
  std::shared_ptr<Session> session_;
};

} // namespace kelmio
