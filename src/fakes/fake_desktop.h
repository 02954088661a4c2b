// The desktop in memory: screen, clipboard, tray, start with the session, registry, wave device.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <vector>

#include "controls/form.h"
#include "platform/address_book.h"
#include "platform/desktop.h"
#include "platform/dialogs.h"
#include "platform/hot_keys.h"
#include "platform/image.h"
#include "platform/multimedia_device.h"
#include "platform/registry_store.h"
#include "platform/wave_image_player.h"

namespace kelmio {

class FakeDesktop : public Desktop {
public:
  int WorkAreaWidth() const override { return width; }
  int WorkAreaHeight() const override { return height; }
  std::optional<VisualStyle> CurrentStyle() const override { return style; }
  std::string LanguageName() const override { return language; }

  int width = 1280 * kTwipsPerPixel;
  int height = 1024 * kTwipsPerPixel;
  std::optional<VisualStyle> style;
  std::string language = "English";
};

class FakeClipboard : public Clipboard {
public:
  void Clear() override { text.clear(); }
  void SetText(const std::string& new_text) override { text = new_text; }
  std::optional<std::string> Text() const override { return holds_text ? std::optional(text) : std::nullopt; }
  std::string text;
  bool holds_text = true;
};

class FakeAutoStart : public AutoStart {
public:
  void Enable(const std::string& executable) override { enabled_for = executable; }
  void Disable() override { enabled_for.reset(); }
  std::optional<std::string> enabled_for;
};

/// Every file that exists has the same length; commands are kept as they came.
class FakeMultimediaDevice : public MultimediaDevice {
public:
  void SetDeviceType(const std::string& type) override { device_type = type; }
  void SetFileName(const std::string& path) override { file_name = path; }
  void SetFrom(long position) override { from = position; }
  void SetUpdateInterval(int interval) override { update_interval = interval; }
  void Command(std::string_view word) override { commands.emplace_back(word); }
  MultimediaMode Mode() const override { return mode; }
  long Length() const override { return length_ms; }
  long Position() const override { return position_ms; }

