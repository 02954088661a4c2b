// The small parts of the SIP line that need no network.
#include <gtest/gtest.h>

#include "drivers/lines_file.h"
#include "drivers/sip/caller_identity.h"
#include "drivers/sip/dial_target.h"
#include "drivers/sip/digit_receiver.h"
#include "drivers/sip/local_network.h"
#include "drivers/sip/rate_limiter.h"
#include "drivers/sip/sip_settings.h"
#include "drivers/sip/sip_words.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

class LinesFileTest : public testing::Test {
protected:
  void Write(const std::string& text) { test::WriteBytes(path, text); }
  test::TemporaryFolder folder;
  std::string path = folder.Path() + "Lines.ini";
};

TEST_F(LinesFileTest, IsMadeWithItsExplanationAndThenLeftAlone) {
  LinesFile file(path);
  EXPECT_EQ(ReadSipSettings(file).listen, (ListenAddress{"127.0.0.1", 5060}));
  const std::string first = test::BytesOf(path);
  EXPECT_NE(first.find("; Listen:"), std::string::npos);
  EXPECT_NE(first.find("\r\n[SIP]\r\n"), std::string::npos);
  LinesFile again(path);
  EXPECT_TRUE(ReadSipSettings(again).notes.empty());
  EXPECT_EQ(test::BytesOf(path), first);
}

TEST_F(LinesFileTest, FallsBackFromNonsenseWithAWord) {
  Write("[sip]\nListen=0.0.0.0\nAllow=netwrok\nRingPeriod=soon\nCodecs=G722,MP3\n");
  LinesFile file(path);
  const SipSettings settings = ReadSipSettings(file);
  EXPECT_EQ(settings.listen, ListenAddress{});
  EXPECT_EQ(settings.ring_period, 6000ms);
  EXPECT_EQ(settings.allow, SipAllow::Network); // the narrower one
  EXPECT_EQ(settings.codings, SipSettings{}.codings);
  EXPECT_EQ(settings.notes.size(), 4U);
  EXPECT_EQ(ParseListenAddress("[::1]:5070"), (ListenAddress{"::1", 5070}));
  for (const char* bad : {"", ":5060", "host:5060", "1.2.3.4:70000", "1.2.3.4:", "::1:5060", "1.2.3:5060"})
    EXPECT_FALSE(ParseListenAddress(bad)) << bad;
}

TEST_F(LinesFileTest, KeepsEachLinesNumberAndGivesNoneTwice) {
  Write("[Devices]\nSIP=4\nBad=-3\nModem=4\nOther=1\n");
  LinesFile file(path);
  EXPECT_EQ(file.DeviceNumber("sip"), 4);
  EXPECT_EQ(file.DeviceNumber("Modem"), 2);
  EXPECT_EQ(file.DeviceNumber("Bad"), 3);
  EXPECT_EQ(file.DeviceNumber("New"), 5);
  LinesFile restarted(path);
  EXPECT_EQ(restarted.DeviceNumber("Modem"), 2);
  EXPECT_EQ(restarted.DeviceNumber("New"), 5);
}

TEST(SipCallersTest, ChooseAddressAndAllowance) {
  SipSettings settings;
  for (const auto& [callers, host, words] :
       {std::tuple(SipCallers::Network, "0.0.0.0", "on port 5060 from the local network."),
        std::tuple(SipCallers::Everyone, "0.0.0.0", "on port 5060 by everyone whom the network lets through."),
        std::tuple(SipCallers::Computer, "127.0.0.1", "at 127.0.0.1:5060 by programs on this computer.")}) {
    SetCallers(settings, callers);
    EXPECT_EQ(CallersOf(settings), callers);
    EXPECT_EQ(settings.listen.host, host);
    EXPECT_EQ(ReachableInWords(settings, 5060), std::string("Reachable ") + words);
  }
  settings.listen.host = "192.168.1.20";
  SetCallers(settings, SipCallers::Everyone);
  EXPECT_EQ(settings.listen.host, "192.168.1.20");
}

