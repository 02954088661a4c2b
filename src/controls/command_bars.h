// Menu bar, toolbars, popups and key bindings: one table of numbered commands on several surfaces.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "controls/control.h"

namespace kelmio {

/// One item of a bar. Items with sub-items are popups. The same number on several surfaces is the same action.
struct CommandItem {
  int id = 0;
  std::string caption; // "&" stands before the letter that the keyboard reaches
  bool begins_group = false;
  bool enabled = true;
  bool checked = false;
  std::vector<CommandItem> items;
};

/// One bar or popup.
class CommandBar {
public:
  std::string title;
  bool visible = true;
  std::vector<CommandItem> items;

  /// The first item of that number, popups included; nothing when there is none. 0 is no number.
  CommandItem* Find(int id);
};

struct KeyBinding {
  bool ctrl = true;
  bool shift = false;
  char letter = 'A';
  int command = 0;
};

/// The bars of one window. User interface thread only. Change items through the procedures below, so that
/// the view is told.
class CommandBars : public Control {
public:
  CommandBar& MenuBar() { return menu_bar_; }
  const CommandBar& MenuBar() const { return menu_bar_; }
  std::deque<CommandBar>& ToolBars() { return tool_bars_; }
  const std::deque<CommandBar>& ToolBars() const { return tool_bars_; }
  std::vector<KeyBinding> keys;

  /// Runs a command, whichever surface it came from. Assigned by the form.
  std::function<void(int id)> Execute = [](int) {};
  /// Asked before a surface is shown: brings the states of its items up to date. Assigned by the form.
  std::function<void()> Update = [] {};

  /// Opens a temporary popup at the pointer and returns; what the user picks there runs through `Execute`.
  /// Given by the view.
  std::function<void(const CommandBar& popup)> ShowPopup = [](const CommandBar&) {};

  /// Layout of the bars, private to the view; the form stores it and gives it back.
  std::function<std::string()> SaveState = [] { return std::string(); };
  std::function<void(const std::string&)> RestoreState = [](const std::string&) {};

private:
  CommandBar menu_bar_;
  std::deque<CommandBar> tool_bars_;
};

/// Each returns the item it found, or nothing and changes nothing.
CommandItem* EnableMenuButton(CommandBars& bars, int id, bool enabled);
CommandItem* CheckMenuButton(CommandBars& bars, int id, bool checked);
CommandItem* EnableToolbarButton(CommandBars& bars, int id, bool enabled);
CommandItem* CheckToolbarButton(CommandBars& bars, int id, bool checked);
CommandItem* EnablePopupButton(CommandBar& popup, int id, bool enabled);
CommandItem* CheckPopupButton(CommandBar& popup, int id, bool checked);

} // namespace kelmio
