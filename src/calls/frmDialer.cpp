#include "calls/frmDialer.h"

#include <string_view>
#include <utility>

#include "calls/modToneBox.h"
#include "calls/numeric_text.h"
#include "controls/utf8.h"
#include "core/mGeneral.h"
#include "core/text.h"

namespace kelmio {

namespace {

constexpr int kSecondMs = 1000;
constexpr std::size_t kPanelState = 1;
constexpr std::size_t kPanelClock = 2;

/// By the index of the key.
constexpr std::array<char, frmDialer::kKeys> kCharacters = {'1', '2', '3', '4', '5', '6', '7', '8', '9', '*', '0', '#'};

constexpr const char* kWaveFilter = "Wave Files (*.wav)|*.wav;|"
                                    "All Files (*.*)|*.*";

} // namespace

frmDialer::frmDialer(const House& house, Place place)
    : tmrTime(house.timers, kSecondMs), myTAPIEx(house.lines), house_(house), place_(place) {
  Caption = "Dialer";
  cmdPaste.Caption = "Paste";
  chkKeyTones.Caption = "Key Tones";
  cmdDial.Caption = "Dial";
  cmdDrop.Caption = "Drop";
  cmdAnswer.Caption = "Answer";
  cmdRecord.Caption = "Record";
  cmdCancel.Caption = "Cancel";
  cmdBrowse.Caption = "Browse";
  cmdPlayWave.Caption = "Play File";
  sbStatusBar.AddPanel(StatusBar::PanelKind::Text, "");
  sbStatusBar.AddPanel(StatusBar::PanelKind::Text, "");

  for (std::size_t key = 0; key < kKeys; ++key)
    cmdKeyPad[key].Click = [this, key] { cmdKeyPad_Click(key); };
  cmdDelete.Click = [this] { cmdDelete_Click(); };
  cmdPaste.Click = [this] { cmdPaste_Click(); };
  chkKeyTones.Click = [this] { chkKeyTones_Click(); };
  cmdDial.Click = [this] { cmdDial_Click(); };
  cmdAnswer.Click = [this] { house_.engine.AnswerCall(); };
  cmdDrop.Click = [this] { house_.engine.StopRecord(); };
  cmdRecord.Click = [this] { cmdRecord_Click(); };
  cmdCancel.Click = [this] { Visible = false; };
  cmdBrowse.Click = [this] { cmdBrowse_Click(); };
  cmdPlayWave.Click = [this] { cmdPlayWave_Click(); };
  txtPhoneNumber.EnterPressed = [this] {
    if (!Trimmed(txtPhoneNumber.Text.Get()).empty())
      cmdDial_Click();
  };
  tmrTime.Tick = [this] { tmrTime_Timer(); };
  ListenToCalls();
}

frmDialer::~frmDialer() {
  if (!loaded_)
    return;
  myTAPIEx.Shutdown();
  if (State != WindowState::Minimized)
    SavePlaceAndNumber();
}

void frmDialer::ListenToCalls() {
  myTAPIEx.OnNewCall = [this](const CallRef& call) {
    cmdDrop.Enabled = true;
    cmdAnswer.Enabled = true;
    dialer_call_ = call;
  };
  myTAPIEx.OnRing = [this](const CallRef& call, int ring_count, long) {
    sbStatusBar.SetPanel(kPanelState, "Incoming call. Ring: " + std::to_string(ring_count));
    dialer_call_ = call;
    cmdAnswer.Enabled = true;
  };
  myTAPIEx.OnConnected = [this](const CallRef& call, long) { OnConnected(call); };
  myTAPIEx.OnCallState = [this](const CallRef&, CallState state) { OnCallState(state); };
  myTAPIEx.OnEndCall = [this](const CallRef&) { OnEndCall(); };
  myTAPIEx.OnIdle = [this](const CallRef&) { OnIdle(); };
}

void frmDialer::Load() {
  for (const char* name : {"DialerLeft", "DialerTop", "DialerLastNumber"})
    ReadSetting(house_.settings, house_.registry, name, house_.app.AppPath);
  Left = house_.settings.DialerLeft;
  Top = house_.settings.DialerTop;

  constexpr int kBlockBytes = 2048;
  myTAPIEx.OptionFlagA = false;
  myTAPIEx.Initialize();
  myTAPIEx.OptionFlagB = true;
  myTAPIEx.WaveInBufferSize = kBlockBytes;
  myTAPIEx.WaveOutBufferSize = kBlockBytes;
  dialer_line_ = myTAPIEx.LineByDeviceID(house_.settings.CommDeviceID);
  const bool opened = dialer_line_ != nullptr && dialer_line_->Open();
  loaded_ = true;

  sbStatusBar.SetPanel(kPanelState, opened ? "Ready" : "No device opened");
  for (Button* button : {&cmdDrop, &cmdAnswer, &cmdPlayWave, &cmdRecord})
    button->Enabled = false;
  sbStatusBar.SetPanel(kPanelClock, mGeneral::FormatSeconds(0));
  tmrTime.SetEnabled(false);
  chkKeyTones.Value = house_.settings.KeyTones == 1;
  // What another window wants dialled stands here at every opening of this run.
  txtPhoneNumber.Text = house_.app.DialNumber.empty() ? house_.settings.DialerLastNumber : house_.app.DialNumber;
  txtPhoneNumber.SelStart = txtPhoneNumber.Text.Get().size();
  txtPhoneNumber.SetFocus();
}

void frmDialer::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("txtPhoneNumber", txtPhoneNumber);
  for (std::size_t key = 0; key < kKeys; ++key)
    visitor.Visit("cmdKeyPad" + std::to_string(key), cmdKeyPad[key]);
  visitor.Visit("cmdDelete", cmdDelete);
  visitor.Visit("cmdPaste", cmdPaste);
  visitor.Visit("chkKeyTones", chkKeyTones);
  visitor.Visit("cmdDial", cmdDial);
  visitor.Visit("cmdDrop", cmdDrop);
  visitor.Visit("cmdAnswer", cmdAnswer);
  visitor.Visit("cmdRecord", cmdRecord);
  visitor.Visit("cmdCancel", cmdCancel);
  visitor.Visit("txtWaveFile", txtWaveFile);
  visitor.Visit("cmdBrowse", cmdBrowse);
  visitor.Visit("cmdPlayWave", cmdPlayWave);
  visitor.Visit("sbStatusBar", sbStatusBar);
}

