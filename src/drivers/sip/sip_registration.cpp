#include "drivers/sip/sip_registration.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <utility>

#include "drivers/sip/dial_target.h"
#include "drivers/sip/sip_replies.h"

namespace kelmio {

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr std::uint32_t kMostNameServers = 4;
// A registrar that asks for the password again and again is not listened to for ever.
constexpr int kMostQuestions = 6;
constexpr seconds kLongestRetryAfter{3600};
// RFC 3261 20.19: what a registration lasts of which nothing else is said.
constexpr seconds kUsualExpires{3600};
constexpr std::size_t kLongestReason = 60;
// Behind some routers each request comes from another port; the last one seen is as good as any then.
constexpr int kMostMoves = 2;

bool IsReliable(sip_transp transport) {
  return transport != SIP_TRANSP_UDP;
}

// An address that is nobody's (RFC 5737); nothing is sent there.
constexpr const char* kAnyServer = "192.0.2.1";

bool SameAddress(const std::optional<sa>& a, const std::optional<sa>& b) {
  return a && b ? sa_cmp(&*a, &*b, SA_ADDR) : a.has_value() == b.has_value();
}

/// Words of the other side, fit to be shown.
std::string Plain(std::string_view text) {
  std::string plain;
  for (const char c : text.substr(0, kLongestReason))
    if (c >= ' ' && c <= '~')
      plain += c;
  return plain;
}

std::string StatusText(const sip_msg& message) {
  return std::to_string(message.scode) + " " + Plain(ToView(message.reason));
}

seconds SecondsOf(const sip_msg& message, sip_hdrid header) {
  const sip_hdr* found = sip_msg_hdr(&message, header);
  std::uint32_t count = 0;
  if (found)
    std::from_chars(found->val.p, found->val.p + found->val.l, count);
  return seconds(count);
}

/// The session's library adds this mark by itself.
std::string WithoutLooseMark(std::string_view route) {
  std::string uri(route);
  if (const std::size_t mark = uri.find(";lr");
      mark != std::string::npos && (mark + 3 == uri.size() || uri[mark + 3] == ';'))
    uri.erase(mark, 3);
  return uri;
}

} // namespace

SipRegistration::SipRegistration(const SipSettings& settings, SipTransports& transports, dnsc* names, Purpose purpose,
                                 Told told)
    : settings_(settings), account_(*settings.account), server_(NextHop(account_)), transports_(transports),
      names_(names), purpose_(purpose), told_(std::move(told)), lookup_(names),
      expires_(static_cast<std::uint64_t>(account_.expires.count())) {
  std::random_device random;
  random_.seed(random());
  call_id_ = std::to_string(random()) + std::to_string(random());
  tag_ = std::to_string(random());
  if (!account_.proxy.empty())
    routes_.push_back("sip:" + server_.Text());
}

SipRegistration::~SipRegistration() {
  mem_deref(request_);
  mem_deref(ping_);
}

void SipRegistration::Start() {
  ask_for_nothing_ = purpose_ == Purpose::Probe;
  if (purpose_ == Purpose::Stay)
    watch_.emplace([this](NetworkWatch::Change change) { NetworkChanged(change); });
  Begin();
}

// --- the way there

void SipRegistration::Begin() {
  mem_deref(request_);
  mem_deref(ping_);
  alive_.Stop();
  next_.Stop();
  refused_ = false;
  phase_ = Phase::Looking;
  if (health_ != LineStatus::Health::Trouble)
    Tell(LineStatus::Health::Trying, "Registering with " + account_.server);
  // A connection that has been up may be dead without anyone having been told.
  if (!targets_.empty() && IsReliable(targets_.front().transport))
    transports_.Unbind();
  if (names_) {
    sa servers[kMostNameServers];
    std::uint32_t count = kMostNameServers;
    char domain[64];
    if (dns_srv_get(domain, sizeof(domain), servers, &count) == 0)
      dnsc_srv_set(names_, servers, count);
  }
  // Once the name servers have offered protection, nobody talks this line out of it.
  const SipTransport transport = protected_once_ ? SipTransport::Tls : account_.transport;
  lookup_.Start(server_, transport, [this](LookupResult result) { Found(std::move(result)); });
}

