#include "settings_ui/dialogs/sip_line_dialog.h"

#include "settings_ui/dialogs/frmSipLine.h"

namespace kelmio {

void SipLineDialog::Show(SipConfiguration& line) {
  frmSipLine form(line);
  windows_.ShowModal(form, nullptr);
}

} // namespace kelmio
