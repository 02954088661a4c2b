// The dialer as a telephone over somebody else's line.
#include <gmock/gmock.h>

#include <fstream>
#include <memory>

#include "calls/frmDialer.h"
#include "calls/modToneBox.h"
#include "fakes/fake_call_sound.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "fakes/scripted_line.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class FakeEngine : public DialerEngine {
public:
  void SetSystemStatus() override { asked.emplace_back("system"); }
  void DialCall(const std::string& number) override { asked.push_back("dial " + number); }
  void AnswerCall() override { asked.emplace_back("answer"); }
  void RecordCallManual() override { asked.emplace_back("record"); }
  void StopRecord() override { asked.emplace_back("stop"); }
  std::vector<std::string> asked;
};

class DialerTest : public testing::Test {
protected:
  DialerTest() {
    lines_.AddDriver(std::make_unique<ScriptedDriver>(std::vector{line_}));
    LoadSettings(settings_, registry_, home_.Path());
    settings_.CommDeviceID = 3;
    SetPaths(app_, home_.Path());
    main_.InitMode = TAPIExCtl::kInitModeMain;
    main_.Initialize();
    main_line_ = main_.LineByDeviceID(3);
    main_line_->Open();
    main_.OnNewCall = [this](const CallRef& call) { context_.CurrentCall = call; };
    Open();
  }
  void Open() {
    form_.reset();
    form_ = std::make_unique<frmDialer>(frmDialer::House{app_, settings_, registry_, context_, engine_, lines_, loop_,
                                                         loop_, clipboard_, picker_, player_},
                                        frmDialer::Place::WhereItWas);
    form_->Load();
    form_->Visible = true;
  }
  /// Letters of the buttons that can be pressed: Dial, Answer, droP, pLay, Record; "t" while the clock runs.
  std::string State() const {
    std::string state;
    const std::pair<char, bool> all[] = {{'D', form_->cmdDial.Enabled},   {'A', form_->cmdAnswer.Enabled},
                                         {'P', form_->cmdDrop.Enabled},   {'L', form_->cmdPlayWave.Enabled},
                                         {'R', form_->cmdRecord.Enabled}, {'t', form_->tmrTime.Enabled()}};
    for (const auto& [letter, on] : all)
      if (on)
        state += letter;
    return state;
  }
  std::string Panel(std::size_t panel) const { return form_->sbStatusBar.PanelText(panel); }
  std::shared_ptr<ScriptedCall> CallUp() {
    auto call = line_->Incoming();
    loop_.RunPending();
    call->Answer();
    loop_.RunPending();
    return call;
  }
  // The number and the place that the next opening finds.
  std::string Stored() {
    Settings stored;
    LoadSettings(stored, registry_, home_.Path());
    return stored.DialerLastNumber + " " + std::to_string(stored.DialerLeft);
  }

  test::TemporaryFolder home_;
  FakeLoop loop_;
  FakeRegistryStore registry_;
  FakeClipboard clipboard_;
  FakeFilePicker picker_;
  FakeWaveImagePlayer player_;
  FakeSoundFactory sounds_{loop_};
  LineService lines_{loop_, sounds_};
  std::shared_ptr<ScriptedLine> line_ = std::make_shared<ScriptedLine>(loop_, 3, media_mode::kInteractiveVoice);
  AppState app_;
  Settings settings_;
  CallContext context_;
  FakeEngine engine_;
  TAPIExCtl main_{lines_};
  std::shared_ptr<TAPILine> main_line_;
  std::unique_ptr<frmDialer> form_;
};

TEST_F(DialerTest, ItsButtonsFollowTheCall) {
  EXPECT_EQ(State(), "D");
  auto call = line_->Incoming();
  loop_.RunPending();
  EXPECT_EQ(State(), "DAP");
  call->Ring(2);
  loop_.RunPending();
  EXPECT_EQ(Panel(1), "Incoming call. Ring: 2");
  call->Answer();
  loop_.RunPending();
  EXPECT_EQ(State(), "DPLRt");
  EXPECT_EQ(Panel(1), "Connected");
  loop_.Advance(std::chrono::milliseconds(61000));
  EXPECT_EQ(Panel(2), "00:01:01");
  form_->cmdRecord.Click();
  EXPECT_EQ(State(), "DPLt");
  call->FarEndHangsUp();
  loop_.RunPending();
  EXPECT_EQ(State(), "D");
  EXPECT_EQ(Panel(2), "00:01:01") << "the last call's time stays";
}

