#include "drivers/sip/registrar_lookup.h"

#include <random>
#include <utility>

namespace kelmio {

namespace {

// A name server that doesn't answer within this is as good as none.
constexpr std::chrono::milliseconds kPatience{10'000};

const char* ServiceName(sip_transp transport) {
  switch (transport) {
  case SIP_TRANSP_TLS:
    return "_sips._tcp.";
  case SIP_TRANSP_TCP:
    return "_sip._tcp.";
  default:
    return "_sip._udp.";
  }
}

sip_transp FixedTransport(SipTransport wanted, std::uint16_t port) {
  switch (wanted) {
  case SipTransport::Tcp:
    return SIP_TRANSP_TCP;
  case SipTransport::Tls:
    return SIP_TRANSP_TLS;
  case SipTransport::Udp:
    return SIP_TRANSP_UDP;
  case SipTransport::Automatic:
    break;
  }
  // Nothing but TLS is spoken at the port that is made for it.
  return port == SIP_PORT_TLS ? SIP_TRANSP_TLS : SIP_TRANSP_UDP;
}

} // namespace

struct RegistrarLookup::Question {
  RegistrarLookup* lookup = nullptr;
  std::size_t host = 0;
  dns_query* handle = nullptr; // told by the library when it is over
  ~Question() { mem_deref(handle); }
};

RegistrarLookup::RegistrarLookup(dnsc* names) : names_(names) {}

RegistrarLookup::~RegistrarLookup() = default;

void RegistrarLookup::Stop() {
  limit_.Stop();
  questions_.clear();
  open_questions_ = 0;
  hosts_.clear();
  services_.clear();
  done_ = nullptr;
}

void RegistrarLookup::Start(const ServerName& server, SipTransport transport, Done done) {
  Stop();
  server_ = server;
  done_ = std::move(done);
  unknown_ = false;
  transport_ = FixedTransport(transport, server.port);

  sa address{};
  if (sa_set_str(&address, server.host.c_str(), sip_transp_port(transport_, server.port)) == 0) {
    const Done tell = std::exchange(done_, nullptr);
    tell({{{transport_, address}}, {}});
    return;
  }
  limit_.StartOnce(kPatience, [this](std::uint64_t) { Finish(); });
  if (server.port != 0) {
    hosts_.push_back({server.host, server.port, {}, {}});
    AskForHosts();
    return;
  }
  if (transport == SipTransport::Automatic)
    services_ = {SIP_TRANSP_TLS, SIP_TRANSP_UDP, SIP_TRANSP_TCP};
  else
    services_ = {transport_};
  AskForService();
}

bool RegistrarLookup::Ask(const std::string& name, std::uint16_t type, std::size_t host, dns_query_h* heard) {
  auto question = std::make_unique<Question>();
  question->lookup = this;
  question->host = host;
  if (!names_ ||
      dnsc_query(&question->handle, names_, name.c_str(), type, DNS_CLASS_IN, true, heard, question.get()) != 0)
    return false;
  questions_.push_back(std::move(question));
  ++open_questions_;
  return true;
}

void RegistrarLookup::AskForService() {
  if (services_.empty()) {
    // No service of that kind is named, so the server itself is meant, at the port that is usual.
    hosts_.push_back({server_.host, sip_transp_port(transport_, 0), {}, {}});
    AskForHosts();
    return;
  }
  if (!Ask(ServiceName(services_.front()) + server_.host, DNS_TYPE_SRV, 0, &RegistrarLookup::OnServices))
    FinishSoon();
}

void RegistrarLookup::OnServices(int error, const dnshdr*, list* answers, list*, list*, void* question) {
  RegistrarLookup& self = *static_cast<Question*>(question)->lookup;
  --self.open_questions_;
  if (error != 0) {
    // Silence is no answer: a service that is protected must not be passed over because its name got lost.
    self.FinishSoon();
    return;
  }
  std::random_device random;
  dns_rrlist_sort(answers, DNS_TYPE_SRV, random());
  for (const le* element = list_head(answers); element; element = element->next) {
    const auto& record = *static_cast<const dnsrr*>(element->data);
    const std::string target = record.type == DNS_TYPE_SRV && record.rdata.srv.target ? record.rdata.srv.target : "";
    // "." says that there is no such service (RFC 2782).
    if (!target.empty() && target != ".")
      self.hosts_.push_back({target, record.rdata.srv.port, {}, {}});
  }
  if (!self.hosts_.empty()) {
    self.transport_ = self.services_.front();
    self.AskForHosts();
    return;
  }
  self.services_.erase(self.services_.begin());
  self.AskForService();
}

void RegistrarLookup::AskForHosts() {
  for (std::size_t i = 0; i < hosts_.size(); ++i) {
    sa address{};
    if (sa_set_str(&address, hosts_[i].name.c_str(), hosts_[i].port) == 0) {
      hosts_[i].v4.push_back(address);
      continue;
    }
    Ask(hosts_[i].name, DNS_TYPE_A, i, &RegistrarLookup::OnAddresses);
    Ask(hosts_[i].name, DNS_TYPE_AAAA, i, &RegistrarLookup::OnAddresses);
  }
  if (open_questions_ == 0)
    FinishSoon();
}

void RegistrarLookup::OnAddresses(int error, const dnshdr* header, list* answers, list*, list*, void* question) {
  const auto& asked = *static_cast<Question*>(question);
  RegistrarLookup& self = *asked.lookup;
  --self.open_questions_;
  Host& host = self.hosts_[asked.host];
  self.unknown_ = self.unknown_ || (error == 0 && header && header->rcode == DNS_RCODE_NAME_ERR);
  for (const le* element = list_head(answers); error == 0 && element; element = element->next) {
    const auto& record = *static_cast<const dnsrr*>(element->data);
    sa address{};
    if (record.type == DNS_TYPE_A) {
      sa_set_in(&address, record.rdata.a.addr, host.port);
      host.v4.push_back(address);
    } else if (record.type == DNS_TYPE_AAAA) {
      sa_set_in6(&address, record.rdata.aaaa.addr, host.port);
      host.v6.push_back(address);
    }
  }
  if (self.open_questions_ == 0)
    self.FinishSoon();
}

// The library still writes to a question behind its answer, so that nobody may be told from inside of it.
void RegistrarLookup::FinishSoon() {
  limit_.StartOnce(std::chrono::milliseconds{0}, [this](std::uint64_t) { Finish(); });
}

void RegistrarLookup::Finish() {
  LookupResult result;
  for (const Host& host : hosts_) {
    for (const sa& address : host.v4)
      result.targets.push_back({transport_, address});
    for (const sa& address : host.v6)
      result.targets.push_back({transport_, address});
  }
  if (result.targets.empty())
    result.hindrance = unknown_ ? "There is no server of the name " + server_.host
                                : "The name " + server_.host + " can't be looked up";
  const Done tell = std::exchange(done_, nullptr);
  limit_.Stop();
  if (tell)
    tell(std::move(result));
}

} // namespace kelmio
