#include <gmock/gmock.h>

#include "fakes/fake_call_sound.h"
#include "fakes/fake_loop.h"
#include "fakes/scripted_line.h"
#include "support/temporary_folder.h"
#include "telephony/tapi_control/TAPIExCtl.h"

namespace kelmio::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

struct Telephone {
  Telephone() { service.AddDriver(std::make_unique<ScriptedDriver>(std::vector{line})); }

  void Listen(TAPIExCtl& control, const std::string& name) {
    control.OnNewCall = [this, name](const CallRef& call) { Note(name + " new", call); };
    control.OnConnected = [this, name](const CallRef& call, long) { Note(name + " connected", call); };
    control.OnDisConnected = [this, name](const CallRef& call, long) { Note(name + " disconnected", call); };
    control.OnIdle = [this, name](const CallRef& call) { Note(name + " idle", call); };
    control.OnEndCall = [this, name](const CallRef& call) { Note(name + " end", call); };
  }
  void Note(const std::string& what, const CallRef& call) {
    happened.push_back(what);
    last_call = call;
  }
  std::vector<std::string> TakeHappened() { return std::exchange(happened, {}); }

  FakeLoop loop;
  FakeSoundFactory sounds{loop};
  std::shared_ptr<ScriptedLine> line = std::make_shared<ScriptedLine>(loop, 3, 4U);
  LineService service{loop, sounds};
  std::vector<std::string> happened;
  CallRef last_call;
};

TEST(TelephonyControl, TellsEveryInstanceWithAnOpenLineTheMainOneFirst) {
  Telephone telephone;
  TAPIExCtl dialer(telephone.service);
  TAPIExCtl main(telephone.service);
  TAPIExCtl settings(telephone.service);
  telephone.Listen(dialer, "dialer");
  telephone.Listen(main, "main");
  telephone.Listen(settings, "settings");
  EXPECT_EQ(dialer.LineByDeviceID(3), nullptr) << "nothing before Initialize";
  dialer.Initialize();
  main.InitMode = TAPIExCtl::kInitModeMain;
  main.Initialize();
  settings.Initialize();
  ASSERT_EQ(settings.Lines().size(), 1U);

  const auto dialer_line = dialer.LineByDeviceID(3);
  ASSERT_TRUE(dialer_line->Open());
  const auto main_line = main.LineByDeviceID(3);
  ASSERT_TRUE(main_line->Open());
  EXPECT_EQ(main.LineByDeviceID(4), nullptr);

  auto call = telephone.line->Incoming();
  telephone.loop.RunPending();
  EXPECT_THAT(telephone.TakeHappened(), ElementsAre("main new", "dialer new"));

  // The monitor leaves; the call goes on for the main window.
  dialer_line->Close();
  telephone.loop.RunPending();
  EXPECT_TRUE(telephone.line->IsOpen());
  call->Answer();
  telephone.loop.RunPending();
  EXPECT_THAT(telephone.TakeHappened(), ElementsAre("main connected"));

  // The main window's line takes its call with it, though another window still has the line open.
  ASSERT_TRUE(dialer_line->Open());
  main_line->Close();
  EXPECT_TRUE(telephone.line->IsOpen());
  EXPECT_THAT(telephone.TakeHappened(), IsEmpty()) << "no operation raises events from inside itself";
  telephone.loop.RunPending();
  EXPECT_THAT(telephone.TakeHappened(), ElementsAre("main disconnected", "dialer disconnected", "main idle",
                                                    "dialer idle", "main end", "dialer end"));
  dialer.Shutdown();
  EXPECT_FALSE(telephone.line->IsOpen());
}

