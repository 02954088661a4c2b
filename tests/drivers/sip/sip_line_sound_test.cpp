#include "drivers/sip/line_fixture.h"
#include "drivers/sip/sound_of_test.h"
#include "drivers/sip/speaker.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

TEST_F(SipLineTest, CarriesBothDirectionsInEveryCoding) {
  constexpr std::size_t kEnough = 13'600; // bytes of 1.7 s
  struct Case {
    SpokenAs as;
    double correlation;
  };
  for (const auto& [as, correlation] :
       {Case{{AudioCoding::Pcmu, 0, 160}, 0.9997}, Case{{AudioCoding::Pcma, 8, 240}, 0.9997},
        Case{{AudioCoding::G722, 9, 80}, 0.99}}) {
    SCOPED_TRACE(static_cast<int>(as.type));
    OpenLine();
    reports.words.clear();
    port = std::make_shared<PortOfTest>();
    const bool wide = as.coding == AudioCoding::G722;
    const auto said = VoiceOfTest(1.2, wide ? 16000 : 8000);
    port->Say(said);
    CallUp(peer->Sdp(std::to_string(as.type)));
    Speaker speaker(*peer, answer.MediaPort(), said, as);
    std::vector<std::uint8_t> back;
    while (back.size() < kEnough) {
      const auto bytes = peer->NextRtp();
      const auto packet = bytes ? ReadRtpPacket(*bytes) : std::nullopt;
      ASSERT_TRUE(packet);
      EXPECT_EQ(packet->payload_type, as.type);
      EXPECT_EQ(packet->payload.size(), 160U);
      back.insert(back.end(), packet->payload.begin(), packet->payload.end());
    }
    driver->Line().Close();
    EXPECT_EQ(port->Rate(), wide ? 16000 : 8000);

    AudioCodec codec(as.coding);
    std::vector<std::int16_t> returned(back.size() * codec.SamplesPerByte());
    codec.Decode(back, returned);
    for (const auto& heard : {returned, port->Received()}) {
      // G.722 delays by some samples; the search steps through them.
      const std::size_t offset = OffsetOf(said, heard, wide ? 1 : 80);
      const Fidelity fidelity = FidelityOf(said, std::span(heard).subspan(offset));
      EXPECT_GT(fidelity.correlation, correlation);
      EXPECT_LT(std::abs(fidelity.level_change), wide ? 0.2 : 0.04);
    }
  }
}

TEST_F(SipLineTest, HearsOnlyWhatIsEncryptedOnceThatIsAgreed) {
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
