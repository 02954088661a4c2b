// A line among strangers. The short form runs every time; KELMIO_DATAGRAMS=1000000 says how many datagrams, and
// KELMIO_FLOOD_SECONDS=10 for how long.
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <thread>

#include "drivers/sip/line_fixture.h"
#include "drivers/sip/sound_of_test.h"
#include "drivers/sip/speaker.h"
#include "hostile/strangers.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr std::size_t kFrame = 160;

int NumberFrom(const char* variable, int usual) {
  const char* wanted = std::getenv(variable);
  return wanted ? std::atoi(wanted) : usual;
}

constexpr bool kSanitized =
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    true;
#elif defined(__has_feature)
    __has_feature(address_sanitizer) || __has_feature(thread_sanitizer);
#else
    false;
#endif

/// The share of frames in which something else is heard than what was said. Each second is laid where it fits best, for
/// silent frames may be left out or put in.
double DamagedShare(const std::vector<std::int16_t>& voice, const std::vector<std::int16_t>& heard) {
  std::size_t at = OffsetOf(voice, heard, kFrame);
  std::size_t frames = 0;
  std::size_t damaged = 0;
  constexpr std::size_t kWindow = 8000;
  constexpr std::size_t kFurthest = 20 * kFrame;
  for (std::size_t said = 0; at + kWindow + 2 * kFrame <= heard.size(); said += kWindow, at += kWindow) {
    const auto window = std::span(voice).subspan(said % voice.size(), kWindow);
    const auto damage = [&](std::size_t from) {
      return static_cast<std::size_t>(DamagedFrames(window, std::span(heard).subspan(from, kWindow), kFrame));
    };
    std::size_t best = damage(at);
    const std::size_t expected = at;
    for (std::size_t other = expected - std::min(expected, kFurthest);
         best > 0 && other <= std::min(expected + kFurthest, heard.size() - kWindow); other += kFrame)
      if (const std::size_t here = damage(other); here < best) {
        best = here;
        at = other;
      }
    damaged += best;
    frames += kWindow / kFrame;
  }
  return frames == 0 ? 1 : static_cast<double>(damaged) / static_cast<double>(frames);
}

