// The box with version, licence and where to find the makers.
#pragma once

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/jcForms.h"
#include "platform/desktop.h"

namespace kelmio {

/// User interface thread only.
class frmAbout : public Form {
public:
  struct House {
    const Desktop& desktop;
    LinkOpener& link_opener;
    ErrorLog::House errors;
    int frame_theme = 0;
  };
  explicit frmAbout(const House& house);

  Label lblProduct;
  Label lblVersion;
  Label lblPurpose;
  Label lblLicense;
  Label lblWebsite;
  Label lblContact;
  Button cmdOK;

private:
  House house_;
  ErrorLog errors_;

public:
  jcForms jcForms1;

  std::string_view Name() const override { return "frmAbout"; }
  void Load() override { cmdOK.SetFocus(); }
  void EscapePressed() override { Visible = false; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void Open(const std::string& address);
};

} // namespace kelmio
