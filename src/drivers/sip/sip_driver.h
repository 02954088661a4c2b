// Brings the SIP line into the house.
#pragma once

#include <memory>
#include <vector>

#include "drivers/lines_file.h"
#include "drivers/sip/sip_config_dialog.h"
#include "drivers/sip/sip_line.h"
#include "drivers/sip/sip_settings.h"
#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// One line, that of the settings. User interface thread only; `loop` outlives the driver and its line.
class SipDriver : public LineDriver {
public:
  /// A line that its user can't set up.
  SipDriver(EventLoop& loop, SipSettings settings) : line_(std::make_shared<SipLine>(loop, std::move(settings))) {}

  /// The line of `file`, to which the dialog's choices go. `dialog` outlives the driver and its line.
  SipDriver(EventLoop& loop, LinesFile file, SipConfigDialog& dialog) : SipDriver(loop, ReadSipSettings(file)) {
    line_->SetConfigDialog(dialog, std::move(file));
  }

  std::vector<std::shared_ptr<LineDevice>> Lines() override { return {line_}; }
  /// The same line, with what only a SIP line has.
  SipLine& Line() { return *line_; }

private:
  std::shared_ptr<SipLine> line_;
};

} // namespace kelmio