void SipRegistration::Found(LookupResult result) {
  if (result.targets.empty()) {
    Fail(result.hindrance, false);
    return;
  }
  targets_ = std::move(result.targets);
  target_ = 0;
  protected_once_ = protected_once_ || Target().transport == SIP_TRANSP_TLS;
  certificate_.ForgetFault();
  TryTarget();
}

bool SipRegistration::BindTowards(const SipTarget& target) {
  std::vector<sa> sources;
  const auto add = [&](const sa& peer) {
    const bool known =
        std::any_of(sources.begin(), sources.end(), [&](const sa& source) { return sa_af(&source) == sa_af(&peer); });
    if (const auto source = known ? std::nullopt : SourceTowards(peer)) {
      sources.push_back(*source);
      sa_set_port(&sources.back(), settings_.listen.port);
    }
  };
  add(target.address);
  if (sources.empty())
    return false;
  for (const SipTarget& other : targets_)
    add(other.address);
  // Always in the same order, so that another target is no reason to bind anew.
  std::sort(sources.begin(), sources.end(), [](const sa& a, const sa& b) { return sa_af(&a) < sa_af(&b); });
  return transports_.BindTo(sources, target.transport, certificate_.Context()) == 0;
}

void SipRegistration::TryTarget() {
  if (Target().transport == SIP_TRANSP_TLS && !certificate_.Context() &&
      !certificate_.Prepare(server_.host, account_.authority)) {
    Fail(certificate_.Fault(), false);
    return;
  }
  while (target_ < targets_.size() && !BindTowards(Target()))
    ++target_;
  if (target_ == targets_.size()) {
    target_ = 0;
    Fail("There is no way to " + account_.server + " from this computer", false);
    return;
  }
  observed_.reset();
  Refresh();
}

// --- asking

void SipRegistration::Refresh() {
  sip_auth* auth = nullptr;
  sip_auth_alloc(&auth, &SipRegistration::CredentialsOfRegistrar, this, false);
  auth_.reset(auth);
  questions_ = 0;
  longer_ = false;
  Ask();
}

int SipRegistration::CredentialsOfRegistrar(char** user, char** password, const char* realm, void* self) {
  auto& realms = static_cast<SipRegistration*>(self)->realms_;
  if (std::find(realms.begin(), realms.end(), realm) == realms.end() && realms.size() < kMostQuestions)
    realms.emplace_back(realm);
  return Credentials(user, password, realm, self);
}

int SipRegistration::CredentialsBeyond(char** user, char** password, const char* realm, void* self) {
  const auto& realms = static_cast<SipRegistration*>(self)->realms_;
  const bool known = std::find(realms.begin(), realms.end(), realm) != realms.end();
  return known ? Credentials(user, password, realm, self) : EAUTH;
}

int SipRegistration::Credentials(char** user, char** password, const char*, void* self) {
  const SipAccount& own = static_cast<SipRegistration*>(self)->account_;
  const int error = str_dup(user, own.auth_user.empty() ? own.user.c_str() : own.auth_user.c_str());
  return error != 0 ? error : str_dup(password, own.password.c_str());
}

std::optional<sa> SipRegistration::Local() const {
  return targets_.empty() ? std::nullopt : transports_.AddressTowards(Target().address);
}

std::string SipRegistration::Contact(const sa& address) const {
  const sip_transp transport = targets_.empty() ? SIP_TRANSP_UDP : Target().transport;
  return "sip:" + EscapedUser(account_.user) + "@" + ToText(address) + sip_transp_param(transport);
}

std::string SipRegistration::ContactUri(const sa& local) const {
  return Contact(observed_.value_or(local));
}