TEST(LocalNetworkTest, IsWhatNoWayFromOutsideLeadsTo) {
  const auto local = [](const char* text) {
    sa address{};
    EXPECT_EQ(sa_set_str(&address, text, 5060), 0) << text;
    return IsOfLocalNetwork(address);
  };
  for (const char* text : {"127.8.0.1", "10.255.0.1", "172.16.0.1", "172.31.255.255", "192.168.0.9", "169.254.3.4",
                           "::1", "fd12::1", "fc00::1", "fe80::2", "::ffff:10.0.0.1"})
    EXPECT_TRUE(local(text)) << text;
  for (const char* text : {"11.0.0.1", "172.15.0.1", "172.32.0.1", "192.169.0.1", "169.253.0.1", "203.0.113.5",
                           "0.0.0.0", "2001:db8::1", "fe00::1", "::", "::ffff:8.8.8.8"})
    EXPECT_FALSE(local(text)) << text;
}

TEST(CallerIdentity, IsReadFromLatinLettersAndEscapes) {
  EXPECT_EQ(ReadCallerIdentity("M\xFCller", "1").name, "M\xC3\xBCller");
  EXPECT_EQ(ReadCallerIdentity("", "%41%4a%zz%").number, "AJ%zz%");
  EXPECT_EQ(ReadCallerIdentity("evil\xE2\x80\xAEgnp", "%0d%0a1").name, "evilgnp"); // turned writing
}

TEST(DialTarget, TakesAddressesAndTellsNumbersApart) {
  const auto uri = [](std::string_view text) { return ParseDialTarget(text).uri; };
  EXPECT_EQ(uri(" SIP:bob@10.0.0.1:5070;transport=tcp "), "sip:bob@10.0.0.1:5070;transport=tcp");
  EXPECT_EQ(uri("bob #1@host"), "sip:bob%20%231@host");
  EXPECT_EQ(uri("sip:[::1]"), "sip:[::1]");
  EXPECT_EQ(ParseDialTarget("+49 30 123").kind, DialTarget::Kind::Number);
  for (const char* bad : {"", " ", "a@", "a@b c", "a@b>", "sip:a@b\r\nX: 1"})
    EXPECT_EQ(ParseDialTarget(bad).kind, DialTarget::Kind::Invalid) << bad;
}

TEST(RateLimiter, SilencesOneSourceAndHearsOthers) {
  RateLimiter limiter(5, 20);
  const RateLimiter::Time start{};
  int passed = 0;
  for (int i = 0; i < 1000; ++i)
    passed += limiter.Allow(1, start) ? 1 : 0;
  EXPECT_EQ(passed, 20);
  EXPECT_TRUE(limiter.Allow(2, start));
  EXPECT_FALSE(limiter.Allow(1, start + 1s)); // its 980 other tries count too
  EXPECT_TRUE(limiter.Allow(1, start + 6s));
}

TEST(DigitReceiver, GivesEachKeyOnce) {
  DigitReceiver digits;
  DigitReceiver::Time now{};
  std::string heard;
  const auto put = [&](std::uint8_t code, bool end, std::uint32_t timestamp, bool marker) {
    const std::array<std::uint8_t, 4> payload{code, static_cast<std::uint8_t>(end ? 0x8A : 0x0A), 0, 160};
    now += 20ms;
    RtpPacket packet;
    packet.marker = marker;
    packet.timestamp = timestamp;
    packet.payload = payload;
    if (const auto digit = digits.Put(packet, now))
      heard += *digit;
  };
  for (int i = 0; i < 5; ++i)
    put(1, i > 2, 1000, i == 0);
  put(1, false, 2000, true); // the same key again
  put(1, true, 2000, false);
  put(11, true, 3000, false); // all but its end was lost
  put(1, true, 2000, false);  // overtaken
  for (std::uint32_t i = 0; i < 5; ++i)
    put(12, false, 4000 + i * 160, i == 0); // a sender that moves the time along
  put(16, false, 9000, true);               // no digit
  EXPECT_EQ(heard, "11#A");
}

} // namespace
} // namespace kelmio
