#include <gmock/gmock.h>

#include "shell/command_table.h"

namespace kelmio::test {
namespace {

/// A surface as text: a line an item, "-" before one that begins a group, indented by its depth.
std::string Drawn(const std::vector<CommandItem>& items, int depth = 0) {
  std::string text;
  for (const CommandItem& item : items) {
    text += std::string(static_cast<std::size_t>(depth), ' ') + (item.begins_group ? "-" : "") +
            std::to_string(item.id) + " " + item.caption + "\n";
    text += Drawn(item.items, depth + 1);
  }
  return text;
}

TEST(CommandTable, StandsOnItsSurfacesInOrder) {
  CommandBars bars;
  BuildMainCommandBars(bars);
  EXPECT_EQ(Drawn(bars.MenuBar().items), R"(0 &File
 101 &Open
 -102 &Copy to folder...
 103 &Move to folder...
 -104 &Delete
 105 S&ave to Folder...
 -106 &Folder
  150 &New Folder
  151 &Rename
  152 &Delete
 -108 &Hide
 -110 &Exit
0 &Edit
 201 &Select All
 -202 &Copy Files to Clipboard
 -210 Mark as Read
 211 Mark as Unread
0 &View
 301 &Sort Messages by...
  302 &Name
  303 &Phone Number
  304 &Time
  305 &Message Size
 -320 &Visual Theme...
  326 Blue
  327 Olive
  328 Silver
  321 WinXP
  322 Office 2000
  323 Office 2003
  324 Office XP
  325 Whidbey
 -0 &Toolbars
  310 &Standard
 312 Status Bar
 -340 Folders Window
 341 Preview Window
 342 Status Window
0 &Action
 400 &Answer
 401 &Hang Up
 -403 Play Message
 404 Stop Playing
0 &Tools
 502 Settings...
 -501 Dialer...
 -503 Contacts...
 -505 Calls...
 -510 Add to contacts
 511 Edit Contact
0 &Help
 602 &About
 -605 &Website and updates
)");
  ASSERT_EQ(bars.ToolBars().size(), 1U);
  EXPECT_EQ(bars.ToolBars().front().title, "Standard");
  EXPECT_EQ(Drawn(bars.ToolBars().front().items), R"(450 On
-400 Answer
402 Record
401 Hang up
-102 Copy
103 Move
104 Delete
105 Save
-501 Dialer
505 Calls
503 Contacts
502 Settings
-605 Update
601 Help
)");
  EXPECT_EQ(Drawn(BuildMessagePopup().items), R"(101 &Open
-210 Mark as Read
211 Mark as Unread
-102 Copy to Folder...
103 Move to Folder...
105 Save to Folder...
104 Delete
-510 Add to contacts...
-511 Edit Contact...
)");
  EXPECT_EQ(Drawn(BuildFolderPopup().items), "150 &New Folder\n151 &Rename\n-152 &Delete\n");
  EXPECT_EQ(Drawn(BuildTrayPopup(1).items), R"(-107 Show Window
108 Hide Window
-503 Contacts
510 Add New Contact
-501 Dialer
502 Settings
-451 On
452 Off
-110 Exit
)");
  std::string keys;
  for (const KeyBinding& key : bars.keys)
    keys += std::string(key.ctrl ? "Ctrl+" : "") + (key.shift ? "Shift+" : "") + key.letter + " " +
            std::to_string(key.command) + "\n";
  EXPECT_EQ(keys, "Ctrl+A 201\nCtrl+O 101\nCtrl+C 102\nCtrl+M 103\nCtrl+D 104\nCtrl+S 105\nCtrl+X 110\nCtrl+Q 210\n"
                  "Ctrl+W 211\nCtrl+Shift+E 150\n");
}

TEST(CommandTable, FindsACommandOnTheSurfaceAskedOnly) {
  CommandBars bars;
  BuildMainCommandBars(bars);
  EXPECT_EQ(EnableMenuButton(bars, command::kRecord, false), nullptr) << "Record is on the toolbar alone";
  ASSERT_NE(EnableToolbarButton(bars, command::kRecord, false), nullptr);
  EXPECT_FALSE(bars.ToolBars().front().Find(command::kRecord)->enabled);
  EXPECT_TRUE(CheckMenuButton(bars, command::kToolbar, true)->checked) << "a popup's popup is searched too";
  EXPECT_EQ(CheckToolbarButton(bars, command::kToolbar, true), nullptr);
  EXPECT_EQ(EnableMenuButton(bars, 0, false), nullptr) << "a popup that is no command has no number";
}

} // namespace
} // namespace kelmio::test
