// The dialogs for the wave format and for lines, used as their windows would.
#include <gmock/gmock.h>

#include <algorithm>

#include "fakes/fake_desktop.h"
#include "media/recording_format.h"
#include "settings_ui/dialogs/frmModemLine.h"
#include "settings_ui/dialogs/frmSipAccount.h"
#include "settings_ui/dialogs/frmSipLine.h"
#include "settings_ui/dialogs/frmWaveFormat.h"
#include "settings_ui/dialogs/modem_line_dialog.h"
#include "settings_ui/dialogs/sip_line_dialog.h"
#include "settings_ui/dialogs/wave_format_dialog.h"

namespace kelmio {
namespace {

using testing::ElementsAre;
using State = SipTakeOver::State;

std::size_t RowOf(const frmWaveFormat& form, const WaveFormatRecord& format) {
  for (std::size_t row = 1; row <= form.lvwFormats.RowCount(); ++row)
    if (form.lvwFormats.Row(row).cells.at(0) == CodeNameOf(format) &&
        form.lvwFormats.Row(row).cells.at(1) == DetailOf(format))
      return row;
  return 0;
}

TEST(WaveFormatDialogTest, OffersWhatCanBeRecordedAndTheFormatInUse) {
  FakeWindows windows;
  WaveFormatDialog dialog(windows);
  const WaveFormatRecord standard;
  const WaveFormatRecord foreign{0x55, 2, 44100, 16000, 1, 0, 0};
  const WaveFormatRecord wanted = RecordableFormats().back();
  const auto use = [&](const std::function<void(frmWaveFormat&)>& step) {
    windows.use = [step](Form& form) { step(dynamic_cast<frmWaveFormat&>(form)); };
  };

  use([&](frmWaveFormat& form) {
    EXPECT_EQ(form.lvwFormats.RowCount(), RecordableFormats().size());
    const std::size_t row = form.lvwFormats.SelectedRow();
    ASSERT_NE(row, 0U);
    EXPECT_THAT(form.lvwFormats.Row(row).cells, ElementsAre("PCM", "8.000 kHz; 16 Bit; Mono", "937.50 KB"));
    const std::uint64_t key = form.lvwFormats.Row(RowOf(form, wanted)).key;
    form.lvwFormats.SetSelection({key}, key);
    form.lvwFormats.DblClick();
  });
  EXPECT_EQ(dialog.Select("", standard), wanted);
  use([&](frmWaveFormat& form) {
    EXPECT_EQ(form.lvwFormats.SelectedRow(), 1U);
    form.cmdOK.Click();
  });
  EXPECT_EQ(dialog.Select("", foreign), foreign);
  use([](frmWaveFormat& form) { form.EscapePressed(); });
  EXPECT_EQ(dialog.Select("", standard), std::nullopt);
  use([](frmWaveFormat& form) {
    form.lvwFormats.SetSelection({}, 0);
    form.cmdOK.Click();
    EXPECT_TRUE(form.Visible);
  });
  EXPECT_EQ(dialog.Select("", standard), std::nullopt);
}

class LineOfTest : public SipConfiguration {
public:
  SipSettings Settings() const override { return settings; }
  std::string StateInWords() const override { return state; }
  SipTakeOver TakeOver(const SipSettings& next) override {
    taken.push_back(next);
    return answer;
  }
  std::string Test(const SipSettings& next) override {
    tested = next;
    return "Tested.";
  }
  void TryAccount(const SipSettings& next, std::function<void(std::string)> run) override {
    tested = next;
    told = std::move(run);
  }
  SipTakeOver RemoveAccount() override {
    ++removed;
    return answer;
  }
  void Watch(std::function<void()> run) override { changed = std::move(run); }

