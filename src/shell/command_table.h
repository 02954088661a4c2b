// The numbered commands: which stand on the menu bar, the toolbar, the context menus, the tray menu and the keys.
#pragma once

#include "controls/command_bars.h"
#include "messages/frmFolders.h"
#include "telephony/call_host.h"

namespace kelmio {

/// Command numbers; the same number on several surfaces is the same action.
namespace command {
inline constexpr int kOpen = 101;
inline constexpr int kCopyToFolder = 102;
inline constexpr int kMoveToFolder = 103;
inline constexpr int kDelete = 104;
inline constexpr int kSaveToFolder = 105;
inline constexpr int kFolderPopup = 106;
inline constexpr int kShowWindow = 107;
inline constexpr int kHide = 108;
inline constexpr int kExit = 110;
inline constexpr int kNewFolder = kCommandNewFolder;
inline constexpr int kRenameFolder = kCommandRenameFolder;
inline constexpr int kDeleteFolder = kCommandDeleteFolder;
inline constexpr int kSelectAll = 201;
inline constexpr int kCopyFiles = 202;
inline constexpr int kMarkRead = 210;
inline constexpr int kMarkUnread = 211;
inline constexpr int kSortPopup = 301;
inline constexpr int kSortByName = 302;
inline constexpr int kSortByNumber = 303;
inline constexpr int kSortByTime = 304;
inline constexpr int kSortBySize = 305;
inline constexpr int kToolbar = 310;
inline constexpr int kStatusBar = 312;
inline constexpr int kThemePopup = 320;
inline constexpr int kThemeWinXP = 321;
inline constexpr int kThemeOffice2000 = 322;
inline constexpr int kThemeOffice2003 = 323;
inline constexpr int kThemeOfficeXP = 324;
inline constexpr int kThemeWhidbey = 325;
inline constexpr int kThemeBlue = 326;
inline constexpr int kThemeOlive = 327;
inline constexpr int kThemeSilver = 328;
inline constexpr int kFoldersWindow = 340;
inline constexpr int kPreviewWindow = 341;
inline constexpr int kStatusWindow = 342;
inline constexpr int kAnswer = kCommandAnswer;
inline constexpr int kHangUp = kCommandHangUp;
inline constexpr int kRecord = kCommandRecord;
inline constexpr int kPlayMessage = 403;
inline constexpr int kStopPlaying = 404;
inline constexpr int kSystemSwitch = 450;
inline constexpr int kSystemOn = 451;
inline constexpr int kSystemOff = 452;
inline constexpr int kDialer = 501;
inline constexpr int kSettings = 502;
inline constexpr int kContacts = 503;
inline constexpr int kCalls = 505;
inline constexpr int kAddToContacts = 510;
inline constexpr int kEditContact = 511;
inline constexpr int kHelp = 601;
inline constexpr int kAbout = 602;
inline constexpr int kWebsite = 605;
} // namespace command

/// The panes' numbers.
inline constexpr int kStatusPane = 1;
inline constexpr int kFoldersPane = 2;
inline constexpr int kPreviewPane = 3;

/// Fills the menu bar, adds the toolbar "Standard" and binds the keys.
void BuildMainCommandBars(CommandBars& bars);

/// The menus of the message list and the folder tree, made anew each time they open; all enabled, nothing checked.
CommandBar BuildMessagePopup();
CommandBar BuildFolderPopup();
/// The tray's menu, with the system's state marked.
CommandBar BuildTrayPopup(int system_status);

} // namespace kelmio
