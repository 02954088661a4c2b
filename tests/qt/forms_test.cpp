// The real forms on their layouts.
#include <gmock/gmock.h>

#include <QDockWidget>
#include <QPlainTextEdit>
#include <QStatusBar>
#include <QToolBar>

#include "contacts/frmContact.h"
#include "contacts/frmContacts.h"
#include "drivers/sip/sip_line.h"
#include "drivers/voice_modem/voice_modem_line.h"
#include "messages/folder_name_window.h"
#include "messages/frmFolderPicker.h"
#include "qt/binder.h"
#include "qt/command_icons.h"
#include "qt/form_factory.h"
#include "settings_ui/dialogs/frmModemLine.h"
#include "settings_ui/dialogs/frmSipAccount.h"
#include "settings_ui/dialogs/frmSipLine.h"
#include "settings_ui/dialogs/frmWaveFormat.h"
#include "shell/frmPopup.h"
#include "support/desk.h"
#include "test_form.h"

namespace kelmio {
namespace {

using testing::IsEmpty;

void ExpectALayout(Form& form) {
  SCOPED_TRACE(std::string(form.Name()));
  const std::unique_ptr<QWidget> layout = MakeLayout(form.Name());
  ASSERT_NE(layout, nullptr);
  EXPECT_EQ(layout->objectName().toStdString(), form.Name());
  EXPECT_THAT(Bind(*layout, form), IsEmpty());
}

TEST(FormsTest, EveryControlHasItsWidget) {
  test::Desk desk;
  EXPECT_EQ(MakeLayout("frmNone"), nullptr);
  ExpectALayout(desk.form);
  ExpectALayout(desk.form.Folders);
  ExpectALayout(desk.form.Output);
  ExpectALayout(desk.form.Preview);
  std::string target;
  frmCopy copy(desk.home.Path(), target, {});
  ExpectALayout(copy);
  frmMove move(desk.home.Path(), target, {});
  ExpectALayout(move);
  frmPopup alert({desk.app, desk.settings, desk.loop, desk.loop, desk.windows, desk.surface});
  ExpectALayout(alert);
  frmPopupPhoto alert_with_photo({desk.app, desk.settings, desk.loop, desk.loop, desk.windows, desk.surface}, "");
  ExpectALayout(alert_with_photo);
  const auto take = [](const std::string&) { return true; };
  frmNewMsgFolder new_folder(take);
  ExpectALayout(new_folder);
  frmRenameMsgFolder rename("old", take);
  ExpectALayout(rename);

  SipLine line(desk.loop, SipSettings{});
  frmSipLine sip_line(line);
  ExpectALayout(sip_line);
  FakeFilePicker files;
  frmSipAccount sip_account(line, files);
  ExpectALayout(sip_account);
  VoiceModemLine::House modems{.loop = desk.loop, .file = LinesFile(desk.home.Path() + "Lines.ini")};
  VoiceModemLine modem(modems, "Modem", ModemSettings{});
  frmModemLine modem_line(modem);
  ExpectALayout(modem_line);
  frmWaveFormat wave_format("Wave format selection", WaveFormatRecord{});
  ExpectALayout(wave_format);
  std::vector<std::string> opened;
  desk.windows.use = [&](Form& form) {
    opened.emplace_back(form.Name());
    ExpectALayout(form);
    if (auto* contacts = dynamic_cast<frmContacts*>(&form))
      for (const int id : {command::kContactAdd, command::kContactImport})
        contacts->CommandBars1.Execute(id);
    if (auto* editor = dynamic_cast<frmContact*>(&form))
      ExpectALayout(editor->Page);
  };
  const std::uint64_t key = desk.form.lvwCalls.AddRow({"1"}).key;
  desk.form.lvwCalls.SetSelection({key}, key);
  desk.form.lvwCalls.DblClick();
  for (const int id : {command::kContacts, command::kCalls, command::kDialer, command::kSettings, command::kAbout})
    desk.form.ExecuteCommand(id);
  desk.form.ExecuteCommand(command::kHelp);
  ExpectALayout(*desk.windows.beside.back().form);
  EXPECT_THAT(opened, testing::ElementsAre("frmOpen", "frmContacts", "frmContact", "frmImport", "frmCallLog",
                                           "frmDialer", "frmSettings", "frmAbout"));
}

TEST(FormsTest, TheMainWindowComesUpWithItsBarsAndItsStatusPane) {
  test::Desk desk;
  const std::unique_ptr<QWidget> window = MakeWindow(desk.form, desk.form.Name());
  desk.Start();
  desk.form.Visible = true;
  desk.form.Output.OnLogText("line opened");
  Settle();
  EXPECT_TRUE(window->isVisible());
  auto* bar = window->findChild<QToolBar*>();
  ASSERT_NE(bar, nullptr);
  EXPECT_LE(bar->sizeHint().width(), window->width());
  for (const CommandItem& item : desk.form.CommandBars1.ToolBars().front().items)
    EXPECT_FALSE(CommandIcon(item.id).isNull()) << item.caption;
  const auto* log = window->findChild<QPlainTextEdit*>("txtOutput");
  ASSERT_NE(log, nullptr);
  EXPECT_TRUE(log->isVisible());
  EXPECT_TRUE(log->toPlainText().endsWith("line opened\n"));
  const QList<QLabel*> panels = window->findChild<QStatusBar*>("sbStatusBar")->findChildren<QLabel*>();
  ASSERT_EQ(panels.size(), 6);
  EXPECT_EQ(panels[0]->text().toStdString(), desk.Panel(1));
}

} // namespace
} // namespace kelmio
