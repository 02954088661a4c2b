#include <cstdlib>
#include <random>
#include <thread>

#include "drivers/sip/line_fixture.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

// The long form takes minutes under a sanitizer; the short one belongs to every run.
int HostileMessages() {
  const char* wanted = std::getenv("KELMIO_LONG_PROOFS");
  return wanted && std::string_view(wanted) == "1" ? 20'000 : 2'000;
}

/// Changes a few places of a text: bytes, cuts, repeats, numbers grown huge.
std::string Mutated(std::string text, std::mt19937& random) {
  const auto below = [&](std::size_t limit) { return static_cast<std::size_t>(random()) % limit; };
  const std::size_t changes = 1 + below(6);
  for (std::size_t i = 0; i < changes && !text.empty(); ++i) {
    const std::size_t at = below(text.size());
    const std::size_t length = std::min(text.size() - at, 1 + below(24));
    switch (below(7)) {
    case 0:
      text[at] = static_cast<char>(random());
      break;
    case 1:
      text.erase(at, length);
      break;
    case 2:
      text.insert(at, text.substr(at, length));
      break;
    case 3:
      text.insert(at, std::string(below(3000), "A%\"<;\r\n"[below(7)]));
      break;
    case 4:
      text.insert(at, std::to_string(random()) + std::to_string(random()));
      break;
    case 5:
      text.resize(at);
      break;
    default:
      text.insert(at, "\r\n");
      break;
    }
  }
  return text.substr(0, 8000);
}

class HostileInputTest : public SipLineTest {
protected:
  std::string Template(int kind, const std::string& branch) {
    static const char* const kMethods[] = {"INVITE", "ACK", "BYE", "CANCEL", "OPTIONS", "INFO", "REGISTER", "PRACK"};
    const std::string method = kMethods[kind % 8];
    const std::string body = kind % 3 == 0 ? peer->Sdp("0 8 9 101", "a=ptime:20\r\na=sendrecv\r\n") : "";
    const std::string head = kind % 9 == 8 ? "SIP/2.0 200 OK" : method + " sip:a@127.0.0.1 SIP/2.0";
    return head + "\r\nVia: SIP/2.0/UDP 127.0.0.1:" + std::to_string(peer->Port()) + ";branch=z9hG4bK" + branch +
           ";rport\r\nFrom: \"N\" <sip:n@127.0.0.1>;tag=f" + branch + "\r\nTo: <sip:a@127.0.0.1>" +
           (kind % 5 == 4 ? ";tag=t" : "") + "\r\nCall-ID: h" + branch + "\r\nCSeq: 1 " + method +
           "\r\nContact: <sip:n@127.0.0.1>\r\nMax-Forwards: 70\r\nContent-Type: application/sdp\r\nContent-Length: " +
           std::to_string(body.size()) + "\r\n\r\n" + body;
  }

  /// Throws away what was answered and hangs up on what rang.
  void Drain() {
    loop.RunPending();
    if (reports.call)
      reports.call->Hangup();
    while (peer->Next(0ms)) {
    }
  }
};

TEST_F(HostileInputTest, SurvivesBrokenMessagesAndSoundAndTakesACallAfterwards) {
  OpenLine();
  std::mt19937 random(20261122);
  const int messages = HostileMessages();
  for (int i = 0; i < messages; ++i) {
    peer->SendRaw(Mutated(Template(static_cast<int>(random() % 72), std::to_string(i)), random));
    // In step with the line, so that the socket's buffer loses little.
    if (i % 16 == 15)
      std::this_thread::sleep_for(1ms);
    if (i % 64 == 63)
      Drain();
  }
  // What the flood has left half open is gone when the line takes a new caller.
  SipPeer caller(driver->Line().Port());
  ASSERT_TRUE(loop.RunUntil([&] {
    Drain();
    reports.words.clear();
    caller.Invite(caller.Sdp());
    const auto reply = caller.Next(1s);
    return reply && reply->Status() == 180;
  }));
  ASSERT_TRUE(RunUntilHas("ring1"));
  reports.call->SetSoundPort(port);
  reports.call->Answer();
  const auto ok = caller.Await(200);
  ASSERT_TRUE(ok);
  caller.Ack();
  ASSERT_TRUE(RunUntilHas("connected"));

  for (int i = 0; i < messages; ++i) {
    std::string bytes(random() % 400, '\0');
    for (char& byte : bytes)
      byte = static_cast<char>(random());
    // Half of them look enough like sound or digits to get through.
    if (i % 2 == 0 && bytes.size() > 12) {
      bytes[0] = static_cast<char>(0x80 | (random() % 4 == 0 ? random() % 64 : 0));
      bytes[1] = random() % 2 == 0 ? '\0' : static_cast<char>(101);
    }
    caller.rtp.Send(ok->MediaPort(), bytes);
    if (i % 32 == 31)
      std::this_thread::sleep_for(1ms);
  }
  const std::size_t frames = port->Frames();
  ASSERT_TRUE(loop.RunUntil([&] { return port->Frames() > frames + 5; }));
  caller.Bye();
  EXPECT_TRUE(RunUntilHas("disconnected"));
}

} // namespace
} // namespace kelmio
