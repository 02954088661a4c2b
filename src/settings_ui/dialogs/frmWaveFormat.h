// Asks for the wave format of recordings.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/list_view.h"
#include "telephony/tapi_control/wave_format.h"

namespace kelmio {

/// Lists what can be recorded, and the present format with it even when it can't. User interface thread only.
class frmWaveFormat : public Form {
public:
  frmWaveFormat(const std::string& title, const WaveFormatRecord& current);

  ListView lvwFormats;
  Button cmdOK;
  Button cmdCancel;

  /// What the user took; nothing when he gave up.
  const std::optional<WaveFormatRecord>& Chosen() const { return chosen_; }

  void Load() override;
  void EscapePressed() override { Visible = false; }
  std::string_view Name() const override { return "frmWaveFormat"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void cmdOK_Click();

  WaveFormatRecord current_;
  std::vector<WaveFormatRecord> formats_; // in the order of the rows
  std::optional<WaveFormatRecord> chosen_;
};

} // namespace kelmio
