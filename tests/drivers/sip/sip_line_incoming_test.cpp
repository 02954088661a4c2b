#include "drivers/sip/line_fixture.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;
using Words = std::vector<std::string>;

TEST_F(SipLineTest, RingsAnswersAndEndsWithTheCaller) {
  OpenLine();
  const auto asked = std::chrono::steady_clock::now();
  peer->Invite(peer->Sdp());
  ASSERT_TRUE(peer->Await(180));
  // Far below what a person or a switch would notice; the figure leaves room for a loaded machine.
  EXPECT_LT(std::chrono::steady_clock::now() - asked, 250ms);
  ASSERT_TRUE(RunUntilHas("caller"));
  EXPECT_EQ(reports.words, (Words{"new", "ring1", "caller"}));
  EXPECT_EQ(reports.name, "Test");
  EXPECT_EQ(reports.number, "test");

  EXPECT_TRUE(reports.call->Accept());
  EXPECT_TRUE(reports.call->Answer());
  const auto ok = peer->Await(200);
  ASSERT_TRUE(ok);
  EXPECT_NE(ok->MediaPort(), 0);
  // The line is up when the caller has confirmed it, and not before.
  loop.RunFor(50ms);
  EXPECT_FALSE(reports.Has("connected"));
  peer->Ack();
  ASSERT_TRUE(RunUntilHas("connected"));
  EXPECT_TRUE(reports.call->Answer());

  peer->Bye();
  EXPECT_TRUE(peer->Await(200));
  ASSERT_TRUE(RunUntilHas("disconnected"));
  EXPECT_FALSE(reports.call->Answer());
  reports.call->Hangup();
}

TEST_F(SipLineTest, CountsRingsUntilTheCallerGivesUp) {
  SipSettings settings = OnAnyPort();
  settings.ring_period = 60ms;
  OpenLine(settings);
  peer->Invite(peer->Sdp());
  ASSERT_TRUE(peer->Await(180));
  ASSERT_TRUE(RunUntilHas("ring3"));
  peer->Cancel();
  ASSERT_TRUE(RunUntilHas("disconnected"));
  EXPECT_TRUE(peer->Await(487));
  const auto ended = reports.words;
  loop.RunFor(150ms);
  EXPECT_EQ(reports.words, ended);
}

TEST_F(SipLineTest, TellsASecondCallerThatTheLineIsBusyAndIsFreeAgainAfterwards) {
  OpenLine();
  CallUp();
  SipPeer second(driver->Line().Port());
  second.Invite(second.Sdp());
  EXPECT_TRUE(second.Await(486));
  second.Ack();
  EXPECT_EQ(driver->Line().MakeCall("sip:someone@127.0.0.1"), nullptr);

  reports.call->Hangup();
  EXPECT_TRUE(peer->AwaitRequest("BYE"));
  ASSERT_TRUE(RunUntilHas("disconnected"));
  second.Invite(second.Sdp());
  EXPECT_TRUE(second.Await(180));
}

TEST_F(SipLineTest, RefusesWhatItCannotTake) {
  OpenLine();
  // A video coding, an unknown extension, a body that is no offer, a method that is none of ours.
  peer->Invite(peer->Sdp("34", "a=rtpmap:34 H263/90000\r\n"));
  EXPECT_TRUE(peer->Await(488));
  peer->Ack();
  peer->Invite("this is not SDP");
  EXPECT_TRUE(peer->Await(488));
  peer->Ack();
  peer->more_headers = "Require: 100rel\r\n";
  peer->Invite(peer->Sdp());
  const auto refused = peer->Await(420);
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->Header("Unsupported"), "100rel");
  peer->more_headers = "";
  peer->Request("OPTIONS");
  const auto ok = peer->Await(200);
  ASSERT_TRUE(ok);
  EXPECT_TRUE(ok->Says("Allow: INVITE"));
  peer->Request("REGISTER");
  EXPECT_TRUE(peer->Await(405));
  loop.RunFor(20ms);
  EXPECT_TRUE(reports.words.empty());
}

TEST_F(SipLineTest, ShowsCallersAsTextAndAnonymousOnesNotAtAll) {
  OpenLine();
  const auto caller_of = [&](const std::string& from) {
    reports.words.clear();
    reports.name = reports.number = "";
    peer->from = from;
    peer->Invite(peer->Sdp());
    EXPECT_TRUE(peer->Await(180));
    EXPECT_TRUE(RunUntilHas("ring1"));
    loop.RunFor(10ms);
    peer->Cancel();
    EXPECT_TRUE(RunUntilHas("disconnected"));
    peer->Await(487);
    peer->Ack();
    return std::pair(reports.name, reports.number);
  };
  EXPECT_EQ(caller_of("\"J\\\"o \\\\ \xC3\xBC\" <sip:+49%2030@h;user=phone>"),
            std::pair(std::string("J\"o \\ \xC3\xBC"), std::string("+49 30")));
  EXPECT_EQ(caller_of("\"Anonymous\" <sip:anonymous@anonymous.invalid>"), std::pair(std::string(), std::string()));
  EXPECT_FALSE(reports.Has("caller"));
  EXPECT_EQ(caller_of("<tel:+4930123;phone-context=x>").second, "+4930123");
  // P-Asserted-Identity of a stranger counts for nothing.
  peer->more_headers = "P-Asserted-Identity: \"Bank\" <sip:bank@h>\r\n";
  EXPECT_EQ(caller_of("<sip:1234@h>"), std::pair(std::string(), std::string("1234")));
}

