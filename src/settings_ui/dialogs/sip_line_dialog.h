// The set-up of a SIP line, as its driver asks for it.
#pragma once

#include "drivers/sip/sip_config_dialog.h"
#include "platform/dialogs.h"

namespace kelmio {

/// One window for accounts, and one for the line that is called directly. User interface thread only. `windows` and
/// `files` outlive it.
class SipLineDialog : public SipConfigDialog {
public:
  SipLineDialog(Windows& windows, FilePicker& files) : windows_(windows), files_(files) {}
  void Show(SipConfiguration& line) override;

private:
  Windows& windows_;
  FilePicker& files_;
};

} // namespace kelmio
