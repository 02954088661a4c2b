// The dialogs for the wave format and for the SIP line, used as their windows would.
#include <gmock/gmock.h>

#include "fakes/fake_desktop.h"
#include "media/recording_format.h"
#include "settings_ui/dialogs/frmSipLine.h"
#include "settings_ui/dialogs/frmWaveFormat.h"
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

  windows.use = [&](Form& shown) {
    auto& form = dynamic_cast<frmWaveFormat&>(shown);
    EXPECT_EQ(form.Caption.Get(), "Wave format selection");
    EXPECT_EQ(form.lvwFormats.RowCount(), RecordableFormats().size());
    const std::size_t row = form.lvwFormats.SelectedRow();
    ASSERT_NE(row, 0U);
    EXPECT_THAT(form.lvwFormats.Row(row).cells, ElementsAre("PCM", "8.000 kHz; 16 Bit; Mono", "937.50 KB"));
    const std::uint64_t key = form.lvwFormats.Row(RowOf(form, wanted)).key;
    form.lvwFormats.SetSelection({key}, key);
    form.lvwFormats.DblClick();
    EXPECT_FALSE(form.Visible);
  };
  EXPECT_EQ(dialog.Select("Wave format selection", standard), wanted);

  windows.use = [&](Form& shown) {
    auto& form = dynamic_cast<frmWaveFormat&>(shown);
    EXPECT_EQ(form.lvwFormats.SelectedRow(), 1U);
    EXPECT_EQ(form.lvwFormats.Row(1).cells.at(0), "Format 85");
    form.cmdOK.Click();
  };
  EXPECT_EQ(dialog.Select("", foreign), foreign);

  windows.use = [](Form& form) { form.EscapePressed(); };
  EXPECT_EQ(dialog.Select("", standard), std::nullopt);
  windows.use = [](Form& shown) {
    auto& form = dynamic_cast<frmWaveFormat&>(shown);
    form.lvwFormats.SetSelection({}, 0);
    form.cmdOK.Click();
    EXPECT_TRUE(form.Visible);
    form.cmdCancel.Click();
  };
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
  void Watch(std::function<void()> run) override { changed = std::move(run); }

  SipSettings settings;
  std::string state = "Switched off.";
  SipTakeOver answer;
  std::vector<SipSettings> taken;
  std::optional<SipSettings> tested;
  std::function<void()> changed;
};

class SipLineDialogTest : public testing::Test {
protected:
  void Show(const std::function<void(frmSipLine&)>& use) {
    windows.use = [&](Form& form) { use(dynamic_cast<frmSipLine&>(form)); };
    SipLineDialog(windows).Show(line);
    EXPECT_FALSE(line.changed) << "the window is gone";
  }
  static void Select(frmSipLine& form, std::size_t row) {
    const std::uint64_t key = form.lvwCodecs.Row(row).key;
    form.lvwCodecs.SetSelection({key}, key);
    form.lvwCodecs.ItemClick();
  }
  FakeWindows windows;
  LineOfTest line;
};

TEST_F(SipLineDialogTest, HandsOverWhatWasChosen) {
  line.settings.codings = {AudioCoding::Pcma, AudioCoding::G722};
  Show([&](frmSipLine& form) {
    EXPECT_EQ(form.cboCallers.ListIndex, 0);
    EXPECT_EQ(form.txtPort.Text.Get(), "5060");
    EXPECT_EQ(form.txtRingPeriod.Text.Get(), "6000");
    EXPECT_EQ(form.lblState.Caption.Get(), "Switched off.");
    EXPECT_THAT(form.lvwCodecs.Row(1).cells, ElementsAre("PCMA", "8 kHz, A-law", "Yes"));
    EXPECT_THAT(form.lvwCodecs.Row(3).cells, ElementsAre("PCMU", "8 kHz, u-law", "No"));
    form.cboCallers.ListIndex = 1;
    form.txtPort.Text = " 5070 ";
    form.txtRingPeriod.Text = "4000";
    EXPECT_FALSE(form.cmdCodecUp.Enabled);
    form.cmdCodecDown.Click(); // G722 PCMA pcmu
    Select(form, 3);
    EXPECT_FALSE(form.cmdCodecDown.Enabled);
    EXPECT_EQ(form.cmdCodecUse.Caption.Get(), "Use");
    form.cmdCodecUse.Click();
    form.cmdCodecUp.Click(); // G722 PCMU PCMA
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
    for (const char* port : {"", " ", "0", "65536", "-1", "50x", "99999999999999999999"}) {
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
    EXPECT_EQ(form.cmdCancel.Caption.Get(), "Cancel");

    line.answer = {State::Waiting, "Kept."};
    line.state = "A call is up.";
    form.cmdOK.Click();
    EXPECT_TRUE(form.Visible);
    EXPECT_EQ(form.lblState.Caption.Get(), "A call is up.");
    EXPECT_EQ(form.cmdCancel.Caption.Get(), "Close");
    line.state = "Reachable.";
    line.changed();
    EXPECT_EQ(form.lblState.Caption.Get(), "Reachable.");
    EXPECT_EQ(form.lblResult.Caption.Get(), "");
    form.cmdOK.Click();
    form.cmdOK.Click();
    EXPECT_FALSE(form.Visible);
  });
}

} // namespace
} // namespace kelmio