std::string SipRegistration::ContactHeader() const {
  if (ask_for_nothing_)
    return {};
  const auto line = [](const std::string& uri, std::uint64_t expires) {
    return "Contact: <" + uri + ">;expires=" + std::to_string(expires) + "\r\n";
  };
  if (phase_ == Phase::Leaving)
    return line(bound_contact_, 0) + "Expires: 0\r\n";
  std::string lines = line(asked_contact_, expires_);
  // What the registrar knew before leads nowhere any more.
  if (!bound_contact_.empty() && bound_contact_ != asked_contact_)
    lines += line(bound_contact_, 0);
  return lines + "Expires: " + std::to_string(expires_) + "\r\n";
}

void SipRegistration::Ask() {
  mem_deref(request_);
  const auto local = Local();
  if (!local) {
    NoAnswer(ENETUNREACH);
    return;
  }
  if (phase_ != Phase::Leaving) {
    phase_ = Phase::Asking;
    asked_contact_ = ContactUri(*local);
    next_.StartOnce(settings_.times.registrar_answer, [this](std::uint64_t) { NoAnswer(ETIMEDOUT); });
  }
  const std::string name = account_.display_name.empty() ? "" : "\"" + QuotedName(account_) + "\" ";
  const std::string own = AddressOfRecord(account_);
  const std::string registrar = "sip:" + ParseServerName(account_.server).value_or(ServerName{}).Text();
  const std::string way = "sip:" + ToText(Target().address) + sip_transp_param(Target().transport);
  const std::string route = routes_.empty() ? "" : "Route: <" + routes_.front() + ";lr>\r\n";
  pl way_text{way.c_str(), way.size()};
  ::uri next_hop{};
  int error = uri_decode(&next_hop, &way_text);
  if (error == 0)
    error = sip_requestf(&request_, transports_.Stack(), true, "REGISTER", registrar.c_str(), &next_hop, auth_.get(),
                         nullptr, &SipRegistration::OnResponse, this,
                         "%sTo: <%s>\r\nFrom: %s<%s>;tag=%s\r\nCall-ID: %s\r\nCSeq: %u REGISTER\r\n%s%s"
                         "User-Agent: Kelmio\r\nContent-Length: 0\r\n\r\n",
                         route.c_str(), own.c_str(), name.c_str(), own.c_str(), tag_.c_str(), call_id_.c_str(),
                         ++sequence_, ContactHeader().c_str(), kAllowHeader);
  if (error != 0)
    NoAnswer(error);
}

// --- what comes back

void SipRegistration::OnResponse(int error, const sip_msg* message, void* self) {
  if (!message || message->scode >= 200)
    static_cast<SipRegistration*>(self)->Answered(error, message);
}

void SipRegistration::Answered(int error, const sip_msg* message) {
  if (error != 0 || !message) {
    NoAnswer(error != 0 ? error : ETIMEDOUT);
    return;
  }
  TakeObserved(*message);
  if (message->scode == 401 || message->scode == 407)
    Challenged(*message);
  else if (phase_ == Phase::Leaving)
    Left();
  else if (message->scode < 300)
    Accepted(*message);
  else
    Refused(*message);
}

void SipRegistration::Challenged(const sip_msg& message) {
  const int error = ++questions_ > kMostQuestions ? EAUTH : sip_auth_authenticate(auth_.get(), &message);
  if (error == 0 && (!account_.password.empty() || phase_ == Phase::Leaving))
    Ask();
  else if (phase_ == Phase::Leaving)
    Left();
  else if (error == 0)
    Fail(account_.server + " asks for a password", true);
  else if (error == EAUTH)
    Fail("The password was refused by " + account_.server, true);
  else
    Fail(account_.server + " asks for the password in a way that is not known here", true);
}

