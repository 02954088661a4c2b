// The main window's commands: which handler each number runs, and the states that follow.
#include <algorithm>
#include <array>
#include <optional>
#include <utility>

#include "messages/folder_tree.h"
#include "shell/command_table.h"
#include "shell/frmMain.h"

namespace kelmio {

namespace {

/// What the theme commands set: the visual theme, and the colours where the command has some.
struct ThemeCommand {
  int id;
  int visual_theme;
  std::optional<int> system_theme;
};

constexpr std::array<ThemeCommand, 8> kThemes = {{
    {command::kThemeOffice2000, 0, std::nullopt},
    {command::kThemeOfficeXP, 1, std::nullopt},
    {command::kThemeOffice2003, 2, std::nullopt},
    {command::kThemeWinXP, 3, std::nullopt},
    {command::kThemeWhidbey, 4, std::nullopt},
    {command::kThemeBlue, 2, 1},
    {command::kThemeOlive, 2, 2},
    {command::kThemeSilver, 2, 3},
}};

constexpr int kAutomaticSystemTheme = 6;

/// The commands that need a selected message.
constexpr std::array kOnSelection = {
    command::kOpen,      command::kCopyToFolder, command::kMoveToFolder, command::kDelete,      command::kSaveToFolder,
    command::kSelectAll, command::kCopyFiles,    command::kPlayMessage,  command::kStopPlaying,
};

/// The panes by the commands that show and hide them.
constexpr std::array<std::pair<int, int>, 3> kPaneCommands = {{
    {command::kFoldersWindow, kFoldersPane},
    {command::kPreviewWindow, kPreviewPane},
    {command::kStatusWindow, kStatusPane},
}};

} // namespace

void frmMain::ExecuteCommand(int id) {
  struct Handler {
    int id;
    void (*run)(frmMain&);
  };
  static constexpr Handler kHandlers[] = {
      {command::kOpen, [](frmMain& main) { main.OpenSelectedMessage(); }},
      {command::kCopyToFolder, [](frmMain& main) { main.operations_.CopyMessages(); }},
      {command::kMoveToFolder, [](frmMain& main) { main.operations_.MoveMessages(); }},
      {command::kDelete, [](frmMain& main) { main.operations_.DeleteMessages(); }},
      {command::kSaveToFolder, [](frmMain& main) { main.operations_.SaveMessages(); }},
      {command::kShowWindow, [](frmMain& main) { main.ShowFromTray(); }},
      {command::kHide, [](frmMain& main) { main.HideToTray(); }},
      {command::kExit, [](frmMain& main) { main.Unload(); }},
      {command::kNewFolder, [](frmMain& main) { main.folders_.NewMessagesFolder(); }},
      {command::kRenameFolder, [](frmMain& main) { main.folders_.RenameMessagesFolder(); }},
      {command::kDeleteFolder, [](frmMain& main) { main.folders_.DeleteMessagesFolder(); }},
      {command::kSelectAll, [](frmMain& main) { main.operations_.SelectAllMessages(); }},
      {command::kCopyFiles, [](frmMain& main) { main.operations_.CopyMessagesToClipboard(); }},
      {command::kMarkRead, [](frmMain& main) { main.operations_.MarkMessages(true); }},
      {command::kMarkUnread, [](frmMain& main) { main.operations_.MarkMessages(false); }},
      {command::kSortByName, [](frmMain& main) { main.message_list_.SortMessagesBy(2); }},
      {command::kSortByNumber, [](frmMain& main) { main.message_list_.SortMessagesBy(3); }},
      {command::kSortByTime, [](frmMain& main) { main.message_list_.SortMessagesBy(4); }},
      // The menu says size and has always meant the fifth column.
      {command::kSortBySize, [](frmMain& main) { main.message_list_.SortMessagesBy(5); }},
      {command::kToolbar, [](frmMain& main) { main.ToggleToolbar(); }},
      {command::kStatusBar, [](frmMain& main) { main.ToggleStatusBar(); }},
      {command::kFoldersWindow, [](frmMain& main) { main.TogglePane(kFoldersPane); }},
      {command::kPreviewWindow, [](frmMain& main) { main.TogglePane(kPreviewPane); }},
      {command::kStatusWindow, [](frmMain& main) { main.TogglePane(kStatusPane); }},
      {command::kAnswer, [](frmMain& main) { main.AnswerCall(); }},
      {command::kHangUp, [](frmMain& main) { main.StopRecord(); }},
      {command::kRecord, [](frmMain& main) { main.RecordCallManual(); }},
      {command::kPlayMessage, [](frmMain& main) { main.playback_.PlaySelectedMessage(); }},
      {command::kStopPlaying, [](frmMain& main) { main.playback_.cmdStopPlay.Click(); }},
      {command::kDialer, [](frmMain& main) { main.OpenDialer(main); }},
      {command::kSettings, [](frmMain& main) { main.OpenSettings(); }},
      {command::kContacts, [](frmMain& main) { main.OpenContacts(); }},
      {command::kCalls, [](frmMain& main) { main.OpenCallLog(); }},
      {command::kAddToContacts, [](frmMain& main) { main.AddToContacts(); }},
      {command::kEditContact, [](frmMain& main) { main.EditContact(); }},
      {command::kHelp, [](frmMain& main) { main.OpenHelp(); }},
      {command::kAbout, [](frmMain& main) { main.OpenAbout(); }},
      {command::kWebsite, [](frmMain& main) { main.OpenWebsite(); }},
      {command::kSystemSwitch, [](frmMain& main) { main.ToggleSystem(); }},
      {command::kSystemOn, [](frmMain& main) { main.SwitchSystem(true); }},
      {command::kSystemOff, [](frmMain& main) { main.SwitchSystem(false); }},
  };
  for (const Handler& handler : kHandlers)
    if (handler.id == id)
      return handler.run(*this);
  for (const ThemeCommand& theme : kThemes) {
    if (theme.id != id)
      continue;
    SetDefaultVisualTheme(theme.visual_theme);
    if (theme.system_theme)
      SetDefaultSystemTheme(*theme.system_theme);
  }
}

void frmMain::UpdateCommands() {
  const std::size_t row = lvwCalls.SelectedRow();
  for (const int id : kOnSelection) {
    EnableMenuButton(CommandBars1, id, row != 0);
    EnableToolbarButton(CommandBars1, id, row != 0);
  }
  if (const TreeNode* node = Folders.twvFolders.SelectedNode()) {
    const bool own = !IsFixedFolder(*node);
    EnableMenuButton(CommandBars1, command::kRenameFolder, own);
    EnableMenuButton(CommandBars1, command::kDeleteFolder, own);
  }
  const bool known = SelectedCallerIsContact();
  EnableMenuButton(CommandBars1, command::kAddToContacts, !known);
  EnableMenuButton(CommandBars1, command::kEditContact, known);
  for (const CommandBar& bar : CommandBars1.ToolBars())
    CheckMenuButton(CommandBars1, command::kToolbar, bar.visible);
  CheckMenuButton(CommandBars1, command::kStatusBar, sbStatusBar.Visible);
  for (const auto& [id, pane] : kPaneCommands)
    if (const DockingPane* found = DockingPaneManager.Find(pane))
      CheckMenuButton(CommandBars1, id, !found->closed && !found->hidden);
}

bool frmMain::SelectedCallerIsContact() const {
  const std::size_t row = lvwCalls.SelectedRow();
  const auto& records = messages_.Messages();
  return row != 0 && row <= records.size() && !contacts_.GetMessageContactID(records[row - 1].Number).empty();
}

CommandBar frmMain::BuildFolderPopup() const {
  return kelmio::BuildFolderPopup();
}

void frmMain::ShowMessagePopup() {
  const auto& rows = lvwCalls.Rows();
  if (std::none_of(rows.begin(), rows.end(), [](const ListRow& row) { return row.selected; }))
    return;
  CommandBar popup = BuildMessagePopup();
  for (const int id : kOnSelection)
    EnablePopupButton(popup, id, lvwCalls.SelectedRow() != 0);
  const bool known = SelectedCallerIsContact();
  EnablePopupButton(popup, command::kAddToContacts, !known);
  EnablePopupButton(popup, command::kEditContact, known);
  CommandBars1.ShowPopup(popup);
}

void frmMain::SetDefaultVisualTheme(int theme) {
  house_.appearance.SetVisualTheme(theme);
  // Set anew, so that what is on the screen already is painted again.
  house_.appearance.SetVisualTheme(house_.appearance.VisualTheme());
  house_.appearance.SetSystemTheme(kAutomaticSystemTheme);
  house_.settings.DefaultVisualTheme = theme;
  SaveSetting(house_.settings, house_.registry, "DefaultVisualTheme");
}

void frmMain::SetDefaultSystemTheme(int theme) {
  house_.appearance.SetSystemTheme(theme);
  house_.appearance.SetVisualTheme(house_.appearance.VisualTheme());
  house_.settings.DefaultSystemTheme = theme;
  SaveSetting(house_.settings, house_.registry, "DefaultSystemTheme");
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

void frmMain::ToggleToolbar() {
  for (CommandBar& bar : CommandBars1.ToolBars())
    bar.visible = !bar.visible;
  CommandBars1.Changed();
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
