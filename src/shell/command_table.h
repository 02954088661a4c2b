// The numbered commands: which stand on the menu bar, the toolbar, the tray menu and the keys.
#pragma once

#include "controls/command_bars.h"
#include "telephony/call_host.h"

namespace kelmio {

/// Command numbers; the same number on several surfaces is the same action.
namespace command {
inline constexpr int kShowWindow = 107;
inline constexpr int kHide = 108;
inline constexpr int kExit = 110;
inline constexpr int kSortPopup = 301;
inline constexpr int kSortByName = 302;
inline constexpr int kSortByNumber = 303;
inline constexpr int kSortByTime = 304;
inline constexpr int kSortBySize = 305;
inline constexpr int kToolbar = 310;
inline constexpr int kStatusBar = 312;
inline constexpr int kStatusWindow = 342;
inline constexpr int kAnswer = kCommandAnswer;
inline constexpr int kHangUp = kCommandHangUp;
inline constexpr int kRecord = kCommandRecord;
inline constexpr int kSystemSwitch = 450;
inline constexpr int kSystemOn = 451;
inline constexpr int kSystemOff = 452;
} // namespace command

/// The status pane's number.
inline constexpr int kStatusPane = 1;

/// Fills the menu bar, adds the toolbar "Standard" and binds the keys.
void BuildMainCommandBars(CommandBars& bars);

/// The tray's menu, with the system's state marked.
CommandBar BuildTrayPopup(int system_status);

} // namespace kelmio
