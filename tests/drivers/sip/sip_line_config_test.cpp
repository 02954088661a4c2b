// A line that is set up anew while the program runs.
#include <arpa/inet.h>
#include <net/if.h>
#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>

#include "drivers/sip/line_fixture.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;
using State = SipTakeOver::State;

constexpr const char* kFile = "; mine\n[SIP]\n; ports\nListen=127.0.0.1:0\nForeign=kept\nRingPeriod=6000\n";

class SipLineConfigTest : public SipLineTest, public SipConfigDialog {
protected:
  SipLineConfigTest() {
    test::WriteBytes(path, kFile);
    driver = std::make_unique<SipDriver>(loop, LinesFile(path), *this);
    EXPECT_TRUE(Line().Open(reports));
    peer = std::make_unique<SipPeer>(Line().Port());
  }
  void Show(SipConfiguration&) override {}

  SipLine& Line() { return driver->Line(); }
  SipSettings OnPort(std::uint16_t number) {
    SipSettings settings = Line().Settings();
    settings.listen.port = number;
    return settings;
  }
  /// One that another line holds.
  std::uint16_t TakenPort() {
    other = std::make_unique<SipDriver>(loop, OnAnyPort());
    EXPECT_TRUE(other->Line().Open(others));
    return other->Line().Port();
  }
  std::uint16_t FreePort() {
    const std::uint16_t number = TakenPort();
    other.reset();
    return number;
  }
  bool Rings(std::uint16_t number) {
    SipPeer caller(number);
    caller.Invite(caller.Sdp());
    const bool rang = caller.Await(180, 500ms).has_value();
    caller.Cancel();
    caller.Await(487, 500ms);
    caller.Ack();
    loop.RunFor(20ms);
    return rang;
  }

  test::TemporaryFolder folder;
  std::string path = folder.Path() + "Lines.ini";
  ReportsOfTest others;
  std::unique_ptr<SipDriver> other;
};

TEST_F(SipLineConfigTest, MovesToAFreePortWhileItIsOpenAndNowhereElse) {
  const std::uint16_t old_port = Line().Port();
  const std::uint16_t new_port = FreePort();
  SipSettings settings = OnPort(new_port);
  settings.codings = {AudioCoding::Pcmu};
  const std::string where = "127.0.0.1:" + std::to_string(new_port);
  EXPECT_EQ(Line().Test(settings), where + " can be opened, and the line answers there.");
  ASSERT_EQ(Line().TakeOver(settings).state, State::Done);
  EXPECT_EQ(Line().Test(settings), "The line answers at " + where + ".");
  EXPECT_EQ(Line().StateInWords(), "Reachable at " + where + " by programs on this computer.");
  EXPECT_FALSE(Rings(old_port));
  SipPeer other_coding(new_port);
  other_coding.Invite(other_coding.Sdp("8"));
  EXPECT_TRUE(other_coding.Await(488));
  const std::string written = test::BytesOf(path);
  EXPECT_TRUE(written.starts_with("; mine\n[SIP]\n; ports\nListen=" + where + "\nForeign=kept\n")) << written;
  LinesFile file(path);
  EXPECT_EQ(ReadSipSettings(file), settings);

  const SipSettings wanted = OnPort(TakenPort());
  const std::string port_text = std::to_string(wanted.listen.port);
  const std::string taken = "Port " + port_text + " is taken by another program.";
  EXPECT_EQ(Line().Test(wanted), taken);
  SipDriver third(loop, wanted);
  EXPECT_FALSE(third.Line().Open(others));
  EXPECT_TRUE(others.Logged("SIP line: 127.0.0.1:" + port_text + " can't be opened: Address already in use"));

  const SipTakeOver refused = Line().TakeOver(wanted);
  EXPECT_EQ(refused.state, State::Refused);
  EXPECT_EQ(refused.words, taken + " The settings stay as they were.");
  SipSettings elsewhere = OnPort(new_port);
  elsewhere.listen.host = "203.0.113.7";
  EXPECT_EQ(Line().TakeOver(elsewhere).words,
            "203.0.113.7 is no address of this computer. The settings stay as they were.");
  EXPECT_EQ(Line().Port(), new_port);
  EXPECT_TRUE(Rings(new_port));
  Line().Close();
  EXPECT_EQ(Line().TakeOver(wanted).state, State::Refused);
  EXPECT_EQ(test::BytesOf(path), written);
}

