// The main window's commands: which handler each number runs, and the states that follow.
#include "shell/command_table.h"
#include "shell/frmMain.h"

namespace kelmio {

void frmMain::ExecuteCommand(int id) {
  switch (id) {
  case command::kShowWindow:
    return ShowFromTray();
  case command::kHide:
    return HideToTray();
  case command::kExit:
    return Unload();
  case command::kSortByName:
    return message_list_.SortMessagesBy(2);
  case command::kSortByNumber:
    return message_list_.SortMessagesBy(3);
  case command::kSortByTime:
    return message_list_.SortMessagesBy(4);
  case command::kSortBySize:
    // The menu says size and has always meant the fifth column.
    return message_list_.SortMessagesBy(5);
  case command::kToolbar:
    for (CommandBar& bar : CommandBars1.ToolBars())
      bar.visible = !bar.visible;
    return CommandBars1.Changed();
  case command::kStatusBar:
    return ToggleStatusBar();
  case command::kStatusWindow:
    return TogglePane(kStatusPane);
  case command::kAnswer:
    return AnswerCall();
  case command::kHangUp:
    return StopRecord();
  case command::kRecord:
    return RecordCallManual();
  case command::kSystemSwitch:
    return ToggleSystem();
  case command::kSystemOn:
    return SwitchSystem(true);
  case command::kSystemOff:
    return SwitchSystem(false);
  default:
    return;
  }
}

void frmMain::UpdateCommands() {
  for (const CommandBar& bar : CommandBars1.ToolBars())
    CheckMenuButton(CommandBars1, command::kToolbar, bar.visible);
  CheckMenuButton(CommandBars1, command::kStatusBar, sbStatusBar.Visible);
  if (const DockingPane* pane = DockingPaneManager.Find(kStatusPane))
    CheckMenuButton(CommandBars1, command::kStatusWindow, !pane->closed && !pane->hidden);
}

void frmMain::ToggleSystem() {
  const CommandItem* button = nullptr;
  for (CommandBar& bar : CommandBars1.ToolBars())
    if (const CommandItem* found = bar.Find(command::kSystemSwitch))
      button = found;
  SwitchSystem(button != nullptr && button->checked);
}

void frmMain::SwitchSystem(bool on) {
  // The caption shows the state, not the action: a pressed button reads "Off".
  if (CommandItem* button = CheckToolbarButton(CommandBars1, command::kSystemSwitch, !on)) {
    button->caption = on ? "On" : "Off";
    CommandBars1.Changed();
  }
  house_.settings.SystemStatus = on ? 1 : 0;
  SetSystemStatus();
}

void frmMain::ToggleStatusBar() {
  sbStatusBar.Visible = !sbStatusBar.Visible.Get();
  house_.settings.MainStatusBarState = sbStatusBar.Visible;
  SaveSetting(house_.settings, house_.registry, "MainStatusBarState");
}

void frmMain::TogglePane(int pane) {
  if (DockingPane* found = DockingPaneManager.Find(pane)) {
    found->closed = !found->closed;
    found->hidden = false;
    DockingPaneManager.Changed();
  }
}

} // namespace kelmio
