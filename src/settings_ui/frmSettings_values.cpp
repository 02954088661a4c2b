// Between the settings and the controls.
#include <algorithm>
#include <string_view>

#include "core/mGeneral.h"
#include "core/text.h"
#include "settings_ui/frmSettings.h"
#include "settings_ui/hot_key_lists.h"

namespace kelmio {

namespace {

constexpr int kLeastRingCount = 1;
constexpr int kLeastAlertSeconds = 1;

/// The number that a text begins with; blanks are passed over wherever they stand. A text that begins with no digit is
/// 0, so that nothing here is negative.
int NumericValue(std::string text) {
  std::erase_if(text, [](char c) { return c == ' ' || c == '\t'; });
  return std::max(LeadingNumber32(text), 0);
}

} // namespace

std::array<frmSettings::BoxOfSetting, 6> frmSettings::Boxes() {
  return {{{chkAutoAnswerIncoming, &Settings::AutoAnswerIncoming},
           {chkAcceptOnOffering, &Settings::AcceptOnOffering},
           {chkAnswerOnOffering, &Settings::AnswerOnOffering},
           {chkStopRecordingAfter, &Settings::StopRecordingAfter},
           {chkAutoStart, &Settings::AutoStart},
           {chkNewCallAlert, &Settings::NewCallAlert}}};
}

std::array<frmSettings::NumberOfSetting, 4> frmSettings::Numbers() {
  return {{{txtAutoAnswerRingCount, &Settings::AutoAnswerRingCount},
           {txtMaxRecordingLength, &Settings::MaxRecordingLength},
           {txtRecordingSilenceLength, &Settings::RecordingSilenceLength},
           {txtNewCallAlertTime, &Settings::NewCallAlertTime}}};
}

std::array<frmSettings::Swatch, 4> frmSettings::Swatches() {
  return {{{picColorPreview, cmdColorPreview, &Settings::PreviewWindowColor},
           {picColorStatus, cmdColorStatus, &Settings::StatusWindowColor},
           {picColorMessages, cmdColorMessages, &Settings::MessagesWindowColor},
           {picColorMessages1, cmdColorMessages1, &Settings::MessagesWindowColor1}}};
}

void frmSettings::ShowSettings() {
  const Settings& settings = house_.settings;
  for (const BoxOfSetting& each : Boxes())
    each.box.Value = settings.*each.setting == 1;
  for (const NumberOfSetting& each : Numbers())
    each.box.Text = std::to_string(settings.*each.setting);
  for (const Swatch& each : Swatches())
    each.box.BackColor = settings.*each.setting;
  txtGreetingFile.Text = settings.GreetingFile;
  sldTransparency.SetValue(std::clamp(settings.Transparency, 0, kOpaque));
}

void frmSettings::PrepareHotKeyList() {
  FillHotKeyList(cboHotKey, HotKeyChoices(), house_.settings.HotKeyCode);
  FillHotKeyList(cboHotKeyModifiers, HotKeyModifierChoices(), house_.settings.HotKeyModifilers);
  chkHotKeyAccess.Value = house_.settings.HotKeyAccess == 1;
}

void frmSettings::cmdApply_Click() {
  TakeDevice();
  TakeValues();
  TakeColors();
  house_.settings.Transparency = static_cast<int>(sldTransparency.Value());
  TakeHotKey();
  TakeGreeting();
  if (State != WindowState::Minimized)
    Save({"AutoAnswerIncoming",
          "AutoAnswerRingCount",
          "AcceptOnOffering",
          "AnswerOnOffering",
          "StopRecordingAfter",
          "MaxRecordingLength",
          "RecordingSilenceLength",
          "AutoStart",
          "NewCallAlert",
          "NewCallAlertTime",
          "PreviewWindowColor",
          "StatusWindowColor",
          "MessagesWindowColor",
          "MessagesWindowColor1",
          "HotKeyCode",
          "HotKeyModifilers",
          "HotKeyAccess",
          "GreetingFile",
          "CommDeviceID",
          "Transparency"});
  Visible = false;
}

void frmSettings::TakeDevice() {
  const TAPILine* line = ChosenLine();
  if (line == nullptr || line->DeviceID() == house_.settings.CommDeviceID)
    return;
  house_.settings.CommDeviceID = static_cast<int>(line->DeviceID());
  house_.host.RestartSystem();
}

void frmSettings::TakeValues() {
  Settings& settings = house_.settings;
  for (const BoxOfSetting& each : Boxes())
    settings.*each.setting = each.box.Value ? 1 : 0;
  for (const NumberOfSetting& each : Numbers())
    settings.*each.setting = NumericValue(each.box.Text);
  settings.AutoAnswerRingCount = std::max(settings.AutoAnswerRingCount, kLeastRingCount);
  settings.NewCallAlertTime = std::max(settings.NewCallAlertTime, kLeastAlertSeconds);
}

void frmSettings::TakeColors() {
  for (const Swatch& each : Swatches())
    house_.settings.*each.setting = each.box.BackColor;
  house_.host.RefreshMessageList();
  house_.host.SetPreviewColor(house_.settings.PreviewWindowColor);
  house_.host.SetOutputColor(house_.settings.StatusWindowColor);
}

void frmSettings::TakeHotKey() {
  Settings& settings = house_.settings;
  settings.HotKeyCode = SelectedHotKeyData(cboHotKey, HotKeyChoices(), settings.HotKeyCode);
  settings.HotKeyModifilers =
      SelectedHotKeyData(cboHotKeyModifiers, HotKeyModifierChoices(), settings.HotKeyModifilers);
  // Another key under a box that stays ticked waits for the next start.
  const int access = chkHotKeyAccess.Value ? 1 : 0;
  if (access == settings.HotKeyAccess)
    return;
  if (access == 1)
    house_.hot_keys.RegisterGlobalHotKey(settings.HotKeyCode, settings.HotKeyModifilers, house_.main_window);
  else
    house_.hot_keys.UnregisterGlobalHotKey(house_.main_window);
  settings.HotKeyAccess = access;
}

void frmSettings::TakeGreeting() {
  // A first greeting that is still being recorded is a file only once it has been saved.
  greeting_.Finish();
  const std::string path(Trimmed(txtGreetingFile.Text.Get()));
  txtGreetingFile.Text = path;
  house_.settings.GreetingFile = mGeneral::FileExists(path) ? path : std::string();
}

void frmSettings::Save(std::initializer_list<const char*> names) {
  bool saved = true;
  for (const char* name : names)
    saved = !SaveSetting(house_.settings, house_.registry, name) && saved;
  if (!saved)
    house_.trouble("Could not save the settings.");
}

} // namespace kelmio
