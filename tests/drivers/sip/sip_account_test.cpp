// A line with an account, against a registrar of our own making.
#include <sys/stat.h>

#include "drivers/sip/account_file.h"
#include "drivers/sip/caller_claims.h"
#include "drivers/sip/line_fixture.h"
#include "drivers/sip/registrar_peer.h"
#include "drivers/sip/sip_account.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;
using Health = LineStatus::Health;

class SipAccountTest : public SipLineTest {
protected:
  SipAccountTest() {
    settings.times.first_retry = 100ms;
    settings.times.longest_retry = 400ms;
    settings.times.registrar_answer = 600ms;
    settings.times.keep_alive = 200ms;
  }
  // While the registrar is still there to take the leave.
  void TearDown() override { driver.reset(); }
  SipLine& Line() { return driver->Line(); }
  void Open() {
    driver = std::make_unique<SipDriver>(loop, settings);
    ASSERT_TRUE(Line().Open(reports));
  }
  bool RunUntilHealth(Health health) {
    return loop.RunUntil([&] { return Line().Status().health == health; });
  }
  void Register() {
    Open();
    ASSERT_TRUE(RunUntilHealth(Health::Ready)) << Line().Status().words;
    peer = std::make_unique<SipPeer>(registrar.BoundPort());
  }

  RegistrarPeer registrar;
  SipSettings settings = registrar.Settings();
};

TEST_F(SipAccountTest, RegistersRefreshesAndLeaves) {
  registrar.grants = 2;
  Register();
  EXPECT_EQ(Line().Status().words, "Registered with " + registrar.Address() + " as 4711.");
  EXPECT_TRUE(reports.Logged("SIP account 4711: Registered with"));
  const int asked = registrar.Count("REGISTER");
  EXPECT_TRUE(loop.RunUntil([&] { return registrar.Count("REGISTER") >= asked + 2; }));
  EXPECT_EQ(registrar.Bound().size(), 1U);
  Line().Close();
  EXPECT_TRUE(registrar.Bound().empty());
  EXPECT_EQ(Line().Status().health, Health::Off);
}

TEST_F(SipAccountTest, SaysWhatIsWrongAndIsThereAgainWhenItIsNot) {
  registrar.silent = true;
  Open();
  ASSERT_TRUE(RunUntilHealth(Health::Trouble));
  EXPECT_NE(Line().Status().words.find(registrar.Address() + " doesn't answer; next try in "), std::string::npos);
  registrar.silent = false;
  ASSERT_TRUE(RunUntilHealth(Health::Ready));
  // It goes away in the midst of a registration that holds, which the signs of life tell.
  ASSERT_TRUE(loop.RunUntil([&] { return registrar.Count("OPTIONS") >= 2; }));
  registrar.silent = true;
  ASSERT_TRUE(RunUntilHealth(Health::Trouble));
  registrar.silent = false;
  ASSERT_TRUE(RunUntilHealth(Health::Ready));
  EXPECT_EQ(registrar.Bound().size(), 1U);
  // The same trouble in each attempt is one line of the log.
  EXPECT_LE(reports.logs.size(), 4U);
}

TEST_F(SipAccountTest, AsksOnceWithAWrongPassword) {
  const std::string password = "wr0ng-Secret";
  settings.account->password = password;
  Open();
  ASSERT_TRUE(RunUntilHealth(Health::Trouble));
  EXPECT_EQ(Line().Status().words, "The password was refused by " + registrar.Address() + "; next try in 15 minutes.");
  loop.RunFor(600ms);
  EXPECT_EQ(registrar.Count("REGISTER"), 2); // without it, and with it
  std::string tried;
  Line().TryAccount(settings, [&](const std::string& words) { tried = words; });
  ASSERT_TRUE(loop.RunUntil([&] { return !tried.empty(); }));
  EXPECT_EQ(tried, "The password was refused by " + registrar.Address() + ".");
  // Whatever is told to anyone, the password isn't.
  EXPECT_FALSE(reports.Logged(password));
  for (const std::string& text :
       {tried, Line().Status().words, Line().StateInWords(), Line().Test(settings), registrar.Last("REGISTER").text})
    EXPECT_EQ(text.find(password), std::string::npos) << text;
  // The right one is tried at once.
  ASSERT_EQ(Line().TakeOver(registrar.Settings()).state, SipTakeOver::State::Done);
  ASSERT_TRUE(RunUntilHealth(Health::Ready));

  for (const auto& [status, words] :
       {std::pair(403, " refuses the account 4711"), std::pair(404, " does not know the account 4711"),
        std::pair(500, " can't register this line now: 500 No")}) {
    registrar.refuses_with = status;
    Line().Close();
    ASSERT_TRUE(Line().Open(reports));
    ASSERT_TRUE(RunUntilHealth(Health::Trouble));
    EXPECT_TRUE(Line().Status().words.starts_with(registrar.Address() + words)) << Line().Status().words;
  }
}