TEST_F(SipLineTest, TakesACallWhoseOfferComesWithTheConfirmation) {
  OpenLine();
  peer->Invite("");
  ASSERT_TRUE(peer->Await(180));
  ASSERT_TRUE(RunUntilHas("new"));
  reports.call->Answer();
  const auto ok = peer->Await(200);
  ASSERT_TRUE(ok);
  EXPECT_TRUE(ok->Says("telephone-event/8000"));
  peer->Ack(peer->Sdp("8 101"));
  ASSERT_TRUE(RunUntilHas("connected"));
  const auto rtp = peer->NextRtp();
  ASSERT_TRUE(rtp);
  EXPECT_EQ((*rtp)[1] & 0x7F, 8);
}

TEST_F(SipLineTest, FreesItselfFromACallerWhoNeverConfirms) {
  SipSettings settings = OnAnyPort();
  settings.times.confirm = 150ms;
  OpenLine(settings);
  peer->Invite(peer->Sdp());
  ASSERT_TRUE(RunUntilHas("new"));
  reports.call->Answer();
  ASSERT_TRUE(RunUntilHas("disconnected"));
  EXPECT_FALSE(reports.Has("connected"));
  EXPECT_TRUE(reports.Logged("never confirmed"));
  SipPeer second(driver->Line().Port());
  second.Invite(second.Sdp());
  EXPECT_TRUE(second.Await(180));
}

TEST_F(SipLineTest, EndsACallWhosePeerHasVanishedButNotOneOnHold) {
  SipSettings settings = OnAnyPort();
  settings.times.lost_peer = 300ms;
  OpenLine(settings);
  CallUp();
  peer->Reinvite(peer->Sdp("0 101", "a=sendonly\r\n"));
  const auto held = peer->Await(200);
  ASSERT_TRUE(held);
  EXPECT_TRUE(held->Says("a=recvonly"));
  peer->Ack();
  const std::size_t frames = port->Frames();
  loop.RunFor(500ms);
  EXPECT_FALSE(reports.Has("disconnected"));
  // The recorder goes on, with silence.
  EXPECT_GE(port->Frames(), frames + 20);

  peer->Reinvite(peer->Sdp());
  const auto back = peer->Await(200);
  ASSERT_TRUE(back);
  EXPECT_TRUE(back->Says("a=sendrecv"));
  peer->Ack();
  ASSERT_TRUE(RunUntilHas("disconnected"));
  EXPECT_TRUE(reports.Logged("nothing is heard"));
  EXPECT_TRUE(peer->AwaitRequest("BYE"));
}

TEST_F(SipLineTest, ReportsNothingAfterCloseAndTellsTheCaller) {
  OpenLine();
  CallUp();
  peer->Bye();
  ASSERT_TRUE(peer->Await(200));
  // The end of this call is posted but has not run.
  driver->Line().Close();
  loop.RunFor(50ms);
  EXPECT_FALSE(reports.Has("disconnected"));

  OpenLine();
  reports.words.clear();
  CallUp();
  const auto closing = std::chrono::steady_clock::now();
  driver->Line().Close();
  EXPECT_LT(std::chrono::steady_clock::now() - closing, 1s);
  EXPECT_TRUE(peer->AwaitRequest("BYE"));
  EXPECT_FALSE(reports.call->Answer());

  OpenLine();
  reports.words.clear();
  peer->Invite(peer->Sdp());
  ASSERT_TRUE(peer->Await(180));
  driver->Line().Close();
  EXPECT_TRUE(peer->Await(480));
}

TEST_F(SipLineTest, SaysWhyItCannotOpenATakenPort) {
  OpenLine();
  SipSettings same = OnAnyPort();
  same.listen.port = driver->Line().Port();
  SipDriver other(loop, same);
  ReportsOfTest other_reports;
  EXPECT_FALSE(other.Line().Open(other_reports));
  EXPECT_TRUE(other_reports.Logged("SIP line: 127.0.0.1:" + std::to_string(same.listen.port) +
                                   " can't be opened: Address already in use"));
  EXPECT_EQ(other.Line().MakeCall(""), nullptr);
  // And can be opened once it is free; so can the first one's.
  driver->Line().Close();
  EXPECT_TRUE(other.Line().Open(other_reports));
  other.Line().Close();

  same.listen.host = "203.0.113.7"; // no address of this computer
  SipDriver elsewhere(loop, same);
  EXPECT_FALSE(elsewhere.Line().Open(other_reports));
}

} // namespace
} // namespace kelmio
