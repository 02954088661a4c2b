// The settings window: from the settings to the controls and back, and what "Apply" sets off.
#include <gmock/gmock.h>

#include <algorithm>
#include <memory>
#include <utility>

#include "fakes/fake_call_sound.h"
#include "fakes/fake_loop.h"
#include "fakes/scripted_line.h"
#include "settings_ui/frmSettings.h"
#include "settings_ui/moving_device.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

/// What happened in the house, in its order.
struct FakeHost : SettingsHost, HotKeyWindow {
  explicit FakeHost(const Settings& the_settings) : settings(the_settings) {}
  void RestartSystem() override {
    asked.push_back("restart " + std::to_string(settings.CommDeviceID) + " rings " +
                    std::to_string(settings.AutoAnswerRingCount));
  }
  void RefreshMessageList() override { asked.push_back("list " + std::to_string(settings.MessagesWindowColor)); }
  void SetPreviewColor(Color color) override { asked.push_back("preview " + std::to_string(color)); }
  void SetOutputColor(Color color) override { asked.push_back("output " + std::to_string(color)); }
  void PlayTonePair(std::int16_t low, std::int16_t high, double seconds) override {
    asked.push_back("tone " + std::to_string(low) + " " + std::to_string(high) + " " + std::to_string(seconds));
  }
  void HotKeyPressed() override {}
  const Settings& settings;
  std::vector<std::string> asked;
};

struct FakeFormatDialog : FormatDialog {
  std::optional<WaveFormatRecord> Select(const std::string& title, const WaveFormatRecord& /*current*/) override {
    titles.push_back(title);
    return choice;
  }
  std::vector<std::string> titles;
  std::optional<WaveFormatRecord> choice;
};

/// A line that carries no speech, whatever media it names.
struct DataBearer : ScriptedLine {
  using ScriptedLine::ScriptedLine;
  LineCaps Caps() const override {
    LineCaps caps = ScriptedLine::Caps();
    caps.bearer_modes = 7;
    return caps;
  }
};

class SettingsWindowTest : public testing::Test {
protected:
  static constexpr std::uint32_t kVoice = media_mode::kInteractiveVoice;

  SettingsWindowTest() {
    lines_.AddDriver(
        std::make_unique<ScriptedDriver>(std::vector<std::shared_ptr<ScriptedLine>>{modem_, first_, bearer_, second_}));
    lines_.SetFormatDialog(&formats_);
    LoadSettings(settings_, registry_, home_.Path());
    settings_.CommDeviceID = 3;
    SetPaths(app_, home_.Path());
  }
  frmSettings& Open() {
    form_.reset();
    form_ = std::make_unique<frmSettings>(
        frmSettings::House{app_, settings_, registry_, lines_, loop_, mmc_, boxes_, files_, colors_, hot_keys_, host_,
                           host_, [this](const std::string& text) { said_.push_back(text); }});
    form_->Load();
    form_->Visible = true;
    return *form_;
  }
  /// What another run of the program would read.
  Settings Stored() {
    Settings stored;
    LoadSettings(stored, registry_, home_.Path());
    return stored;
  }

  test::TemporaryFolder home_;
  FakeLoop loop_;
  FakeRegistryStore registry_;
  FakeMessageBoxes boxes_;
  FakeFilePicker files_;
  FakeColorPicker colors_;
  FakeHotKeys keys_;
  mHotKeys hot_keys_{keys_, loop_};
  test::MovingDevice mmc_;
  FakeSoundFactory sounds_{loop_};
  LineService lines_{loop_, sounds_};
  FakeFormatDialog formats_;
  std::shared_ptr<ScriptedLine> modem_ = std::make_shared<ScriptedLine>(loop_, 1, media_mode::kDataModem);
  std::shared_ptr<ScriptedLine> first_ = std::make_shared<ScriptedLine>(loop_, 3, kVoice);
  std::shared_ptr<ScriptedLine> bearer_ = std::make_shared<DataBearer>(loop_, 5, kVoice);
  std::shared_ptr<ScriptedLine> second_ = std::make_shared<ScriptedLine>(loop_, 7, media_mode::kAutomatedVoice);
  AppState app_;
  Settings settings_;
  FakeHost host_{settings_};
  std::vector<std::string> said_;
  std::unique_ptr<frmSettings> form_;
};

