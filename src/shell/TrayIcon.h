// The tray icon as a control of a window.
#pragma once

#include <functional>
#include <string>

#include "shell/cTrayIcon.h"
#include "shell/property_bag.h"

namespace kelmio {

/// Its properties last from one icon to the next. User interface thread only; what it is made of outlives it.
class TrayIcon {
public:
  TrayIcon(Tray& tray, LocalWindows& windows, MSubclass& subclass, const PropertyBag& properties = {});
  TrayIcon(const TrayIcon&) = delete;
  TrayIcon& operator=(const TrayIcon&) = delete;

  void ReadProperties(const PropertyBag& properties);
  void WriteProperties(PropertyBag& properties) const;

  /// Shows the icon with the control's properties.
  void Create(WindowHandle owner) { icon_.Create(owner, icon_handle_, tool_tip_); }
  void Remove() { icon_.Remove(); }
  bool Created() const { return icon_.Created(); }

  bool TrayIconVisible() const { return icon_.Visible(); }
  void SetTrayIconVisible(bool visible) { icon_.SetVisible(visible); }
  const std::string& ToolTip() const { return tool_tip_; }
  void SetToolTip(const std::string& text);
  int IconHandle() const { return icon_handle_; }
  void SetIconHandle(int icon);

  void BalloonTipShow(int info_flags, const std::string& text, const std::string& title, int time_out_ms) {
    icon_.BalloonTipShow(info_flags, text, title, time_out_ms);
  }
  void BalloonTipClose() { icon_.BalloonTipClose(); }
  void GetIconMiddle(int& x, int& y) { icon_.GetIconMiddle(x, y); }
  void IconRect(int& left, int& top, int& right, int& bottom) const { icon_.GetIconRect(left, top, right, bottom); }
  std::uint32_t SysTrayHWnd() const { return icon_.SysTrayHWnd(); }
  bool TrackIconMovement() const { return icon_.TrackIconMovement(); }
  void SetTrackIconMovement(bool track) { icon_.SetTrackIconMovement(track); }
  int IconMovementTrackInterval() const { return icon_.IconMovementTrackInterval(); }
  void SetIconMovementTrackInterval(int interval_ms) { icon_.SetIconMovementTrackInterval(interval_ms); }

  std::function<void(std::uint32_t message)> TrayMouseEvent = [](std::uint32_t) {};
  std::function<void(std::uint32_t message)> TrayKeyEvent = [](std::uint32_t) {};
  std::function<void(int x, int y)> TrayIconMoved = [](int, int) {};
  std::function<void(std::uint32_t message)> TrayBalloonEvent = [](std::uint32_t) {};
  std::function<void()> TaskBarRecreated = [] {};

private:
  cTrayIcon icon_;
  int icon_handle_ = kNoIcon;
  std::string tool_tip_;
};

} // namespace kelmio