void SipRegistration::Refused(const sip_msg& message) {
  const std::string account = "the account " + account_.user;
  switch (message.scode) {
  case 423:
    if (const auto shortest = SecondsOf(message, SIP_HDR_MIN_EXPIRES); !longer_ && shortest.count() > 0) {
      longer_ = true;
      expires_ = static_cast<std::uint64_t>(shortest.count());
      Ask();
      return;
    }
    break;
  case 400:
    // Not every registrar takes a question that binds nothing.
    if (std::exchange(ask_for_nothing_, false)) {
      Ask();
      return;
    }
    break;
  case 403:
    Fail(account_.server + " refuses " + account + (questions_ > 0 ? " or its password" : ""), true);
    return;
  case 404:
    Fail(account_.server + " does not know " + account, true);
    return;
  case 408:
  case 503:
    if (target_ + 1 < targets_.size()) {
      ++target_;
      TryTarget();
      return;
    }
    break;
  default:
    break;
  }
  const bool later = message.scode >= 500 && message.scode < 600;
  if (later || message.scode == 408 || message.scode == 480)
    Fail(account_.server + " can't register this line now: " + StatusText(message), false,
         std::min(SecondsOf(message, SIP_HDR_RETRY_AFTER), kLongestRetryAfter));
  else
    Fail(account_.server + " refuses to register this line: " + StatusText(message), true);
}

void SipRegistration::Accepted(const sip_msg& message) {
  mem_deref(request_);
  failures_ = 0;
  if (!ask_for_nothing_)
    bound_contact_ = asked_contact_;
  // The next hop for all that this line asks for (RFC 3608), unless the user has named one.
  if (account_.proxy.empty()) {
    routes_.clear();
    const auto add = [](const sip_hdr* header, const sip_msg*, void* routes) {
      sip_addr route{};
      if (sip_addr_decode(&route, &header->val) == 0)
        static_cast<std::vector<std::string>*>(routes)->emplace_back(WithoutLooseMark(ToView(route.auri)));
      return false;
    };
    sip_msg_hdr_apply(&message, true, SIP_HDR_SERVICE_ROUTE, add, &routes_);
  }
  const auto local = Local();
  const bool seen_elsewhere = local && !ask_for_nothing_ && ContactUri(*local) != asked_contact_;
  if (seen_elsewhere && moves_++ < kMostMoves) {
    Ask();
    return;
  }
  moves_ = 0;
  phase_ = Phase::Registered;
  const bool encrypted = Target().transport == SIP_TRANSP_TLS;
  const seconds granted = Granted(message);
  // Some time before the end, for an answer that gets lost.
  const seconds reserve = std::max(granted / 10, std::min(granted / 2, seconds{10}));
  next_.StartOnce(std::max<milliseconds>(granted - reserve, seconds{1}), [this](std::uint64_t) { Refresh(); });
  if (purpose_ == Purpose::Stay)
    alive_.StartRepeating(settings_.times.keep_alive, settings_.times.keep_alive,
                          [this](std::uint64_t) { KeepAlive(); });
  Tell(LineStatus::Health::Ready,
       "Registered with " + account_.server + " as " + account_.user + std::string(encrypted ? kEncryptedMark : ""));
}

seconds SipRegistration::Granted(const sip_msg& message) const {
  struct Search {
    const std::string& own;
    std::optional<seconds> found;
    std::optional<seconds> only;
    int count = 0;
  } search{asked_contact_, {}, {}, 0};
  const auto look = [](const sip_hdr* header, const sip_msg*, void* arg) {
    auto& into = *static_cast<Search*>(arg);
    sip_addr contact{};
    pl expires{};
    if (sip_addr_decode(&contact, &header->val) != 0)
      return false;
    ++into.count;
    if (msg_param_decode(&contact.params, "expires", &expires) != 0)
      return false;
    into.only = seconds(pl_u32(&expires));
    if (ToView(contact.auri) == into.own)
      into.found = into.only;
    return false;
  };
  sip_msg_hdr_apply(&message, true, SIP_HDR_CONTACT, look, &search);
  std::optional<seconds> granted = search.found;
  if (!granted && search.count == 1)
    granted = search.only;
  if (!granted && pl_isset(&message.expires))
    granted = seconds(pl_u32(&message.expires));
  // A registrar that says nothing has taken what was asked for.
  return granted && granted->count() > 0 ? std::min(*granted, seconds(account_.expires) + kUsualExpires)
                                         : seconds(expires_);
}

