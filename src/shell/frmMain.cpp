#include "shell/frmMain.h"

#include "shell/command_table.h"
#include "shell/mEffects.h"

namespace kelmio {

namespace {

constexpr int kLoadDelayMs = 5;
constexpr int kHideDelayMs = 1000;

} // namespace

frmMain::frmMain(const House& house)
    : house_(house), tmrLoaded(house.timers, kLoadDelayMs), tmrHide(house.timers, kHideDelayMs), mTAPIEx(house.lines),
      Output(house.app, house.settings, house.clipboard, house.journal), contacts_(house.app_path + "Contacts.ini"),
      call_log_(house.app_path + "CallLog.ini", house.clock, Trouble()),
      messages_(house.app_path, house.clock, house.mmc, Trouble()), Folders(messages_, *this, Trouble()),
      message_list_({house_.settings, house_.registry, messages_, house_.mmc, *this}),
      Preview(house_.settings, message_list_, {house_.app, contacts_}, *this),
      operations_({messages_, message_list_, house_.boxes, house_.folder_picker, house_.file_clipboard, house_.windows,
                   *this, Trouble()}),
      folders_({messages_, message_list_, Folders, house_.boxes, house_.windows, *this, Trouble()}),
      playback_({house_.app, messages_, message_list_, house_.mmc, [this] { PumpEvents(); }, Trouble()}),
      monitor_(house.timers, *this), system_(house_.settings, house_.registry, Context, *this, mTAPIEx),
      notice_({house_.settings,
               {house_.app, contacts_},
               house_.notifications,
               [this](int command) { ExecuteCommand(command); },
               [this] { HotKeyPressed(); }}),
      line_notice_(house_.clock), recording_({house_.app, house_.settings, Context, *this, notice_, mTAPIEx, monitor_,
                                              contacts_, messages_, house_.timers}),
      calls_({house_.app, house_.settings, Context, *this, notice_, monitor_, recording_, contacts_, call_log_}),
      hot_keys_(house_.hot_keys, house_.clock), lvwCalls(message_list_.lvwCalls), cmdPlayFile(playback_.cmdPlayFile),
      cmdStopPlay(playback_.cmdStopPlay), sldSlider(playback_.sldSlider), tmrCallTime(monitor_.tmrCallTime),
      tmrSilence(recording_.tmrSilence) {
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
  lvwCalls.ItemClick = [this] { PreviewMessage(); };
  lvwCalls.DblClick = [this] { OpenSelectedMessage(); };
  house_.mmc.Trouble = Trouble();
  lvwCalls.MouseUp = [this](ListView::MouseButton button) {
    if (button == ListView::MouseButton::Right)
      ShowMessagePopup();
  };
  calls_.Listen(mTAPIEx);
  mTAPIEx.OnLogText = [this](const std::string& text) { Output.OnLogText(text); };
  mTAPIEx.OnLinesChanged = [this] { system_.LinesChanged(); };
  mTAPIEx.OnLineStatus = [this](const LineStatus& status) { ShowLineStatus(status); };
  system_.LineSwitched = [this] {
    ShowLineStatus(Context.CurrentLine != nullptr ? Context.CurrentLine->Status() : LineStatus());
  };

  ListenToTray();
}

TroubleSink frmMain::Trouble() {
  return [this](const std::string& sentence) { Output.OnLogText(sentence); };
}

frmMain::~frmMain() {
  house_.mmc.StatusUpdate = [] {};
  house_.mmc.Trouble = [](const std::string&) {};
  LeaveTray();
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
  if (!house_.tray.Created()) {
    State = WindowState::Minimized;
    return;
  }
  const bool was_seen = Visible && State != WindowState::Minimized;
  Visible = false;
  if (was_seen)
    mEffects::AnimateToCorner(house_.surface, this, mEffects::Corner::BottomRight, true);
  ShowHiddenBalloon();
}

void frmMain::ShowFromTray() {
  tmrHide.SetEnabled(false); // who asks for the window in the first second keeps it
  if (!Visible || State == WindowState::Minimized)
    mEffects::AnimateToCorner(house_.surface, this, mEffects::Corner::BottomRight, false);
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
  visitor.Visit("cmdPlayFile", cmdPlayFile);
  visitor.Visit("cmdStopPlay", cmdStopPlay);
  visitor.Visit("sldSlider", sldSlider);
  visitor.Visit("WaveView", WaveView);
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

void frmMain::PreviewMessage() {
  Preview.PreviewMessage();
}

void frmMain::PumpEvents() {
  house_.loop.RunPending();
}

} // namespace kelmio
