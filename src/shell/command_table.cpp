#include "shell/command_table.h"

#include <utility>

namespace kelmio {

namespace {

CommandItem Item(int id, std::string caption, bool begins_group = false) {
  CommandItem item;
  item.id = id;
  item.caption = std::move(caption);
  item.begins_group = begins_group;
  return item;
}

CommandItem Popup(int id, std::string caption, std::vector<CommandItem> items, bool begins_group = false) {
  CommandItem popup = Item(id, std::move(caption), begins_group);
  popup.items = std::move(items);
  return popup;
}

} // namespace

void BuildMainCommandBars(CommandBars& bars) {
  constexpr bool kSep = true;
  bars.MenuBar().items = {
      Popup(0, "&File", {Item(command::kHide, "&Hide"), Item(command::kExit, "&Exit", kSep)}),
      Popup(0, "&View",
            {Popup(command::kSortPopup, "&Sort Messages by...",
                   {Item(command::kSortByName, "&Name"), Item(command::kSortByNumber, "&Phone Number"),
                    Item(command::kSortByTime, "&Time"), Item(command::kSortBySize, "&Message Size")}),
             Popup(0, "&Toolbars", {Item(command::kToolbar, "&Standard")}, kSep),
             Item(command::kStatusBar, "Status Bar"), Item(command::kStatusWindow, "Status Window", kSep)}),
      Popup(0, "&Action", {Item(command::kAnswer, "&Answer"), Item(command::kHangUp, "&Hang Up")}),
  };

  CommandBar standard;
  standard.title = "Standard";
  standard.items = {
      Item(command::kSystemSwitch, "On"),
      Item(command::kAnswer, "Answer", kSep),
      Item(command::kRecord, "Record"),
      Item(command::kHangUp, "Hang up"),
  };
  bars.ToolBars().push_back(std::move(standard));

  bars.keys = {{true, false, 'X', command::kExit}};
  bars.Changed();
}

CommandBar BuildTrayPopup(int system_status) {
  constexpr bool kSep = true;
  CommandBar popup;
  popup.title = "TrayPopup";
  popup.items = {
      Item(command::kShowWindow, "Show Window", kSep),
      Item(command::kHide, "Hide Window"),
      Item(command::kSystemOn, "On", kSep),
      Item(command::kSystemOff, "Off"),
      Item(command::kExit, "Exit", kSep),
  };
  CheckPopupButton(popup, command::kSystemOn, system_status == 1);
  CheckPopupButton(popup, command::kSystemOff, system_status == 0);
  return popup;
}

} // namespace kelmio
