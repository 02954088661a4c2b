#include <gmock/gmock.h>

#include "support/desk.h"

namespace kelmio::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;

TEST(MessageRecording, EndsTheCallAfterUnbrokenSilence) {
  Desk desk;
  desk.Start();
  const auto call = desk.AnsweredCall();
  FakeCallSound& sound = *desk.sounds.Current();
  sound.Silence();
  desk.Wait(9000);
  EXPECT_EQ(desk.Panel(2), "Silence...");
  sound.Voice();
  desk.Wait(9000);
  EXPECT_EQ(desk.Panel(2), "Voice...");
  EXPECT_NE(sound.Recording(), "");
  sound.Silence();
  desk.Wait(5000);
  sound.Silence();
  desk.Wait(4999);
  EXPECT_NE(sound.Recording(), "") << "a second report of silence must not start the wait anew";
  desk.Wait(1);
  EXPECT_EQ(call->NowIn(), ScriptedCall::Phase::Over);
  EXPECT_EQ(desk.form.Context.CurrentCall, nullptr);
  EXPECT_FALSE(desk.form.tmrSilence.Enabled());
  EXPECT_EQ(desk.Entry(desk.Messages().front(), "Size"), "16044");
}

TEST(MessageRecording, LeavesTheNextCallerAloneWhenTheOneBeforeEndedInSilence) {
  Desk desk;
  desk.Start();
  const auto first = desk.AnsweredCall();
  desk.sounds.Current()->Silence();
  desk.Wait(5000);
  first->FarEndHangsUp();
  desk.Run();
  const auto second = desk.Incoming();
  desk.Ring(*second, 1);
  desk.Wait(5000);
  EXPECT_EQ(second->NowIn(), ScriptedCall::Phase::Ringing);
  EXPECT_FALSE(desk.form.tmrSilence.Enabled());
}

TEST(MessageRecording, LeavesTheCallUpAtTheLengthLimitUntilSilenceEndsIt) {
  Desk desk;
  desk.Start();
  const auto call = desk.AnsweredCall();
  FakeCallSound& sound = *desk.sounds.Current();
  EXPECT_EQ(sound.LastRequest().max_seconds, 3600);
  sound.ReachLengthLimit();
  desk.Run();
  EXPECT_EQ(desk.Panel(1), "Recording completed. Waiting for a call.");
  EXPECT_EQ(desk.form.Context.CurrentCall->RecordMark, 1);
  EXPECT_EQ(call->NowIn(), ScriptedCall::Phase::Up);
  sound.Silence();
  desk.Wait(10000);
  EXPECT_EQ(call->NowIn(), ScriptedCall::Phase::Over);
}

TEST(MessageRecording, AsksForWhatTheSettingsSay) {
  Desk desk;
  desk.Store("StopRecordingAfter", "0");
  desk.Store("RecordingSilenceLength", "2500");
  desk.Store("RecordFormatID", "07000100401F0000401F0000010008000000");
  desk.Start();
  desk.AnsweredCall();
  const RecordRequest& request = desk.sounds.Current()->LastRequest();
  EXPECT_EQ(request.max_seconds, 2147483646);
  EXPECT_EQ(request.format.format_tag, wave_format_tag::kMuLaw);
  EXPECT_TRUE(request.watch_signal);
  EXPECT_TRUE(request.report_blocks);
  EXPECT_EQ(request.block_bytes, 2048U);
  EXPECT_EQ(desk.form.tmrSilence.Interval(), 2500);
  EXPECT_EQ(desk.form.WaveView.FormatA, 8000);
  EXPECT_EQ(desk.form.WaveView.FormatB, 8);
}

TEST(MessageRecording, FallsBackToTheDefaultFormatWithAWordInTheStatusPane) {
  Desk desk;
  desk.Store("RecordFormatID", "31000100401F0000401F0000010008000000");
  desk.sounds.unsupported_tag = wave_format_tag::kGsm610;
  desk.Start();
  desk.AnsweredCall();
  EXPECT_EQ(desk.sounds.Current()->LastRequest().format, WaveFormatRecord{});
  EXPECT_THAT(desk.form.Output.txtOutput.Text.Get(), ::testing::HasSubstr("can't record in the chosen format"));
}

TEST(MessageRecording, EndsAtTheBusyToneAndOnSignalledBusy) {
  Desk desk;
  desk.Start();
  const auto call = desk.AnsweredCall();
  desk.sounds.Current()->BusyTone();
  desk.Run();
  EXPECT_EQ(call->NowIn(), ScriptedCall::Phase::Over);
  EXPECT_THAT(desk.Messages(), SizeIs(1));
  EXPECT_EQ(desk.form.lvwCalls.RowCount(), 1U);

  desk.form.DialCall("5550100");
  desk.line->LastCall()->FarEndIsBusy();
  desk.Run();
  EXPECT_EQ(desk.line->LastCall()->NowIn(), ScriptedCall::Phase::Over);
}