TEST_F(SettingsWindowTest, WhatIsChangedInTheWindowIsThereAfterARestartAndStaysThere) {
  frmSettings& form = Open();
  const std::pair<CheckBox&, int Settings::*> boxes[] = {{form.chkAutoAnswerIncoming, &Settings::AutoAnswerIncoming},
                                                         {form.chkAcceptOnOffering, &Settings::AcceptOnOffering},
                                                         {form.chkAnswerOnOffering, &Settings::AnswerOnOffering},
                                                         {form.chkStopRecordingAfter, &Settings::StopRecordingAfter},
                                                         {form.chkAutoStart, &Settings::AutoStart},
                                                         {form.chkNewCallAlert, &Settings::NewCallAlert},
                                                         {form.chkHotKeyAccess, &Settings::HotKeyAccess}};
  const std::pair<TextBox&, int Settings::*> numbers[] = {
      {form.txtAutoAnswerRingCount, &Settings::AutoAnswerRingCount},
      {form.txtMaxRecordingLength, &Settings::MaxRecordingLength},
      {form.txtRecordingSilenceLength, &Settings::RecordingSilenceLength},
      {form.txtNewCallAlertTime, &Settings::NewCallAlertTime}};
  const std::pair<Button&, Color Settings::*> colors[] = {{form.cmdColorPreview, &Settings::PreviewWindowColor},
                                                          {form.cmdColorStatus, &Settings::StatusWindowColor},
                                                          {form.cmdColorMessages, &Settings::MessagesWindowColor},
                                                          {form.cmdColorMessages1, &Settings::MessagesWindowColor1}};
  std::vector<std::pair<int Settings::*, int>> wanted = {
      {&Settings::Transparency, 99}, {&Settings::HotKeyModifilers, 2}, {&Settings::HotKeyCode, 65}};
  for (const auto& [box, member] : boxes) {
    wanted.emplace_back(member, 1 - settings_.*member);
    box.Value = !box.Value;
  }
  int value = 100;
  for (const auto& [box, member] : numbers) {
    wanted.emplace_back(member, ++value);
    box.Text = std::to_string(value);
  }
  for (const auto& [button, member] : colors) {
    wanted.emplace_back(member, ++value);
    colors_.choice = value;
    button.Click();
  }
  form.sldTransparency.SetValue(99);
  form.cboHotKeyModifiers.ListIndex = 1;
  form.cboHotKey.ListIndex = 26; // "A"
  // The second time nothing is changed: what is set goes to the controls and back.
  for (int round = 0; round < 2; ++round) {
    form_->cmdApply.Click();
    for (const Settings& found : {Stored(), settings_})
      for (std::size_t index = 0; index < wanted.size(); ++index)
        EXPECT_EQ(found.*wanted[index].first, wanted[index].second) << index;
    Open();
  }
}

TEST_F(SettingsWindowTest, NumbersAreCorrectedInSilence) {
  const struct {
    const char* text;
    int value;
  } kCases[] = {{"abc", 0}, {"", 0}, {"  12abc", 12}, {"1 2", 12}, {"-5", 0}, {"99999999999", 2147483647}};
  for (const auto& [text, value] : kCases) {
    frmSettings& form = Open();
    for (TextBox* box : {&form.txtAutoAnswerRingCount, &form.txtMaxRecordingLength, &form.txtRecordingSilenceLength,
                         &form.txtNewCallAlertTime})
      box->Text = text;
    form.cmdApply.Click();
    EXPECT_EQ(settings_.AutoAnswerRingCount, std::max(value, 1)) << text;
    EXPECT_EQ(settings_.NewCallAlertTime, std::max(value, 1)) << text;
    EXPECT_EQ(settings_.MaxRecordingLength, value) << text;
    EXPECT_EQ(settings_.RecordingSilenceLength, value) << text;
  }
  EXPECT_THAT(boxes_.shown, IsEmpty());
}