bool SipRegistration::TakeObserved(const sip_msg& message) {
  const auto local = Local();
  pl host{};
  pl port{};
  const bool has_host = msg_param_decode(&message.via.params, "received", &host) == 0 && pl_isset(&host);
  const bool has_port = msg_param_decode(&message.via.params, "rport", &port) == 0 && pl_isset(&port);
  if (!local || (!has_host && !has_port))
    return false;
  sa seen = observed_.value_or(*local);
  if (has_host) {
    const std::string text(ToView(host));
    const bool brackets = text.size() > 2 && text.front() == '[';
    sa address{};
    if (sa_set_str(&address, (brackets ? text.substr(1, text.size() - 2) : text).c_str(), sa_port(&seen)) != 0)
      return false;
    seen = address;
  }
  if (has_port && pl_u32(&port) != 0 && pl_u32(&port) <= UINT16_MAX)
    sa_set_port(&seen, static_cast<std::uint16_t>(pl_u32(&port)));
  const sa before = observed_.value_or(*local);
  const bool changed = !sa_cmp(&seen, &before, SA_ALL);
  observed_ = seen;
  return changed;
}

// --- what goes wrong

void SipRegistration::NoAnswer(int error) {
  mem_deref(request_);
  if (phase_ == Phase::Leaving) {
    Left();
    return;
  }
  if (target_ + 1 < targets_.size()) {
    ++target_;
    TryTarget();
    return;
  }
  if (!certificate_.Fault().empty())
    Fail(certificate_.Fault(), false);
  else if (error == ECONNREFUSED)
    Fail("Nobody takes calls at " + account_.server + " now", false);
  else if (error == EPROTO)
    Fail("No encrypted connection to " + account_.server + " can be made", false);
  else if (error == ENETUNREACH || error == EHOSTUNREACH)
    Fail("There is no way to " + account_.server + " from this computer", false);
  else
    Fail(account_.server + " doesn't answer", false);
}

std::optional<sa> SipRegistration::Way() const {
  if (!targets_.empty())
    return SourceTowards(Target().address);
  sa anywhere{};
  sa_set_str(&anywhere, kAnyServer, SIP_PORT);
  return SourceTowards(anywhere);
}

void SipRegistration::Fail(const std::string& reason, bool refused, seconds at_least) {
  mem_deref(request_);
  mem_deref(ping_);
  alive_.Stop();
  phase_ = Phase::Waiting;
  refused_ = refused;
  failed_from_ = Way();
  const SipTimes& times = settings_.times;
  milliseconds pause = refused ? times.refused_retry : times.first_retry;
  for (int i = 0; !refused && i < failures_ && pause < times.longest_retry; ++i)
    pause *= 2;
  ++failures_;
  // Half of it is left to chance, so that not all come at once to a registrar that is back.
  std::uniform_int_distribution<milliseconds::rep> chance(pause.count() / 2, pause.count());
  pause =
      std::max<milliseconds>(refused ? pause : std::min(milliseconds(chance(random_)), times.longest_retry), at_least);
  next_.StartOnce(pause, [this](std::uint64_t) { Begin(); });
  const auto whole = std::chrono::ceil<seconds>(pause);
  const std::string when = whole < std::chrono::minutes{2}
                               ? std::to_string(whole.count()) + " s"
                               : std::to_string(std::chrono::round<std::chrono::minutes>(whole).count()) + " minutes";
  Tell(LineStatus::Health::Trouble, reason, "; next try in " + when);
}

void SipRegistration::Tell(LineStatus::Health health, const std::string& reason, const std::string& more) {
  health_ = health;
  const bool encrypted = !targets_.empty() && Target().transport == SIP_TRANSP_TLS;
  told_({.health = health, .words = reason + more + ".", .reason = reason, .encrypted = encrypted});
}

// --- staying

