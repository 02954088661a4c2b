// The catalogue of settings: one member for each, filled by one table.
#pragma once

#include <string>
#include <string_view>

#include "controls/basic_controls.h"
#include "core/cRegistry.h"

namespace kelmio {

/// One member per setting, under the name of its registry value, spelling included. Windows in twips.
/// Where 1 and 0 are told, 1 means on.
struct Settings {
  int MainLeft = 0;
  int MainTop = 0;
  int MainWidth = 0;
  int MainHeight = 0;
  std::string CommandBarsStateString;
  std::string DockingPaneStateString;
  bool MainStatusBarState = false;
  int SystemStatus = 0;        // 1: on at start; never written
  int AutoAnswerIncoming = 0;  // 1, 0
  int AutoAnswerRingCount = 0; // the ring to answer on
  std::string RecordFormatID;  // wave format text
  std::string RecordFormatDetail;
  std::string RecordFormatCodeName;
  int CommDeviceID = 0;           // negative: none
  int AcceptOnOffering = 0;       // 1, 0
  int AnswerOnOffering = 0;       // 1, 0
  int StopRecordingAfter = 0;     // 1: `MaxRecordingLength` applies
  int MaxRecordingLength = 0;     // minutes
  int RecordingSilenceLength = 0; // milliseconds of silence that end a recording
  Color MessagesWindowColor = 0;
  Color MessagesWindowColor1 = 0;
  Color PreviewWindowColor = 0;
  Color StatusWindowColor = 0;
  int HotKeyCode = 0;
  int HotKeyModifilers = 0;
  int HotKeyAccess = 0;     // 1, 0
  int AutoStart = 0;        // 1, 0
  int NewCallAlert = 0;     // 1, 0
  int NewCallAlertTime = 0; // seconds
  std::string GreetingFile;
  int KeyTones = 0;       // 1, 0
  int ContactSortBy = 0;  // list column, negative for descending
  int MessagesSortBy = 0; // list column, negative for descending
  int DefaultVisualTheme = 0;
  int DefaultSystemTheme = 0;
  int Transparency = 0; // opacity of the alert, 0 to 255
  int DialerLeft = 0;
  int DialerTop = 0;
  std::string DialerLastNumber;
};

/// Reads all settings in the catalogue's order. A missing value gives its default; a stored text that doesn't
/// convert leaves zero, empty or false. `app_path` is the program's folder with its closing separator.
void LoadSettings(Settings& settings, RegistryStore& store, const std::string& app_path);

/// Reads one setting by its name, for a window that reads its own when it opens. False for an unknown name.
bool ReadSetting(Settings& settings, RegistryStore& store, std::string_view name, const std::string& app_path);

/// Writes one setting's present value by its name. Nothing is written for an unknown name.
RegistryOutcome SaveSetting(const Settings& settings, RegistryStore& store, std::string_view name);

} // namespace kelmio
