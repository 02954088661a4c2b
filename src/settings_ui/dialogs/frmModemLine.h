// Sets a voice modem up, and shows what is said between it and the program.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/tab_control.h"
#include "drivers/voice_modem/modem_config_dialog.h"

namespace kelmio {

/// User interface thread only. `line` outlives the form.
class frmModemLine : public Form {
public:
  explicit frmModemLine(ModemConfiguration& line);
  ~frmModemLine() override;
  frmModemLine(const frmModemLine&) = delete;
  frmModemLine& operator=(const frmModemLine&) = delete;

  TabControl tabPages; // modem, more, live view
  ComboBox cboPort;
  Label lblModel;
  ComboBox cboCountry;
  TextBox txtPlayGain;
  Label lblPlayGain; // the gain in words
  TextBox txtRecordGain;
  Label lblRecordGain;
  ComboBox cboRing;
  CheckBox chkDialTone;
  TextBox txtInit;
  TextBox txtLive;
  Label lblState;  // whether calls can come now
  Label lblResult; // what came of the last button
  Button cmdOK;
  Button cmdCancel;

  void Load() override;
  void EscapePressed() override { Visible = false; }
  std::string_view Name() const override { return "frmModemLine"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void LineChanged();
  void cmdOK_Click();
  void SetCaptions();
  void ShowPorts(const std::string& chosen);
  void ShowModel();
  void AddLive(const std::string& line);
  /// The path of the port that is chosen; empty when none is.
  std::string ChosenPort() const;

  /// What the controls say; nothing, and a word to the user, when they say nonsense.
  std::optional<ModemSettings> Entered();
  void Complain(const Control& control, int page, const std::string& complaint);

  ModemConfiguration& line_;
  std::vector<ModemChoice> ports_;             // in the order of the choice
  std::vector<const ModemCountry*> countries_; // in the order of the choice, behind its first item
  std::size_t live_lines_ = 0;
  bool waiting_ = false; // settings wait for the end of a call
};

} // namespace kelmio