void SipRegistration::KeepAlive() {
  if (phase_ != Phase::Registered)
    return;
  if (ping_) {
    mem_deref(ping_);
    if (pong_seen_) {
      Begin();
      return;
    }
    pings_ = false; // not every registrar answers this question
  }
  const SipTarget& target = Target();
  if (!pings_) {
    const RePtr<mbuf> nothing(mbuf_alloc(4));
    if (nothing && mbuf_write_str(nothing.get(), "\r\n\r\n") == 0) {
      mbuf_set_pos(nothing.get(), 0);
      sip_send(transports_.Stack(), nullptr, target.transport, &target.address, nothing.get());
    }
    return;
  }
  const std::string own = AddressOfRecord(account_);
  const std::string registrar = "sip:" + ParseServerName(account_.server).value_or(ServerName{}).Text();
  const std::string way = "sip:" + ToText(target.address) + sip_transp_param(target.transport);
  pl way_text{way.c_str(), way.size()};
  ::uri next_hop{};
  if (uri_decode(&next_hop, &way_text) == 0 &&
      sip_requestf(&ping_, transports_.Stack(), true, "OPTIONS", registrar.c_str(), &next_hop, nullptr, nullptr,
                   &SipRegistration::OnPong, this,
                   "To: <%s>\r\nFrom: <%s>;tag=%s\r\nCall-ID: %s-alive\r\nCSeq: %u OPTIONS\r\n"
                   "User-Agent: Kelmio\r\nContent-Length: 0\r\n\r\n",
                   registrar.c_str(), own.c_str(), tag_.c_str(), call_id_.c_str(), ++sequence_) != 0)
    Begin();
}

void SipRegistration::OnPong(int error, const sip_msg* message, void* self) {
  auto& registration = *static_cast<SipRegistration*>(self);
  if (registration.phase_ != Phase::Registered || (message && message->scode < 200))
    return;
  if (error == 0 && message) {
    registration.pong_seen_ = true;
    // Another address than the registrar knows: the connection was made anew, or a router has forgotten this line.
    if (registration.TakeObserved(*message))
      registration.Refresh();
  } else if (registration.pong_seen_ || error != ETIMEDOUT) {
    registration.Begin();
  } else {
    registration.pings_ = false;
  }
}

void SipRegistration::NetworkChanged(NetworkWatch::Change change) {
  if (phase_ == Phase::Idle || phase_ == Phase::Leaving)
    return;
  bool again = change == NetworkWatch::Change::Woke;
  if (phase_ == Phase::Waiting || phase_ == Phase::Looking) {
    // A network that stirs all the time is no reason to ask all the time.
    again = !refused_ && (again || !SameAddress(Way(), failed_from_));
  } else if (!again) {
    again = !SameAddress(Way(), Local());
  }
  if (!again)
    return;
  failures_ = 0;
  Begin();
}

std::vector<std::string> SipRegistration::Routes() const {
  // Where the first of several servers is down, a call would wait for it half a minute; so it is told the way.
  if (routes_.empty() && target_ > 0)
    return {"sip:" + ToText(Target().address)};
  return routes_;
}

bool SipRegistration::IsRegistrar(const sa& source) const {
  return std::any_of(targets_.begin(), targets_.end(),
                     [&](const SipTarget& target) { return sa_cmp(&target.address, &source, SA_ADDR); });
}

// --- leaving

void SipRegistration::Leave(std::function<void()> done) {
  watch_.reset();
  lookup_.Stop();
  next_.Stop();
  alive_.Stop();
  mem_deref(request_);
  mem_deref(ping_);
  left_ = std::move(done);
  const bool bound = !bound_contact_.empty() && phase_ != Phase::Waiting && !targets_.empty();
  phase_ = Phase::Leaving;
  if (!bound) {
    Left();
    return;
  }
  next_.StartOnce(settings_.times.goodbye, [this](std::uint64_t) { Left(); });
  ask_for_nothing_ = false;
  Refresh();
}

void SipRegistration::Left() {
  next_.Stop();
  mem_deref(request_);
  if (const auto done = std::exchange(left_, nullptr))
    done();
}

} // namespace kelmio