TEST(TelephonyControl, SurvivesAWindowThatClosesInsideAnEvent) {
  Telephone telephone;
  auto dialer = std::make_unique<TAPIExCtl>(telephone.service);
  TAPIExCtl main(telephone.service);
  main.InitMode = TAPIExCtl::kInitModeMain;
  main.Initialize();
  dialer->Initialize();
  telephone.Listen(*dialer, "dialer");
  const auto main_line = main.LineByDeviceID(3);
  const auto dialer_line = dialer->LineByDeviceID(3);
  main_line->Open();
  dialer_line->Open();
  main.OnDisConnected = [&](const CallRef&, long) { dialer.reset(); };
  const auto call = telephone.line->Incoming();
  telephone.loop.RunPending();
  telephone.TakeHappened();
  call->FarEndHangsUp();
  telephone.loop.RunPending();
  EXPECT_THAT(telephone.TakeHappened(), IsEmpty());
  EXPECT_FALSE(dialer_line->IsOpen());
  EXPECT_FALSE(dialer_line->Open()) << "a line whose window is gone stays closed";
}

TEST(TelephonyControl, EndsACallOnceHoweverManyHangUp) {
  Telephone telephone;
  TAPIExCtl main(telephone.service);
  telephone.Listen(main, "main");
  main.Initialize();
  const auto line = main.LineByDeviceID(3);
  line->Open();
  const auto device_call = telephone.line->Incoming();
  telephone.loop.RunPending();
  const CallRef call = telephone.last_call;
  telephone.TakeHappened();
  call->Hangup();
  call->Hangup();
  device_call->FarEndHangsUp();
  telephone.loop.RunPending();
  EXPECT_THAT(telephone.TakeHappened(), ElementsAre("main disconnected", "main idle", "main end"));
  call->Hangup();
  call->StopRecord();
  call->StopPlay();
  EXPECT_EQ(call->Answer(), TAPIResult::CallEnded);
  EXPECT_EQ(call->RecordFile("/nowhere"), TAPIResult::CallEnded);
  EXPECT_EQ(call->PlayFile("/nowhere"), TAPIResult::CallEnded);
  telephone.loop.RunPending();
  EXPECT_THAT(telephone.TakeHappened(), IsEmpty());
}

TEST(TelephonyControl, TakesAnyPathBeforeTheOptionsOfARecording) {
  Telephone telephone;
  TemporaryFolder folder;
  TAPIExCtl main(telephone.service);
  main.Initialize();
  const auto line = main.LineByDeviceID(3);
  line->Open();
  const CallRef call = line->MakeCall("");
  ASSERT_NE(call, nullptr);
  EXPECT_EQ(call->Answer(), TAPIResult::Ok);
  const std::string path = folder.Path() + "a | b.wav";
  EXPECT_EQ(call->RecordFile(path + " | MONITOR:SIGNAL"), TAPIResult::Ok);
  EXPECT_EQ(telephone.sounds.Current()->LastRequest().path, path);
  EXPECT_TRUE(telephone.sounds.Current()->LastRequest().watch_signal);
  EXPECT_FALSE(telephone.sounds.Current()->LastRequest().report_blocks);
  EXPECT_EQ(call->RecordFile(folder.Path() + "second.wav"), TAPIResult::BadFile) << "the first recording goes on";
  EXPECT_EQ(telephone.sounds.Current()->Recording(), path);
}

TEST(WaveFormat, ReadsAndWritesItsText) {
  const std::string pcm = "01000100401F0000803E0000020010000000";
  EXPECT_EQ(ToFormatText(WaveFormatRecord{}), pcm);
  EXPECT_EQ(FromFormatText(pcm), WaveFormatRecord{});
  EXPECT_EQ(CodeNameOf(WaveFormatRecord{}), "PCM");
  EXPECT_EQ(DetailOf(WaveFormatRecord{}), "8.000 kHz; 16 Bit; Mono");
  EXPECT_FALSE(FromFormatText(pcm.substr(2)));
  EXPECT_FALSE(FromFormatText("x1000100401F0000803E0000020010000000"));

  Telephone telephone;
  TAPIExCtl main(telephone.service);
  main.Initialize();
  TAPIWaveFormat& format = main.Lines().front()->WaveFormat();
  format.SetID("nonsense");
  EXPECT_FALSE(format.Supported());
  EXPECT_EQ(format.ID(), "nonsense");
  EXPECT_EQ(format.Recordable(), WaveFormatRecord{});
  format.Reset();
  EXPECT_EQ(format.ID(), pcm);
  EXPECT_TRUE(format.Supported());
}

} // namespace
} // namespace kelmio::test