TEST_F(SipAccountTest, StaysClosedWithSettingsThatWaitedForTheEndOfACall) {
  Register();
  peer->Invite(peer->Sdp());
  ASSERT_TRUE(RunUntilHas("ring1"));
  SipSettings next = settings;
  next.account->display_name = "Jane";
  ASSERT_EQ(Line().TakeOver(next).state, SipTakeOver::State::Waiting);
  Line().Close();
  loop.RunFor(300ms);
  EXPECT_EQ(Line().Status().health, Health::Off);
  EXPECT_TRUE(registrar.Bound().empty());
  EXPECT_EQ(Line().Settings().account->display_name, "Jane");
  EXPECT_TRUE(Line().Open(reports));
}

TEST_F(SipAccountTest, KeepsTheTimeAndTheAddressThatTheRegistrarNames) {
  registrar.shortest = 900;
  registrar.seen_port = 1234;
  Open();
  ASSERT_TRUE(RunUntilHealth(Health::Ready));
  EXPECT_EQ(registrar.Last("REGISTER").Header("Expires"), "900");
  EXPECT_EQ(registrar.Bound(), std::vector<std::string>{"sip:4711@127.0.0.1:1234"});
  // A router that has given the line another port: what was bound goes.
  registrar.seen_port = 4321;
  ASSERT_TRUE(loop.RunUntil([&] { return registrar.BoundPort() == 4321; }));
  EXPECT_EQ(registrar.Bound().size(), 1U);
}

TEST_F(SipAccountTest, HearsNobodyButItsRegistrar) {
  Register();
  SipPeer stranger(registrar.BoundPort(), "127.0.0.2");
  for (const std::string method : {"INVITE", "OPTIONS", "BYE"}) {
    stranger.Request(method);
    EXPECT_FALSE(stranger.Next(200ms)) << method;
  }
  peer->Invite(peer->Sdp());
  EXPECT_TRUE(peer->Await(180));
}

TEST_F(SipAccountTest, TakesACallWithAllThatARegistrarPassesOn) {
  Register();
  peer->from = "\"Anna\" <sip:anna@example.org>";
  peer->more_headers =
      "P-Asserted-Identity: <sip:+49301234@127.0.0.1>\r\nDiversion: <sip:0309@127.0.0.1>;reason=no-answer\r\n"
      "Supported: timer\r\nSession-Expires: 1800;refresher=uac\r\n";
  CallUp();
  EXPECT_EQ(reports.name, "Anna");
  EXPECT_EQ(reports.number, "+49301234");
  EXPECT_TRUE(reports.Logged("Forwarded from 0309"));
  EXPECT_EQ(answer.Header("Session-Expires"), "1800;refresher=uac");
  EXPECT_EQ(answer.Header("Contact"), "<" + registrar.Bound().at(0) + ">");
  EXPECT_TRUE(Line().Status().last_call);
  // The peer confirms the call as it has said it would.
  peer->Reinvite(peer->Sdp());
  EXPECT_TRUE(peer->Await(200));
  EXPECT_FALSE(reports.Has("disconnected"));
}

