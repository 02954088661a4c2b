#include <thread>

#include "drivers/sip/audio_codec.h"
#include "drivers/sip/line_fixture.h"
#include "drivers/sip/sound_of_test.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

class SipLineSoundTest : public SipLineTest {
protected:
  /// Speaks `said` towards the line in packets of `packet_bytes` while listening, and gives what came back.
  std::vector<std::uint8_t> Talk(AudioCoding coding, std::uint8_t type, const std::vector<std::int16_t>& said,
                                 std::size_t packet_bytes) {
    AudioCodec codec(coding);
    std::vector<std::uint8_t> coded(said.size() / codec.SamplesPerByte());
    codec.Encode(said, coded);
    std::vector<std::uint8_t> back;
    const auto start = std::chrono::steady_clock::now();
    RtpPacket packet;
    packet.payload_type = type;
    packet.ssrc = 4711;
    packet.marker = true;
    for (std::size_t at = 0; at + packet_bytes <= coded.size(); at += packet_bytes) {
      packet.payload = std::span(coded).subspan(at, packet_bytes);
      packet.timestamp = static_cast<std::uint32_t>(at);
      peer->SendRtp(answer.MediaPort(), packet);
      packet.marker = false;
      ++packet.sequence;
      const auto next = start + std::chrono::milliseconds((at + packet_bytes) / 8);
      while (std::chrono::steady_clock::now() < next)
        if (const auto bytes = peer->NextRtp(
                std::chrono::duration_cast<std::chrono::milliseconds>(next - std::chrono::steady_clock::now() + 1ms)))
          Append(back, *bytes, type);
    }
    while (const auto bytes = peer->NextRtp(300ms)) {
      Append(back, *bytes, type);
      if (std::chrono::steady_clock::now() - start > std::chrono::milliseconds(coded.size() / 8) + 400ms)
        break;
    }
    return back;
  }

private:
  static void Append(std::vector<std::uint8_t>& back, const std::vector<std::uint8_t>& bytes, std::uint8_t type) {
    const auto packet = ReadRtpPacket(bytes);
    ASSERT_TRUE(packet);
    EXPECT_EQ(packet->payload_type, type);
    EXPECT_EQ(packet->payload.size(), 160U);
    back.insert(back.end(), packet->payload.begin(), packet->payload.end());
  }
};

TEST_F(SipLineSoundTest, CarriesBothDirectionsInEveryCoding) {
  struct Case {
    AudioCoding coding;
    std::uint8_t type;
    std::size_t packet_bytes;
    double correlation;
  };
  for (const auto& [coding, type, packet_bytes, correlation] :
       {Case{AudioCoding::Pcmu, 0, 160, 0.9997}, Case{AudioCoding::Pcma, 8, 240, 0.9997},
        Case{AudioCoding::G722, 9, 80, 0.99}}) {
    SCOPED_TRACE(static_cast<int>(type));
    OpenLine();
    reports.words.clear();
    port = std::make_shared<PortOfTest>();
    const int rate = coding == AudioCoding::G722 ? 16000 : 8000;
    const auto said = VoiceOfTest(1.2, rate);
    port->Say(said);
    CallUp(peer->Sdp(std::to_string(type)));
    const auto back = Talk(coding, type, said, packet_bytes);
    driver->Line().Close();
    EXPECT_EQ(port->Rate(), rate);

    AudioCodec codec(coding);
    std::vector<std::int16_t> returned(back.size() * codec.SamplesPerByte());
    codec.Decode(back, returned);
    const std::vector<std::int16_t> received = port->Received();
    for (const std::vector<std::int16_t>* heard :
         std::initializer_list<const std::vector<std::int16_t>*>{&returned, &received}) {
      // G.722 delays by some samples; the search steps through them.
      const std::size_t offset = OffsetOf(said, *heard, coding == AudioCoding::G722 ? 1 : 80);
      const Fidelity fidelity = FidelityOf(said, std::span(*heard).subspan(offset));
      EXPECT_GT(fidelity.correlation, correlation);
      EXPECT_LT(std::abs(fidelity.level_change), coding == AudioCoding::G722 ? 0.2 : 0.04);
    }
  }
}

TEST_F(SipLineSoundTest, TakesDigitsAndNoStrangersSound) {
  OpenLine();
  CallUp();
  const std::array<std::uint8_t, 4> digit{5, 0x0A, 0, 160};
  RtpPacket event;
  event.payload_type = 101;
  event.marker = true;
  event.timestamp = 800;
  event.payload = digit;
  for (int i = 0; i < 3; ++i) {
    peer->SendRtp(answer.MediaPort(), event);
    event.marker = false;
  }
  ASSERT_TRUE(RunUntilHas("digit5"));
  loop.RunFor(30ms);
  EXPECT_EQ(std::count(reports.words.begin(), reports.words.end(), "digit5"), 1);

  // Somebody else on the same computer, loud.
  SipPeer stranger(0);
  const std::vector<std::uint8_t> loud(160, 0x00);
  RtpPacket sound;
  sound.payload = loud;
  for (int i = 0; i < 60; ++i) {
    stranger.SendRtp(answer.MediaPort(), sound);
    sound.timestamp += 160;
    ++sound.sequence;
    std::this_thread::sleep_for(10ms);
  }
  const auto received = port->Received();
  EXPECT_TRUE(std::all_of(received.begin(), received.end(), [](std::int16_t s) { return s == 0; }));
  EXPECT_FALSE(stranger.NextRtp(10ms));
}

TEST_F(SipLineSoundTest, KeepsTimeWhateverTheNetworkDoes) {
  OpenLine();
  CallUp();
  const auto frames = port->Frames();
  const auto start = std::chrono::steady_clock::now();
  loop.RunFor(1000ms);
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  EXPECT_NEAR(static_cast<double>(port->Frames() - frames), passed.count() * 50, 3);
}

TEST_F(SipLineSoundTest, HearsOnlyWhatIsEncryptedOnceThatIsAgreed) {
  const std::string kOfferedKey =
      "a=crypto:3 AES_CM_128_HMAC_SHA1_32 inline:WVNfX19zZW1jdGwgKCkgewkyMjA7fQp9CnVubGVz\r\n";
  OpenLine();
  std::string offer = peer->Sdp("0 101", kOfferedKey);
  offer.replace(offer.find("RTP/AVP"), 7, "RTP/SAVP");
  CallUp(offer);
  EXPECT_TRUE(answer.Says("RTP/SAVP")) << answer.text;
  EXPECT_TRUE(answer.Says("a=crypto:3 AES_CM_128_HMAC_SHA1_32 inline:")) << answer.text;
  EXPECT_FALSE(answer.Says("WVNfX19z")) << "each side has a key of its own";

  // A packet in clear is nothing to it, and what it says itself bears an authentication tag of four bytes.
  RtpPacket clear;
  const std::vector<std::uint8_t> loud(160, 0x00);
  clear.payload = loud;
  for (; clear.sequence < 25; ++clear.sequence, clear.timestamp += 160)
    peer->SendRtp(answer.MediaPort(), clear);
  const auto said = peer->NextRtp();
  ASSERT_TRUE(said);
  EXPECT_EQ(said->size(), 12U + 160U + 4U);
  loop.RunFor(300ms);
  const std::vector<std::int16_t> heard = port->Received();
  EXPECT_TRUE(std::all_of(heard.begin(), heard.end(), [](std::int16_t sample) { return sample == 0; }));
}

} // namespace
} // namespace kelmio
