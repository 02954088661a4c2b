// The main window: it owns what lives for the whole run and hands events on to the subjects.
#pragma once

#include <optional>
#include <string>

#include "calls/call_windows.h"
#include "calls/frmDialer.h"
#include "calls/log/call_log.h"
#include "contacts/store/contact_table.h"
#include "controls/basic_controls.h"
#include "controls/command_bars.h"
#include "controls/docking_panes.h"
#include "controls/error_log.h"
#include "controls/form.h"
#include "controls/spectrum_view.h"
#include "controls/timer.h"
#include "core/app_state.h"
#include "core/settings.h"
#include "core/startup.h"
#include "messages/frmFolders.h"
#include "messages/frmPreview.h"
#include "messages/links.h"
#include "messages/message_folders.h"
#include "messages/message_list.h"
#include "messages/message_operations.h"
#include "messages/playback.h"
#include "messages/store/message_store.h"
#include "platform/address_book.h"
#include "platform/clock.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/event_loop.h"
#include "platform/hot_keys.h"
#include "platform/image.h"
#include "platform/journal.h"
#include "platform/multimedia_device.h"
#include "platform/notifications.h"
#include "platform/registry_store.h"
#include "platform/tip_windows.h"
#include "platform/tray.h"
#include "platform/wave_image_player.h"
#include "platform/window_surface.h"
#include "settings_ui/mHotKeys.h"
#include "settings_ui/settings_host.h"
#include "shell/ToolTipOnDemand.h"
#include "shell/TrayIcon.h"
#include "shell/call_notice.h"
#include "shell/line_notice.h"
#include "shell/local_windows.h"
#include "telephony/call_context.h"
#include "telephony/call_handling.h"
#include "telephony/call_monitor.h"
#include "telephony/frmOutput.h"
#include "telephony/message_recording.h"
#include "telephony/system_control.h"
#include "telephony/tapi_control/TAPIExCtl.h"

