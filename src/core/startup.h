// The order in which the program comes up and goes down.
#pragma once

namespace kelmio {

/// The steps, as the main window does them. User interface thread only. A step that fails is skipped, and the
/// next one runs; no step throws.
class StartupHost {
public:
  virtual ~StartupHost() = default;

  // The load of the main window.
  virtual void PlaceWindow() = 0;
  virtual void ReadSettings() = 0;
  virtual void DetectThemeStyle() = 0;
  virtual void BuildCommandBars() = 0;
  virtual void MeasureScreen() = 0;
  virtual void SetFolderPaths() = 0;
  virtual void CreatePanes() = 0;
  virtual void DisableAnswer() = 0;
  virtual void SetLoaded(bool loaded) = 0;
  virtual void EnsureFolders() = 0;
  virtual void CreateListColumns() = 0;
  virtual void RestoreLayout() = 0;
  virtual void RegisterHotKey() = 0;
  virtual void CreateTrayIcon() = 0;
  virtual void PrepareAutoStartUp() = 0;
  virtual void StartLoadTimers() = 0;

  // The first tick of `tmrLoaded`.
  virtual void ShowActivity(const char* text) = 0;
  virtual void PumpEvents() = 0;
  virtual void LoadContacts() = 0;
  virtual void RefreshMessageList() = 0;
  virtual void InitializeTelephony() = 0;
  virtual void DetectDeviceIfNone() = 0;
  virtual void SetSystemStatus() = 0;

  // The unload.
  virtual void CloseLine() = 0;
  virtual void UnregisterHotKey() = 0;
  virtual void ShutdownTelephony() = 0;

  // `EndProgram`.
  virtual void RemoveTrayIcon() = 0;
  virtual void StopPlayback() = 0;
  virtual void UnloadOtherForms() = 0;
  virtual bool IsMinimized() const = 0;
  virtual void SaveWindowPlace() = 0;
  virtual void SaveLayout() = 0;
};

/// First half: the load of the main window, before it is shown.
void LoadMainWindow(StartupHost& host);

/// Second half, once the window has painted. The line comes last: no call can arrive before contacts and
/// messages are in memory.
void LoadDataAndLine(StartupHost& host);

/// What happens when the main window goes.
void UnloadMainWindow(StartupHost& host);

/// Takes the program off the desktop and saves the layout. A minimised window saves none of it.
void EndProgram(StartupHost& host);

} // namespace kelmio
