// Sets up a SIP account with a provider or a router.
#pragma once

#include <optional>
#include <string>

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/list_view.h"
#include "controls/tab_control.h"
#include "drivers/sip/sip_config_dialog.h"
#include "platform/dialogs.h"
#include "settings_ui/dialogs/codec_choice.h"

namespace kelmio {

/// The first of its three tabs has what most accounts need and nothing else. User interface thread only. `line` and
/// `files` outlive the form.
class frmSipAccount : public Form {
public:
  frmSipAccount(SipConfiguration& line, FilePicker& files);
  ~frmSipAccount() override;
  frmSipAccount(const frmSipAccount&) = delete;
  frmSipAccount& operator=(const frmSipAccount&) = delete;

  TabControl tabPages; // account, more, sound
  TextBox txtServer;
  TextBox txtUser;
  TextBox txtPassword;
  CheckBox chkShowPassword;
  TextBox txtDisplayName;
  TextBox txtAuthUser;
  ComboBox cboTransport;
  TextBox txtProxy;
  TextBox txtAuthority; // path
  Button cmdBrowseAuthority;
  TextBox txtStunServer;
  CheckBox chkIce;
  ComboBox cboEncryption;
  ListView lvwCodecs;
  Button cmdCodecUp;
  Button cmdCodecDown;
  Button cmdCodecUse;
  TextBox txtRingPeriod; // milliseconds
  Label lblState;        // whether the line can be reached now
  Label lblResult;       // what came of the last button
  Button cmdTry;
  Button cmdRemove;
  Button cmdOK;
  Button cmdCancel;

  void Load() override;
  void EscapePressed() override { Visible = false; }
  std::string_view Name() const override { return "frmSipAccount"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void LineChanged();
  void cmdBrowseAuthority_Click();
  void cmdTry_Click();
  void cmdRemove_Click();
  void cmdOK_Click();
  void SetCaptions();

  /// What the controls say; nothing, and a word to the user, when they say nonsense.
  std::optional<SipSettings> Entered();
  /// False, and a word to the user, when the names can't be those of an account.
  bool TakeNames(SipAccount& account);
  bool TakeHost(const TextBox& box, int page, const std::string& what, std::string& host);
  /// Shows the box that can't be used as it is, and why.
  void Complain(const TextBox& box, int page, const std::string& complaint);
  void EndTrial();
  void TellOf(const SipTakeOver& result);

  SipConfiguration& line_;
  FilePicker& files_;
  CodecChoice codecs_{{lvwCodecs, cmdCodecUp, cmdCodecDown, cmdCodecUse}};
  bool trial_ = false;        // the registrar is being asked
  bool waiting_ = false;      // settings wait for the end of a call
  bool remove_asked_ = false; // the next click removes
};

} // namespace kelmio