namespace kelmio {

/// User interface thread only. Everything in `House` outlives the window.
class frmMain : public Form,
                private CallHost,
                private MessageListHost,
                private MessageOperationsHost,
                private FolderHost,
                private MessageLinks,
                private CallLogWindows,
                private DialerEngine,
                private SettingsHost,
                private HotKeyWindow,
                private StartupHost {
public:
  struct House {
    AppState& app;
    Settings& settings;
    EventLoop& loop;
    TimerService& timers;
    const Clock& clock;
    RegistryStore& registry;
    Desktop& desktop;
    Clipboard& clipboard;
    Tray& tray;
    TipWindows& tips;
    AutoStart& auto_start;
    MultimediaDevice& mmc;
    Journal& journal;
    LineService& lines;
    Windows& windows;
    MessageBoxes& boxes;
    FolderPicker& folder_picker;
    FilePicker& file_picker;
    FileClipboard& file_clipboard;
    Appearance& appearance;
    LinkOpener& link_opener;
    ImageCodec& images;
    AddressBooks& address_books;
    WaveImagePlayer& wave_images;
    MultimediaDevice& greeting; // the settings window's own
    HotKeys& hot_keys;
    ColorPicker& color_picker;
    WindowSurface& surface;
    Notifications& notifications;
    std::string app_path;   // the program's folder with a closing separator
    std::string executable; // full path
  };
  explicit frmMain(const House& house);
  ~frmMain() override;

  // The order of the members is the order of their making: who is asked stands before who asks.
private:
  House house_;

public:
  CommandBars CommandBars1;
  DockingPanes DockingPaneManager;
  StatusBar sbStatusBar;
  Label MsgsTitleCaption;
  SpectrumView WaveView;
  Timer tmrLoaded;
  Timer tmrHide;

  TAPIExCtl mTAPIEx;
  CallContext Context;
  frmOutput Output;

private:
  ContactTable contacts_;
  CallLog call_log_;
  MessageStore messages_;

public:
  frmFolders Folders;

private:
  MessageList message_list_;

public:
  frmPreview Preview;

private:
  MessageOperations operations_;
  MessageFolders folders_;
  MessagePlayback playback_;
  CallMonitor monitor_;
  SystemControl system_;
  CallNotice notice_;
  LineNotice line_notice_;
  MessageRecording recording_;
  CallHandling calls_;
  mHotKeys hot_keys_;

public:
  ListView& lvwCalls;
  Button& cmdPlayFile;
  Button& cmdStopPlay;
  ucSlider& sldSlider;
  Timer& tmrCallTime;
  Timer& tmrSilence;

  /// The load of the window, before it is shown: the first half of the start.
  void Load() override;
  bool QueryUnload() override;
  /// Closes the line, leaves the desktop and ends the loop. A second call does nothing.
  void Unload() override;

  /// Runs a command of the table; other numbers do nothing.
  void ExecuteCommand(int id);
  /// Brings enabled and checked states up to date before a surface is shown.
  void UpdateCommands();
  void HideToTray();
  void ShowFromTray();
  void ShowTrayPopup();
  /// A balloon at the tray icon, or where it was last seen; in the corner of the screen when that isn't known. Colours
  /// of -1 are the usual ones. A failure is silent.
  void ShowTrayBalloon(int icon_type, const std::string& prompt, const std::string& title, int time_out_ms,
                       Color back_color, Color fore_color) noexcept;

  void SetSystemStatus() override { system_.SetSystemStatus(); }
  void RestartSystem() override { system_.RestartSystem(); }
  void AnswerCall() override { calls_.AnswerCall(); }
  void DialCall(const std::string& number) override { calls_.DialCall(number); }
  void RecordCallManual() override { calls_.RecordCallManual(); }
  void StopRecord() override { recording_.StopRecord(); }
  void RefreshMessageList() override { message_list_.RefreshMessageList(); }

  std::string_view Name() const override { return "frmMain"; }
  void VisitControls(ControlVisitor& visitor) override;

private:
  // CallHost
  void SetPanel(std::size_t panel, const std::string& text) override;
  void EnableCommand(int command, bool enabled) override;
  void ShowNewCallAlert(const std::string& name, const std::string& number) override;
  void SetWaveViewFormat(long number_b, long number_a) override;
  void DrawWave(std::span<const std::byte> samples) override;

  // MessageListHost
  void SetCallCount(const std::string& text) override;
  void PreviewMessage() override;
  void PumpEvents() override;

  // MessageOperationsHost
  std::optional<std::string> SelectedFolderTag() const override { return Folders.SelectedFolderTag(); }
  Form& MainWindow() override { return *this; }

  // FolderHost
  void SetFolderCaption(const std::string& name) override { MsgsTitleCaption.Caption = name; }
  void MoveDragedMessages(const std::string& target) override { operations_.MoveDragedMessages(target); }
  CommandBar BuildFolderPopup() const override;
  void ShowFolderPopup(const CommandBar& popup) override { CommandBars1.ShowPopup(popup); }

  // MessageLinks
  void OpenAddress(const std::string& address) override;
  void Dial(const std::string& number) override;

  // CallLogWindows
  void OpenContactEditor(Form& owner) override;
  void OpenDialer(Form& owner) override;

  // SettingsHost
  void SetPreviewColor(Color color) override;
  void SetOutputColor(Color color) override;
  void PlayTonePair(std::int16_t low_frequency, std::int16_t high_frequency, double seconds) override;

  // HotKeyWindow
  void HotKeyPressed() override;

  // StartupHost
  void PlaceWindow() override;
  void ReadSettings() override;
  void DetectThemeStyle() override;
  void BuildCommandBars() override;
  void MeasureScreen() override;
  void SetFolderPaths() override;
  void CreatePanes() override;
  void DisableAnswer() override { EnableCommand(kCommandAnswer, false); }
  void SetLoaded(bool loaded) override { house_.app.AppLoaded = loaded; }
  void EnsureFolders() override;
  void CreateListColumns() override { message_list_.CreateColumns(); }
  void RestoreLayout() override;
  void RegisterHotKey() override;
  void CreateTrayIcon() override;
  void PrepareAutoStartUp() override;
  void StartLoadTimers() override;
  void ShowActivity(const char* text) override { SetPanel(kPanelActivity, text); }
  void LoadContacts() override;
  void InitializeTelephony() override;
  void DetectDeviceIfNone() override;
  void CloseLine() override;
  void UnregisterHotKey() override;
  void ShutdownTelephony() override { mTAPIEx.Shutdown(); }
  void RemoveTrayIcon() override;
  void StopPlayback() override;
  void UnloadOtherForms() override;
  bool IsMinimized() const override { return State == WindowState::Minimized; }
  void SaveWindowPlace() override;
  void SaveLayout() override;

  /// Where a store says that it could not keep something: the status pane.
  TroubleSink Trouble();
  void tmrLoaded_Timer();
  void tmrHide_Timer();
  void OpenSelectedMessage();
  void OpenContacts();
  void OpenCallLog();
  void OpenSettings();
  void OpenHelp();
  void OpenAbout();
  void OpenWebsite();
  ErrorLog::House FrameErrors() const;
  int FrameTheme() const;
  void ShowDialer(Form* owner, frmDialer::Place place);
  void AddToContacts();
  void EditContact();
  bool SelectedCallerIsContact() const;
  void ShowMessagePopup();
  void SetDefaultVisualTheme(int theme);
  void SetDefaultSystemTheme(int theme);
  void ToggleSystem();
  void SwitchSystem(bool on);
  void ToggleToolbar();
  void ToggleStatusBar();
  void TogglePane(int pane);
  void ListenToTray();
  void LeaveTray();
  /// Lets the tray tell how the line stands.
  void ShowLineStatus(const LineStatus& status);
  void TrayIcon1_TrayMouseEvent(std::uint32_t message);
  void TrayIcon1_TrayIconMoved(int x, int y);
  /// Tells that the window has gone to the tray.
  void ShowHiddenBalloon();

  bool unloaded_ = false;
  CommandBar tray_popup_;

  static constexpr Color kUsualTipColor = -1;
  LocalWindows message_windows_{house_.timers};
  MSubclass subclass_{message_windows_};
  WindowHandle window_ = message_windows_.Create(); // the main window, as messages know it
  TrayIcon TrayIcon1{house_.tray, message_windows_, subclass_};
  ToolTipOnDemand ToolTipOnDemand1{house_.tips, message_windows_, subclass_};
};

} // namespace kelmio
