// Sets a SIP line up: who may call, where, and with which codecs.
#pragma once

#include <optional>

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/list_view.h"
#include "drivers/sip/sip_config_dialog.h"
#include "settings_ui/dialogs/codec_choice.h"

namespace kelmio {

/// User interface thread only. `line` outlives the form.
class frmSipLine : public Form {
public:
  explicit frmSipLine(SipConfiguration& line);
  ~frmSipLine() override;
  frmSipLine(const frmSipLine&) = delete;
  frmSipLine& operator=(const frmSipLine&) = delete;

  ComboBox cboCallers;
  TextBox txtPort;
  TextBox txtRingPeriod; // milliseconds
  ListView lvwCodecs;
  Button cmdCodecUp;
  Button cmdCodecDown;
  Button cmdCodecUse;
  Label lblState;  // whether the line can be reached now
  Label lblResult; // what came of the last button
  Button cmdTest;
  Button cmdOK;
  Button cmdCancel;

  void Load() override;
  void EscapePressed() override { Visible = false; }
  std::string_view Name() const override { return "frmSipLine"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void cmdTest_Click();
  void cmdOK_Click();

  /// What the controls say; nothing, and a word to the user, when they say nonsense.
  std::optional<SipSettings> Entered();

  SipConfiguration& line_;
  CodecChoice codecs_{{lvwCodecs, cmdCodecUp, cmdCodecDown, cmdCodecUse}};
};

} // namespace kelmio
