// The program's icon in the tray: its record, its messages and its timers.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "platform/tray.h"
#include "shell/GSubclass.h"
#include "shell/local_windows.h"
#include "shell/mTray.h"

namespace kelmio {

/// The tray's messages come to the owner's window. Handlers of the events may do anything, also remove the icon; what
/// they throw ends there. User interface thread only; tray, windows and dispatcher outlive the icon, and the functions
/// of the tray that tell messages and restarts are the icon's for as long.
class cTrayIcon : private ISubclass {
public:
  static constexpr MessageWord kIconID = 999;
  static constexpr std::uint32_t kCallbackMessage = 1025;
  static constexpr std::uint32_t kTrackingTimer = 998;
  static constexpr std::uint32_t kBalloonTimer = 999;
  /// The tip's field in the record, without the end mark. In characters.
  static constexpr std::size_t kTipLength = 127;

  cTrayIcon(Tray& tray, LocalWindows& windows, MSubclass& subclass);
  ~cTrayIcon() override;

  /// Removes an icon that is there already. An empty tip shows the program's name.
  void Create(WindowHandle owner, int icon, const std::string& tool_tip);
  void Remove();
  bool Created() const { return window_ != 0; }

  bool Visible() const { return visible_; }
  void SetVisible(bool visible);
  /// The whole text, though the record holds less of it.
  const std::string& ToolTip() const { return tool_tip_; }
  void SetToolTip(const std::string& text);
  int IconHandle() const { return icon_; }
  void SetIconHandle(int icon);

  /// A balloon of the desktop's own; `info_flags` are 1 information, 2 warning, 3 error. It stays until it is closed,
  /// or `time_out_ms` when that is above 0.
  void BalloonTipShow(int info_flags, const std::string& text, const std::string& title, int time_out_ms);
  void BalloonTipClose();

  void GetIconMiddle(int& x, int& y);
  void GetIconRect(int& left, int& top, int& right, int& bottom) const;
  /// The tray's own window, 0 when it isn't known.
  std::uint32_t SysTrayHWnd() const { return tray_.HostWindow(); }

  /// Whether the icon is asked again and again where it is.
  bool TrackIconMovement() const { return track_; }
  void SetTrackIconMovement(bool track);
  int IconMovementTrackInterval() const { return track_interval_ms_; }
  /// In milliseconds, at least 1.
  void SetIconMovementTrackInterval(int interval_ms);

  std::function<void(std::uint32_t message)> TrayMouseEvent = [](std::uint32_t) {};
  std::function<void(std::uint32_t message)> TrayKeyEvent = [](std::uint32_t) {};
  std::function<void(int x, int y)> TrayIconMoved = [](int, int) {};
  std::function<void(std::uint32_t message)> TrayBalloonEvent = [](std::uint32_t) {};
  /// The tray has restarted and the icon stands in it again.
  std::function<void()> TaskBarRecreated = [] {};

private:
  MessageResponse MsgResponse() const override;
  /// The messages fix the response.
  void SetMsgResponse(MessageResponse /*response*/) override {}
  MessageResult WindowProc(WindowHandle window, std::uint32_t message, MessageWord word,
                           MessageWord long_word) override;

  MessageResult PassOn(WindowHandle window, std::uint32_t message, MessageWord word, MessageWord long_word) const;
  /// Whether the message was one of the icon's.
  bool OnTimer(WindowHandle window, MessageWord timer);
  bool OnCallback(WindowHandle window, std::uint32_t message);
  void OnTaskBarCreated();
  void Track();
  void StartTimer(std::uint32_t id, int interval_ms);
  void StopTimer(std::uint32_t id);
  bool& Running(std::uint32_t timer) { return timer == kTrackingTimer ? tracking_runs_ : balloon_runs_; }
  void Modify(unsigned flags);

  Tray& tray_;
  LocalWindows& windows_;
  GSubclass subclass_;
  TrayRecord record_;
  WindowHandle window_ = 0;
  int icon_ = kNoIcon;
  bool visible_ = true;
  std::string tool_tip_;
  std::uint32_t task_bar_created_ = 0; // 0 until asked for
  bool tracking_runs_ = false;
  bool balloon_runs_ = false;
  bool track_ = false;
  int track_interval_ms_ = 500;
  mTray::Middle middle_{};
  mTray::Middle last_{}; // as last reported
};

} // namespace kelmio