TEST_F(SipAccountTest, DialsANumberThroughItsServer) {
  Register();
  // The answers come from the registrar's address, whatever its port.
  const auto call = Line().MakeCall("+49 (30) 12-34");
  call->SetSoundPort(port);
  ASSERT_TRUE(loop.RunUntil([&] { return registrar.Count("INVITE") == 1; }));
  const SipText invite = registrar.Last("INVITE");
  EXPECT_TRUE(invite.text.starts_with("INVITE sip:+49301234@" + registrar.Address() + " SIP/2.0\r\n")) << invite.text;
  EXPECT_TRUE(invite.Header("From").starts_with("<sip:4711@127.0.0.1>;tag="));

  // Asked for the password, the line proves it; what is heard before the answer is heard here.
  peer->Reply(invite, 407, "Proxy Authentication Required", "",
              "Proxy-Authenticate: Digest realm=\"x\", nonce=\"1\"\r\n");
  ASSERT_TRUE(loop.RunUntil([&] { return registrar.Count("INVITE") == 2; }));
  const SipText proved = registrar.Last("INVITE");
  EXPECT_TRUE(proved.Says("Proxy-Authorization: Digest username=\"4711\""));
  peer->Reply(proved, 183, "Session Progress", peer->Sdp());
  ASSERT_TRUE(loop.RunUntil([&] { return port->Frames() > 0; }));
  EXPECT_FALSE(reports.Has("connected"));
  peer->Reply(proved, 600, "Busy Everywhere");
  ASSERT_TRUE(RunUntilHas("disconnected"));
  EXPECT_TRUE(reports.Has("busy"));
}

TEST_F(SipAccountTest, CanBeTriedWithoutATrace) {
  SipLine line(loop, registrar.Settings());
  const auto tried = [&](const SipSettings& account) {
    std::string words;
    line.TryAccount(account, [&](std::string told) { words = std::move(told); });
    EXPECT_TRUE(words.empty());
    loop.RunUntil([&] { return !words.empty(); });
    return words;
  };
  EXPECT_EQ(tried(registrar.Settings()), registrar.Address() + " takes the account 4711.");
  EXPECT_TRUE(registrar.Bound().empty());
  SipSettings wrong = registrar.Settings();
  wrong.account->server = "no server";
  EXPECT_EQ(tried(wrong), "\"no server\" is no server.");
}

class SipAccountFileTest : public testing::Test, public SipConfigDialog {
protected:
  void Show(SipConfiguration&) override {}

  test::TemporaryFolder folder;
  LinesFile file{folder.Path() + "Lines.ini"};
  LoopOfTest loop;
  SipDriver driver{loop, file, *this};
};

