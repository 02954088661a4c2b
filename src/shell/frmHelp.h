// The window with the manual.
#pragma once

#include <string>

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/jcForms.h"
#include "controls/web_browser.h"
#include "platform/desktop.h"

namespace kelmio {

/// Address of the manual: the file "share/kelmio/manual/Help.html" beside the "bin" folder of `executable` (full path),
/// where both a build and an installation keep it; without that file, the copy inside the program.
std::string ManualAddress(const std::string& executable);

/// Stands beside the other windows, so that it can be read while working. User interface thread only.
class frmHelp : public Form {
public:
  struct House {
    const Desktop& desktop;
    LinkOpener& link_opener;
    ErrorLog::House errors;
    std::string manual; // its address
    int frame_theme = 0;
  };
  explicit frmHelp(const House& house);

  Button cmdBack;
  Button cmdForward;
  Button cmdStop;
  Button cmdRefresh;
  Button cmdHome;
  Button cmdPrint;
  Button cmdPageSetup;
  WebBrowser brwHelp;

private:
  House house_;
  ErrorLog errors_;

public:
  jcForms jcForms1;

  std::string_view Name() const override { return "frmHelp"; }
  void Load() override;
  void EscapePressed() override { Visible = false; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void brwHelp_CommandStateChange();
};

} // namespace kelmio
