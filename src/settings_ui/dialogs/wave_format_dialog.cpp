#include "settings_ui/dialogs/wave_format_dialog.h"

#include "settings_ui/dialogs/frmWaveFormat.h"

namespace kelmio {

std::optional<WaveFormatRecord> WaveFormatDialog::Select(const std::string& title, const WaveFormatRecord& current) {
  frmWaveFormat form(title, current);
  windows_.ShowModal(form, nullptr);
  return form.Chosen();
}

} // namespace kelmio
