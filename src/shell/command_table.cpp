#include "shell/command_table.h"

#include <span>
#include <utility>
#include <vector>

namespace kelmio {

namespace {

using namespace command; // the table below is read by its numbers

/// One line of a surface. A line followed by deeper ones is a popup.
struct Line {
  int depth;
  int id; // 0 for a popup that is no command
  const char* caption;
  bool separator = false; // one stands before the item
};

constexpr bool kSep = true;

constexpr Line kMenuBar[] = {
    {0, 0, "&File"},
    {1, kOpen, "&Open"},
    {1, kCopyToFolder, "&Copy to folder...", kSep},
    {1, kMoveToFolder, "&Move to folder..."},
    {1, kDelete, "&Delete", kSep},
    {1, kSaveToFolder, "S&ave to Folder..."},
    {1, kFolderPopup, "&Folder", kSep},
    {2, kNewFolder, "&New Folder"},
    {2, kRenameFolder, "&Rename"},
    {2, kDeleteFolder, "&Delete"},
    {1, kHide, "&Hide", kSep},
    {1, kExit, "&Exit", kSep},
    {0, 0, "&Edit"},
    {1, kSelectAll, "&Select All"},
    {1, kCopyFiles, "&Copy Files to Clipboard", kSep},
    {1, kMarkRead, "Mark as Read", kSep},
    {1, kMarkUnread, "Mark as Unread"},
    {0, 0, "&View"},
    {1, kSortPopup, "&Sort Messages by..."},
    {2, kSortByName, "&Name"},
    {2, kSortByNumber, "&Phone Number"},
    {2, kSortByTime, "&Time"},
    {2, kSortBySize, "&Message Size"},
    {1, kThemePopup, "&Visual Theme...", kSep},
    {2, kThemeBlue, "Blue"},
    {2, kThemeOlive, "Olive"},
    {2, kThemeSilver, "Silver"},
    {2, kThemeWinXP, "WinXP"},
    {2, kThemeOffice2000, "Office 2000"},
    {2, kThemeOffice2003, "Office 2003"},
    {2, kThemeOfficeXP, "Office XP"},
    {2, kThemeWhidbey, "Whidbey"},
    {1, 0, "&Toolbars", kSep},
    {2, kToolbar, "&Standard"},
    {1, kStatusBar, "Status Bar"},
    {1, kFoldersWindow, "Folders Window", kSep},
    {1, kPreviewWindow, "Preview Window"},
    {1, kStatusWindow, "Status Window"},
    {0, 0, "&Action"},
    {1, kAnswer, "&Answer"},
    {1, kHangUp, "&Hang Up"},
    {1, kPlayMessage, "Play Message", kSep},
    {1, kStopPlaying, "Stop Playing"},
    {0, 0, "&Tools"},
    {1, kSettings, "Settings..."},
    {1, kDialer, "Dialer...", kSep},
    {1, kContacts, "Contacts...", kSep},
    {1, kCalls, "Calls...", kSep},
    {1, kAddToContacts, "Add to contacts", kSep},
    {1, kEditContact, "Edit Contact"},
    {0, 0, "&Help"},
    {1, kAbout, "&About"},
    {1, kWebsite, "&Website and updates", kSep},
};

constexpr Line kStandardToolbar[] = {
    {0, kSystemSwitch, "On"},         {0, kAnswer, "Answer", kSep},
    {0, kRecord, "Record"},           {0, kHangUp, "Hang up"},
    {0, kCopyToFolder, "Copy", kSep}, {0, kMoveToFolder, "Move"},
    {0, kDelete, "Delete"},           {0, kSaveToFolder, "Save"},
    {0, kDialer, "Dialer", kSep},     {0, kCalls, "Calls"},
    {0, kContacts, "Contacts"},       {0, kSettings, "Settings"},
    {0, kWebsite, "Update", kSep},    {0, kHelp, "Help"},
};

constexpr Line kMessagePopup[] = {
    {0, kOpen, "&Open"},
    {0, kMarkRead, "Mark as Read", kSep},
    {0, kMarkUnread, "Mark as Unread"},
    {0, kCopyToFolder, "Copy to Folder...", kSep},
    {0, kMoveToFolder, "Move to Folder..."},
    {0, kSaveToFolder, "Save to Folder..."},
    {0, kDelete, "Delete"},
    {0, kAddToContacts, "Add to contacts...", kSep},
    {0, kEditContact, "Edit Contact...", kSep},
};

constexpr Line kFolderTreePopup[] = {
    {0, kNewFolder, "&New Folder"},
    {0, kRenameFolder, "&Rename"},
    {0, kDeleteFolder, "&Delete", kSep},
};

constexpr Line kTrayPopup[] = {
    {0, kShowWindow, "Show Window", kSep},
    {0, kHide, "Hide Window"},
    {0, kContacts, "Contacts", kSep},
    {0, kAddToContacts, "Add New Contact"},
    {0, kDialer, "Dialer", kSep},
    {0, kSettings, "Settings"},
    {0, kSystemOn, "On", kSep},
    {0, kSystemOff, "Off"},
    {0, kExit, "Exit", kSep},
};

// Ctrl+C copies to a folder and Ctrl+X exits: meant as they stand.
constexpr KeyBinding kKeys[] = {
    {true, false, 'A', kSelectAll},    {true, false, 'O', kOpen},     {true, false, 'C', kCopyToFolder},
    {true, false, 'M', kMoveToFolder}, {true, false, 'D', kDelete},   {true, false, 'S', kSaveToFolder},
    {true, false, 'X', kExit},         {true, false, 'Q', kMarkRead}, {true, false, 'W', kMarkUnread},
    {true, true, 'E', kNewFolder},
};

/// Takes the lines of one depth off the front of `lines`, each with the deeper ones behind it as its popup.
std::vector<CommandItem> TakeItems(std::span<const Line>& lines, int depth) {
  std::vector<CommandItem> items;
  while (!lines.empty() && lines.front().depth == depth) {
    CommandItem& item = items.emplace_back();
    item.id = lines.front().id;
    item.caption = lines.front().caption;
    item.begins_group = lines.front().separator;
    lines = lines.subspan(1);
    item.items = TakeItems(lines, depth + 1);
  }
  return items;
}

CommandBar BarOf(const char* title, std::span<const Line> lines) {
  CommandBar bar;
  bar.title = title;
  bar.items = TakeItems(lines, 0);
  return bar;
}

} // namespace

void BuildMainCommandBars(CommandBars& bars) {
  bars.MenuBar() = BarOf("", kMenuBar);
  bars.ToolBars().push_back(BarOf("Standard", kStandardToolbar));
  bars.keys.assign(std::begin(kKeys), std::end(kKeys));
  bars.Changed();
}

CommandBar BuildMessagePopup() {
  return BarOf("Popup", kMessagePopup);
}

CommandBar BuildFolderPopup() {
  return BarOf("Popup", kFolderTreePopup);
}

CommandBar BuildTrayPopup(int system_status) {
  CommandBar popup = BarOf("TrayPopup", kTrayPopup);
  CheckPopupButton(popup, kSystemOn, system_status == 1);
  CheckPopupButton(popup, kSystemOff, system_status == 0);
  return popup;
}

} // namespace kelmio