void frmDialer::OnConnected(const CallRef& call) {
  dialer_call_ = call;
  cmdPlayWave.Enabled = true;
  cmdRecord.Enabled = true;
  cmdDrop.Enabled = true;
  cmdAnswer.Enabled = false;
  dialer_seconds_ = 0;
  tmrTime.SetEnabled(true);
}

void frmDialer::OnCallState(CallState state) {
  static constexpr std::pair<CallState, const char*> kTexts[] = {
      {CallState::Idle, "Idle"},           {CallState::Accepted, "Accepted"},         {CallState::Busy, "Busy"},
      {CallState::Connected, "Connected"}, {CallState::Disconnected, "Disconnected"}, {CallState::Unknown, "Unknown"},
  };
  for (const auto& [each, text] : kTexts)
    if (each == state)
      sbStatusBar.SetPanel(kPanelState, text);
}

void frmDialer::OnEndCall() {
  // "Record" stays as it is.
  dialer_call_ = nullptr;
  for (Button* button : {&cmdPlayWave, &cmdDrop, &cmdAnswer})
    button->Enabled = false;
  tmrTime.SetEnabled(false);
  house_.loop.RunPending();
}

void frmDialer::OnIdle() {
  // The call last seen stays: only its end clears it.
  for (Button* button : {&cmdPlayWave, &cmdDrop, &cmdAnswer, &cmdRecord})
    button->Enabled = false;
  tmrTime.SetEnabled(false);
  house_.context.CurrentCall = nullptr;
  house_.loop.RunPending();
}

void frmDialer::cmdKeyPad_Click(std::size_t index) {
  txtPhoneNumber.Text = std::string(Trimmed(txtPhoneNumber.Text.Get())) + kCharacters[index];
  txtPhoneNumber.SelStart = txtPhoneNumber.Text.Get().size();
  if (house_.settings.KeyTones == 1)
    PlayKeyTone(static_cast<std::int16_t>(index + 1));
}

void frmDialer::PlayKeyTone(std::int16_t KeyNumber) {
  const modToneBox::TonePair pair = modToneBox::PairOfKey(KeyNumber);
  modToneBox::PlayTonePair(house_.wave_images, pair.low, pair.high, modToneBox::kKeyToneSeconds);
}

void frmDialer::cmdDelete_Click() {
  std::string number(Trimmed(txtPhoneNumber.Text.Get()));
  RemoveLastCharacter(number);
  txtPhoneNumber.Text = number;
  txtPhoneNumber.SelStart = number.size();
}

void frmDialer::cmdPaste_Click() {
  const std::optional<std::string> held = house_.clipboard.Text();
  if (!held)
    return;
  const std::optional<std::string> number = NumericText(*held);
  if (!number)
    return;
  txtPhoneNumber.Text = *number == "0" ? std::string() : *number;
  txtPhoneNumber.SelStart = txtPhoneNumber.Text.Get().size();
}

void frmDialer::chkKeyTones_Click() {
  house_.settings.KeyTones = chkKeyTones.Value ? 1 : 0;
  SaveSetting(house_.settings, house_.registry, "KeyTones");
}

void frmDialer::cmdDial_Click() {
  const std::string number(Trimmed(txtPhoneNumber.Text.Get()));
  txtPhoneNumber.Text = number;
  // Who dials means to use the line.
  if (house_.settings.SystemStatus == 0) {
    house_.settings.SystemStatus = 1;
    house_.engine.SetSystemStatus();
  }
  house_.engine.DialCall(number);
}

void frmDialer::cmdRecord_Click() {
  house_.engine.RecordCallManual();
  cmdRecord.Enabled = false;
}

void frmDialer::cmdBrowse_Click() {
  const std::string file = house_.file_picker.OpenFile("Open Wave File", kWaveFilter);
  if (!file.empty())
    txtWaveFile.Text = file;
}

void frmDialer::cmdPlayWave_Click() {
  if (dialer_call_ == nullptr) {
    cmdPlayWave.Enabled = false;
    return;
  }
  const std::string file(Trimmed(txtWaveFile.Text.Get()));
  txtWaveFile.Text = file;
  if (!file.empty() && mGeneral::FileExists(file))
    dialer_call_->PlayFile(file);
}

void frmDialer::tmrTime_Timer() {
  ++dialer_seconds_;
  sbStatusBar.SetPanel(kPanelClock, mGeneral::FormatSeconds(dialer_seconds_));
}

void frmDialer::SavePlaceAndNumber() {
  house_.settings.DialerLeft = Left;
  house_.settings.DialerTop = Top;
  house_.settings.DialerLastNumber = Trimmed(txtPhoneNumber.Text.Get());
  for (const char* name : {"DialerLeft", "DialerTop", "DialerLastNumber"})
    SaveSetting(house_.settings, house_.registry, name);
}

} // namespace kelmio