TEST_F(SipLineConfigTest, NeverCutsACall) {
  const std::uint16_t old_port = Line().Port();
  const SipSettings settings = OnPort(FreePort());
  int told = 0;
  Line().Watch([&] { ++told; });
  // A caller of whom nothing has been reported yet counts too.
  peer->Invite(peer->Sdp());
  ASSERT_TRUE(peer->Await(180));
  EXPECT_EQ(Line().TakeOver(settings).state, State::Waiting);
  ASSERT_TRUE(RunUntilHas("new"));
  reports.call->SetSoundPort(port);
  reports.call->Answer();
  ASSERT_TRUE(peer->Await(200));
  peer->Ack();
  ASSERT_TRUE(RunUntilHas("connected"));
  EXPECT_EQ(Line().TakeOver(settings).state, State::Waiting);
  EXPECT_NE(Line().StateInWords().find("when it has ended"), std::string::npos);
  EXPECT_EQ(Line().Settings(), settings);
  EXPECT_TRUE(peer->NextRtp());
  EXPECT_EQ(Line().Port(), old_port);
  EXPECT_TRUE(test::BytesOf(path).starts_with(kFile));
  EXPECT_FALSE(reports.Has("disconnected"));

  peer->Bye();
  ASSERT_TRUE(peer->Await(200));
  ASSERT_TRUE(loop.RunUntil([&] { return told == 1; }));
  EXPECT_TRUE(reports.Has("disconnected"));
  EXPECT_TRUE(reports.Logged("SIP line: Reachable at 127.0.0.1:" + std::to_string(settings.listen.port)));
  EXPECT_EQ(Line().Port(), settings.listen.port);
  EXPECT_TRUE(Rings(settings.listen.port));
  // What the old call's owner still does with it doesn't reach a new one.
  const auto old_call = reports.call;
  SipPeer next(settings.listen.port);
  next.Invite(next.Sdp());
  ASSERT_TRUE(next.Await(180));
  EXPECT_FALSE(old_call->Answer());
  EXPECT_FALSE(next.Await(200, 100ms));
}

TEST_F(SipLineConfigTest, TakesWaitingSettingsOverWhenItIsClosedOrSaysWhyNot) {
  CallUp();
  const SipSettings settings = OnPort(FreePort());
  EXPECT_EQ(Line().TakeOver(settings).state, State::Waiting);
  Line().Close();
  LinesFile file(path);
  EXPECT_EQ(ReadSipSettings(file), settings);
  ASSERT_TRUE(Line().Open(reports));
  EXPECT_EQ(Line().Port(), settings.listen.port);

  reports.words.clear();
  peer = std::make_unique<SipPeer>(Line().Port());
  CallUp();
  const std::uint16_t taken = TakenPort();
  EXPECT_EQ(Line().TakeOver(OnPort(taken)).state, State::Waiting);
  Line().Close();
  EXPECT_TRUE(reports.Logged("SIP line: Port " + std::to_string(taken) +
                             " is taken by another program. The settings stay as they were."));
  EXPECT_EQ(Line().Settings(), settings);
}

/// A network of this process's own in which this computer has a public address as well.
bool EnterNetworkWithPublicAddress(const char* address) {
  if (::unshare(CLONE_NEWUSER | CLONE_NEWNET) != 0 && ::unshare(CLONE_NEWNET) != 0)
    return false;
  const int control = ::socket(AF_INET, SOCK_DGRAM, 0);
  const auto set = [&](const char* name, unsigned long what, const char* ip) {
    ifreq request{};
    std::snprintf(request.ifr_name, sizeof(request.ifr_name), "%s", name);
    request.ifr_flags = IFF_UP;
    if (ip) {
      sockaddr_in in{.sin_family = AF_INET, .sin_port = 0, .sin_addr = {}, .sin_zero = {}};
      ::inet_pton(AF_INET, ip, &in.sin_addr);
      std::memcpy(&request.ifr_addr, &in, sizeof(in));
    }
    return ::ioctl(control, what, &request) == 0;
  };
  const bool done = set("lo", SIOCSIFFLAGS, nullptr) && set("lo:1", SIOCSIFADDR, address);
  ::close(control);
  return done;
}

TEST(SipAllowTest, HearsStrangersOnlyWhereEveryoneMayCall) {
  constexpr const char* kPublic = "198.51.100.5";
  if (!EnterNetworkWithPublicAddress(kPublic))
    GTEST_SKIP() << "needs the right to a network of its own";
  LoopOfTest loop;
  ReportsOfTest reports;
  SipSettings settings;
  settings.listen = {kPublic, 0};
  for (const SipAllow allow : {SipAllow::Network, SipAllow::Everyone}) {
    settings.allow = allow;
    SipDriver driver(loop, settings);
    ASSERT_TRUE(driver.Line().Open(reports));
    for (const std::string from : {kPublic, "127.0.0.1"})
      for (const std::string tag : {"", "guessed"}) {
        SipPeer caller(driver.Line().Port(), from, kPublic);
        caller.line_tag = tag;
        caller.Request("OPTIONS");
        EXPECT_EQ(caller.Next(200ms).has_value(), allow == SipAllow::Everyone || from == "127.0.0.1") << from << tag;
      }
  }
}

} // namespace
} // namespace kelmio