TEST_F(SettingsWindowTest, AnotherDeviceRestartsOnceAndBeforeTheRest) {
  settings_.AutoAnswerRingCount = 4;
  frmSettings& form = Open();
  EXPECT_THAT(form.CBLines.Items.Get(), ElementsAre("Scripted line 3", "Scripted line 7"));
  EXPECT_EQ(form.CBLines.ListIndex, 0);
  EXPECT_THAT(form.txtCaps.Text.Get(), HasSubstr("Scripted line 3"));
  form.CBLines.ListIndex = 1;
  form.CBLines.Click();
  EXPECT_THAT(form.txtCaps.Text.Get(), HasSubstr("Scripted line 7"));
  form.cmdDeviceConfigure.Click();
  EXPECT_EQ(second_->Configured(), 1); // the line of the list's place among all lines is another
  form.txtAutoAnswerRingCount.Text = "9";
  form.picColorMessages.BackColor = 11;
  form.picColorPreview.BackColor = 22;
  form.picColorStatus.BackColor = 33;
  form.cmdApply.Click();
  EXPECT_THAT(host_.asked, ElementsAre("restart 7 rings 4", "list 11", "preview 22", "output 33"));
  EXPECT_EQ(Stored().CommDeviceID, 7);
}

TEST_F(SettingsWindowTest, WithoutAChoiceTheDeviceStays) {
  settings_.CommDeviceID = 99;
  frmSettings& form = Open();
  EXPECT_EQ(form.CBLines.ListIndex, ComboBox::kNone);
  form.cmdRecordFormat.Click();
  form.cmdResetFormat.Click();
  form.cmdDeviceConfigure.Click();
  EXPECT_THAT(formats_.titles, IsEmpty());
  form.txtMaxRecordingLength.Text = "5";
  form.cmdApply.Click();
  EXPECT_EQ(Stored().CommDeviceID, 99);
  EXPECT_EQ(Stored().MaxRecordingLength, 5);
}

TEST_F(SettingsWindowTest, AFormatIsTakenOverAtOnceOrHalf) {
  frmSettings& form = Open();
  const std::string old_id = settings_.RecordFormatID;
  const std::string shown = "PCM; 8.000 kHz; 16 Bit; Mono";
  EXPECT_EQ(form.lblRecordFromat.Caption.Get(), shown);

  sounds_.unsupported_tag = wave_format_tag::kGsm610;
  formats_.choice = WaveFormatRecord{wave_format_tag::kGsm610, 1, 8000, 1625, 65, 0, 2};
  form.cmdRecordFormat.Click();
  ASSERT_EQ(boxes_.shown.size(), 1U);
  EXPECT_EQ(boxes_.shown[0].text,
            "This is not supported format by your hardware, please select a supported wave format.");
  EXPECT_EQ(settings_.RecordFormatID, ToFormatText(*formats_.choice));
  EXPECT_EQ(settings_.RecordFormatCodeName, "PCM");
  EXPECT_EQ(form.lblRecordFromat.Caption.Get(), shown);
  EXPECT_EQ(Stored().RecordFormatID, old_id);
  EXPECT_TRUE(first_->IsOpen());

  formats_.choice = WaveFormatRecord{wave_format_tag::kMuLaw, 1, 8000, 8000, 1, 8, 0};
  form.cmdRecordFormat.Click();
  EXPECT_THAT(formats_.titles, ElementsAre("Wave format selection", "Wave format selection"));
  EXPECT_EQ(Stored().RecordFormatID, ToFormatText(*formats_.choice));
  EXPECT_EQ(Stored().RecordFormatCodeName, settings_.RecordFormatCodeName);
  EXPECT_NE(form.lblRecordFromat.Caption.Get(), shown);
  EXPECT_FALSE(first_->IsOpen());

  form.cmdResetFormat.Click();
  EXPECT_EQ(form.lblRecordFromat.Caption.Get(), shown);
  EXPECT_EQ(settings_.RecordFormatID, ToFormatText(*formats_.choice));
  EXPECT_NE(Stored().RecordFormatCodeName, "PCM");
  EXPECT_TRUE(first_->IsOpen());
  form_.reset();
  EXPECT_FALSE(first_->IsOpen());

  first_->taken = true;
  Open().cmdRecordFormat.Click();
  EXPECT_EQ(formats_.titles.size(), 2U);
}

