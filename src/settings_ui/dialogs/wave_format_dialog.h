// The choice of a wave format, as the telephony control asks for it.
#pragma once

#include "platform/dialogs.h"
#include "telephony/tapi_control/line_service.h"

namespace kelmio {

/// User interface thread only. `windows` outlives it.
class WaveFormatDialog : public FormatDialog {
public:
  explicit WaveFormatDialog(Windows& windows) : windows_(windows) {}
  std::optional<WaveFormatRecord> Select(const std::string& title, const WaveFormatRecord& current) override;

private:
  Windows& windows_;
};

} // namespace kelmio