  SipSettings settings;
  std::string state = "Switched off.";
  SipTakeOver answer;
  std::vector<SipSettings> taken;
  std::optional<SipSettings> tested;
  std::function<void()> changed;
  std::function<void(std::string)> told;
  int removed = 0;
};

/// Shows the window for the settings of the line.
template <class Window> class SipDialogTest : public testing::Test {
protected:
  void Show(const std::function<void(Window&)>& use) {
    windows.use = [&](Form& form) { use(dynamic_cast<Window&>(form)); };
    SipLineDialog(windows, files).Show(line);
    EXPECT_FALSE(line.changed || line.told) << "the window is gone";
  }
  FakeWindows windows;
  FakeFilePicker files;
  LineOfTest line;
};

using SipLineDialogTest = SipDialogTest<frmSipLine>;

void Select(frmSipLine& form, std::size_t row) {
  const std::uint64_t key = form.lvwCodecs.Row(row).key;
  form.lvwCodecs.SetSelection({key}, key);
  form.lvwCodecs.ItemClick();
}

TEST_F(SipLineDialogTest, HandsOverWhatWasChosen) {
  line.settings.codings = {AudioCoding::Pcma, AudioCoding::G722};
  Show([&](frmSipLine& form) {
    EXPECT_THAT(form.lvwCodecs.Row(1).cells, ElementsAre("PCMA", "8 kHz, A-law", "Yes"));
    form.cboCallers.ListIndex = 1;
    form.txtPort.Text = " 5070 ";
    form.txtRingPeriod.Text = "4000";
    EXPECT_FALSE(form.cmdCodecUp.Enabled);
    form.cmdCodecDown.Click(); // G722 PCMA opus pcmu
    Select(form, 4);
    EXPECT_FALSE(form.cmdCodecDown.Enabled);
    form.cmdCodecUse.Click();
    form.cmdCodecUp.Click();
    form.cmdCodecUp.Click(); // G722 PCMU PCMA opus
    Select(form, 1);
    form.cmdCodecUse.Click();
    Select(form, 3);
    form.lvwCodecs.DblClick(); // PCMU alone
    Select(form, 2);
    EXPECT_FALSE(form.cmdCodecUse.Enabled);
    form.lvwCodecs.DblClick();
    form.cmdTest.Click();
    EXPECT_EQ(form.lblResult.Caption.Get(), "Tested.");
    EXPECT_TRUE(line.taken.empty());
    form.cmdOK.Click();
    EXPECT_FALSE(form.Visible);
  });
  SipSettings expected = line.settings;
  expected.listen = {"0.0.0.0", 5070};
  expected.allow = SipAllow::Network;
  expected.ring_period = std::chrono::milliseconds(4000);
  expected.codings = {AudioCoding::Pcmu};
  EXPECT_THAT(line.taken, ElementsAre(expected));
  EXPECT_EQ(line.tested, expected);
}

TEST_F(SipLineDialogTest, RefusesNonsenseAndGivesUpOnCancel) {
  Show([&](frmSipLine& form) {
    for (const char* port : {" ", "0", "65536", "-1", "50x", "99999999999999999999"}) {
      form.txtPort.Text = port;
      form.cmdOK.Click();
      EXPECT_EQ(form.lblResult.Caption.Get(), "The port is a number from 1 to 65535.") << port;
    }
    form.txtPort.Text = "5060";
    for (const char* period : {"19", "60001", "soon"}) {
      form.txtRingPeriod.Text = period;
      form.cmdTest.Click();
      EXPECT_EQ(form.lblResult.Caption.Get(), "The ring period is a number of milliseconds from 20 to 60000.");
    }
    EXPECT_TRUE(form.Visible);
    form.cmdCancel.Click();
    EXPECT_FALSE(form.Visible);
  });
  EXPECT_TRUE(line.taken.empty());
  EXPECT_FALSE(line.tested);
}

TEST_F(SipLineDialogTest, StaysOpenForWhatTheUserShouldKnow) {
  Show([&](frmSipLine& form) {
    line.answer = {State::Refused, "Taken."};
    for (int press = 0; press < 2; ++press)
      form.cmdOK.Click();
    EXPECT_TRUE(form.Visible);
    EXPECT_EQ(form.lblResult.Caption.Get(), "Taken.");

    line.answer = {State::Waiting, "Kept."};
    line.state = "A call is up.";
    form.cmdOK.Click();
    EXPECT_TRUE(form.Visible);
    EXPECT_EQ(form.lblState.Caption.Get(), "A call is up.");
    line.state = "Reachable.";
    line.changed();
    EXPECT_EQ(form.lblState.Caption.Get(), "Reachable.");
    EXPECT_EQ(form.lblResult.Caption.Get(), "");
    form.cmdOK.Click();
    form.cmdOK.Click();
    EXPECT_FALSE(form.Visible);
  });
}

SipAccount Account(const std::string& server, const std::string& user) {
  SipAccount account;
  account.server = server;
  account.user = user;
  return account;
}

struct SipAccountDialogTest : SipDialogTest<frmSipAccount> {
  SipAccountDialogTest() { line.settings.account = SipAccount{}; }
};

TEST_F(SipAccountDialogTest, HandsOverEveryEntryAndKeepsWhatItDoesNotShow) {
  line.settings.account = Account("old", "old");
  line.settings.account->ice = false;
  line.settings.account->expires = std::chrono::seconds(90);
  files.choice = "/ca.pem";
  Show([](frmSipAccount& form) {
    EXPECT_NE(form.txtPassword.PasswordChar, '\0');
    form.txtServer.Text = " sips.example.org:5061 ";
    form.txtPassword.Text = " s p ";
    form.txtAuthUser.Text = "someone@example.org";
    form.txtDisplayName.Text = "Jane";
    form.cboTransport.ListIndex = 3;
    form.txtProxy.Text = "sip:2001:db8::1";
    form.cmdBrowseAuthority.Click();
    form.txtStunServer.Text = "stun.example.org";
    form.cboEncryption.ListIndex = 1;
    form.txtRingPeriod.Text = "5000";
    form.cmdCodecUse.Click();
    form.cmdOK.Click();
  });
  ASSERT_EQ(line.taken.size(), 1U);
  const SipSettings& taken = line.taken.front();
  SipAccount expected = Account("sips.example.org:5061", "old");
  expected.auth_user = "someone@example.org";
  expected.password = " s p ";
  expected.proxy = "[2001:db8::1]";
  expected.display_name = "Jane";
  expected.transport = SipTransport::Tls;
  expected.authority = "/ca.pem";
  expected.encryption = SipEncryption::Required;
  expected.stun_server = "stun.example.org";
  expected.ice = false;
  expected.expires = std::chrono::seconds(90);
  EXPECT_EQ(taken.account, expected);
  EXPECT_EQ(taken.ring_period, std::chrono::milliseconds(5000));
  EXPECT_EQ(taken.codings.size(), kAllCodings.size() - 1);
}

TEST_F(SipAccountDialogTest, TellsWhatCannotBeAnAccount) {
  struct Row {
    const char* server;
    const char* user;
    const char* proxy;
    const char* word; // in the complaint; empty when there is none
    int page;
  };
  Show([&](frmSipAccount& form) {
    for (const Row& row :
         {Row{"", "4711", "", "missing", 0}, Row{"sip example org", "4711", "", "no blanks", 0},
          Row{"host:70000", "4711", "", "from 1 to 65535", 0}, Row{"host:", "4711", "", "from 1 to 65535", 0},
          Row{"[::1", "4711", "", "such as", 0}, Row{"host/path", "4711", "", "such as", 0},
          Row{"host", " ", "", "user name is missing", 0}, Row{"host", "47 11", "", "no blanks", 0},
          Row{"host", "4711@other", "", "before the @", 0}, Row{"host", "4711", "proxy:sip", "The proxy's port", 1},
          Row{"", "sip:4711@host", "", "", 1}, Row{"host", "4711@HOST", "", "", 1}}) {
      SCOPED_TRACE(row.server + std::string(" ") + row.user);
      form.txtServer.Text = row.server;
      form.txtUser.Text = row.user;
      form.txtProxy.Text = row.proxy;
      form.Visible = true;
      form.cmdOK.Click();
      EXPECT_THAT(form.lblResult.Caption.Get(), testing::HasSubstr(row.word));
      EXPECT_EQ(form.Visible, *row.word != '\0');
      EXPECT_EQ(form.tabPages.Selected, row.page);
    }
  });
  ASSERT_EQ(line.taken.size(), 2U);
  for (const SipSettings& taken : line.taken)
    EXPECT_EQ(taken.account->user, "4711");
  EXPECT_EQ(line.taken.front().account->server, "host");
}

TEST_F(SipAccountDialogTest, TriesAndRemoves) {
  line.settings.account = Account("host", "4711");
  Show([&](frmSipAccount& form) {
    form.cmdTry.Click();
    EXPECT_EQ(form.lblResult.Caption.Get(), "Asking host...");
    EXPECT_FALSE(form.cmdTry.Enabled);
    line.state = "Reachable.";
    line.changed();
    EXPECT_EQ(form.lblResult.Caption.Get(), "Asking host...");
    line.told("The password is wrong.");
    EXPECT_EQ(form.lblResult.Caption.Get(), "The password is wrong.");
    EXPECT_TRUE(form.cmdTry.Enabled);

    form.cmdRemove.Click();
    EXPECT_EQ(line.removed, 0) << "asked for once more";
    line.answer = {State::Waiting, "Kept until the call has ended."};
    form.cmdRemove.Click();
    EXPECT_EQ(line.removed, 1);
    EXPECT_TRUE(form.Visible);
    line.changed();
    EXPECT_EQ(form.lblResult.Caption.Get(), "");
    form.cmdTry.Click(); // ended by the window's end
  });
  EXPECT_TRUE(line.taken.empty());
}

class ModemOfTest : public ModemConfiguration {
public:
  ModemSettings Settings() const override { return settings; }
  std::vector<ModemChoice> Ports() const override { return ports; }
  std::string ModelInWords() const override { return "A modem."; }
  std::string StateInWords() const override { return state; }
  ModemTakeOver TakeOver(const ModemSettings& next) override {
    taken.push_back(next);
    return answer;
  }
  void Watch(std::function<void()> run) override { changed = std::move(run); }
  void Listen(std::function<void(const std::string&)> run) override { listener = std::move(run); }

