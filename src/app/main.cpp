// Builds every object and wires them: the only place that knows all concrete types.
#include <QApplication>

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "address_books/separate_address_books.h"
#include "app/stderr_journal.h"
#include "app/system_clock.h"
#include "core/program_paths.h"
#include "core/registry_hive.h"
#include "core/settings.h"
#include "core/store_file.h"
#include "drivers/lines_file.h"
#include "drivers/sip/sip_driver.h"
#include "drivers/voice_modem/voice_modem_driver.h"
#include "media/media_sound.h"
#include "media/pulse/pulse_desk_stream.h"
#include "media/pulse/pulse_sound_input.h"
#include "media/pulse/pulse_sound_output.h"
#include "media/pulse/pulse_wave_image_player.h"
#include "media/wave_device.h"
#include "qt/dbus_notifications.h"
#include "qt/form_factory.h"
#include "qt/picture_file.h"
#include "qt/portal_hot_keys.h"
#include "qt/qt_appearance.h"
#include "qt/qt_desktop.h"
#include "qt/qt_dialogs.h"
#include "qt/qt_event_loop.h"
#include "qt/qt_hot_keys.h"
#include "qt/qt_tip_windows.h"
#include "qt/qt_tray.h"
#include "qt/qt_window_surface.h"
#include "qt/qt_windows.h"
#include "qt/unix_signals.h"
#include "qt/xdg_auto_start.h"
#include "settings_ui/dialogs/modem_line_dialog.h"
#include "settings_ui/dialogs/sip_line_dialog.h"
#include "settings_ui/dialogs/wave_format_dialog.h"
#include "shell/frmMain.h"
#include "telephony/tapi_control/line_service.h"

namespace kelmio {

namespace {

/// The variables that place the program's data, as far as this run was given them.
std::vector<std::string> PlacesFromEnvironment(const Surroundings& surroundings) {
  std::vector<std::string> places;
  for (const char* name : {"KELMIO_HOME", "KELMIO_REGISTRY"})
    if (const auto value = surroundings.variable(name); value && !value->empty())
      places.push_back(std::string(name) + "=" + std::filesystem::absolute(*value).string());
  return places;
}

/// The program that reads address books stands beside this one, or among the helpers of the installed one.
std::string AddressBookReader(const std::string& executable) {
  const std::filesystem::path folder = std::filesystem::path(executable).parent_path();
  const char* const name = "kelmio-address-books";
  std::error_code error;
  if (const auto beside = folder / name; std::filesystem::exists(beside, error))
    return beside.string();
  return (folder / KELMIO_HELPERS / name).lexically_normal().string();
}

/// Where modems are looked for; another folder of devices stands in for trials with an emulated one.
VoiceModemDriver::Options ModemOptions(const Surroundings& surroundings) {
  VoiceModemDriver::Options options;
  if (const auto folder = surroundings.variable("KELMIO_MODEM_DEVICES"); folder && !folder->empty())
    options.folder = *folder;
  return options;
}

/// X11 gives keys to whoever asks first, a Wayland desktop only by its portal.
std::unique_ptr<HotKeys> MakeHotKeys() {
  if (QGuiApplication::platformName().startsWith(QLatin1String("wayland")))
    return std::make_unique<PortalHotKeys>();
  return std::make_unique<QtHotKeys>();
}

} // namespace

int Run(QApplication& application) {
  const std::string executable = QCoreApplication::applicationFilePath().toStdString();
  const Surroundings surroundings = ProcessSurroundings();
  const std::string app_path = ChooseAppPath(surroundings, executable);
  // Messages are nobody else's business.
  MakePrivateFolder(app_path);

  QtEventLoop loop;
  QtTimerService timers;
  const SystemClock clock;
  StderrJournal journal(clock);
  RegistryHive registry(ChooseRegistryPath(surroundings, executable));
  QtDesktop desktop;
  QtClipboard clipboard;
  QtTray tray;
  QtTipWindows tips;
  QtWindows windows;
  QtMessageBoxes boxes;
  QtFolderPicker folder_picker;
  QtFilePicker file_picker;
  QtFileClipboard file_clipboard;
  QtColorPicker color_picker;
  const std::unique_ptr<HotKeys> hot_keys = MakeHotKeys();
  QtWindowSurface surface;
  DBusNotifications notifications;
  QtAppearance appearance(application);
  QtLinkOpener link_opener;
  QtImageCodec images;
  SeparateAddressBooks address_books(loop, AddressBookReader(executable));
  XdgAutoStart auto_start(XdgAutoStart::DefaultFolder(), PlacesFromEnvironment(surroundings));
  PulseSoundOutput sound_output(loop);
  WaveDevice mmc(timers, sound_output);
  PulseSoundOutput greeting_output(loop);
  PulseSoundInput microphone;
  WaveDevice greeting(timers, greeting_output, &microphone);
  PulseDeskStream desk(loop);
  MediaSoundFactory sounds(loop, &desk);
  PulseWaveImagePlayer wave_images;
  WaveFormatDialog format_dialog(windows);
  ModemLineDialog modem_dialog(windows);
  SipLineDialog sip_dialog(windows, file_picker);
  LineService lines(loop, sounds);
  lines.SetFormatDialog(&format_dialog);
  lines.AddDriver(std::make_unique<VoiceModemDriver>(loop, LinesFile(app_path + "Lines.ini"), &modem_dialog,
                                                     ModemOptions(surroundings)));
  lines.AddDriver(std::make_unique<SipDriver>(loop, LinesFile(app_path + "Lines.ini"), sip_dialog));

  AppState app;
  Settings settings;
  frmMain main_form({
      .app = app,
      .settings = settings,
      .loop = loop,
      .timers = timers,
      .clock = clock,
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
      .hot_keys = *hot_keys,
      .color_picker = color_picker,
      .surface = surface,
      .notifications = notifications,
      .app_path = app_path,
      .executable = executable,
  });
  const std::unique_ptr<QWidget> window = MakeWindow(main_form, main_form.Name());
  const UnixSignals unix_signals([&](int) { main_form.Unload(); });
  main_form.Load();
  main_form.Visible = true;
  return QApplication::exec();
}

} // namespace kelmio

int main(int argc, char** argv) {
  // A peer that closes a connection or a terminal that goes away is no reason to end.
  std::signal(SIGPIPE, SIG_IGN);
  QApplication application(argc, argv);
  QApplication::setApplicationName("kelmio");
  QApplication::setDesktopFileName("kelmio");
  QApplication::setQuitOnLastWindowClosed(false);
  return kelmio::Run(application);
}
