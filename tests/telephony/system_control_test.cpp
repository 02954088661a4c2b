#include <gmock/gmock.h>

#include "support/desk.h"

namespace kelmio::test {
namespace {

TEST(SystemControl, OpensTheDetectedLineAndSavesItsNumber) {
  Desk desk;
  desk.Start();
  EXPECT_TRUE(desk.line->IsOpen());
  EXPECT_EQ(desk.settings.CommDeviceID, 3);
  EXPECT_EQ(desk.registry.Query(kHkeyLocalMachine, "software\\ardelta\\kelmio\\settings", "CommDeviceID")->bytes, "3");
  EXPECT_EQ(desk.Panel(1), "Waiting for a call");
  EXPECT_EQ(desk.Panel(2), "Connected");
}

TEST(SystemControl, PrefersAVoiceModemWhereverItStands) {
  FakeLoop loop;
  const auto make = [&](long id, std::uint32_t modes) { return std::make_shared<ScriptedLine>(loop, id, modes); };
  Desk desk({make(1, media_mode::kDataModem), make(2, media_mode::kAutomatedVoice),
             make(5, media_mode::kInteractiveVoice | media_mode::kDataModem)});
  desk.Start();
  EXPECT_EQ(desk.settings.CommDeviceID, 5);

  Desk data_only({make(1, media_mode::kDataModem)});
  data_only.Start();
  EXPECT_EQ(data_only.settings.CommDeviceID, -1);
  EXPECT_EQ(data_only.Panel(1), "") << "without a device no panel is touched";
}

TEST(SystemControl, TellsThatADeviceCantBeOpened) {
  Desk desk;
  desk.line->taken = true;
  desk.Start();
  EXPECT_EQ(desk.Panel(1), "No telephony device opened");
  EXPECT_EQ(desk.Panel(2), "Disconnected");
  EXPECT_EQ(desk.form.Context.CurrentLine, nullptr);
  EXPECT_THAT(desk.form.Output.txtOutput.Text.Get(), ::testing::HasSubstr("is in use"));

  // The other program lets go of it.
  desk.line->taken = false;
  desk.line->lines_changed();
  EXPECT_EQ(desk.Panel(1), "Waiting for a call");
  const auto line = desk.form.Context.CurrentLine;
  desk.line->lines_changed();
  EXPECT_EQ(desk.form.Context.CurrentLine, line) << "an open line is left alone";

  Desk gone;
  gone.Store("CommDeviceID", "77");
  gone.Start();
  EXPECT_EQ(gone.Panel(1), "No telephony device opened");
}

TEST(SystemControl, SwitchesOffAndOnWithoutStoringIt) {
  Desk desk;
  desk.Start();
  const auto call = desk.AnsweredCall();
  desk.form.ExecuteCommand(command::kSystemSwitch);
  EXPECT_EQ(desk.form.CommandBars1.ToolBars().front().Find(command::kSystemSwitch)->caption, "Off");
  EXPECT_EQ(desk.Panel(1), "Stopped");
  EXPECT_FALSE(desk.line->IsOpen());
  desk.Run();
  EXPECT_EQ(call->NowIn(), ScriptedCall::Phase::Over);
  EXPECT_EQ(desk.form.Context.CurrentCall, nullptr) << "a closed line ends its call like any end";
  EXPECT_EQ(desk.form.lvwCalls.RowCount(), 1U);
  EXPECT_EQ(desk.Entry(desk.Messages().front(), "Size"), "16044");

  desk.form.RestartSystem();
  EXPECT_EQ(desk.Panel(1), "Stopped");
  EXPECT_FALSE(desk.line->IsOpen());
  desk.form.ExecuteCommand(command::kSystemSwitch);
  EXPECT_TRUE(desk.line->IsOpen());
  EXPECT_FALSE(desk.registry.Query(kHkeyLocalMachine, "Software\\Ardelta\\Kelmio\\Settings", "SystemStatus"));

  desk.form.ExecuteCommand(command::kSystemOff);
  EXPECT_TRUE(desk.form.CommandBars1.ToolBars().front().Find(command::kSystemSwitch)->checked);
}

TEST(SystemControl, ShowsAStoppedSystemWhenItStartsOff) {
  Desk desk;
  desk.Store("SystemStatus", "0");
  desk.Start();
  EXPECT_FALSE(desk.line->IsOpen());
  EXPECT_EQ(desk.Panel(1), "Stopped");
}

} // namespace
} // namespace kelmio::test