TEST(MessageRecording, StopsAndHangsUpAtTheUsersCommandAndIsHarmlessWithoutACall) {
  Desk desk;
  desk.Start();
  const auto call = desk.AnsweredCall();
  desk.form.ExecuteCommand(kCommandHangUp);
  EXPECT_EQ(desk.sounds.Current(), nullptr) << "the sound goes with its call";
  EXPECT_TRUE(desk.ToolbarEnabled(kCommandRecord));
  desk.Run();
  EXPECT_EQ(call->NowIn(), ScriptedCall::Phase::Over);
  desk.form.ExecuteCommand(kCommandHangUp);
  desk.Run();
  EXPECT_EQ(desk.form.lvwCalls.RowCount(), 1U);
}

TEST(MessageRecording, NeitherMeasuresNorRemovesTheMessageThatIsBeingRecorded) {
  Desk desk;
  desk.Start();
  const auto call = desk.AnsweredCall();
  desk.form.RefreshMessageList();
  const std::string message = desk.Messages().front();
  EXPECT_EQ(desk.Entry(message, "Size"), "-1");
  EXPECT_EQ(desk.Entry(message, "Length"), "-1");
  call->FarEndHangsUp();
  desk.Run();
  EXPECT_EQ(desk.Entry(message, "Size"), "16044");
  EXPECT_EQ(desk.Entry(message, "Length"), "1000");
}

TEST(MessageRecording, LeavesARowThatHealsAwayWhenTheFileCantBeMade) {
  Desk desk;
  desk.sounds.fail_record = true;
  desk.Start();
  const auto call = desk.AnsweredCall();
  EXPECT_NE(desk.Panel(1), "Recording call...");
  EXPECT_THAT(desk.Messages(), SizeIs(1));
  call->FarEndHangsUp();
  desk.Run();
  EXPECT_THAT(desk.Messages(), IsEmpty());
  EXPECT_THAT(desk.form.Output.txtOutput.Text.Get(), ::testing::HasSubstr("Can't record to "));
}

TEST(CallMonitor, CountsTheSecondsOfAllRecordingsTogether) {
  Desk desk;
  desk.Start();
  auto call = desk.AnsweredCall();
  desk.Wait(5000);
  EXPECT_EQ(desk.Panel(3), "00:00:05");
  call->FarEndHangsUp();
  desk.Wait(3000);
  call = desk.AnsweredCall();
  desk.Wait(7000);
  EXPECT_EQ(desk.Panel(3), "00:00:12");
  desk.form.RestartSystem();
  EXPECT_EQ(desk.Panel(3), "00:00:00");
}

TEST(CallMonitor, ShowsDigitsTonesAndTheStatesThatHaveATextAndHandsBlocksOn) {
  Desk desk;
  desk.Start();
  const auto call = desk.AnsweredCall();
  call->SendDigit('5');
  desk.Run();
  EXPECT_EQ(desk.Panel(2), "DTMF: 5");
  desk.sounds.Current()->Digit('9');
  desk.Run();
  EXPECT_EQ(desk.Panel(2), "DTMF: 5") << "a caller that signals its digits isn't heard twice";
  desk.sounds.Current()->Tone(425);
  desk.Run();
  EXPECT_EQ(desk.Panel(2), "Tone...");
  desk.form.mTAPIEx.OnCallState(desk.form.Context.CurrentCall, CallState::Ringback);
  EXPECT_EQ(desk.Panel(2), "Tone...");

  std::size_t drawn = 0;
  desk.form.WaveView.Draw = [&](std::span<const std::byte> samples) { drawn = samples.size(); };
  desk.sounds.Current()->Block(std::vector<std::byte>(2048));
  desk.Run();
  EXPECT_EQ(drawn, 2048U);
}

TEST(StatusPane, KeepsItsLogWithinBoundsAndOutOfCallersHands) {
  Desk desk;
  frmOutput& pane = desk.form.Output;
  pane.OnLogText("too early");
  EXPECT_EQ(pane.txtOutput.Text.Get(), "");
  desk.Start();
  pane.txtOutput.Text = std::string(100000, 'x');
  pane.OnLogText("a\nb");
  EXPECT_EQ(pane.txtOutput.Text.Get().size(), 100005U);
  pane.OnLogText("next");
  EXPECT_EQ(pane.txtOutput.Text.Get(), "next\r\n");
  pane.cmdCopy.Click();
  EXPECT_EQ(desk.clipboard.text, "next\r\n");
  pane.cmdSelectAll.Click();
  EXPECT_EQ(pane.txtOutput.SelLength.Get(), 6U);
  pane.cmdClear.Click();
  EXPECT_EQ(pane.txtOutput.Text.Get(), "");
}

} // namespace
} // namespace kelmio::test
