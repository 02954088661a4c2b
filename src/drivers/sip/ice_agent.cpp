#include "drivers/sip/ice_agent.h"

#include <array>
#include <cstdint>
#include <random>

namespace kelmio {

namespace {

// Before all others that look at a packet.
constexpr int kLayer = 0;
constexpr unsigned kSound = ICE_COMPID_RTP;     // the only stream: reports on it share its way
constexpr std::uint16_t kOnlyInterface = 65535; // preference of the one address that is offered (RFC 8445 5.1.2.2)
// RFC 8445 section 5.3 asks for at least 4 and 22 characters.
constexpr std::size_t kNameLength = 8;
constexpr std::size_t kSecretLength = 24;
// Nobody is at more places; each costs some packets, and not all need be the caller's own (RFC 8445 19.5.1).
constexpr int kMostPlaces = 20;
// Shorter than a router forgets who talks to whom (30 s with the strictest).
constexpr std::chrono::milliseconds kStayKnown{15'000};

std::string RandomText(std::size_t length) {
  constexpr std::string_view kCharacters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::random_device random;
  std::uniform_int_distribution<std::size_t> place(0, kCharacters.size() - 1);
  std::string text(length, '\0');
  for (char& each : text)
    each = kCharacters[place(random)];
  return text;
}

} // namespace

std::unique_ptr<IceAgent> IceAgent::Create(udp_sock* socket, const sa& local, bool offers, Found found) {
  std::unique_ptr<IceAgent> agent(new IceAgent(local, std::move(found)));
  return agent->Open(socket, offers) ? std::move(agent) : nullptr;
}

IceAgent::~IceAgent() {
  mem_deref(question_);
}

bool IceAgent::Open(udp_sock* socket, bool offers) {
  socket_ = socket;
  name_ = RandomText(kNameLength);
  secret_ = RandomText(kSecretLength);
  icem* checks = nullptr;
  if (icem_alloc(&checks, ICE_MODE_FULL, offers ? ICE_ROLE_CONTROLLING : ICE_ROLE_CONTROLLED, IPPROTO_UDP, kLayer,
                 rand_u64(), name_.c_str(), secret_.c_str(), &IceAgent::OnChecked, this) != 0)
    return false;
  checks_.reset(checks);
  return icem_comp_add(checks, kSound, socket) == 0 &&
         icem_cand_add(checks, kSound, kOnlyInterface, nullptr, &local_) == 0 &&
         icem_comps_set_default_cand(checks) == 0;
}

// --- gathering

void IceAgent::Gather(const std::optional<ServerName>& server, dnsc* names, Ready ready) {
  ready_ = std::move(ready);
  if (!server) {
    Gathered();
    return;
  }
  limit_.StartOnce(kLongestGathering, [this](std::uint64_t) { Gathered(); });
  stun_dns* lookup = nullptr;
  sa numeric{};
  if (sa_set_str(&numeric, server->host.c_str(), server->port != 0 ? server->port : std::uint16_t{STUN_PORT}) == 0)
    OnServer(0, &numeric, this);
  else if (names && stun_server_discover(&lookup, names, stun_usage_binding, stun_proto_udp, sa_af(&local_),
                                         server->host.c_str(), server->port, &IceAgent::OnServer, this) == 0)
    lookup_.reset(lookup);
  else
    Gathered();
}

void IceAgent::OnServer(int error, const sa* server, void* self) {
  auto* agent = static_cast<IceAgent*>(self);
  if (error == 0 && sa_af(server) == sa_af(&agent->local_) &&
      stun_request(&agent->question_, icem_stun(agent->checks_.get()), IPPROTO_UDP, agent->socket_, server, 0,
                   STUN_METHOD_BINDING, nullptr, 0, false, &IceAgent::OnSeen, agent, 0) == 0)
    agent->server_ = *server;
  else
    agent->GatheredSoon();
}

void IceAgent::OnSeen(int error, std::uint16_t status, const char*, const stun_msg* answer, void* self) {
  auto* agent = static_cast<IceAgent*>(self);
  const stun_attr* seen = nullptr;
  if (error == 0 && status == 0) {
    seen = stun_msg_attr(answer, STUN_ATTR_XOR_MAPPED_ADDR);
    if (!seen)
      seen = stun_msg_attr(answer, STUN_ATTR_MAPPED_ADDR);
  }
  icem* const checks = agent->checks_.get();
  if (seen && sa_af(&seen->v.sa) == sa_af(&agent->local_) && !agent->begun_) {
    ice_cand* const base = icem_cand_find(icem_lcandl(checks), kSound, nullptr);
    icem_lcand_add(checks, icem_lcand_base(base), ICE_CAND_TYPE_SRFLX, &seen->v.sa);
    icem_cand_redund_elim(checks);
    icem_comps_set_default_cand(checks);
    agent->reachable_ = seen->v.sa;
    agent->stay_known_.StartRepeating(kStayKnown, kStayKnown, [agent](std::uint64_t) {
      stun_indication(IPPROTO_UDP, agent->socket_, &agent->server_, 0, STUN_METHOD_BINDING, nullptr, 0, false, 0);
    });
  }
  agent->GatheredSoon();
}

// Not while the library is still at work on what it has heard.
void IceAgent::GatheredSoon() {
  limit_.StartOnce(std::chrono::milliseconds{0}, [this](std::uint64_t) { Gathered(); });
}

void IceAgent::Gathered() {
  limit_.Stop();
  if (const Ready ready = std::exchange(ready_, nullptr))
    ready();
}

// --- the search

std::vector<std::pair<std::string, std::string>> IceAgent::Attributes() const {
  std::vector<std::pair<std::string, std::string>> attributes{{ice_attr_ufrag, name_}, {ice_attr_pwd, secret_}};
  for (const le* element = list_head(icem_lcandl(checks_.get())); element; element = element->next) {
    constexpr std::size_t kLongestCandidate = 256;
    std::array<char, kLongestCandidate> text{};
    re_snprintf(text.data(), text.size(), "%H", ice_cand_encode, static_cast<const ice_cand*>(element->data));
    attributes.emplace_back(ice_attr_cand, text.data());
  }
  return attributes;
}

void IceAgent::TakeAttribute(const char* name, const char* value) {
  // The places are told once; what is told of them later in the call is the outcome of the search.
  if (begun_ || (str_casecmp(name, ice_attr_cand) == 0 && ++places_ > kMostPlaces))
    return;
  ice_sdp_decode(checks_.get(), name, value);
  icem_sdp_decode(checks_.get(), name, value);
}

bool IceAgent::PeerTakesPart(const sa& named) {
  return list_head(icem_rcandl(checks_.get())) != nullptr &&
         (begun_ || icem_verify_support(checks_.get(), kSound, &named));
}

bool IceAgent::Begin() {
  if (begun_)
    return false;
  begun_ = true;
  stay_known_.Stop();
  if (icem_conncheck_start(checks_.get()) != 0)
    return false;
  ice_candpair_set_states(checks_.get());
  limit_.StartOnce(kLongestSearch, [this](std::uint64_t) { found_(std::nullopt); });
  return true;
}

void IceAgent::OnChecked(int error, bool, void* self) {
  auto* agent = static_cast<IceAgent*>(self);
  agent->limit_.Stop();
  const sa* const peer = error == 0 ? icem_lcand_addr(icem_selected_rcand(agent->checks_.get(), kSound)) : nullptr;
  agent->found_(peer ? std::optional(*peer) : std::nullopt);
}

} // namespace kelmio
