#include "settings_ui/frmSettings.h"

#include <algorithm>

#include "settings_ui/capability_report.h"

namespace kelmio {

namespace {

constexpr int kAnswerTab = 1;

constexpr std::int16_t kBeepHertz = 1100;
constexpr double kBeepSeconds = 0.6;

constexpr const char* kWaveFilter = "Wave Files (*.wav)|*.wav;|"
                                    "All Files (*.*)|*.*";
constexpr const char* kUnsupportedFormat =
    "This is not supported format by your hardware, please select a supported wave format.";

bool CarriesSpeech(const TAPILineCaps& caps) {
  return (caps.MediaModes() & (media_mode::kInteractiveVoice | media_mode::kAutomatedVoice)) != 0 &&
         (caps.BearerModes() & kBearerModeVoice) != 0;
}

} // namespace

frmSettings::frmSettings(const House& house)
    : mTAPIEx(house.lines), house_(house),
      greeting_(house.app, house.mmc, house.timers,
                {txtGreetingFile, cmdRecordSound, cmdPlaySound, cmdStopSound, pbLevel}, house.trouble) {
  SetCaptions();
  txtCaps.Locked = true;
  sldTransparency.Orientation = ucSlider::Orientations::Horizontal;
  sldTransparency.SetMin(0);
  sldTransparency.SetMax(kOpaque);

  SSTab1.Click = [this] {
    if (SSTab1.Selected == kAnswerTab)
      ShowRecordFormat();
  };
  CBLines.Click = [this] { CBLines_Click(); };
  cmdDeviceConfigure.Click = [this] { cmdDeviceConfigure_Click(); };
  cmdRecordFormat.Click = [this] { cmdRecordFormat_Click(); };
  cmdResetFormat.Click = [this] { cmdResetFormat_Click(); };
  for (const Swatch& swatch : Swatches()) {
    swatch.button.Click = [this, swatch] { cmdColor_Click(swatch); };
    swatch.box.Click = [&button = swatch.button] { button.Click(); };
  }
  cmdBrowseGreetingFile.Click = [this] { cmdBrowseGreetingFile_Click(); };
  cmdRemoveGreetingFile.Click = [this] { txtGreetingFile.Text = ""; };
  cmdBeep.Click = [this] { house_.host.PlayTonePair(kBeepHertz, kBeepHertz, kBeepSeconds); };
  chkHotKeyAccess.Click = [this] { chkHotKeyAccess_Click(); };
  cmdApply.Click = [this] { cmdApply_Click(); };
  cmdCancel.Click = [this] { Visible = false; };
}

void frmSettings::SetCaptions() {
  Caption = "Settings";
  cmdDeviceConfigure.Caption = "Configure";
  chkAutoAnswerIncoming.Caption = "Auto answer all incoming calls";
  chkAcceptOnOffering.Caption = "Accept on offering (for ISDN line)";
  chkAnswerOnOffering.Caption = "Answer on offering (for IP or digital line)";
  chkStopRecordingAfter.Caption = "Stop recording after:";
  cmdRecordFormat.Caption = "Change";
  cmdResetFormat.Caption = "Reset";
  chkAutoStart.Caption = "Auto start with Windows";
  chkNewCallAlert.Caption = "Display new call alert";
  for (const Swatch& swatch : Swatches())
    swatch.button.Caption = "Change";
  cmdBrowseGreetingFile.Caption = "Browse";
  cmdRemoveGreetingFile.Caption = "Remove";
  cmdRecordSound.Caption = "Record";
  cmdPlaySound.Caption = "Play";
  cmdStopSound.Caption = "Stop";
  cmdBeep.Caption = "Beep";
  chkHotKeyAccess.Caption = "System wide hot key program access";
  cmdApply.Caption = "Apply";
  cmdCancel.Caption = "Cancel";
}

void frmSettings::Load() {
  ShowSettings();
  PrepareHotKeyList();
  chkHotKeyAccess_Click();
  mTAPIEx.OptionFlagA = false;
  mTAPIEx.Initialize();
  ListLines();
  ShowRecordFormat();
}

void frmSettings::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("SSTab1", SSTab1);
  visitor.Visit("CBLines", CBLines);
  visitor.Visit("txtCaps", txtCaps);
  visitor.Visit("cmdDeviceConfigure", cmdDeviceConfigure);
  visitor.Visit("chkAutoAnswerIncoming", chkAutoAnswerIncoming);
  visitor.Visit("txtAutoAnswerRingCount", txtAutoAnswerRingCount);
  visitor.Visit("chkAcceptOnOffering", chkAcceptOnOffering);
  visitor.Visit("chkAnswerOnOffering", chkAnswerOnOffering);
  visitor.Visit("chkStopRecordingAfter", chkStopRecordingAfter);
  visitor.Visit("txtMaxRecordingLength", txtMaxRecordingLength);
  visitor.Visit("txtRecordingSilenceLength", txtRecordingSilenceLength);
  visitor.Visit("lblRecordFromat", lblRecordFromat);
  visitor.Visit("cmdRecordFormat", cmdRecordFormat);
  visitor.Visit("cmdResetFormat", cmdResetFormat);
  visitor.Visit("chkAutoStart", chkAutoStart);
  visitor.Visit("chkNewCallAlert", chkNewCallAlert);
  visitor.Visit("txtNewCallAlertTime", txtNewCallAlertTime);
  visitor.Visit("sldTransparency", sldTransparency);
  visitor.Visit("picColorMessages", picColorMessages);
  visitor.Visit("cmdColorMessages", cmdColorMessages);
  visitor.Visit("picColorMessages1", picColorMessages1);
  visitor.Visit("cmdColorMessages1", cmdColorMessages1);
  visitor.Visit("picColorStatus", picColorStatus);
  visitor.Visit("cmdColorStatus", cmdColorStatus);
  visitor.Visit("picColorPreview", picColorPreview);
  visitor.Visit("cmdColorPreview", cmdColorPreview);
  visitor.Visit("txtGreetingFile", txtGreetingFile);
  visitor.Visit("cmdBrowseGreetingFile", cmdBrowseGreetingFile);
  visitor.Visit("cmdRemoveGreetingFile", cmdRemoveGreetingFile);
  visitor.Visit("cmdRecordSound", cmdRecordSound);
  visitor.Visit("cmdPlaySound", cmdPlaySound);
  visitor.Visit("cmdStopSound", cmdStopSound);
  visitor.Visit("cmdBeep", cmdBeep);
  visitor.Visit("pbLevel", pbLevel);
  visitor.Visit("chkHotKeyAccess", chkHotKeyAccess);
  visitor.Visit("cboHotKeyModifiers", cboHotKeyModifiers);
  visitor.Visit("cboHotKey", cboHotKey);
  visitor.Visit("cmdApply", cmdApply);
  visitor.Visit("cmdCancel", cmdCancel);
}

