// The settings window: device, answering and the rest, on three tabs.
#pragma once

#include <array>
#include <initializer_list>
#include <memory>
#include <string>
#include <vector>

#include "controls/basic_controls.h"
#include "controls/form.h"
#include "controls/picture_box.h"
#include "controls/tab_control.h"
#include "controls/ucSlider.h"
#include "core/app_state.h"
#include "core/settings.h"
#include "core/trouble.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/multimedia_device.h"
#include "platform/registry_store.h"
#include "settings_ui/greeting_recorder.h"
#include "settings_ui/mHotKeys.h"
#include "settings_ui/settings_host.h"
#include "telephony/tapi_control/TAPIExCtl.h"

namespace kelmio {

/// Edits the settings of the run; "Apply" takes them over and writes them. The recording format alone is taken over at
/// once. It has a telephony control of its own, so that calls go on in the main window with the old values. Made anew
/// for each showing. User interface thread only; what is in `House` outlives the window.
class frmSettings : public Form {
public:
  struct House {
    AppState& app;
    Settings& settings;
    RegistryStore& registry;
    LineService& lines;
    TimerService& timers;
    MultimediaDevice& mmc; // nobody else's
    MessageBoxes& boxes;
    FilePicker& file_picker;
    ColorPicker& color_picker;
    mHotKeys& hot_keys;
    HotKeyWindow& main_window;
    SettingsHost& host;
    TroubleSink trouble;
  };
  explicit frmSettings(const House& house);

  TabControl SSTab1;

  ComboBox CBLines;
  TextBox txtCaps;
  Button cmdDeviceConfigure;

  CheckBox chkAutoAnswerIncoming;
  TextBox txtAutoAnswerRingCount;
  CheckBox chkAcceptOnOffering;
  CheckBox chkAnswerOnOffering;
  CheckBox chkStopRecordingAfter;
  TextBox txtMaxRecordingLength;     // minutes
  TextBox txtRecordingSilenceLength; // milliseconds
  Label lblRecordFromat;
  Button cmdRecordFormat;
  Button cmdResetFormat;

  CheckBox chkAutoStart;
  CheckBox chkNewCallAlert;
  TextBox txtNewCallAlertTime; // seconds
  ucSlider sldTransparency;    // 0 to 255
  PictureBox picColorMessages;
  Button cmdColorMessages;
  PictureBox picColorMessages1;
  Button cmdColorMessages1;
  PictureBox picColorStatus;
  Button cmdColorStatus;
  PictureBox picColorPreview;
  Button cmdColorPreview;
  TextBox txtGreetingFile;
  Button cmdBrowseGreetingFile;
  Button cmdRemoveGreetingFile;
  Button cmdRecordSound;
  Button cmdPlaySound;
  Button cmdStopSound;
  Button cmdBeep;
  ProgressBar pbLevel; // how loud the microphone is while the greeting is recorded
  CheckBox chkHotKeyAccess;
  ComboBox cboHotKeyModifiers;
  ComboBox cboHotKey;

  Button cmdApply;
  Button cmdCancel;

  TAPIExCtl mTAPIEx;

  std::string_view Name() const override { return "frmSettings"; }
  void Load() override;
  void EscapePressed() override { Visible = false; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  static constexpr int kOpaque = 255;

  struct BoxOfSetting {
    CheckBox& box;
    int Settings::*setting;
  };
  struct NumberOfSetting {
    TextBox& box;
    int Settings::*setting;
  };
  struct Swatch {
    PictureBox& box;
    Button& button;
    Color Settings::*setting;
  };

  void SetCaptions();
  std::array<BoxOfSetting, 6> Boxes();
  std::array<NumberOfSetting, 4> Numbers();
  std::array<Swatch, 4> Swatches();

  void ShowSettings();
  void PrepareHotKeyList();
  void ListLines();
  void ShowRecordFormat();
  /// Nothing without a choice.
  TAPILine* ChosenLine() const;
  /// The line of the list, opened on a line object of its own; nothing without a choice or when it can't be opened.
  std::shared_ptr<TAPILine> OpenChosenLine();
  /// Writes settings by their names; one that can't be written is told once.
  void Save(std::initializer_list<const char*> names);

  void CBLines_Click();
  void cmdDeviceConfigure_Click();
  void cmdRecordFormat_Click();
  void cmdResetFormat_Click();
  void cmdColor_Click(const Swatch& swatch);
  void cmdBrowseGreetingFile_Click();
  void chkHotKeyAccess_Click();
  void cmdApply_Click();

  void TakeDevice();
  void TakeValues();
  void TakeColors();
  void TakeHotKey();
  void TakeGreeting();

  House house_;
  GreetingRecorder greeting_;
  std::vector<std::shared_ptr<TAPILine>> listed_; // by their places in the list
  std::shared_ptr<TAPILine> format_line_;         // stays open after a format that can't be recorded
};

} // namespace kelmio
