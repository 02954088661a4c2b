// Texts of strangers: who calls, out of a SIP message or its fields, and addresses that are dialled.
#include "drivers/sip/caller_claims.h"
#include "drivers/sip/caller_identity.h"
#include "drivers/sip/dial_target.h"
#include "drivers/sip/libre.h"
#include "drivers/sip/sip_account.h"
#include "fuzz/fuzz_target.h"

namespace kelmio::fuzz {
namespace {

constexpr std::size_t kLongestIdentity = 203; // the last letter may take four bytes

void CheckIdentity(const CallerIdentity& caller) {
  CheckShown(caller.name, kLongestIdentity);
  CheckShown(caller.number, kLongestIdentity);
}

void CheckMessage(std::string_view text) {
  const RePtr<mbuf> bytes(mbuf_alloc(text.size() + 1));
  mbuf_write_mem(bytes.get(), reinterpret_cast<const std::uint8_t*>(text.data()), text.size());
  mbuf_set_pos(bytes.get(), 0);
  sip_msg* decoded = nullptr;
  const bool whole = sip_msg_decode(&decoded, bytes.get()) == 0;
  const RePtr<sip_msg> message(decoded);
  if (!whole)
    return;
  CheckIdentity(ReadCallerIdentity(ToView(message->from.dname), UserOf(message->from.uri, message->from.auri)));
  CheckIdentity(CallerOfAccount(*message));
  CheckShown(ForwarderOf(*message), kLongestIdentity);
}

/// Nothing in it may end the header line or the address that it is put into.
void CheckUri(std::string_view uri, std::size_t longest) {
  Check(uri.starts_with("sip:") && uri.size() <= longest, "an address has an end");
  for (const char c : uri)
    Check(c > 0x20 && c < 0x7F && std::string_view("<>\"\\").find(c) == std::string_view::npos,
          "an address holds only what an address may");
}

void CheckDialled(std::string_view text) {
  const DialTarget target = ParseDialTarget(text);
  if (target.kind == DialTarget::Kind::Address)
    CheckUri(target.uri, 3 * text.size() + 4);
  if (target.kind == DialTarget::Kind::Number)
    CheckUri(NumberAt(text, "[::1]:5060"), 3 * text.size() + 20);
  if (const auto server = ParseServerName(text))
    Check(ParseServerName(server->Text()) == server, "a server's name can be written");
}

} // namespace

std::vector<std::string> Seeds() {
  return {
      "\x08Jane \\\"J\\\" Samplesip:5551234%40x;phone-context=+49",
      "\x05M\xC3\xBCllerM\xFCller\xE2\x80\xAE\xC2\x85%0D%0Aanonymous",
      "\x01 sip:name with blanks@[2001:db8::1]:5060;transport=udp ",
      "\x02+4930123456@host.example.org",
      "OINVITE sip:a@127.0.0.1 SIP/2.0\r\nVia: SIP/2.0/UDP 127.0.0.1:5070;branch=z9hG4bK1;rport\r\nFrom: \"N\\\"x\" "
      "<sip:n%C3%A4@127.0.0.1;user=phone>;tag=f1\r\nTo: <sip:a@127.0.0.1>\r\nCall-ID: h1\r\nCSeq: 1 INVITE\r\nContact: "
      "<sip:n@127.0.0.1>\r\nMax-Forwards: 70\r\nContent-Length: 0\r\n\r\n",
      "PINVITE sip:a@127.0.0.1 SIP/2.0\r\nVia: SIP/2.0/UDP h;branch=z9hG4bK3\r\nFrom: \"+49 30 1\" "
      "<sip:anonymous@x.invalid>"
      ";tag=1\r\nTo: <sip:a@h>\r\nCall-ID: h3\r\nCSeq: 1 INVITE\r\nP-Asserted-Identity: \"Jane\" <sip:+4930@h>, "
      "<tel:+4930>\r\nPrivacy: user;id\r\nDiversion: <sip:1@h>;reason=x\r\nHistory-Info: <sip:2@h>;index=1, "
      "<sip:3@h>;index=1.1\r\nContent-Length: 0\r\n\r\n",
      "tSIP/2.0 200 OK\r\nv: SIP/2.0/TCP [::1];branch=z9hG4bK2\r\nf: <tel:+4930123456;isub=1>;tag=f\r\nt: A "
      "<sip:b@[::1]>;tag=g\r\ni: h2\r\nCSeq: 2 BYE\r\nl: 0\r\n\r\n",
  };
}

} // namespace kelmio::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmio;
  using namespace kelmio::fuzz;
  Cuts cuts(ViewOf(data, size));
  CheckMessage(cuts.Rest());
  CheckDialled(cuts.Rest());
  const std::string_view name = cuts.Part(cuts.Rest().size() + 1);
  CheckIdentity(ReadCallerIdentity(name, cuts.Rest()));
  return 0;
}