TEST_F(DialerTest, HearsOfTheSameCallObjectAsTheMainWindowAndLeavesTheCallUp) {
  CallRef seen;
  form_->myTAPIEx.OnNewCall = [&](const CallRef& call) { seen = call; };
  const auto call = CallUp();
  EXPECT_EQ(seen, context_.CurrentCall);
  form_.reset();
  loop_.RunPending();
  EXPECT_EQ(call->NowIn(), ScriptedCall::Phase::Up);
  EXPECT_FALSE(seen->Ended());
}

TEST_F(DialerTest, DialsThroughTheEngineAndTurnsTheSystemOnFirst) {
  form_->txtPhoneNumber.Text = "  \t ";
  form_->txtPhoneNumber.EnterPressed();
  EXPECT_THAT(engine_.asked, IsEmpty());
  form_->cmdDial.Click();
  form_->txtPhoneNumber.Text = " 555 1234 ";
  settings_.SystemStatus = 0;
  form_->txtPhoneNumber.EnterPressed();
  EXPECT_EQ(form_->txtPhoneNumber.Text.Get(), "555 1234");
  EXPECT_EQ(settings_.SystemStatus, 1);
  form_->cmdAnswer.Click();
  form_->cmdDrop.Click();
  EXPECT_THAT(engine_.asked, ElementsAre("dial ", "system", "dial 555 1234", "answer", "stop"));
}

TEST_F(DialerTest, EditsTheNumberByKeysAndPaste) {
  settings_.KeyTones = 1;
  form_->txtPhoneNumber.Text = " 1 ";
  for (const std::size_t key : {3U, 9U, 10U, 11U})
    form_->cmdKeyPad[key].Click();
  EXPECT_EQ(form_->txtPhoneNumber.Text.Get(), "14*0#");
  // The keypad's own count: "4" sounds as the fourth place of the grid.
  ASSERT_EQ(player_.played.size(), 4U);
  EXPECT_EQ(player_.played[0], modToneBox::MakeTonePair({697, 1633}, 0.25));
  form_->txtPhoneNumber.Text = "14*0\xC3\xBC ";
  form_->cmdDelete.Click();
  EXPECT_EQ(form_->txtPhoneNumber.Text.Get(), "14*0");

  clipboard_.holds_text = false;
  form_->cmdPaste.Click();
  EXPECT_EQ(form_->txtPhoneNumber.Text.Get(), "14*0");
  for (const auto& [held, number] : {std::pair{"0044 20 7946", "44207946"}, {"0", ""}}) {
    clipboard_.holds_text = true;
    clipboard_.text = held;
    form_->cmdPaste.Click();
    EXPECT_EQ(form_->txtPhoneNumber.Text.Get(), number);
  }
}

TEST_F(DialerTest, KeepsItsPlaceAndNumberUnlessMinimised) {
  form_->txtPhoneNumber.Text = " 777 ";
  form_->Left = 4000;
  form_.reset();
  EXPECT_EQ(Stored(), "777 4000");
  Open();
  EXPECT_EQ(form_->txtPhoneNumber.Text.Get(), "777");
  form_->txtPhoneNumber.Text = "888";
  form_->Left = 5000;
  form_->State = WindowState::Minimized;
  form_.reset();
  EXPECT_EQ(Stored(), "777 4000");

  app_.DialNumber = "999";
  for (int opening = 0; opening < 2; ++opening) {
    Open();
    EXPECT_EQ(form_->txtPhoneNumber.Text.Get(), "999");
  }
}

} // namespace
} // namespace kelmio
