#include "core/startup.h"

namespace kelmio {

void LoadMainWindow(StartupHost& host) {
  host.PlaceWindow();
  host.ReadSettings();
  host.DetectThemeStyle();
  host.BuildCommandBars();
  // The folder pane shows what lies under these paths, so that they stand before the panes.
  host.SetFolderPaths();
  host.CreatePanes();
  host.DisableAnswer();
  host.SetLoaded(false);
  host.MeasureScreen();
  host.EnsureFolders();
  host.CreateListColumns();
  host.RestoreLayout();
  host.RegisterHotKey();
  host.CreateTrayIcon();
  host.PrepareAutoStartUp();
  host.SetLoaded(true);
  host.StartLoadTimers();
}

void LoadDataAndLine(StartupHost& host) {
  host.ShowActivity("Loading contacts, please wait...");
  host.PumpEvents();
  host.LoadContacts();
  host.PumpEvents();
  host.ShowActivity("Loading messages, please wait...");
  host.PumpEvents();
  host.RefreshMessageList();
  host.ShowActivity("");
  host.PumpEvents();
  host.PumpEvents();
  host.InitializeTelephony();
  host.DetectDeviceIfNone();
  host.SetSystemStatus();
}

void UnloadMainWindow(StartupHost& host) {
  host.CloseLine();
  host.UnregisterHotKey();
  host.ShutdownTelephony();
  EndProgram(host);
}

void EndProgram(StartupHost& host) {
  host.RemoveTrayIcon();
  host.StopPlayback();
  host.UnloadOtherForms();
  if (host.IsMinimized())
    return;
  host.SaveWindowPlace();
  host.SaveLayout();
}

} // namespace kelmio
