// The set-up of a SIP line, as its driver asks for it.
#pragma once

#include "drivers/sip/sip_config_dialog.h"
#include "platform/dialogs.h"

namespace kelmio {

/// User interface thread only. `windows` outlives it.
class SipLineDialog : public SipConfigDialog {
public:
  explicit SipLineDialog(Windows& windows) : windows_(windows) {}
  void Show(SipConfiguration& line) override;

private:
  Windows& windows_;
};

} // namespace kelmio
