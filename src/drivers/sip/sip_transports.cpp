#include "drivers/sip/sip_transports.h"

#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <limits>
#include <random>

namespace kelmio {

namespace {

constexpr char kSoftware[] = "Kelmio";
constexpr std::uint32_t kHashSize = 32;
// With a port left to the system, the one that UDP got may be taken for TCP.
constexpr int kPortAttempts = 20;
// How soon an address counts that this computer has got in the meantime.
constexpr std::chrono::milliseconds kLookAgain{10'000};
// The stack itself counts no connections, and keeps each for half a minute to a quarter of an hour.
constexpr std::chrono::milliseconds kCount{1'000};
constexpr int kMostNewDescriptors = 256; // far more than one telephone line and its windows use
// Order among the helpers of a socket; there are no others.
constexpr int kGuardLayer = 0;

/// The lowest one, which is the next that is given.
int FreeDescriptor() {
  const int descriptor = eventfd(0, EFD_CLOEXEC);
  if (descriptor < 0)
    return std::numeric_limits<int>::max();
  close(descriptor);
  return descriptor;
}

} // namespace

std::optional<sa> SourceTowards(const sa& peer) {
  const int descriptor = socket(sa_af(&peer), SOCK_DGRAM | SOCK_CLOEXEC, 0);
  if (descriptor < 0)
    return std::nullopt;
  sa target = peer;
  if (sa_port(&target) == 0)
    sa_set_port(&target, SIP_PORT);
  sa source{};
  source.len = sizeof(source.u);
  const bool found =
      connect(descriptor, &target.u.sa, target.len) == 0 && getsockname(descriptor, &source.u.sa, &source.len) == 0;
  close(descriptor);
  return found ? std::optional(source) : std::nullopt;
}

SipTransports::SipTransports() {
  std::random_device random;
  knock_ = "knock-" + std::to_string(random()) + "-" + std::to_string(random());
}

SipTransports::~SipTransports() {
  Close();
}

void SipTransports::Close() {
  guards_.clear();
  if (stack_)
    sip_close(stack_.get(), true);
  stack_.reset();
  look_again_.Stop();
  count_.Stop();
}

int SipTransports::Alloc(dnsc* names) {
  sip* stack = nullptr;
  const int error = sip_alloc(&stack, names, kHashSize, kHashSize, kHashSize, kSoftware, nullptr, nullptr);
  stack_.reset(stack);
  return error;
}

int SipTransports::Open(const sa& listen, dnsc* names) {
  const int attempts = sa_port(&listen) == 0 ? kPortAttempts : 1;
  int error = 0;
  for (int attempt = 0; attempt < attempts; ++attempt) {
    error = Alloc(names);
    if (error != 0)
      return error;
    listen_ = listen;
    bound_.clear();
    error = BindAll();
    if (error == 0)
      break;
    stack_.reset();
  }
  if (error != 0)
    return error;
  quiet_ = FreeDescriptor();
  count_.StartRepeating(kCount, kCount, [this](std::uint64_t) { PutCrowdOut(); });
  if (Everywhere())
    look_again_.StartRepeating(kLookAgain, kLookAgain, [this](std::uint64_t) { BindNewAddresses(); });
  return 0;
}

int SipTransports::OpenUnbound(dnsc* names) {
  sa_init(&listen_, AF_UNSPEC);
  return Alloc(names);
}

int SipTransports::BindTo(const std::vector<sa>& addresses, sip_transp transport, tls* context) {
  const bool same = std::equal(wanted_.begin(), wanted_.end(), addresses.begin(), addresses.end(),
                               [](const sa& a, const sa& b) { return sa_cmp(&a, &b, SA_ALL); });
  if (same && transport == transport_)
    return 0;
  Unbind();
  for (const sa& address : addresses) {
    sa own{};
    int error = transport == SIP_TRANSP_TLS ? sip_transp_add(stack_.get(), transport, &address, context)
                                            : sip_transp_add(stack_.get(), transport, &address);
    if (error == 0)
      error = sip_transp_laddr(stack_.get(), &own, transport, &address);
    if (error != 0) {
      Unbind();
      return error;
    }
    bound_.push_back(own);
    if (transport == SIP_TRANSP_UDP)
      Knock(own);
  }
  wanted_ = addresses;
  transport_ = transport;
  return 0;
}

void SipTransports::Unbind() {
  guards_.clear();
  sip_transp_flush(stack_.get());
  bound_.clear();
  wanted_.clear();
}

std::vector<sa> SipTransports::Addresses() const {
  if (!Everywhere())
    return {listen_};
  struct Search {
    std::vector<sa> found;
    int family;
  } search{{}, sa_af(&listen_)};
  const auto take = [](const char*, const sa* address, void* arg) {
    auto& to = *static_cast<Search*>(arg);
    if (sa_af(address) == to.family && !sa_is_linklocal(address))
      to.found.push_back(*address);
    return false;
  };
  net_if_apply(take, &search);
  return search.found;
}

// The stack knows only sockets with an address of their own, which is what it names to the peer; so "everywhere" is
// a socket for each address.
int SipTransports::BindAll() {
  const std::vector<sa> addresses = Addresses();
  if (addresses.empty())
    return EADDRNOTAVAIL;
  for (const sa& address : addresses)
    if (const int error = Bind(address))
      return error;
  return 0;
}

int SipTransports::Bind(sa address) {
  sa_set_port(&address, Port());
  if (const int error = sip_transp_add(stack_.get(), SIP_TRANSP_UDP, &address))
    return error;
  if (Port() == 0) {
    sa chosen{};
    if (const int error = sip_transp_laddr(stack_.get(), &chosen, SIP_TRANSP_UDP, nullptr))
      return error;
    sa_set_port(&listen_, sa_port(&chosen));
    sa_set_port(&address, sa_port(&chosen));
  }
  if (const int error = sip_transp_add(stack_.get(), SIP_TRANSP_TCP, &address))
    return error;
  bound_.push_back(address);
  Knock(address);
  return 0;
}

void SipTransports::BindNewAddresses() {
  for (const sa& address : Addresses()) {
    const bool known =
        std::any_of(bound_.begin(), bound_.end(), [&](const sa& other) { return sa_cmp(&other, &address, SA_ADDR); });
    if (!known)
      Bind(address);
  }
}

void SipTransports::PutCrowdOut() {
  const bool crowded = FreeDescriptor() - quiet_ > kMostNewDescriptors;
  if (crowded)
    Unbind();
  if (bound_.empty())
    BindAll();
  if (crowded)
    quiet_ = FreeDescriptor(); // what is still in use was none of theirs
}

std::optional<sa> SipTransports::AddressTowards(const sa& peer) const {
  if (transport_ != SIP_TRANSP_NONE) {
    const auto near =
        std::find_if(bound_.begin(), bound_.end(), [&](const sa& address) { return sa_af(&address) == sa_af(&peer); });
    if (near != bound_.end())
      return *near;
    return bound_.empty() ? std::nullopt : std::optional(bound_.front());
  }
  sa address = listen_;
  if (!Everywhere())
    return address;
  if (sa_isset(&peer, SA_ADDR)) {
    const auto source = SourceTowards(peer);
    if (!source)
      return std::nullopt;
    address = *source;
  } else if (net_default_source_addr_get(sa_af(&listen_), &address) != 0) {
    return std::nullopt;
  }
  sa_set_port(&address, Port());
  return address;
}

// The stack writes a line to the terminal on each datagram that it can't read, and anyone may send those. They can be
// held back in front of it, but only once its socket is known; a message that arrives tells it, so the line sends
// itself one.
void SipTransports::Knock(const sa& address) {
  const std::string own = ToText(address);
  const std::string text = "OPTIONS sip:" + own + " SIP/2.0\r\nVia: SIP/2.0/UDP " + own + ";branch=z9hG4bK" + knock_ +
                           "\r\nFrom: <sip:" + own + ">;tag=1\r\nTo: <sip:" + own + ">\r\nCall-ID: " + knock_ +
                           "\r\nCSeq: 1 OPTIONS\r\nMax-Forwards: 0\r\nContent-Length: 0\r\n\r\n";
  const RePtr<mbuf> message(mbuf_alloc(text.size()));
  if (!message || mbuf_write_str(message.get(), text.c_str()) != 0)
    return;
  mbuf_set_pos(message.get(), 0);
  sip_send(stack_.get(), nullptr, SIP_TRANSP_UDP, &address, message.get());
}

bool SipTransports::TakeKnock(const sip_msg& request) {
  if (request.tp != SIP_TRANSP_UDP || ToView(request.callid) != knock_)
    return false;
  udp_helper* guard = nullptr;
  auto* socket = static_cast<udp_sock*>(request.sock);
  if (!udp_helper_find(socket, kGuardLayer) &&
      udp_register_helper(&guard, socket, kGuardLayer, nullptr, &SipTransports::IsBroken, this) == 0)
    guards_.emplace_back(guard);
  return true;
}

bool SipTransports::IsBroken(sa* source, mbuf* datagram, void* self) {
  const auto& transports = *static_cast<SipTransports*>(self);
  if (transports.admits_ && !transports.admits_(*source))
    return true;
  const std::size_t position = datagram->pos;
  sip_msg* message = nullptr;
  const bool broken = sip_msg_decode(&message, datagram) != 0;
  mem_deref(message);
  datagram->pos = position;
  return broken;
}

} // namespace kelmio