class HostileTest : public SipLineTest {
protected:
  /// Waits until the line has answered a question of its own, and so has read what came before.
  ::testing::AssertionResult KeepStep() {
    for (int attempt = 0; attempt < 20; ++attempt) {
      SipPeer meter(driver->Line().Port());
      meter.Request("OPTIONS");
      const bool answered = meter.Await(200, 500ms).has_value();
      loop.RunPending();
      if (answered)
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "the line is silent";
  }

  /// Takes a call of a new caller up to the sound, and ends it.
  void TakesACall() {
    peer = std::make_unique<SipPeer>(driver->Line().Port());
    reports.words.clear();
    CallUp();
    EXPECT_TRUE(peer->NextRtp());
    peer->Bye();
    EXPECT_TRUE(RunUntilHas("disconnected"));
  }

  /// What a stranger sends at the port of the sound.
  std::string SoundOfStranger(const Speaker& speaker) {
    if (random_() % 3 == 0)
      return ForeignBytes(random_);
    // All is right but the sender: a loud tone, or a key.
    const std::vector<std::uint8_t> tone{0x2A, 0x2A, 0x2A, 0x2A, 0xAA, 0xAA, 0xAA, 0xAA};
    std::vector<std::uint8_t> sound;
    while (sound.size() < kFrame)
      sound.insert(sound.end(), tone.begin(), tone.end());
    const bool key = random_() % 8 == 0;
    if (key)
      sound = {5, 0x80, 3, 0x20};
    std::vector<std::uint8_t> bytes;
    WriteRtpPacket({random_() % 8 == 0, static_cast<std::uint8_t>(key ? 101 : payload_type::kPcma),
                    static_cast<std::uint16_t>(speaker.Sequence() + random_() % 4),
                    speaker.Timestamp() + static_cast<std::uint32_t>(kFrame * (random_() % 8)), Speaker::kSsrc, sound},
                   bytes);
    return {bytes.begin(), bytes.end()};
  }

  std::mt19937 random_{20261123};
};

TEST_F(HostileTest, ACallThatIsUpComesThroughUnharmed) {
  const int datagrams = NumberFrom("KELMIO_DATAGRAMS", 20'000);
  OpenLine();
  CallUp(peer->Sdp("8 101"));
  Speaker speaker(*peer, answer.MediaPort(), VoiceOfTest(10), {AudioCoding::Pcma, payload_type::kPcma, kFrame});
  loop.RunFor(1s);

  // At the peer's own address and at others; the twin has the peer's own port.
  const TestSocket strangers[] = {TestSocket("127.0.0.1"), TestSocket("127.0.0.2"), TestSocket("127.0.0.3")};
  const TestSocket twin("127.0.0.2", peer->rtp.Port());
  HostileMessages messages(peer->Sdp());
  const std::size_t before = ResidentBytes();
  for (int i = 0; i < datagrams; ++i) {
    if (i % 4 == 3)
      (i % 8 == 3 ? twin : strangers[0]).Send(answer.MediaPort(), SoundOfStranger(speaker));
    else
      strangers[random_() % 3].Send(driver->Line().Port(), messages.Next());
    if (i % 32 == 31) {
      ASSERT_TRUE(KeepStep()) << "after " << i;
    }
  }
  const double grown = static_cast<double>(ResidentBytes()) / 1e6 - static_cast<double>(before) / 1e6;
  loop.RunFor(1s);
  speaker.Stop();

  EXPECT_FALSE(reports.Has("disconnected"));
  EXPECT_FALSE(reports.Has("digit5"));
  EXPECT_LT(reports.logs.size(), 10U);
  EXPECT_LT(DamagedShare(speaker.Voice(), port->Received()), 0.02);
  if (!kSanitized) {
    EXPECT_LT(grown, 32); // what SIP keeps of each request for half a minute, and the sound that was heard
  }
  peer->Bye();
  EXPECT_TRUE(RunUntilHas("disconnected"));
  TakesACall();
}

TEST_F(HostileTest, AnIdleLineReadsWhatStrangersOfferAndStillTakesACall) {
  const int datagrams = NumberFrom("KELMIO_DATAGRAMS", 20'000) / 5;
  OpenLine();
  const TestSocket stranger;
  HostileMessages messages(peer->Sdp("0 8 9 101", "a=ptime:20\r\na=sendrecv\r\n"));
  for (int i = 0; i < datagrams; ++i) {
    stranger.Send(driver->Line().Port(), messages.Next());
    if (i % 16 != 15)
      continue;
    ASSERT_TRUE(KeepStep()) << "after " << i;
    // What rings is let go, so that the line is there for the next offer.
    if (reports.call)
      reports.call->Hangup();
  }
  ASSERT_TRUE(KeepStep());
  ASSERT_TRUE(loop.RunUntil([&] { return reports.words.empty() || reports.words.back() == "disconnected"; }));
  TakesACall();
}

TEST_F(HostileTest, AStandingCrowdOfConnectionsIsPutOut) {
  OpenLine();
  sockaddr_in line{};
  line.sin_family = AF_INET;
  line.sin_port = htons(driver->Line().Port());
  line.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  constexpr int kCrowd = 200; // of a descriptor at each end
  std::vector<pollfd> crowd;
  for (int i = 0; i < kCrowd; ++i) {
    crowd.push_back({socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0), POLLRDHUP, 0});
    connect(crowd.back().fd, reinterpret_cast<const sockaddr*>(&line), sizeof line);
    loop.RunFor(1ms); // no more at once than the line lets wait
  }
  EXPECT_TRUE(loop.RunUntil([&] { return poll(crowd.data(), crowd.size(), 0) > kCrowd / 4; }));
  for (const pollfd& one : crowd)
    close(one.fd);
  ASSERT_TRUE(KeepStep()); // what comes in the moment in which the line binds anew is lost, and is said again
  TakesACall();
}

/// INVITEs at a steady pace from `addresses` addresses, beside which a real caller tries his luck.
class FloodTest : public HostileTest, public testing::WithParamInterface<int> {};

TEST_P(FloodTest, ARealCallGetsThrough) {
  constexpr int kPerSecond = 500;
  const auto length = std::chrono::seconds(NumberFrom("KELMIO_FLOOD_SECONDS", 3));
  SipSettings settings = OnAnyPort();
  settings.listen.host = "0.0.0.0"; // where strangers are held off; what is sent here comes over loopback all the same
  // Before the line, which takes a crowd of new descriptors in its own process for connections to it.
  std::vector<std::pair<std::string, std::unique_ptr<TestSocket>>> strangers;
  for (int i = 0; i < GetParam(); ++i) {
    const std::string host = "127.0." + std::to_string(2 + i / 256) + "." + std::to_string(i % 256);
    strangers.emplace_back(host, std::make_unique<TestSocket>(host));
  }
  OpenLine(settings);
  peer->from = "<sip:friend@127.0.0.1>";

  std::jthread flood([&](const std::stop_token& stop) {
    HostileMessages messages(peer->Sdp());
    auto next = Clock::now();
    for (std::size_t i = 0; !stop.stop_requested(); i = (i + 1) % strangers.size()) {
      strangers[i].second->Send(driver->Line().Port(), messages.Invite(strangers[i].first));
      next += std::chrono::microseconds(1s) / kPerSecond;
      std::this_thread::sleep_until(next);
    }
  });
  const auto start = Clock::now();
  // The user sends away what isn't the friend.
  const auto let_go = [&] {
    if (reports.call && !reports.Has("connected") && reports.number == "flood")
      reports.call->Hangup();
  };
  ASSERT_TRUE(loop.RunUntil([&] {
    let_go();
    return Clock::now() - start > length / 2;
  }));

  // Calls as a telephone does: again after 0.5, 1, 2 s while nothing is heard, and at once when it was busy.
  std::optional<SipText> heard;
  const auto rings = [&] {
    auto patience = 500ms;
    auto due = Clock::now();
    return loop.RunUntil(
        [&] {
          let_go();
          if (Clock::now() >= due) {
            peer->Invite(peer->Sdp());
            due = Clock::now() + patience;
            patience *= 2;
          }
          heard = peer->Next(0ms);
          if (heard && heard->Status() == 486)
            due = std::min(due, Clock::now() + 100ms);
          if (heard && heard->Status() == 302) {
            const std::string contact = heard->Header("Contact");
            peer->callee = contact.substr(5, contact.find('@') - 5); // behind "<sip:"
            due = Clock::now();
          }
          return heard && heard->Status() == 180;
        },
        32s);
  };
  ASSERT_TRUE(rings());
  EXPECT_TRUE(loop.RunUntil([&] { return reports.number == "friend"; }));
  reports.call->Answer();
  ASSERT_TRUE(peer->Await(200));
  peer->Ack();
  EXPECT_TRUE(RunUntilHas("connected"));
  while (Clock::now() - start < length)
    loop.RunFor(50ms);
  EXPECT_TRUE(peer->NextRtp());
  flood.request_stop();
  flood.join();
}

INSTANTIATE_TEST_SUITE_P(From, FloodTest, testing::Values(1, 500));

} // namespace
} // namespace kelmio
