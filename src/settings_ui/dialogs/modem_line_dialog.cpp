#include "settings_ui/dialogs/modem_line_dialog.h"

#include "settings_ui/dialogs/frmModemLine.h"

namespace kelmio {

void ModemLineDialog::Show(ModemConfiguration& line) {
  frmModemLine form(line);
  windows_.ShowModal(form, nullptr);
}

} // namespace kelmio
