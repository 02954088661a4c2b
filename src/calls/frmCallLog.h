// The window with the log of calls.
#pragma once

#include <string_view>

#include "calls/call_windows.h"
#include "calls/log/call_log.h"
#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/list_view.h"
#include "core/app_state.h"
#include "platform/event_loop.h"

namespace kelmio {

/// Shows the log as it was when the window opened; a call that comes meanwhile shows at the next opening. User
/// interface thread only; what is in `House` outlives the window.
class frmCallLog : public Form {
public:
  struct House {
    AppState& app;
    CallLog& call_log;
    CallLogWindows& windows;
    EventLoop& loop;
  };
  explicit frmCallLog(const House& house);

  ListView lvwCallLog;
  Button cmdAddToContact;
  Button cmdDial;
  Button cmdSelectAll;
  Button cmdDelete;
  Button cmdClose;

  /// Takes the selected entries out of the log, without a question.
  void DeleteCallLog();

  std::string_view Name() const override { return "frmCallLog"; }
  void Load() override;
  void EscapePressed() override { Visible = false; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  void LoadCallLog();
  void cmdAddToContact_Click();
  void cmdDial_Click();
  void cmdSelectAll_Click();

  House house_;
};

} // namespace kelmio
