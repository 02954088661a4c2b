#include "shell/frmMain.h"

#include "core/mGeneral.h"
#include "core/text.h"
#include "shell/command_table.h"

namespace kelmio {

namespace {

constexpr int kLoadDelayMs = 5;
constexpr int kHideDelayMs = 1000;

} // namespace

frmMain::frmMain(const House& house)
    : house_(house), tmrLoaded(house.timers, kLoadDelayMs), tmrHide(house.timers, kHideDelayMs), mTAPIEx(house.lines),
      Output(house.app, house.settings, house.clipboard, house.journal), contacts_(house.app_path + "Contacts.ini"),
      call_log_(house.app_path + "CallLog.ini", house.clock, Trouble()),
      messages_(house.app_path, house.clock, house.mmc, Trouble()),
      message_list_({house_.settings, house_.registry, messages_, house_.mmc, *this}), monitor_(house.timers, *this),
      system_(house_.settings, house_.registry, Context, *this, mTAPIEx),
      recording_({house_.app, house_.settings, Context, *this, mTAPIEx, monitor_, contacts_, messages_, house_.timers}),
      calls_({house_.app, house_.settings, Context, *this, monitor_, recording_, contacts_, call_log_}),
      lvwCalls(message_list_.lvwCalls), tmrCallTime(monitor_.tmrCallTime), tmrSilence(recording_.tmrSilence) {
  Caption = "Kelmio Standard";
  using Kind = StatusBar::PanelKind;
  sbStatusBar.AddPanel(Kind::Text, "Status");
  sbStatusBar.AddPanel(Kind::Text, "Idle");
  sbStatusBar.AddPanel(Kind::Text, kClockAtStart);
  sbStatusBar.AddPanel(Kind::Text, "0 Calls");
  sbStatusBar.AddPanel(Kind::Date, "");
  sbStatusBar.AddPanel(Kind::Time, "");

  tmrLoaded.Tick = [this] { tmrLoaded_Timer(); };
  tmrHide.Tick = [this] { tmrHide_Timer(); };
  CommandBars1.Execute = [this](int id) { ExecuteCommand(id); };
  CommandBars1.Update = [this] { UpdateCommands(); };
  calls_.Listen(mTAPIEx);
  mTAPIEx.OnLogText = [this](const std::string& text) { Output.OnLogText(text); };

  house_.tray.on_popup = [this]() -> const CommandBar& {
    tray_popup_ = BuildTrayPopup(house_.settings.SystemStatus);
    return tray_popup_;
  };
  house_.tray.on_command = [this](int id) { ExecuteCommand(id); };
  house_.tray.on_double_click = [this] { ShowFromTray(); };
  // A hidden window whose tray has died could not be reached any more.
  house_.tray.on_gone = [this] { ShowFromTray(); };
}

TroubleSink frmMain::Trouble() {
  return [this](const std::string& sentence) { Output.OnLogText(sentence); };
}

frmMain::~frmMain() {
  house_.tray.on_popup = {};
  house_.tray.on_command = {};
  house_.tray.on_double_click = {};
  house_.tray.on_gone = {};
}

void frmMain::Load() {
  LoadMainWindow(*this);
}

bool frmMain::QueryUnload() {
  if (!house_.tray.Created())
    return false;
  HideToTray();
  return true;
}

void frmMain::Unload() {
  if (unloaded_)
    return;
  unloaded_ = true;
  UnloadMainWindow(*this);
  house_.loop.Quit();
}

void frmMain::HideToTray() {
  // Without a tray nothing would bring a hidden window back.
  if (house_.tray.Created())
    Visible = false;
  else
    State = WindowState::Minimized;
}

void frmMain::ShowFromTray() {
  if (State == WindowState::Minimized)
    State = WindowState::Normal;
  Visible = true;
}

void frmMain::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("CommandBars", CommandBars1);
  visitor.Visit("DockingPaneManager", DockingPaneManager);
  visitor.Visit("sbStatusBar", sbStatusBar);
  visitor.Visit("MsgsTitleCaption", MsgsTitleCaption);
  visitor.Visit("lvwCalls", lvwCalls);
}

void frmMain::SetPanel(std::size_t panel, const std::string& text) {
  const bool changed = sbStatusBar.PanelText(panel) != text;
  sbStatusBar.SetPanel(panel, text);
  // The journal tells what the panels told, but for the clock, which would fill it.
  if (changed && !text.empty() && (panel == kPanelActivity || panel == kPanelLine))
    house_.journal.Write((panel == kPanelActivity ? "Status: " : "Line: ") + text);
}

void frmMain::EnableCommand(int command, bool enabled) {
  EnableMenuButton(CommandBars1, command, enabled);
  EnableToolbarButton(CommandBars1, command, enabled);
}

void frmMain::ShowNewCallAlert(const std::string& /*name*/, const std::string& /*number*/) {}

void frmMain::SetWaveViewFormat(long number_b, long number_a) {
  WaveView.FormatB = number_b;
  WaveView.FormatA = number_a;
}

void frmMain::DrawWave(std::span<const std::byte> samples) {
  WaveView.Draw(samples);
}

void frmMain::SetCallCount(const std::string& text) {
  constexpr std::size_t kPanelCount = 4;
  sbStatusBar.SetPanel(kPanelCount, text);
}

void frmMain::PreviewMessage() {}

void frmMain::PumpEvents() {
  house_.loop.RunPending();
}

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
}

void frmMain::MeasureScreen() {
  house_.app.ScreenWidth = house_.desktop.WorkAreaWidth();
  house_.app.ScreenHeight = house_.desktop.WorkAreaHeight();
}

void frmMain::SetFolderPaths() {
  SetPaths(house_.app, house_.app_path);
  MsgsTitleCaption.Caption = house_.app.InboxName;
}

void frmMain::CreatePanes() {
  DockingPane& status = DockingPaneManager.CreatePane(kStatusPane, 200, 140, DockingPane::Edge::Bottom, 0);
  status.title = "Status";
  status.form = &Output;
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

void frmMain::RegisterHotKey() {}

void frmMain::UnregisterHotKey() {}

void frmMain::CreateTrayIcon() {
  house_.tray.Create(Caption);
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

void frmMain::RemoveTrayIcon() {
  if (house_.tray.Created())
    house_.tray.Remove();
}

void frmMain::StopPlayback() {
  house_.app.StopPlaybackFlag = true;
  house_.mmc.Command("Stop");
  house_.mmc.Command("Close");
}

void frmMain::UnloadOtherForms() {
  Output.Unload();
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
