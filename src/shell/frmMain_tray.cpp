// The main window and its icon in the tray.
#include "shell/command_table.h"
#include "shell/frmMain.h"

namespace kelmio {

void frmMain::ListenToTray() {
  TrayIcon1.TrayMouseEvent = [this](std::uint32_t message) { TrayIcon1_TrayMouseEvent(message); };
  TrayIcon1.TrayIconMoved = [this](int x, int y) { TrayIcon1_TrayIconMoved(x, y); };
  TrayIcon1.TaskBarRecreated = [this] {
    TrayIcon1.Remove();
    CreateTrayIcon();
  };
  ToolTipOnDemand1.MouseEvents = [this](std::uint32_t message) {
    if (message == window_message::kLeftButtonDown || message == window_message::kRightButtonDown)
      ToolTipOnDemand1.Destroy();
  };
  // To follow the icon is costly, so that it is done only while something points at it.
  ToolTipOnDemand1.BalloonShowed = [this] { TrayIcon1.SetTrackIconMovement(true); };
  ToolTipOnDemand1.BalloonDestroyed = [this] { TrayIcon1.SetTrackIconMovement(false); };

  house_.tray.on_popup = [this]() -> const CommandBar& {
    tray_popup_ = BuildTrayPopup(house_.settings.SystemStatus);
    return tray_popup_;
  };
  house_.tray.on_command = [this](int id) { ExecuteCommand(id); };
  // A hidden window whose tray has died could not be reached any more.
  house_.tray.on_gone = [this] { ShowFromTray(); };
}

void frmMain::LeaveTray() {
  house_.tray.on_popup = {};
  house_.tray.on_command = {};
  house_.tray.on_gone = {};
}

void frmMain::CreateTrayIcon() {
  TrayIcon1.SetTrayIconVisible(true);
  TrayIcon1.SetIconHandle(kProgramIcon);
  TrayIcon1.SetToolTip(line_notice_.Tip(Caption, cTrayIcon::kTipLength));
  TrayIcon1.Create(window_);
}

void frmMain::ShowLineStatus(const LineStatus& status) {
  line_notice_.Take(status);
  const std::string tip = line_notice_.Tip(Caption, cTrayIcon::kTipLength);
  if (TrayIcon1.Created() && TrayIcon1.ToolTip() != tip)
    TrayIcon1.SetToolTip(tip);
}

void frmMain::RemoveTrayIcon() {
  if (!TrayIcon1.Created())
    return;
  TrayIcon1.Remove();
  ToolTipOnDemand1.Destroy();
}

void frmMain::TrayIcon1_TrayMouseEvent(std::uint32_t message) {
  if (message == window_message::kLeftDoubleClick)
    ShowFromTray();
  else if (message == window_message::kRightButtonDown)
    ShowTrayPopup();
}

void frmMain::TrayIcon1_TrayIconMoved(int x, int y) {
  if (x > 0)
    ToolTipOnDemand1.SetX(x);
  if (y > 0)
    ToolTipOnDemand1.SetY(y);
}

void frmMain::ShowTrayPopup() {
  house_.tray.ShowPopup(BuildTrayPopup(house_.settings.SystemStatus));
}

void frmMain::ShowTrayBalloon(int icon_type, const std::string& prompt, const std::string& title, int time_out_ms,
                              Color back_color, Color fore_color) noexcept {
  try {
    int x = 0;
    int y = 0;
    TrayIcon1.GetIconMiddle(x, y);
    TipProperties& tip = ToolTipOnDemand1.Properties();
    tip.ParentHwnd = TrayIcon1.SysTrayHWnd();
    tip.X = x > 0 ? x : tip.X;
    tip.Y = y > 0 ? y : tip.Y;
    tip.BackColor = back_color == kUsualTipColor ? kDesktopTipBack : back_color;
    tip.ForeColor = fore_color == kUsualTipColor ? 0 : fore_color;
    tip.Prompt = prompt;
    tip.Title = title;
    tip.TimeOut = time_out_ms;
    tip.IconType = icon_type;
    // Where no window may choose its place, the desktop has a balloon of its own.
    if (ToolTipOnDemand1.Show())
      TrayIcon1.BalloonTipShow(icon_type, prompt, title, time_out_ms);
  } catch (...) { // NOLINT(bugprone-empty-catch): a hint that can't be shown is not worth a word
  }
}

void frmMain::ShowHiddenBalloon() {
  constexpr int kTimeOutMs = 3000;
  constexpr Color kDarkGreen = 16384;
  constexpr Color kPaleGreen = 0xC0FFC0;
  ShowTrayBalloon(0, Caption, "", kTimeOutMs, kDarkGreen, kPaleGreen);
}

} // namespace kelmio
