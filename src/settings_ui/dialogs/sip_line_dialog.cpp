#include "settings_ui/dialogs/sip_line_dialog.h"

#include "settings_ui/dialogs/frmSipAccount.h"
#include "settings_ui/dialogs/frmSipLine.h"

namespace kelmio {

void SipLineDialog::Show(SipConfiguration& line) {
  if (line.Settings().account) {
    frmSipAccount form(line, files_);
    windows_.ShowModal(form, nullptr);
    return;
  }
  frmSipLine form(line);
  windows_.ShowModal(form, nullptr);
}

} // namespace kelmio