TEST_F(SipAccountFileTest, KeepsAccountsAndHidesTheirPasswords) {
  const std::string secret = folder.Path() + "SIP account 1.password";
  int changes = 0;
  driver.Watch([&] { ++changes; });
  ASSERT_EQ(driver.Lines().size(), 2U);
  const auto line = std::static_pointer_cast<SipLine>(driver.Lines()[1]);
  const long id = line->DeviceID();
  EXPECT_NE(line->Caps().media_modes, 0U) << "it couldn't be set up in the settings";
  ReportsOfTest reports;
  EXPECT_FALSE(line->Open(reports));

  // A file that anyone may read stands in the password's place.
  test::WriteBytes(secret, "x");
  ::chmod(secret.c_str(), 0644);
  SipSettings settings = line->Settings();
  SipAccount& account = *settings.account;
  account.server = "sip.example.org";
  account.user = "4711";
  account.auth_user = "a";
  account.password = "s\"3; cret ";
  account.display_name = "Jane";
  account.transport = SipTransport::Tls;
  account.encryption = SipEncryption::Required;
  account.stun_server = "stun.example.org";
  account.ice = false;
  account.expires = std::chrono::seconds{300};
  ASSERT_EQ(line->TakeOver(settings).state, SipTakeOver::State::Done);
  struct stat status {};
  ASSERT_EQ(::stat(secret.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777U, 0600U);
  EXPECT_EQ(test::BytesOf(file.Path()).find("cret"), std::string::npos);
  loop.RunPending();
  EXPECT_EQ(changes, 1);

  SipDriver again(loop, file, *this);
  const auto read = std::static_pointer_cast<SipLine>(again.Lines().at(0));
  EXPECT_EQ(read->Settings().account, settings.account);
  EXPECT_EQ(read->DeviceID(), id);

  ASSERT_EQ(line->RemoveAccount().state, SipTakeOver::State::Done);
  EXPECT_NE(::stat(secret.c_str(), &status), 0);
  EXPECT_EQ(test::BytesOf(file.Path()).find("sip.example.org"), std::string::npos);
  ASSERT_EQ(driver.Lines().size(), 2U);
  EXPECT_EQ(driver.Lines()[1]->DeviceID(), id);
}

TEST_F(SipAccountFileTest, ListsAnAccountThatWasEnteredOnALineThatWasListedNoMore) {
  const auto enter = [](LineDevice& device) {
    auto& line = static_cast<SipLine&>(device);
    SipSettings settings = line.Settings();
    settings.account->server = "sip.example.org";
    settings.account->user = "4711";
    return line.TakeOver(settings).state == SipTakeOver::State::Done;
  };
  const auto first = driver.Lines()[1];
  ASSERT_TRUE(enter(*first));
  ASSERT_EQ(driver.Lines().size(), 3U); // the account, direct calls, and a place for another
  const auto spare = driver.Lines()[2];
  ASSERT_EQ(static_cast<SipLine&>(*first).RemoveAccount().state, SipTakeOver::State::Done);
  ASSERT_TRUE(enter(*first));
  ASSERT_TRUE(enter(*spare));
  ASSERT_EQ(driver.Lines().size(), 4U);
  EXPECT_EQ(driver.Lines()[0], first);
  EXPECT_EQ(driver.Lines()[1], spare);
  ASSERT_TRUE(enter(*driver.Lines()[3]));
  EXPECT_EQ(driver.Lines().size(), 5U);
}

TEST(SipServerNameTest, IsWhatAUserWrites) {
  for (const auto& [text, host, port] :
       {std::tuple("sip.example.org", "sip.example.org", 0), std::tuple("fritz.box:5061", "fritz.box", 5061),
        std::tuple("[::1]:5070", "::1", 5070), std::tuple("fd00::2", "fd00::2", 0)})
    EXPECT_EQ(ParseServerName(text), (ServerName{host, static_cast<std::uint16_t>(port)})) << text;
  for (const char* bad : {"", "a b", "sip:a", "a:0", "a:99999", "a>b", "[::1", "a:5060;x", "a\r\nb"})
    EXPECT_FALSE(ParseServerName(bad)) << bad;
}

TEST(CallerOfAccountTest, BelievesTheRegistrarAndTheWishForPrivacy) {
  struct Case {
    std::string from, headers, name, number;
  };
  for (const Case& c : {
           Case{"\"Anna\" <sip:030123@p>", "", "Anna", "030123"},
           Case{"<sip:0049301@p;user=phone>", "", "", "0049301"},
           Case{"\"x\" <sip:1@p>", "P-Asserted-Identity: \"Bea\" <sip:bea@p>, <tel:+49302>\r\n", "x", "+49302"},
           Case{"\"Anna\" <sip:1@p>", "P-Asserted-Identity: <sip:2@p>\r\nPrivacy: critical;id\r\n", "", ""},
           Case{"\"Anonymous\" <sip:anonymous@anonymous.invalid>", "P-Asserted-Identity: <sip:2@p>\r\n", "", ""},
           Case{"\"Anna\" <sip:1@p>", "Privacy: none\r\n", "Anna", "1"},
           Case{"\"+49 30 12-34\" <sip:trunk@p>", "", "", "+49301234"},
           Case{"\"030123\" <sip:030123@p>", "", "", "030123"},
       }) {
    const std::string text = "INVITE sip:a@b SIP/2.0\r\nVia: SIP/2.0/UDP 1.2.3.4;branch=z9hG4bK1\r\nFrom: " + c.from +
                             ";tag=1\r\nTo: <sip:a@b>\r\nCall-ID: 1\r\nCSeq: 1 INVITE\r\n" + c.headers + "\r\n";
    const RePtr<mbuf> bytes(mbuf_alloc(text.size()));
    mbuf_write_str(bytes.get(), text.c_str());
    mbuf_set_pos(bytes.get(), 0);
    sip_msg* message = nullptr;
    ASSERT_EQ(sip_msg_decode(&message, bytes.get()), 0);
    const RePtr<sip_msg> owned(message);
    const CallerIdentity caller = CallerOfAccount(*message);
    EXPECT_EQ(caller.name, c.name) << text;
    EXPECT_EQ(caller.number, c.number) << text;
  }
}

} // namespace
} // namespace kelmio
