// The whole program without a toolkit: the main window on a scripted line, with the time moved by hand.
#pragma once

#include <fstream>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "core/mIni.h"
#include "fakes/fake_call_sound.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "fakes/fake_notifications.h"
#include "fakes/fake_tray.h"
#include "fakes/fake_window_surface.h"
#include "fakes/scripted_line.h"
#include "shell/command_table.h"
#include "shell/frmMain.h"
#include "support/temporary_folder.h"

namespace kelmio::test {

struct NoJournal : Journal {
  void Write(const std::string& /*line*/) override {}
};

struct Desk {
  static constexpr std::uint32_t kVoice = media_mode::kInteractiveVoice | media_mode::kAutomatedVoice;

  using MakeSounds = std::function<std::unique_ptr<CallSoundFactory>(EventLoop&)>;

  /// `make_sounds`: calls get their sound from what it makes, and not from `sounds`.
  explicit Desk(std::vector<std::shared_ptr<ScriptedLine>> other_lines = {}, const MakeSounds& make_sounds = {})
      : other_sounds(make_sounds ? make_sounds(loop) : nullptr) {
    if (other_lines.empty())
      other_lines.push_back(line);
    lines.AddDriver(std::make_unique<ScriptedDriver>(std::move(other_lines)));
  }

  /// Stores a setting before the start.
  void Store(const std::string& name, const std::string& text) {
    registry.Set(kHkeyLocalMachine, "Software\\Ardelta\\Kelmio\\Settings", name, {registry_type::kText, text});
  }
  /// The start up to the open line.
  void Start() {
    form.Load();
    loop.Advance(std::chrono::milliseconds(5));
  }
  void Wait(int milliseconds) { loop.Advance(std::chrono::milliseconds(milliseconds)); }
  void Run() { loop.RunPending(); }

  std::shared_ptr<ScriptedCall> Incoming() {
    auto call = line->Incoming();
    Run();
    return call;
  }
  void Ring(ScriptedCall& call, int count) {
    call.Ring(count);
    Run();
  }
  /// A call with caller ID that has been answered on the fourth ring.
  std::shared_ptr<ScriptedCall> AnsweredCall() {
    auto call = Incoming();
    Ring(*call, 1);
    call->SendCallerID("Jane Sample", "5551234");
    for (int ring = 2; ring <= 4; ++ring)
      Ring(*call, ring);
    return call;
  }
  void MakeGreeting() { std::ofstream(home.Path() + "Sound/Greeting.wav") << "greeting"; }

  const std::string& Panel(std::size_t panel) const { return form.sbStatusBar.PanelText(panel); }
  bool ToolbarEnabled(int id) { return form.CommandBars1.ToolBars().front().Find(id)->enabled; }
  std::string Index() const { return home.Path() + "Messages/Inbox/Messages.ini"; }
  std::vector<std::string> Messages() const { return mIni::IniSectionNames(Index()); }
  std::string Entry(const std::string& message, const std::string& key) const {
    return mIni::IniRead(message, key, Index());
  }
  /// The values of the call log in file order.
  std::vector<std::string> Log() const {
    std::vector<std::string> values;
    const std::string file = home.Path() + "CallLog.ini";
    for (const std::string& key : mIni::IniSectionKeys("Calls", file))
      values.push_back(mIni::IniRead("Calls", key, file));
    return values;
  }

  TemporaryFolder home;
  FakeLoop loop;
  FakeRegistryStore registry;
  FakeDesktop desktop;
  FakeClipboard clipboard;
  FakeTray tray;
  FakeTipWindows tips;
  FakeAutoStart auto_start;
  FakeMultimediaDevice mmc;
  NoJournal journal;
  FakeSoundFactory sounds{loop};
  std::unique_ptr<CallSoundFactory> other_sounds;
  LineService lines{loop, other_sounds ? *other_sounds : sounds};
  std::shared_ptr<ScriptedLine> line = std::make_shared<ScriptedLine>(loop, 3, kVoice);
  AppState app;
  Settings settings;
  FakeWindows windows;
  FakeMessageBoxes boxes;
  FakeFolderPicker folder_picker;
  FakeFilePicker file_picker;
  FakeFileClipboard file_clipboard;
  FakeAppearance appearance;
  FakeLinkOpener link_opener;
  FakeImageCodec images;
  FakeAddressBooks address_books;
  FakeWaveImagePlayer wave_images;
  FakeMultimediaDevice greeting;
  FakeHotKeys hot_keys;
  FakeColorPicker color_picker;
  FakeWindowSurface surface;
  FakeNotifications notifications;
  frmMain form{{
      .app = app,
      .settings = settings,
      .loop = loop,
      .timers = loop,
      .clock = loop,
      .registry = registry,
      .desktop = desktop,
      .clipboard = clipboard,
      .tray = tray,
      .tips = tips,
      .auto_start = auto_start,
      .mmc = mmc,
      .journal = journal,
      .lines = lines,
      .windows = windows,
      .boxes = boxes,
      .folder_picker = folder_picker,
      .file_picker = file_picker,
      .file_clipboard = file_clipboard,
      .appearance = appearance,
      .link_opener = link_opener,
      .images = images,
      .address_books = address_books,
      .wave_images = wave_images,
      .greeting = greeting,
      .hot_keys = hot_keys,
      .color_picker = color_picker,
      .surface = surface,
      .notifications = notifications,
      .app_path = home.Path(),
      .executable = "/opt/kelmio/kelmio",
  }};
};

} // namespace kelmio::test