  ModemSettings settings;
  std::vector<ModemChoice> ports{{"/dev/a", "First"}, {"/dev/b", "Second"}};
  std::string state = "No modem.";
  ModemTakeOver answer;
  std::vector<ModemSettings> taken;
  std::function<void()> changed;
  std::function<void(const std::string&)> listener;
};

class ModemDialogTest : public testing::Test {
protected:
  ModemDialogTest() { line.settings.port = "/dev/a"; }
  void Show(const std::function<void(frmModemLine&)>& use) {
    windows.use = [&](Form& form) { use(dynamic_cast<frmModemLine&>(form)); };
    ModemLineDialog(windows).Show(line);
    EXPECT_FALSE(line.changed || line.listener) << "the window is gone";
  }
  FakeWindows windows;
  ModemOfTest line;
};

TEST_F(ModemDialogTest, HandsOverWhatWasChosen) {
  line.settings.country = "DE";
  Show([&](frmModemLine& form) {
    EXPECT_EQ(form.lblModel.Caption.Get(), "A modem.");
    EXPECT_EQ(form.cboCountry.Items.Get().at(static_cast<std::size_t>(form.cboCountry.ListIndex.Get())), "Germany");
    form.txtPlayGain.Text = "140";
    form.cboPort.ListIndex = 1;
    // One that is gone moves the others, not the choice.
    line.ports.erase(line.ports.begin());
    line.changed();
    EXPECT_EQ(form.cboPort.ListIndex, 0);
    EXPECT_NE(form.lblModel.Caption.Get(), "A modem.") << "that is the other one";
    form.cboCountry.ListIndex = 0;
    form.txtRecordGain.Text = "0";
    form.cboRing.ListIndex = 2;
    form.chkDialTone.Value = false;
    form.txtInit.Text = " at+gci=B5 ";
    form.cmdOK.Click();
    EXPECT_FALSE(form.Visible);
  });
  ModemSettings expected = line.settings;
  expected.port = "/dev/b";
  expected.country = "";
  expected.play_gain = 140;
  expected.record_gain = 0;
  expected.ring = RingKind::B;
  expected.wait_for_dial_tone = false;
  expected.init = "AT+gci=B5";
  EXPECT_THAT(line.taken, ElementsAre(expected));
}

TEST_F(ModemDialogTest, TellsOfNonsenseAndOfWhatWaits) {
  Show([&](frmModemLine& form) {
    for (const char* init : {"Z", "AT\tH", "AT\xC3\xA4"}) {
      form.txtInit.Text = init;
      form.cmdOK.Click();
      EXPECT_EQ(form.lblResult.Caption.Get(), "The init command begins with AT, such as AT+GCI=B5.") << init;
    }
    form.txtInit.Text = "";
    form.txtRecordGain.Text = "loud";
    form.cmdOK.Click();
    EXPECT_EQ(form.lblResult.Caption.Get(), "A gain is a number from 0 to 255.");
    form.txtRecordGain.Text = "128";
    line.ports.clear();
    line.changed();
    form.cmdOK.Click();
    EXPECT_EQ(form.tabPages.Selected, 0);
    EXPECT_TRUE(line.taken.empty());

    line.ports = {{"/dev/a", "First"}};
    line.changed();
    form.cboPort.ListIndex = 0;
    line.answer = {ModemTakeOver::State::Waiting, "Kept."};
    form.cmdOK.Click();
    EXPECT_TRUE(form.Visible);
    EXPECT_EQ(form.lblResult.Caption.Get(), "Kept.");
    line.changed();
    EXPECT_EQ(form.lblResult.Caption.Get(), "");
  });
  EXPECT_EQ(line.taken.size(), 1U);
}

TEST_F(ModemDialogTest, KeepsTheLastLinesOfWhatIsSaid) {
  Show([&](frmModemLine& form) {
    for (int number = 0; number < 1000; ++number)
      line.listener("< " + std::to_string(number));
    const std::string& text = form.txtLive.Text;
    EXPECT_TRUE(text.ends_with("< 998\r\n< 999\r\n"));
    const auto lines = std::count(text.begin(), text.end(), '\n');
    EXPECT_GE(lines, 300);
    EXPECT_LE(lines, 400);
    EXPECT_TRUE(text.starts_with("< " + std::to_string(1000 - lines) + "\r\n"));
  });
}

} // namespace
} // namespace kelmio
