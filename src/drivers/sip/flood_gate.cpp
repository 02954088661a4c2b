#include "drivers/sip/flood_gate.h"

#include <random>

namespace kelmio {

namespace {

// What one source may ask. A person redials less often, and a flood costs no more than this.
constexpr double kRequestsPerSecond = 5;
constexpr double kRequestBurst = 20;
// An answer is shorter than its INVITE; still this line isn't to be a means of flooding others.
constexpr double kSentOnPerSecond = 100;
constexpr std::size_t kProofDigits = 16;

} // namespace

FloodGate::FloodGate()
    : claimed_(kRequestsPerSecond, kRequestBurst), proven_(kRequestsPerSecond, kRequestBurst),
      sent_on_(kSentOnPerSecond, kSentOnPerSecond) {
  std::random_device random;
  for (std::uint8_t& byte : secret_)
    byte = static_cast<std::uint8_t>(random());
}

std::string FloodGate::UserFor(const sa& source) const {
  const std::string host = HostText(source);
  std::array<std::uint8_t, 20> digest{};
  hmac_sha1(secret_.data(), secret_.size(), reinterpret_cast<const std::uint8_t*>(host.data()), host.size(),
            digest.data(), digest.size());
  constexpr std::string_view kHex = "0123456789abcdef";
  std::string user = "again-";
  for (std::size_t i = 0; i < kProofDigits / 2; ++i)
    user += {kHex[digest[i] >> 4U], kHex[digest[i] & 0x0FU]};
  return user;
}

bool FloodGate::Admits(sip& stack, const sip_msg& request, const sa& own, Time now) {
  const std::uint32_t source = sa_hash(&request.src, SA_ADDR);
  if (claimed_.Allow(source, now))
    return true;
  // Over a connection nobody claims what he isn't: who is over his limit there is meant.
  if (request.tp != SIP_TRANSP_UDP || pl_strcmp(&request.met, "INVITE") != 0)
    return false;
  const std::string user = UserFor(request.src);
  if (ToView(request.uri.user) == user)
    return proven_.Allow(source, now);
  if (sent_on_.Allow(source, now))
    sip_replyf(&stack, &request, 302, "Moved Temporarily", "Contact: <sip:%s@%J>\r\nContent-Length: 0\r\n\r\n",
               user.c_str(), &own);
  return false;
}

} // namespace kelmio