  std::string device_type;
  std::string file_name;
  std::vector<std::string> commands;
  long from = 0;
  int update_interval = 0;
  MultimediaMode mode = MultimediaMode::NotReady;
  long length_ms = 1000;
  long position_ms = 0;
};

class FakeMessageBoxes : public MessageBoxes {
public:
  struct Shown {
    std::string text;
    std::string title;
    BoxButtons buttons;
    BoxIcon icon;
    int default_button;
  };
  BoxAnswer Show(const std::string& text, const std::string& title, BoxButtons buttons, BoxIcon icon,
                 int default_button) override {
    shown.push_back({text, title, buttons, icon, default_button});
    if (answers.empty())
      return BoxAnswer::No;
    const BoxAnswer answer = answers.front();
    answers.erase(answers.begin());
    return answer;
  }
  std::vector<Shown> shown;
  std::vector<BoxAnswer> answers; // one for each box; No when they run out
};

class FakeFolderPicker : public FolderPicker {
public:
  std::string BrowseForFolder(const std::string& title) override {
    titles.push_back(title);
    return choice;
  }
  std::vector<std::string> titles;
  std::string choice;
};

class FakeFilePicker : public FilePicker {
public:
  struct Asked {
    std::string title;
    std::string filter;
  };
  std::string OpenFile(const std::string& title, const std::string& filter) override {
    asked.push_back({title, filter});
    return choice;
  }
  std::vector<Asked> asked;
  std::string choice;
};

class FakeColorPicker : public ColorPicker {
public:
  std::optional<std::int32_t> PickColor(std::int32_t initial) override {
    initials.push_back(initial);
    return choice;
  }
  std::vector<std::int32_t> initials;
  std::optional<std::int32_t> choice;
};

/// Keys are registered by their numbers; a taken one is refused.
class FakeHotKeys : public HotKeys {
public:
  bool RegisterHotKey(int id, int modifiers, int key_code) override {
    calls.push_back({id, modifiers, key_code});
    if (!taken)
      registered.insert(id);
    return !taken;
  }
  bool UnregisterHotKey(int id) override {
    unregistered.push_back(id);
    return registered.erase(id) != 0;
  }
  struct Call {
    int id;
    int modifiers;
    int key_code;
  };
  bool taken = false;
  std::set<int> registered;
  std::vector<Call> calls;
  std::vector<int> unregistered;
};

class FakeFileClipboard : public FileClipboard {
public:
  bool CopyFiles(const std::vector<std::string>& new_paths) override {
    paths = new_paths;
    return true;
  }
  std::vector<std::string> paths;
};

class FakeLinkOpener : public LinkOpener {
public:
  void Open(const ShellRequest& request) override { requests.push_back(request); }
  std::vector<ShellRequest> requests;
};

class FakeAppearance : public Appearance {
public:
  void SetVisualTheme(int theme) override { visual_theme = theme; }
  int VisualTheme() const override { return visual_theme; }
  void SetSystemTheme(int theme) override { system_themes.push_back(theme); }
  int visual_theme = -1;
  std::vector<int> system_themes;
};

/// Every file in `pictures` loads as a picture of one colour; saved bitmaps are kept by their paths.
class FakeImageCodec : public ImageCodec {
public:
  std::optional<Image> LoadStretched(const std::string& path, int width, int height) override {
    const auto found = pictures.find(path);
    if (found == pictures.end())
      return std::nullopt;
    return Image{width, height,
                 std::vector<std::uint8_t>(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3,
                                           found->second)};
  }
  bool SaveBitmap(const Image& image, const std::string& path) override {
    saved[path] = image;
    return true;
  }
  std::map<std::string, std::uint8_t> pictures;
  std::map<std::string, Image> saved;
};

class FakeWaveImagePlayer : public WaveImagePlayer {
public:
  bool Play(std::span<const std::byte> image) override {
    played.emplace_back(image.begin(), image.end());
    return true;
  }
  void Stop() override { ++stops; }
  std::vector<std::vector<std::byte>> played;
  int stops = 0;
};

/// An address book in memory.
class FakeAddressBook : public AddressBook {
public:
  explicit FakeAddressBook(std::vector<AddressItem> items) : items_(std::move(items)) {}
  std::size_t Count() const override { return items_.size(); }
  AddressItem Item(std::size_t index) override { return items_.at(index); }

private:
  std::vector<AddressItem> items_;
};

class FakeAddressBooks : public AddressBooks {
public:
  bool DesktopAnswers() override { return desktop.has_value(); }
  std::unique_ptr<AddressBook> OpenDesktop() override {
    return desktop ? std::make_unique<FakeAddressBook>(*desktop) : nullptr;
  }
  std::unique_ptr<AddressBook> OpenFile(const std::string& path) override {
    const auto found = files.find(path);
    return found != files.end() ? std::make_unique<FakeAddressBook>(found->second) : nullptr;
  }
  std::optional<std::vector<AddressItem>> desktop;
  std::map<std::string, std::vector<AddressItem>> files; // by path
};

/// A modal window is used by a script while it is open.
class FakeWindows : public Windows {
public:
  void ShowModal(Form& form, Form* /*owner*/) override {
    form.Load();
    form.Visible = true;
    shown.push_back(&form);
    if (use)
      use(form);
    form.Visible = false;
  }
  void Show(std::shared_ptr<Form> form, Activation activation) override {
    form->Load();
    form->Visible = true;
    beside.push_back({std::move(form), activation});
  }
  void CloseAll() override { beside.clear(); }

  struct Beside {
    std::shared_ptr<Form> form;
    Activation activation;
  };
  std::function<void(Form&)> use;
  std::vector<Form*> shown;
  std::vector<Beside> beside; // also those that have closed themselves
};

/// Keys and values in memory; names compare without regard to ASCII case.
class FakeRegistryStore : public RegistryStore {
public:
  bool KeyExists(std::uint32_t root, std::string_view path) const override;
  RegistryResult CreateKey(std::uint32_t root, std::string_view path) override;
  RegistryResult DeleteKey(std::uint32_t root, std::string_view path) override;
  std::optional<RegistryValue> Query(std::uint32_t root, std::string_view path, std::string_view name) const override;
  RegistryResult Set(std::uint32_t root, std::string_view path, std::string_view name,
                     const RegistryValue& value) override;
  RegistryResult DeleteValue(std::uint32_t root, std::string_view path, std::string_view name) override;
  std::vector<std::string> ValueNames(std::uint32_t root, std::string_view path) const override;
  std::vector<std::string> SubKeys(std::uint32_t root, std::string_view path) const override;

  /// A root that this user may not write to.
  bool read_only = false;

private:
  struct NamedValue {
    std::string name;
    RegistryValue value;
  };
  struct Key {
    std::string path;
    std::map<std::string, NamedValue> values; // by lower-case name
  };
  static std::string KeyName(std::uint32_t root, std::string_view path);

  std::map<std::string, Key> keys_; // by root and lower-case path
};

} // namespace kelmio
