#include <gtest/gtest.h>

#include "fakes/fake_desk_stream.h"
#include "media/media_sound.h"
#include "media/wave_file.h"
#include "support/desk.h"

namespace kelmio::test {
namespace {

using Samples = std::vector<std::int16_t>;

/// The whole program with the true sound of calls, and a microphone that a test holds.
struct DeskWithMicrophone {
  FakeDeskStream microphone;
  Desk desk{{}, [this](EventLoop& loop) { return std::make_unique<MediaSoundFactory>(loop, &microphone); }};

  bool Open() const { return microphone.client != nullptr; }

  /// A loud hum at the microphone, if it is open, and silence from the far side.
  void Hum(int milliseconds) {
    const auto port = desk.line->LastCall()->Port();
    for (int passed = 0; passed < milliseconds; passed += 20) {
      Samples hum(kDeskFrame);
      for (auto& sample : hum)
        sample = static_cast<std::int16_t>((phase_++ / 20 % 2) * 12000 - 6000);
      Samples frame(160);
      if (Open())
        microphone.client->Captured(hum, 60);
      if (port != nullptr) {
        port->Received(frame, 8000);
        port->ToSend(frame, 8000);
      }
      desk.Wait(20);
    }
  }

  /// The loudest sample of the newest message, and nothing when there is none.
  int LoudestOfMessage() const {
    std::string error;
    const auto reader = WaveReader::Open(desk.home.Path() + "Messages/Inbox/" + desk.Messages().back(), error);
    EXPECT_NE(reader, nullptr) << error;
    int loudest = 0;
    Samples chunk(8000);
    while (const std::size_t count = reader ? reader->Read(chunk) : 0)
      for (const std::int16_t sample : std::span(chunk).first(count))
        loudest = std::max(loudest, std::abs(static_cast<int>(sample)));
    return loudest;
  }

private:
  int phase_ = 0;
};

TEST(DeskMicrophone, StaysClosedWhileTheMachineAnswersWhateverHappens) {
  DeskWithMicrophone house;
  Desk& desk = house.desk;
  desk.Start();
  {
    std::string error;
    const auto greeting = WaveWriter::Create(desk.home.Path() + "Sound/Greeting.wav", {}, error);
    ASSERT_NE(greeting, nullptr) << error;
    greeting->Write(Samples(4000, 900));
  }
  const auto call = desk.AnsweredCall();
  const CallRef held = desk.form.Context.CurrentCall;
  house.Hum(300);
  desk.form.AnswerCall(); // too late: the machine has it
  house.Hum(2000);
  ASSERT_EQ(desk.Messages().size(), 1U);
  desk.form.RecordCallManual();
  house.Hum(1000);
  call->FarEndHangsUp();
  desk.Run();
  EXPECT_EQ(house.microphone.starts, 0);
  EXPECT_LT(house.LoudestOfMessage(), 1000) << "the greeting's end, and nothing of the room";

  // A ring between the user's answer and the line's being up gives the call back to the machine.
  const auto next = desk.Incoming();
  next->Ring(2);
  desk.form.AnswerCall();
  desk.Run();
  house.Hum(500);
  next->FarEndHangsUp();
  desk.Run();
  EXPECT_EQ(house.microphone.starts, 0);
}

TEST(DeskMicrophone, OpensForACallThatTheUserTakesOrDialsAndClosesWithIt) {
  enum class How { Answered, NoMachine, Dialled };
  for (const How how : {How::Answered, How::NoMachine, How::Dialled}) {
    SCOPED_TRACE(static_cast<int>(how));
    DeskWithMicrophone house;
    Desk& desk = house.desk;
    if (how == How::NoMachine)
      desk.Store("AutoAnswerIncoming", "0");
    desk.Start();
    std::shared_ptr<ScriptedCall> call;
    if (how == How::Dialled) {
      desk.form.DialCall("5550100");
      call = desk.line->LastCall();
      desk.Run();
      EXPECT_TRUE(house.Open()) << "who dials hears it ring";
      call->FarEndAnswers();
    } else {
      call = desk.Incoming();
      desk.Ring(*call, 1);
      EXPECT_FALSE(house.Open());
      desk.form.AnswerCall();
    }
    desk.Run();
    EXPECT_EQ(house.microphone.starts, 1);
    ASSERT_TRUE(house.Open());
    const CallRef held = desk.form.Context.CurrentCall;
    house.Hum(200);
    if (how == How::Answered)
      desk.form.StopRecord(); // hangs up
    else
      call->FarEndHangsUp();
    desk.Run();
    EXPECT_FALSE(house.Open()) << "though the call is still held";
    EXPECT_EQ(house.microphone.starts, 1);
  }
}

TEST(DeskMicrophone, IsRecordedWhenTheUserRecordsWithNoCall) {
  DeskWithMicrophone house;
  Desk& desk = house.desk;
  desk.Store("RecordingSilenceLength", "2000");
  desk.Start();
  desk.form.RecordCallManual();
  desk.Run();
  EXPECT_EQ(house.microphone.starts, 1);
  house.Hum(3000);
  ASSERT_EQ(desk.Messages().size(), 1U);
  EXPECT_TRUE(house.Open()) << "the user speaks: this is no silence that ends a recording";
  desk.form.StopRecord();
  desk.Run();
  EXPECT_FALSE(house.Open());
  EXPECT_GT(house.LoudestOfMessage(), 2000);
}

TEST(DeskMicrophone, StaysClosedOnALineWithATelephoneOfItsOwn) {
  DeskWithMicrophone house;
  Desk& desk = house.desk;
  desk.line->phone.emplace();
  desk.Start();
  desk.form.DialCall("5550100");
  desk.line->LastCall()->FarEndAnswers();
  desk.Run();
  EXPECT_EQ(desk.Panel(2), "Connected");
  desk.form.StopRecord();
  desk.Run();
  desk.form.RecordCallManual();
  desk.Run();
  EXPECT_EQ(house.microphone.starts, 0);
}

} // namespace
} // namespace kelmio::test