void frmSettings::ListLines() {
  std::vector<std::string> names;
  int chosen = ComboBox::kNone;
  for (const std::shared_ptr<TAPILine>& line : mTAPIEx.Lines()) {
    if (!CarriesSpeech(line->Caps()))
      continue;
    if (line->DeviceID() == house_.settings.CommDeviceID)
      chosen = static_cast<int>(names.size());
    names.push_back(line->Name());
    listed_.push_back(line);
  }
  CBLines.Items = std::move(names);
  if (chosen == ComboBox::kNone)
    return;
  CBLines.ListIndex = chosen;
  CBLines.Click();
}

TAPILine* frmSettings::ChosenLine() const {
  return CBLines.ListIndex >= 0 ? listed_.at(static_cast<std::size_t>(CBLines.ListIndex.Get())).get() : nullptr;
}

void frmSettings::CBLines_Click() {
  const TAPILine* line = ChosenLine();
  if (line == nullptr)
    return;
  LineCaps caps = line->Caps().All();
  caps.phone = line->Phone();
  txtCaps.Text = CapabilityReport(caps);
}

void frmSettings::cmdDeviceConfigure_Click() {
  TAPILine* line = ChosenLine();
  if (line == nullptr)
    return;
  line->ConfigDialog();
  // An account or a modem that has been set up bears its name.
  std::vector<std::string> names = CBLines.Items;
  names.at(static_cast<std::size_t>(CBLines.ListIndex.Get())) = line->Name();
  CBLines.Items = std::move(names);
  CBLines_Click();
}

std::shared_ptr<TAPILine> frmSettings::OpenChosenLine() {
  const TAPILine* chosen = ChosenLine();
  std::shared_ptr<TAPILine> line = chosen != nullptr ? mTAPIEx.LineByDeviceID(chosen->DeviceID()) : nullptr;
  return line != nullptr && line->Open() ? line : nullptr;
}

void frmSettings::cmdRecordFormat_Click() {
  if (const std::shared_ptr<TAPILine> line = OpenChosenLine()) {
    format_line_ = line;
    Settings& settings = house_.settings;
    TAPIWaveFormat& format = line->WaveFormat();
    format.SetID(settings.RecordFormatID);
    format.SelectDialog("Wave format selection");
    settings.RecordFormatID = format.ID();
    if (!format.Supported()) {
      // The new format stays in memory alone, beside the old words for it, and the line stays open.
      house_.boxes.Show(kUnsupportedFormat, "", BoxButtons::Ok, BoxIcon::Warning, 1);
      return;
    }
    settings.RecordFormatDetail = format.Detail();
    settings.RecordFormatCodeName = format.CodeName();
    Save({"RecordFormatID", "RecordFormatDetail", "RecordFormatCodeName"});
    if (line->IsOpen())
      line->Close();
  }
  ShowRecordFormat();
}

void frmSettings::cmdResetFormat_Click() {
  const std::shared_ptr<TAPILine> line = OpenChosenLine();
  if (line == nullptr)
    return;
  format_line_ = line;
  line->WaveFormat().Reset();
  house_.settings.RecordFormatDetail = line->WaveFormat().Detail();
  house_.settings.RecordFormatCodeName = line->WaveFormat().CodeName();
  ShowRecordFormat();
}

void frmSettings::ShowRecordFormat() {
  lblRecordFromat.Caption = house_.settings.RecordFormatCodeName + "; " + house_.settings.RecordFormatDetail;
}

void frmSettings::cmdColor_Click(const Swatch& swatch) {
  if (const auto color = house_.color_picker.PickColor(house_.settings.*swatch.setting))
    swatch.box.BackColor = *color;
}

void frmSettings::cmdBrowseGreetingFile_Click() {
  const std::string path = house_.file_picker.OpenFile("Open Wave File", kWaveFilter);
  if (!path.empty())
    txtGreetingFile.Text = path;
}

void frmSettings::chkHotKeyAccess_Click() {
  cboHotKeyModifiers.Enabled = chkHotKeyAccess.Value.Get();
  cboHotKey.Enabled = chkHotKeyAccess.Value.Get();
}

} // namespace kelmio