TEST_F(SettingsWindowTest, AColorWaitsForApply) {
  settings_.StatusWindowColor = 255;
  frmSettings& form = Open();
  form.cmdColorStatus.Click();
  EXPECT_EQ(form.picColorStatus.BackColor, 255); // given up
  colors_.choice = 77;
  form.picColorStatus.Click();
  EXPECT_EQ(form.picColorStatus.BackColor, 77);
  form.cmdCancel.Click();
  EXPECT_EQ(Open().picColorStatus.BackColor, 255);
}

TEST_F(SettingsWindowTest, TheHotKeyFollowsItsBoxOnly) {
  const auto apply = [this](bool ticked, int key) {
    frmSettings& form = Open();
    form.chkHotKeyAccess.Value = ticked;
    form.chkHotKeyAccess.Click();
    EXPECT_EQ(form.cboHotKey.Enabled, ticked);
    form.cboHotKey.ListIndex = key;
    form.cmdApply.Click();
  };
  settings_.HotKeyAccess = 0;
  apply(true, 0);
  ASSERT_EQ(keys_.calls.size(), 1U);
  EXPECT_EQ(keys_.calls[0].key_code, 112);
  apply(true, 1); // another key waits for the next start
  EXPECT_EQ(keys_.calls.size(), 1U);
  EXPECT_EQ(Stored().HotKeyCode, 113);
  apply(false, ComboBox::kNone);
  EXPECT_THAT(keys_.unregistered, ElementsAre(0));
  EXPECT_EQ(Stored().HotKeyAccess, 0);
  EXPECT_EQ(Stored().HotKeyCode, 113);
}

TEST_F(SettingsWindowTest, TheGreetingIsAFileOrNothing) {
  frmSettings& form = Open();
  files_.choice = home_.Path() + "hello.wav";
  form.cmdBrowseGreetingFile.Click();
  form.cmdApply.Click();
  EXPECT_EQ(Stored().GreetingFile, ""); // not there
  test::WriteBytes(files_.choice, "RIFF");
  Open().txtGreetingFile.Text = " " + files_.choice + "\t";
  form_->cmdApply.Click();
  EXPECT_EQ(Stored().GreetingFile, files_.choice);
  EXPECT_EQ(Open().txtGreetingFile.Text.Get(), files_.choice);
  form_->cmdRemoveGreetingFile.Click();
  EXPECT_EQ(form_->txtGreetingFile.Text.Get(), "");
}

TEST_F(SettingsWindowTest, ClosingByEscapeSavesTheRecordingAndNothingElse) {
  Open().txtAutoAnswerRingCount.Text = "9";
  form_->cmdRecordSound.Click();
  form_->EscapePressed();
  EXPECT_FALSE(form_->Visible);
  form_.reset();
  EXPECT_THAT(mmc_.commands, ElementsAre("Open", "Record", "Save", "Close"));
  EXPECT_EQ(Open().txtAutoAnswerRingCount.Text.Get(), "4");
  EXPECT_THAT(host_.asked, IsEmpty());
}

TEST_F(SettingsWindowTest, WritesNothingWhenMinimizedAndTellsWhatCannotBeWritten) {
  Open().txtAutoAnswerRingCount.Text = "9";
  form_->State = WindowState::Minimized;
  form_->cmdApply.Click();
  EXPECT_EQ(settings_.AutoAnswerRingCount, 9);
  EXPECT_EQ(Stored().AutoAnswerRingCount, 4);
  EXPECT_THAT(said_, IsEmpty());
  registry_.read_only = true;
  Open().cmdApply.Click();
  EXPECT_THAT(said_, ElementsAre("Could not save the settings."));
}

} // namespace
} // namespace kelmio
