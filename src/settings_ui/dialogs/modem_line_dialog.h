// The set-up of a voice modem, as its driver asks for it.
#pragma once

#include "drivers/voice_modem/modem_config_dialog.h"
#include "platform/dialogs.h"

namespace kelmio {

/// User interface thread only. `windows` outlives it.
class ModemLineDialog : public ModemConfigDialog {
public:
  explicit ModemLineDialog(Windows& windows) : windows_(windows) {}
  void Show(ModemConfiguration& line) override;

private:
  Windows& windows_;
};

} // namespace kelmio
