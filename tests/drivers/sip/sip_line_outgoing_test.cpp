#include "drivers/sip/line_fixture.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::string>;

class OutgoingCallTest : public SipLineTest {
protected:
  std::shared_ptr<DeviceCall> Dial() {
    auto call = driver->Line().MakeCall("sip:someone@127.0.0.1:" + std::to_string(peer->Port()));
    const auto request = peer->AwaitRequest("INVITE");
    EXPECT_TRUE(request);
    invite = request.value_or(SipText{});
    return call;
  }
  SipText invite;
};

TEST_F(OutgoingCallTest, ConnectsAndIsHungUpByTheOtherEnd) {
  OpenLine();
  const auto call = Dial();
  call->SetSoundPort(port);
  peer->Reply(invite, 100, "Trying");
  peer->Reply(invite, 180, "Ringing");
  ASSERT_TRUE(RunUntilHas("state32"));
  peer->Reply(invite, 200, "OK", peer->Sdp("9 0"));
  EXPECT_TRUE(peer->AwaitRequest("ACK"));
  ASSERT_TRUE(RunUntilHas("connected"));
  EXPECT_EQ(reports.words, (Words{"state16", "state512", "state32", "connected"}));
  const auto rtp = peer->NextRtp();
  ASSERT_TRUE(rtp);
  EXPECT_EQ((*rtp)[1], 0x80 | 9); // marked, G.722
  ASSERT_TRUE(loop.RunUntil([&] { return port->Rate() == 16000; }));

  call->Hangup();
  const auto bye = peer->AwaitRequest("BYE");
  ASSERT_TRUE(bye);
  ASSERT_TRUE(RunUntilHas("disconnected"));
}

TEST_F(OutgoingCallTest, HearsItRingUntilTheNetworkSendsSoundOfItsOwn) {
  OpenLine();
  const auto call = Dial();
  call->SetSoundPort(port);
  peer->Reply(invite, 180, "Ringing");
  ASSERT_TRUE(loop.RunUntil([&] { return port->Received().size() > 6 * 8000; }));
  const auto heard = port->Received();
  const auto power = [&](double from, double to) {
    double sum = 0;
    for (auto i = static_cast<std::size_t>(from * 8000); i < static_cast<std::size_t>(to * 8000); ++i)
      sum += static_cast<double>(heard[i]) * heard[i];
    return sum / ((to - from) * 8000);
  };
  EXPECT_NEAR(power(0, 1), 8e6, 1e5); // of a sine: half the square of its amplitude
  EXPECT_EQ(power(1, 5), 0);
  EXPECT_NEAR(power(5, 6), 8e6, 1e5);

  peer->Reply(invite, 183, "Session Progress", peer->Sdp("0"));
  EXPECT_TRUE(peer->NextRtp());
  const std::size_t then = port->Received().size();
  ASSERT_TRUE(loop.RunUntil([&] { return port->Received().size() > then + 4000; }));
  const auto later = port->Received();
  EXPECT_TRUE(std::all_of(later.end() - 2000, later.end(), [](std::int16_t sample) { return sample == 0; }));
  call->Hangup();
}

TEST_F(OutgoingCallTest, TellsBusyFromRefused) {
  OpenLine();
  Dial();
  peer->Reply(invite, 486, "Busy Here");
  ASSERT_TRUE(RunUntilHas("disconnected"));
  EXPECT_EQ(reports.words, (Words{"state16", "busy", "disconnected"}));

  reports.words.clear();
  Dial();
  peer->Reply(invite, 404, "Not Found");
  ASSERT_TRUE(RunUntilHas("disconnected"));
  EXPECT_FALSE(reports.Has("busy"));
  EXPECT_TRUE(reports.Logged("404 Not Found"));
}

TEST_F(OutgoingCallTest, CancelsWhenHungUpOrWhenNobodyAnswers) {
  SipSettings settings = OnAnyPort();
  settings.times.no_answer = 100ms;
  OpenLine(settings);
  Dial();
  peer->Reply(invite, 180, "Ringing");
  EXPECT_TRUE(peer->AwaitRequest("CANCEL"));
  ASSERT_TRUE(RunUntilHas("disconnected"));
  EXPECT_TRUE(reports.Logged("nobody answers"));
}

TEST_F(OutgoingCallTest, SaysThatANumberNeedsARegistrar) {
  OpenLine();
  EXPECT_NE(driver->Line().MakeCall("030 1234"), nullptr);
  ASSERT_TRUE(RunUntilHas("disconnected"));
  EXPECT_TRUE(reports.Logged("no registrar"));
  reports.words.clear();
  EXPECT_NE(driver->Line().MakeCall("a@b\r\nX: y"), nullptr);
  ASSERT_TRUE(RunUntilHas("disconnected"));
}

TEST_F(OutgoingCallTest, GoesOffHookWithoutANumber) {
  OpenLine();
  const auto call = driver->Line().MakeCall("");
  ASSERT_NE(call, nullptr);
  call->SetSoundPort(port);
  EXPECT_TRUE(call->Answer());
  ASSERT_TRUE(RunUntilHas("connected"));
  ASSERT_TRUE(loop.RunUntil([&] { return port->Frames() >= 10; }));
  peer->Invite(peer->Sdp());
  EXPECT_TRUE(peer->Await(486));
  call->Hangup();
  ASSERT_TRUE(RunUntilHas("disconnected"));
  peer->Invite(peer->Sdp());
  EXPECT_TRUE(peer->Await(180));
}

} // namespace
} // namespace kelmio
