#include "shell/frmHelp.h"

#include <filesystem>
#include <system_error>

#include "core/mGeneral.h"

namespace kelmio {

namespace {

constexpr const char* kTitle = "Help";
constexpr const char* kManualBesideBin = "../share/kelmio/manual/Help.html";
constexpr const char* kManualInside = "qrc:/manual/Help.html";

} // namespace

std::string ManualAddress(const std::string& executable) {
  namespace fs = std::filesystem;
  const fs::path file = (fs::path(executable).parent_path() / kManualBesideBin).lexically_normal();
  std::error_code error;
  return fs::is_regular_file(file, error) ? "file://" + file.string() : kManualInside;
}

frmHelp::frmHelp(const House& house)
    : house_(house), errors_(house.errors), jcForms1({*this, house_.desktop, errors_}) {
  Caption = kTitle;
  cmdBack.Caption = "Back";
  cmdForward.Caption = "Forward";
  cmdStop.Caption = "Stop";
  cmdRefresh.Caption = "Refresh";
  cmdHome.Caption = "Home";
  cmdPrint.Caption = "Print...";
  cmdPageSetup.Caption = "Page Setup...";
  cmdBack.Click = [this] { brwHelp.GoBack(); };
  cmdForward.Click = [this] { brwHelp.GoForward(); };
  cmdStop.Click = [this] { brwHelp.Stop(); };
  cmdRefresh.Click = [this] { brwHelp.Refresh(); };
  cmdHome.Click = [this] { brwHelp.GoHome(); };
  cmdPrint.Click = [this] { brwHelp.Print(); };
  cmdPageSetup.Click = [this] { brwHelp.PageSetup(); };
  brwHelp.CommandStateChange = [this] { brwHelp_CommandStateChange(); };
  brwHelp.ExternalLink = [this](const std::string& address) {
    mGeneral::ShellOpen(house_.link_opener, address, "Open");
  };
  jcForms1.ThemeColor = house_.frame_theme;
  jcForms1.BorderStyle = jcForms::Border::Sizable;
  jcForms1.Refresh();
}

void frmHelp::Load() {
  brwHelp.SetHome(house_.manual);
  brwHelp.GoHome();
}

void frmHelp::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("jcForms1", jcForms1);
  visitor.Visit("cmdBack", cmdBack);
  visitor.Visit("cmdForward", cmdForward);
  visitor.Visit("cmdStop", cmdStop);
  visitor.Visit("cmdRefresh", cmdRefresh);
  visitor.Visit("cmdHome", cmdHome);
  visitor.Visit("cmdPrint", cmdPrint);
  visitor.Visit("cmdPageSetup", cmdPageSetup);
  visitor.Visit("brwHelp", brwHelp);
}

void frmHelp::brwHelp_CommandStateChange() {
  cmdBack.Enabled = brwHelp.CanGoBack();
  cmdForward.Enabled = brwHelp.CanGoForward();
  cmdStop.Enabled = brwHelp.Busy();
  const std::string& title = brwHelp.Title;
  Caption = title.empty() ? kTitle : title;
}

} // namespace kelmio
