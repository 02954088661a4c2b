// The main window's part in start and shutdown: the steps whose order stands in core/startup.
#include "core/mGeneral.h"
#include "core/text.h"
#include "shell/command_table.h"
#include "shell/frmMain.h"

namespace kelmio {

void frmMain::PlaceWindow() {
  for (const char* place : {"MainLeft", "MainTop", "MainWidth", "MainHeight"})
    ReadSetting(house_.settings, house_.registry, place, house_.app_path);
  Left = house_.settings.MainLeft;
  Top = house_.settings.MainTop;
  Width = house_.settings.MainWidth;
  Height = house_.settings.MainHeight;
}

void frmMain::ReadSettings() {
  LoadSettings(house_.settings, house_.registry, house_.app_path);
}

void frmMain::DetectThemeStyle() {
  int style = 0;
  const auto current = house_.desktop.CurrentStyle();
  if (current && AsciiLower(current->file).find("luna.msstyles") != std::string::npos) {
    const std::string scheme = AsciiLower(current->color_scheme);
    int number = 0;
    for (const char* name : {"normalcolor", "homestead", "metallic"}) {
      ++number;
      if (scheme.find(name) != std::string::npos)
        style = number;
    }
  }
  house_.app.ThemeStyle = style;
}

void frmMain::BuildCommandBars() {
  BuildMainCommandBars(CommandBars1);
  // Setting the visual theme sets automatic colours, so that the chosen ones follow it.
  const int system_theme = house_.settings.DefaultSystemTheme;
  SetDefaultVisualTheme(house_.settings.DefaultVisualTheme);
  SetDefaultSystemTheme(system_theme);
}

void frmMain::MeasureScreen() {
  house_.app.ScreenWidth = house_.desktop.WorkAreaWidth();
  house_.app.ScreenHeight = house_.desktop.WorkAreaHeight();
}

void frmMain::SetFolderPaths() {
  SetPaths(house_.app, house_.app_path);
}

void frmMain::CreatePanes() {
  DockingPane& folders = DockingPaneManager.CreatePane(kFoldersPane, 150, 200, DockingPane::Edge::Left, 0);
  folders.title = "Folders";
  folders.form = &Folders;
  DockingPane& status = DockingPaneManager.CreatePane(kStatusPane, 200, 140, DockingPane::Edge::Bottom, 0);
  status.title = "Status";
  status.form = &Output;
  DockingPane& preview = DockingPaneManager.CreatePane(kPreviewPane, 200, 140, DockingPane::Edge::Right, kStatusPane);
  preview.title = "Preview";
  preview.form = &Preview;
  Folders.Load();
  Preview.Load();
  Output.Load();
  DockingPaneManager.Changed();
}

void frmMain::EnsureFolders() {
  for (const std::string& folder : {house_.app.PhotosFolder, house_.app.SoundFolder, house_.app.InboxFolder,
                                    house_.app.MessagesFolder + "/Deleted"})
    mGeneral::EnsureFolder(folder);
}

void frmMain::RestoreLayout() {
  CommandBars1.RestoreState(house_.settings.CommandBarsStateString);
  DockingPaneManager.RestoreState(house_.settings.DockingPaneStateString);
  sbStatusBar.Visible = house_.settings.MainStatusBarState;
}

void frmMain::RegisterHotKey() {
  if (house_.settings.HotKeyAccess == 1)
    hot_keys_.RegisterGlobalHotKey(house_.settings.HotKeyCode, house_.settings.HotKeyModifilers, *this);
}

void frmMain::UnregisterHotKey() {
  if (house_.settings.HotKeyAccess == 1)
    hot_keys_.UnregisterGlobalHotKey(*this);
}

void frmMain::PrepareAutoStartUp() {
  if (house_.settings.AutoStart == 1)
    house_.auto_start.Enable(house_.executable);
  else
    house_.auto_start.Disable();
}

void frmMain::StartLoadTimers() {
  tmrLoaded.SetEnabled(true);
  tmrHide.SetEnabled(true);
}

void frmMain::LoadContacts() {
  contacts_.LoadContacts();
}

void frmMain::InitializeTelephony() {
  mTAPIEx.InitMode = TAPIExCtl::kInitModeMain;
  mTAPIEx.Initialize();
  mTAPIEx.InitMode = 1;
  mTAPIEx.OptionFlagA = false;
  house_.loop.RunPending();
  mTAPIEx.OptionFlagB = true;
}

void frmMain::DetectDeviceIfNone() {
  if (house_.settings.CommDeviceID < 0)
    system_.AutoDetectCommDevice();
}

void frmMain::CloseLine() {
  if (Context.CurrentLine == nullptr || !Context.CurrentLine->IsOpen())
    return;
  if (Context.CurrentCall != nullptr)
    Context.CurrentCall->StopRecord();
  Context.CurrentLine->Close();
}

void frmMain::StopPlayback() {
  house_.app.StopPlaybackFlag = true;
  house_.mmc.Command("Stop");
  house_.mmc.Command("Close");
}

void frmMain::UnloadOtherForms() {
  house_.windows.CloseAll();
  Output.Unload();
  Folders.Unload();
  Preview.Unload();
}

void frmMain::SaveWindowPlace() {
  house_.settings.MainLeft = Left;
  house_.settings.MainTop = Top;
  house_.settings.MainWidth = Width;
  house_.settings.MainHeight = Height;
  for (const char* place : {"MainLeft", "MainTop", "MainWidth", "MainHeight"})
    SaveSetting(house_.settings, house_.registry, place);
}

void frmMain::SaveLayout() {
  house_.settings.CommandBarsStateString = CommandBars1.SaveState();
  house_.settings.DockingPaneStateString = DockingPaneManager.SaveState();
  SaveSetting(house_.settings, house_.registry, "CommandBarsStateString");
  SaveSetting(house_.settings, house_.registry, "DockingPaneStateString");
}

void frmMain::tmrLoaded_Timer() {
  tmrLoaded.SetEnabled(false);
  LoadDataAndLine(*this);
}

void frmMain::tmrHide_Timer() {
  tmrHide.SetEnabled(false);
  if (house_.tray.Created())
    HideToTray();
}

} // namespace kelmio
