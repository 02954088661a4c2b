#include <gmock/gmock.h>

#include "support/desk.h"

namespace kelmio::test {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using ::testing::StartsWith;

TEST(CallHandling, TakesAUsualCallFromRingToListedMessage) {
  Desk desk;
  desk.Start();
  desk.MakeGreeting();
  const auto call = desk.Incoming();
  EXPECT_TRUE(desk.ToolbarEnabled(kCommandAnswer));
  desk.Ring(*call, 1);
  EXPECT_EQ(desk.Panel(1), "New call. Ringing: 1");
  call->SendCallerID("Jane Sample", "5551234");
  desk.Ring(*call, 2);
  desk.Ring(*call, 3);
  EXPECT_EQ(call->Answers(), 0);
  desk.Ring(*call, 4);
  EXPECT_EQ(call->Answers(), 1);
  EXPECT_EQ(desk.sounds.Current()->Playing(), desk.home.Path() + "Sound/Greeting.wav");
  EXPECT_FALSE(desk.ToolbarEnabled(kCommandAnswer));
  EXPECT_THAT(desk.Messages(), IsEmpty());

  desk.sounds.Current()->FinishPlay();
  desk.Run();
  EXPECT_EQ(desk.Panel(1), "Recording call...");
  EXPECT_FALSE(desk.sounds.Current()->HasDesk()) << "the microphone is none of the machine's";
  EXPECT_EQ(desk.form.Context.CurrentCall->RecordMark, 1);
  EXPECT_FALSE(desk.ToolbarEnabled(kCommandRecord));
  ASSERT_THAT(desk.Messages(), ElementsAre("Msg1511260907423.wav"));

  call->FarEndHangsUp();
  desk.Run();
  EXPECT_EQ(desk.form.Context.CurrentCall, nullptr);
  EXPECT_EQ(desk.Panel(1), "Recording completed. Waiting for a call.");
  EXPECT_TRUE(desk.ToolbarEnabled(kCommandRecord));
  ASSERT_EQ(desk.form.lvwCalls.RowCount(), 1U);
  const ListRow& row = desk.form.lvwCalls.Row(1);
  EXPECT_TRUE(row.bold);
  EXPECT_THAT(row.cells,
              ElementsAre("1", "Jane Sample", "5551234", "11-15-2026    09:07:42 AM", "00:00:01", "15.67 KB"));
  EXPECT_THAT(desk.Log(), ElementsAre("Jane Sample|5551234|15/11/26|09:07:42 AM"));

  const std::string message = desk.Messages().front();
  EXPECT_THAT(mIni::IniSectionKeys(message, desk.Index()),
              ElementsAre("Name", "Number", "Date", "Time", "Read", "Mode", "Device", "Size", "Length"));
  EXPECT_EQ(desk.Entry(message, "Mode"), "Auto");
  EXPECT_EQ(desk.Entry(message, "Device"), "3");
  EXPECT_EQ(desk.Entry(message, "Read"), "False");
  EXPECT_EQ(desk.Entry(message, "Size"), "16044");
}

TEST(CallHandling, AnswersAtTheFirstRingWithNeitherLogNorAlertForAnUnknownCaller) {
  Desk desk;
  desk.Store("AutoAnswerRingCount", "1");
  desk.Start();
  const auto call = desk.Incoming();
  desk.Ring(*call, 1);
  EXPECT_EQ(call->Answers(), 1);
  EXPECT_THAT(desk.Log(), IsEmpty());
  ASSERT_THAT(desk.Messages(), SizeIs(1));
  EXPECT_EQ(desk.Entry(desk.Messages().front(), "Name"), "Unknown");
  EXPECT_EQ(desk.Entry(desk.Messages().front(), "Number"), "Unknown");
}

TEST(CallHandling, LogsAnAnonymousCallerOnceAtTheSecondRing) {
  Desk desk;
  desk.Start();
  const auto call = desk.Incoming();
  call->SendCallerID("", "");
  desk.Ring(*call, 1);
  EXPECT_THAT(desk.Log(), IsEmpty());
  desk.Ring(*call, 2);
  desk.Wait(1000);
  desk.Ring(*call, 3);
  EXPECT_THAT(desk.Log(), ElementsAre(StartsWith("Unknown|Unknown|")));
}

TEST(CallHandling, LogsALateCallerIDBehindTheUnknownOne) {
  Desk desk;
  desk.Start();
  const auto call = desk.Incoming();
  desk.Ring(*call, 1);
  desk.Ring(*call, 2);
  desk.Wait(1000);
  call->SendCallerID("", "5551234");
  desk.Run();
  EXPECT_THAT(desk.Log(), ElementsAre(StartsWith("Unknown|Unknown|"), StartsWith("Unknown|5551234|")));
}

TEST(CallHandling, FillsAMissingNameFromTheContactBookAndKeepsADeliveredOne) {
  Desk desk;
  const std::string contacts = desk.home.Path() + "Contacts.ini";
  mIni::IniWrite("7", "Name", "Uncle Bob", contacts);
  mIni::IniWrite("7", "Mobile", "5551234", contacts);
  desk.Start();
  const auto call = desk.Incoming();
  call->SendCallerID("", "5551234");
  desk.Run();
  EXPECT_EQ(desk.form.Context.CallerName, "Uncle Bob");
  desk.Wait(1000);
  call->SendCallerID("Exchange Name", "5551234");
  desk.Run();
  EXPECT_EQ(desk.form.Context.CallerName, "Exchange Name");
  EXPECT_THAT(desk.Log(), ElementsAre(StartsWith("Uncle Bob|5551234|"), StartsWith("Exchange Name|5551234|")));
}

TEST(CallHandling, GivesACallThatTheUserTakesNeitherGreetingNorRecording) {
  Desk desk;
  desk.Start();
  desk.MakeGreeting();
  const auto call = desk.Incoming();
  desk.Ring(*call, 1);
  desk.form.AnswerCall();
  desk.Run();
  EXPECT_EQ(call->Answers(), 1);
  EXPECT_EQ(desk.sounds.Current()->Playing(), "");
  EXPECT_THAT(desk.Messages(), IsEmpty());

  desk.form.RecordCallManual();
  ASSERT_THAT(desk.Messages(), SizeIs(1));
  EXPECT_EQ(desk.Entry(desk.Messages().front(), "Mode"), "Manual");
}

TEST(CallHandling, GoesTheAutomaticWayAgainWhenAnotherRingComesBeforeTheLineIsUp) {
  Desk desk;
  desk.Start();
  const auto call = desk.Incoming();
  call->Ring(2);
  desk.form.AnswerCall();
  EXPECT_TRUE(desk.form.Context.ManualCall);
  desk.Run();
  EXPECT_FALSE(desk.form.Context.ManualCall);
  EXPECT_THAT(desk.Messages(), SizeIs(1));
}

TEST(CallHandling, AcceptsAndAnswersOnOfferingAsTheSettingsSay) {
  Desk desk;
  desk.Store("AcceptOnOffering", "1");
  desk.Start();
  const auto call = desk.Incoming();
  EXPECT_TRUE(call->Accepted());
  EXPECT_EQ(desk.Panel(2), "Accepted");
  EXPECT_EQ(call->Answers(), 0);
  call->FarEndHangsUp();
  desk.Run();

  desk.settings.AnswerOnOffering = 1;
  EXPECT_EQ(desk.Incoming()->Answers(), 1);
  desk.line->LastCall()->FarEndHangsUp();
  desk.Run();

  desk.settings.AutoAnswerIncoming = 0;
  EXPECT_EQ(desk.Incoming()->Answers(), 0);
}

TEST(CallHandling, OnlyLogsWhenTheMachineIsNotToAnswer) {
  Desk desk;
  desk.Store("AutoAnswerIncoming", "0");
  desk.Start();
  const auto call = desk.AnsweredCall();
  EXPECT_EQ(call->Answers(), 0);
  call->FarEndHangsUp();
  desk.Run();
  EXPECT_THAT(desk.Messages(), IsEmpty());
  EXPECT_THAT(desk.Log(), SizeIs(1));
  EXPECT_FALSE(desk.ToolbarEnabled(kCommandAnswer));
}

TEST(CallHandling, RecordsAtOnceWhenTheGreetingIsMissingAFolderOrDamaged) {
  for (const char* kind : {"missing", "folder", "damaged"}) {
    SCOPED_TRACE(kind);
    Desk desk;
    desk.Start();
    const std::string path = desk.home.Path() + "Sound/Greeting.wav";
    if (std::string(kind) == "folder")
      std::filesystem::create_directory(path);
    if (std::string(kind) == "damaged") {
      desk.sounds.fail_play = true;
      desk.MakeGreeting();
    }
    desk.AnsweredCall();
    EXPECT_THAT(desk.Messages(), SizeIs(1));
    EXPECT_EQ(desk.Panel(1), "Recording call...");
  }
}

TEST(CallHandling, LeavesNoMessageWhenTheCallerHangsUpWhileItRingsOrInTheGreeting) {
  Desk desk;
  desk.Start();
  desk.MakeGreeting();
  const auto ringing = desk.Incoming();
  desk.Ring(*ringing, 1);
  ringing->FarEndHangsUp();
  desk.Run();
  EXPECT_EQ(desk.form.Context.CurrentCall, nullptr);

  const auto greeted = desk.AnsweredCall();
  greeted->FarEndHangsUp();
  desk.Run();
  EXPECT_THAT(desk.Messages(), IsEmpty());
  EXPECT_EQ(desk.form.lvwCalls.RowCount(), 0U);

  // A report that the sound gave too late finds no call.
  desk.form.mTAPIEx.OnPlayDone(nullptr);
  EXPECT_THAT(desk.Messages(), IsEmpty());
}

TEST(CallHandling, LetsTheNextCallInDuringTheRefreshAfterACall) {
  Desk desk;
  desk.Start();
  const auto first = desk.AnsweredCall();
  first->FarEndHangsUp();
  const auto second = desk.line->Incoming();
  desk.Run();
  ASSERT_NE(desk.form.Context.CurrentCall, nullptr);
  EXPECT_TRUE(desk.ToolbarEnabled(kCommandAnswer));
  EXPECT_EQ(desk.form.lvwCalls.RowCount(), 1U);
  desk.Wait(1000);
  for (int ring = 1; ring <= 4; ++ring)
    desk.Ring(*second, ring);
  EXPECT_THAT(desk.Messages(), SizeIs(2));
}

TEST(CallHandling, DialsWithoutGreetingOrRecording) {
  Desk desk;
  desk.Start();
  desk.MakeGreeting();
  desk.form.DialCall("5550100");
  const auto call = desk.line->LastCall();
  ASSERT_NE(call, nullptr);
  EXPECT_EQ(call->Number(), "5550100");
  EXPECT_TRUE(desk.sounds.Current()->HasDesk()) << "who dials hears it ring";
  call->FarEndAnswers();
  desk.Run();
  EXPECT_EQ(desk.Panel(2), "Connected");
  EXPECT_TRUE(desk.sounds.Current()->HasDesk());
  EXPECT_EQ(desk.sounds.Current()->Playing(), "");
  EXPECT_THAT(desk.Messages(), IsEmpty());
  desk.form.StopRecord();
  desk.Run();
  EXPECT_EQ(call->NowIn(), ScriptedCall::Phase::Over);

  desk.line->taken = true;
  desk.form.Context.CurrentLine->Close();
  desk.form.DialCall("5550100");
  EXPECT_EQ(desk.form.Context.CurrentCall, nullptr);
}

TEST(CallHandling, RecordsAtTheHandsetWithNoCallFromOutside) {
  Desk desk;
  desk.Start();
  desk.MakeGreeting();
  desk.form.RecordCallManual();
  desk.Run();
  ASSERT_THAT(desk.Messages(), SizeIs(1));
  EXPECT_EQ(desk.Entry(desk.Messages().front(), "Mode"), "Manual");
  EXPECT_EQ(desk.sounds.Current()->Playing(), "") << "nobody is there to be greeted";
  desk.form.StopRecord();
  desk.Run();
  EXPECT_EQ(desk.form.Context.CurrentCall, nullptr);
  EXPECT_EQ(desk.form.lvwCalls.RowCount(), 1U);

  desk.settings.SystemStatus = 0;
  desk.form.SetSystemStatus();
  desk.form.RecordCallManual();
  EXPECT_EQ(desk.form.Context.CurrentCall, nullptr);
}

TEST(CallHandling, AnswersAnAcceptedCallThatTheLineMarked) {
  Desk desk;
  desk.Start();
  const auto call = desk.Incoming();
  const CallRef current = desk.form.Context.CurrentCall;
  current->AnswerMark = 1;
  current->Accept("");
  desk.Run();
  EXPECT_EQ(call->Answers(), 1);
  EXPECT_EQ(current->AnswerMark, 0);
}

} // namespace
} // namespace kelmio::test
