// The status pane: a running log of what the telephony control says.
#pragma once

#include <string>

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "core/app_state.h"
#include "core/settings.h"
#include "platform/desktop.h"
#include "platform/journal.h"

namespace kelmio {

/// The log has no file behind it. User interface thread only.
class frmOutput : public Form {
public:
  frmOutput(const AppState& app, const Settings& settings, Clipboard& clipboard, Journal& journal);

  TextBox txtOutput;
  Button cmdCopy;
  Button cmdClear;
  Button cmdSelectAll;

  void Load() override;
  /// Appends a line, also to the journal. Dropped before the program has been loaded.
  void OnLogText(const std::string& text);

  std::string_view Name() const override { return "frmOutput"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void cmdCopy_Click();
  void cmdClear_Click();
  void cmdSelectAll_Click();

  const AppState& app_;
  const Settings& settings_;
  Clipboard& clipboard_;
  Journal& journal_;
};

} // namespace kelmio
