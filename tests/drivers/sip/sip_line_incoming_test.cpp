#include "drivers/sip/line_fixture.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

TEST_F(SipLineTest, RefusesWhatItCannotTake) {
  OpenLine();
  // A video coding, a body that is no offer, an unknown extension, a method that is none of ours.
  for (const std::string& body : {peer->Sdp("34", "a=rtpmap:34 H263/90000\r\n"), std::string("this is not SDP")}) {
    peer->Invite(body);
    EXPECT_TRUE(peer->Await(488)) << body;
    peer->Ack();
  }
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

TEST_F(SipLineTest, ShowsACallerAsWhatHeSaysHimselfAndBelievesNoMore) {
  OpenLine();
  peer->from = "<tel:+4930123;phone-context=x>";
  peer->more_headers = "P-Asserted-Identity: \"Bank\" <sip:bank@h>\r\n";
  peer->Invite(peer->Sdp());
  ASSERT_TRUE(RunUntilHas("caller"));
  EXPECT_EQ(reports.name, "");
  EXPECT_EQ(reports.number, "+4930123");
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
  const auto asked = std::chrono::steady_clock::now();
  peer->Invite(peer->Sdp());
  ASSERT_TRUE(peer->Await(180));
  // Far below what a person or a switch would notice; the figure leaves room for a loaded machine.
  EXPECT_LT(std::chrono::steady_clock::now() - asked, 250ms);
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

} // namespace
} // namespace kelmio
