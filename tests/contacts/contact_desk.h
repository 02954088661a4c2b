// The contact windows, wired as in the program, on a contact file of a test's own.
#pragma once

#include <gmock/gmock.h>

#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "contacts/frmContact.h"
#include "contacts/frmContacts.h"
#include "contacts/frmImport.h"
#include "core/mIni.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio::test {

class PumpedLoop : public FakeLoop {
public:
  void RunPending() override {
    if (on_pump)
      on_pump();
    FakeLoop::RunPending();
  }
  std::function<void()> on_pump;
};

class ContactDesk : public testing::Test {
protected:
  ContactDesk() {
    SetPaths(app, home.Path());
    std::filesystem::create_directory(app.PhotosFolder);
    settings.ContactSortBy = 2;
  }

  void WriteContacts(int count) {
    std::string bytes;
    for (int id = 1; id <= count; ++id)
      bytes += "[" + std::to_string(id) + "]\nName=" + std::to_string(1000 + id) + "\n";
    WriteBytes(app.ContactsFile, bytes);
  }
  std::vector<std::string> Sections() const { return mIni::IniSectionNames(app.ContactsFile); }
  std::string Value(const std::string& id, const std::string& key) const {
    return mIni::IniRead(id, key, app.ContactsFile);
  }
  std::string MakePhoto(const std::string& id, std::uint8_t color = 7) {
    const std::string path = app.PhotosFolder + "/" + id + ".bmp";
    WriteBytes(path, "photo");
    images.pictures[path] = color;
    return path;
  }
  frmContacts::House ListHouse() {
    return {app, settings, registry, table, loop, loop, windows, boxes, file_picker, images, address_books, trouble};
  }
  frmImport::House ImportHouse() {
    return {app, table, loop, file_picker, address_books, trouble, [this] {
              ++refreshes;
              table.LoadContacts();
            }};
  }
  /// Opens the editor for that contact, hands it to `use` and returns.
  void Edit(const std::string& id, const std::function<void(frmContact&)>& use) {
    app.CurrentContactID = id;
    frmContact editor({app, boxes, images, file_picker, trouble, [this] {
                         ++refreshes;
                         on_reload();
                       }});
    windows.use = [&](Form& form) { use(dynamic_cast<frmContact&>(form)); };
    windows.ShowModal(editor, nullptr);
    windows.use = {};
  }

  TemporaryFolder home;
  AppState app;
  Settings settings;
  FakeRegistryStore registry;
  PumpedLoop loop;
  FakeWindows windows;
  FakeMessageBoxes boxes;
  FakeFilePicker file_picker;
  FakeImageCodec images;
  FakeAddressBooks address_books;
  std::vector<std::string> troubles;
  TroubleSink trouble = [this](const std::string& sentence) { troubles.push_back(sentence); };
  int refreshes = 0;
  std::function<void()> on_reload = [] {};
  ContactTable table{home.Path() + "Contacts.ini"};
};

} // namespace kelmio::test
