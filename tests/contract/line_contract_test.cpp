// What every line has to keep to, whatever drives it.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "contract/modem_rig.h"
#include "contract/scripted_rig.h"
#include "contract/sip_rig.h"
#include "fakes/fake_call_sound.h"
#include "support/temporary_folder.h"
#include "telephony/tapi_control/TAPIExCtl.h"

namespace kelmio::test {
namespace {

using ::testing::ElementsAre;

struct RigMaker {
  std::string name;
  std::function<std::unique_ptr<LineRig>()> make;
};
void PrintTo(const RigMaker& rig, std::ostream* out) {
  *out << rig.name;
}

class LineContract : public ::testing::TestWithParam<RigMaker> {
protected:
  LineContract() {
    service.AddDriver(rig->MakeDriver());
    control.OnNewCall = [this](const CallRef& new_call) {
      call = new_call;
      happened.push_back("new");
    };
    control.OnOffering = [this](const CallRef&, long) { happened.push_back("offering"); };
    control.OnRing = [this](const CallRef&, int count, long) { happened.push_back("ring " + std::to_string(count)); };
    control.OnCallerID = [this](const CallRef&, const std::string& name, const std::string& number) {
      happened.push_back("caller " + name + " " + number);
    };
    control.OnConnected = [this](const CallRef&, long) { happened.push_back("connected"); };
    control.OnDisConnected = [this](const CallRef&, long) { happened.push_back("disconnected"); };
    control.OnIdle = [this](const CallRef&) { happened.push_back("idle"); };
    control.OnEndCall = [this](const CallRef&) { happened.push_back("end"); };
    control.OnRecordDone = [this](const CallRef&) { happened.push_back("record done"); };
    control.Initialize();
    line = control.LineByDeviceID(control.Lines().at(0)->DeviceID());
  }
  ~LineContract() override {
    control.Shutdown();
    rig->Loop().RunPending();
  }

  bool RunUntilLast(const std::string& what) {
    return rig->RunUntil([&] { return !happened.empty() && happened.back() == what; });
  }
  void ExpectAnEnd(const char* of) {
    ASSERT_TRUE(RunUntilLast("end")) << of;
    EXPECT_THAT(happened, ElementsAre("disconnected", "idle", "end")) << of;
    call->Hangup(); // which has ended already
    happened.clear();
  }
  /// A call that has been answered.
  void CallUp() {
    ASSERT_TRUE(line->Open());
    rig->FarEndCalls();
    ASSERT_TRUE(RunUntilLast("caller Jane Sample 5551234"));
    EXPECT_EQ(call->Answer(), TAPIResult::Ok);
    EXPECT_EQ(call->Answer(), TAPIResult::Ok);
    rig->FarEndSeesAnswer();
    ASSERT_TRUE(RunUntilLast("connected"));
    EXPECT_EQ(call->Answer(), TAPIResult::Ok) << "answering an answered call does nothing";
    happened.clear();
  }

  std::unique_ptr<LineRig> rig = GetParam().make();
  FakeSoundFactory sounds{rig->Loop()};
  LineService service{rig->Loop(), sounds};
  TAPIExCtl control{service};
  std::shared_ptr<TAPILine> line;
  CallRef call;
  std::vector<std::string> happened;
};

TEST_P(LineContract, TellsOfEveryCallInTheSameOrder) {
  ASSERT_TRUE(line->Open());
  EXPECT_TRUE(line->IsOpen());
  rig->FarEndCalls();
  ASSERT_TRUE(RunUntilLast("caller Jane Sample 5551234"));
  EXPECT_THAT(happened, ElementsAre("new", "offering", "ring 1", "caller Jane Sample 5551234"));
  EXPECT_NE(call->RecordMark, 1);
  happened.clear();
  rig->FarEndHangsUp();
  ExpectAnEnd("the far end gives up");
  line->Close();

  CallUp();
  call->StopRecord();
  rig->FarEndHangsUp();
  ExpectAnEnd("the far end hangs up");
  line->Close();

  CallUp();
  call->Hangup();
  call->Hangup();
  ExpectAnEnd("this side hangs up");
  line->Close();

  CallUp();
  line->Close();
  EXPECT_TRUE(happened.empty()) << "no operation raises events from inside itself";
  ExpectAnEnd("the line is closed");
}

TEST_P(LineContract, RecordsAtOnceOffHook) {
  TemporaryFolder folder;
  ASSERT_TRUE(line->Open());
  call = line->MakeCall("");
  ASSERT_NE(call, nullptr);
  EXPECT_EQ(call->Answer(), TAPIResult::Ok);
  EXPECT_EQ(call->RecordFile(folder.Path() + "desk.wav | MONITOR:SIGNAL"), TAPIResult::Ok);
  EXPECT_TRUE(std::filesystem::exists(folder.Path() + "desk.wav"));
  EXPECT_EQ(line->MakeCall(""), nullptr) << "there is one call at a time";
  call->StopRecord();
  call->Hangup();
  ASSERT_TRUE(RunUntilLast("end"));
  EXPECT_THAT(happened, ElementsAre("record done", "disconnected", "idle", "end"));
}

TEST_P(LineContract, GivesFalseForADeviceInUseAndOpensItAfterwards) {
  rig->TakeDevice(true);
  EXPECT_FALSE(line->Open());
  EXPECT_FALSE(line->IsOpen());
  EXPECT_EQ(line->MakeCall(""), nullptr);
  rig->TakeDevice(false);
  EXPECT_TRUE(line->Open());
  CallUp();
}

INSTANTIATE_TEST_SUITE_P(Lines, LineContract,
                         ::testing::Values(RigMaker{"Scripted", [] { return std::make_unique<ScriptedRig>(); }},
                                           RigMaker{"Sip", [] { return std::make_unique<SipRig>(); }},
                                           RigMaker{"SipAccount", [] { return std::make_unique<SipAccountRig>(); }},
                                           RigMaker{"Modem", [] { return std::make_unique<ModemRig>(); }}),
                         [](const auto& rig) { return rig.param.name; });

} // namespace
} // namespace kelmio::test
