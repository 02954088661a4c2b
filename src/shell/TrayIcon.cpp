#include "shell/TrayIcon.h"

#include "shell/raise.h"

namespace kelmio {

namespace {

constexpr int kDefaultTrackIntervalMs = 500;
/// A tip that isn't set. It is kept and never shown.
const std::string kNoToolTip = "~nOtOoLtIp";

} // namespace

TrayIcon::TrayIcon(Tray& tray, LocalWindows& windows, MSubclass& subclass, const PropertyBag& properties)
    : icon_(tray, windows, subclass) {
  ReadProperties(properties);
  icon_.TrayMouseEvent = [this](std::uint32_t message) { Raise(TrayMouseEvent, message); };
  icon_.TrayKeyEvent = [this](std::uint32_t message) { Raise(TrayKeyEvent, message); };
  icon_.TrayIconMoved = [this](int x, int y) { Raise(TrayIconMoved, x, y); };
  icon_.TrayBalloonEvent = [this](std::uint32_t message) { Raise(TrayBalloonEvent, message); };
  icon_.TaskBarRecreated = [this] { Raise(TaskBarRecreated); };
}

void TrayIcon::ReadProperties(const PropertyBag& properties) {
  SetTrayIconVisible(properties.ReadProperty("TrayIconVisible", true));
  const std::string tip = properties.ReadProperty("ToolTip", kNoToolTip);
  SetToolTip(tip == kNoToolTip ? std::string() : tip);
  SetIconMovementTrackInterval(properties.ReadProperty("IconMovementTrackInterval", kDefaultTrackIntervalMs));
  SetTrackIconMovement(properties.ReadProperty("TrackIconMovement", false));
}

void TrayIcon::WriteProperties(PropertyBag& properties) const {
  properties.WriteProperty("TrayIconVisible", TrayIconVisible(), true);
  properties.WriteProperty("ToolTip", tool_tip_.empty() ? kNoToolTip : tool_tip_, kNoToolTip);
  properties.WriteProperty("IconMovementTrackInterval", IconMovementTrackInterval(), kDefaultTrackIntervalMs);
  properties.WriteProperty("TrackIconMovement", TrackIconMovement(), false);
}

void TrayIcon::SetToolTip(const std::string& text) {
  tool_tip_ = text;
  icon_.SetToolTip(text);
}

void TrayIcon::SetIconHandle(int icon) {
  icon_handle_ = icon;
  icon_.SetIconHandle(icon);
}

} // namespace kelmio
