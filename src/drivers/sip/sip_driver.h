// Brings the SIP line into the house.
#pragma once

#include <memory>
#include <vector>

#include "drivers/sip/sip_line.h"
#include "drivers/sip/sip_settings.h"
#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// One line, that of the settings. User interface thread only; `loop` outlives the driver and its line.
class SipDriver : public LineDriver {
public:
  SipDriver(EventLoop& loop, SipSettings settings) : line_(std::make_shared<SipLine>(loop, std::move(settings))) {}

  std::vector<std::shared_ptr<LineDevice>> Lines() override { return {line_}; }
  /// The same line, with what only a SIP line has.
  SipLine& Line() { return *line_; }

private:
  std::shared_ptr<SipLine> line_;
};

} // namespace kelmio
