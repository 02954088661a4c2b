// Offers and answers of a peer, two in a row as in a call whose terms change.
#include "drivers/sip/ice_agent.h"
#include "drivers/sip/sdp_negotiation.h"
#include "fuzz/fuzz_target.h"

namespace kelmio::fuzz {
namespace {

void CheckTerms(const MediaTerms& terms) {
  Check(terms.send_type >= 0 && terms.send_type < 128, "a payload type has seven bits");
  Check(terms.CodingOf(terms.send_type) == terms.send_coding, "what is sent may come in too");
  Check(!terms.CodingOf(terms.event_types[0]) && !terms.CodingOf(terms.event_types[1]), "digits are no sound");
  const bool somewhere = sa_isset(&terms.peer, SA_ALL) && !sa_is_any(&terms.peer);
  Check(somewhere || !terms.may_send, "sound goes somewhere");
}

// For the search for a way, which sends nothing here.
udp_sock* Socket() {
  libre_init();
  sa local{};
  sa_set_str(&local, "127.0.0.1", 0);
  udp_sock* socket = nullptr;
  Check(udp_listen(&socket, &local, nullptr, nullptr) == 0, "there is a socket");
  return socket;
}

void Negotiate(SdpNegotiation& sdp, std::string_view body, bool offer) {
  if (!offer)
    Check(sdp.Write(true) != nullptr, "an offer can be written");
  const RePtr<mbuf> bytes(mbuf_alloc(body.size() + 1));
  mbuf_write_mem(bytes.get(), reinterpret_cast<const std::uint8_t*>(body.data()), body.size());
  mbuf_set_pos(bytes.get(), 0);
  sip_msg message{};
  message.mb = bytes.get();
  pl_set_str(&message.ctyp.type, "application");
  pl_set_str(&message.ctyp.subtype, "sdp");
  if (sdp.Read(message, offer) != 0)
    return;
  CheckTerms(*sdp.Terms());
  static udp_sock* const socket = Socket();
  const auto ice = IceAgent::Create(socket, sdp.Terms()->peer, !offer, [](const std::optional<sa>&) {});
  sdp.ForEachAttribute([&](const char* name, const char* value) { ice->TakeAttribute(name, value); });
  sdp.SetPeerSearches(ice->PeerTakesPart(sdp.Terms()->peer));
  sdp.SetPlaces(ice->Attributes());
  if (!offer)
    return;
  const RePtr<mbuf> answer = sdp.Write(false);
  // One line for each section that was offered, and what is our own.
  Check(answer && answer->end <= 4096 + 8 * body.size(), "an answer is not much longer than its offer");
}

} // namespace

std::vector<std::string> Seeds() {
  const std::string head = "v=0\r\no=- 1 1 IN IP4 127.0.0.1\r\ns=-\r\nc=IN IP4 127.0.0.1\r\nt=0 0\r\n";
  const std::string audio = head + "m=audio 4000 RTP/AVP 0 8 9 101 96\r\na=rtpmap:101 telephone-event/8000\r\n"
                                   "a=rtpmap:96 PCMA/8000\r\na=fmtp:101 0-15\r\na=ptime:20\r\na=sendrecv\r\n";
  return {
      std::string("\x01") + audio,
      std::string("\x03") + head +
          "m=audio 4000 RTP/SAVP 9 0\r\na=crypto:1 AES_CM_128_HMAC_SHA1_80 "
          "inline:MDEyMzQ1Njc4OWFiY2RlZjAxMjM0NTY3ODlhYmNk\r\na=sendonly\r\nm=video 0 RTP/AVP 31\r\n",
      std::string("\x04") + head +
          "m=audio 4002 UDP/TLS/RTP/SAVPF 111 0\r\nc=IN IP6 ::1\r\na=rtpmap:111 opus/48000/2\r\na=fmtp:111 "
          "useinbandfec=1\r\na=rtcp-mux\r\na=setup:actpass\r\na=fingerprint:sha-256 "
          "00:11:22:33:44:55:66:77:88:99:AA:BB:CC:DD:EE:FF:00:11:22:33:44:55:66:77:88:99:AA:BB:CC:DD:EE:FF\r\n"
          "a=ice-ufrag:abcd\r\na=ice-pwd:0123456789abcdefghijkl\r\na=candidate:1 1 UDP 2130706431 127.0.0.1 4002 typ "
          "host\r\na=candidate:2 1 UDP 1694498815 192.0.2.1 4002 typ srflx raddr 127.0.0.1 rport 4002\r\n",
      std::string("\x02") +
          "v=0\r\no=- 2 2 IN IP4 0.0.0.0\r\ns=-\r\nc=IN IP4 0.0.0.0\r\nt=0 0\r\nm=audio 4000 RTP/AVP 8 "
          "0\r\na=inactive\r\na=rtcp:4001 IN IP4 127.0.0.1\r\na=maxptime:40\r\n",
  };
}

} // namespace kelmio::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmio;
  using namespace kelmio::fuzz;
  Cuts cuts(ViewOf(data, size));
  const bool offer = cuts.Rest().size() % 2 == 0;
  sa local{};
  sa_set_str(&local, "127.0.0.1", 4000);
  // How the sound is to be protected, of the four ways the one that the length names.
  const MediaProtection protection{static_cast<MediaProtection::Wish>(cuts.Rest().size() / 2 % 4)};
  const auto sdp = SdpNegotiation::Create(local, {kAllCodings.begin(), kAllCodings.end()}, protection);
  Check(sdp != nullptr, "there is a session");
  const std::string_view whole = cuts.Rest();
  Negotiate(*sdp, whole, offer);
  cuts.Part(whole.size() + 1);
  Negotiate(*sdp, cuts.Rest(), !offer);
  Negotiate(*sdp, whole, true);
  return 0;
}
