#include "shell/cTrayIcon.h"

#include <algorithm>

#include "controls/utf8.h"
#include "core/text.h"
#include "shell/raise.h"

namespace kelmio {

namespace {

constexpr const char* kApplicationTitle = "Kelmio";

/// Messages that the icon answers in the window's place.
constexpr std::uint32_t kReservedMessage = 1299;
constexpr std::uint32_t kFirstTrayMessage = 1024;
constexpr std::uint32_t kLastKeyMessage = 1025;
constexpr std::uint32_t kLastShownMessage = 1027; // the balloon has come up or was taken down
constexpr std::uint32_t kLastTrayMessage = 1029;  // it has timed out, or was clicked

constexpr bool IsBetween(std::uint32_t message, std::uint32_t first, std::uint32_t last) {
  return first <= message && message <= last;
}

/// The first characters of a text.
std::string CutTo(const std::string& text, std::size_t characters) {
  if (!IsValidUtf8(text))
    return text.substr(0, characters);
  std::size_t count = 0;
  for (std::size_t at = 0; at < text.size(); ++at)
    if (BeginsCharacter(text[at]) && count++ == characters)
      return text.substr(0, at);
  return text;
}

} // namespace

cTrayIcon::cTrayIcon(Tray& tray, LocalWindows& windows, MSubclass& subclass)
    : tray_(tray), windows_(windows), subclass_(subclass) {
  tray_.on_message = [this](std::uint32_t message) {
    windows_.Send(window_, kCallbackMessage, kIconID, static_cast<MessageWord>(message));
  };
  tray_.on_restarted = [this] {
    if (task_bar_created_ != 0)
      windows_.Broadcast(task_bar_created_);
  };
}

cTrayIcon::~cTrayIcon() {
  Remove();
  tray_.on_message = {};
  tray_.on_restarted = {};
}

void cTrayIcon::Create(WindowHandle owner, int icon, const std::string& tool_tip) {
  if (Created())
    Remove();
  window_ = owner;
  icon_ = icon;
  tool_tip_ = tool_tip;
  record_ = {};
  record_.icon = visible_ ? icon_ : kNoIcon;
  record_.tip = CutTo(tool_tip.empty() ? kApplicationTitle : tool_tip, kTipLength);
  tray_.Add(record_);
  subclass_.AttachMessage(*this, window_, kCallbackMessage);
  if (task_bar_created_ == 0)
    task_bar_created_ = windows_.RegisterMessage("TaskbarCreated");
  subclass_.AttachMessage(*this, window_, task_bar_created_);
  if (track_) {
    GetIconMiddle(last_.x, last_.y);
    StartTimer(kTrackingTimer, track_interval_ms_);
  }
}

void cTrayIcon::Remove() {
  if (!Created())
    return;
  subclass_.DetachMessage(*this, window_, kCallbackMessage);
  subclass_.DetachMessage(*this, window_, task_bar_created_);
  StopTimer(kTrackingTimer);
  BalloonTipClose();
  tray_.Delete();
  record_ = {};
  tool_tip_.clear();
  icon_ = kNoIcon;
  window_ = 0;
  middle_ = last_ = {};
}

void cTrayIcon::SetVisible(bool visible) {
  visible_ = visible;
  record_.icon = visible_ ? icon_ : kNoIcon;
  Modify(tray_flag::kIcon | tray_flag::kTip);
}

void cTrayIcon::SetToolTip(const std::string& text) {
  tool_tip_ = text;
  record_.tip = CutTo(text, kTipLength);
  Modify(tray_flag::kTip);
}

void cTrayIcon::SetIconHandle(int icon) {
  icon_ = icon;
  record_.icon = visible_ ? icon_ : kNoIcon;
  Modify(tray_flag::kIcon);
}

void cTrayIcon::BalloonTipShow(int info_flags, const std::string& text, const std::string& title, int time_out_ms) {
  if (!Created())
    return;
  BalloonTipClose();
  if (!tray_.ShowsBalloons())
    return;
  record_.info = text.empty() ? " " : text;
  record_.info_title = title;
  record_.info_flags = info_flags;
  record_.info_time_out_ms = time_out_ms;
  Modify(tray_flag::kInfo);
  if (time_out_ms > 0)
    StartTimer(kBalloonTimer, time_out_ms);
}

void cTrayIcon::BalloonTipClose() {
  if (!Created())
    return;
  StopTimer(kBalloonTimer);
  record_.info.clear();
  record_.info_title.clear();
  record_.info_flags = 0;
  Modify(tray_flag::kInfo);
}

void cTrayIcon::GetIconMiddle(int& x, int& y) {
  middle_ = mTray::MiddleOf(mTray::GetTrayIconRect(tray_));
  x = middle_.x;
  y = middle_.y;
}

void cTrayIcon::GetIconRect(int& left, int& top, int& right, int& bottom) const {
  const ScreenRect rect = mTray::GetTrayIconRect(tray_);
  left = rect.left;
  top = rect.top;
  right = rect.right;
  bottom = rect.bottom;
}

void cTrayIcon::SetTrackIconMovement(bool track) {
  track_ = track;
  if (!Created())
    return;
  StopTimer(kTrackingTimer);
  if (track_)
    StartTimer(kTrackingTimer, track_interval_ms_);
}

void cTrayIcon::SetIconMovementTrackInterval(int interval_ms) {
  track_interval_ms_ = std::max(interval_ms, 1);
  if (Created() && tracking_runs_)
    StartTimer(kTrackingTimer, track_interval_ms_);
}

MessageResponse cTrayIcon::MsgResponse() const {
  const std::uint32_t message = subclass_.CurrentMessage();
  const bool answered = message == kReservedMessage || IsBetween(message, kFirstTrayMessage, kLastTrayMessage) ||
                        IsBetween(message, window_message::kMouseMove, window_message::kLastMouseMessage) ||
                        message == task_bar_created_;
  return answered ? MessageResponse::Consume : MessageResponse::OldFirst;
}

MessageResult cTrayIcon::WindowProc(WindowHandle window, std::uint32_t message, MessageWord word,
                                    MessageWord long_word) {
  bool handled = false;
  if (message == window_message::kTimer) {
    handled = OnTimer(window, word);
  } else if (message == kCallbackMessage) {
    handled = OnCallback(window, static_cast<std::uint32_t>(long_word));
  } else if (message == task_bar_created_) {
    OnTaskBarCreated();
    handled = true;
  }
  return handled ? 0 : PassOn(window, message, word, long_word);
}

MessageResult cTrayIcon::PassOn(WindowHandle window, std::uint32_t message, MessageWord word,
                                MessageWord long_word) const {
  // Where the old procedure goes first it has run already.
  return MsgResponse() == MessageResponse::Consume ? subclass_.CallOldWindowProc(window, message, word, long_word)
                                                   : subclass_.CurrentResult();
}

bool cTrayIcon::OnTimer(WindowHandle window, MessageWord timer) {
  if (window != window_)
    return false;
  if (timer == static_cast<MessageWord>(kBalloonTimer))
    BalloonTipClose();
  else if (timer == static_cast<MessageWord>(kTrackingTimer))
    Track();
  else
    return false;
  return true;
}

bool cTrayIcon::OnCallback(WindowHandle window, std::uint32_t message) {
  if (window != window_)
    return false;
  if (IsBetween(message, window_message::kLeftButtonDown, window_message::kLastMouseMessage)) {
    StopTimer(kBalloonTimer);
    Raise(TrayMouseEvent, message);
  } else if (IsBetween(message, kFirstTrayMessage, kLastKeyMessage)) {
    Raise(TrayKeyEvent, message);
  } else if (IsBetween(message, kLastKeyMessage + 1, kLastTrayMessage)) {
    if (message > kLastShownMessage)
      StopTimer(kBalloonTimer);
    Raise(TrayBalloonEvent, message);
  } else {
    return false;
  }
  return true;
}

void cTrayIcon::OnTaskBarCreated() {
  const std::string tool_tip = tool_tip_; // what is passed on would be cleared on the way
  Create(window_, icon_, tool_tip);
  Raise(TaskBarRecreated);
}

void cTrayIcon::Track() {
  int x = 0;
  int y = 0;
  GetIconMiddle(x, y);
  if (x == last_.x && y == last_.y)
    return;
  last_ = {x, y};
  Raise(TrayIconMoved, x, y);
}

void cTrayIcon::StartTimer(std::uint32_t id, int interval_ms) {
  if (!tracking_runs_ && !balloon_runs_)
    subclass_.AttachMessage(*this, window_, window_message::kTimer);
  Running(id) = true;
  windows_.SetTimer(window_, id, interval_ms);
}

void cTrayIcon::StopTimer(std::uint32_t id) {
  if (!Running(id))
    return;
  Running(id) = false;
  windows_.KillTimer(window_, id);
  if (!tracking_runs_ && !balloon_runs_)
    subclass_.DetachMessage(*this, window_, window_message::kTimer);
}

void cTrayIcon::Modify(unsigned flags) {
  if (Created())
    tray_.Modify(flags, record_);
}

} // namespace kelmio
