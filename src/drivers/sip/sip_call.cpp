#include "drivers/sip/sip_call.h"

#include <cerrno>
#include <system_error>

#include "drivers/shown_text.h"
#include "drivers/sip/caller_claims.h"
#include "drivers/sip/dial_target.h"
#include "drivers/sip/session_timer.h"
#include "drivers/sip/sip_replies.h"

namespace kelmio {

namespace {

constexpr char kSdpType[] = "application/sdp";
constexpr char kOverTls[] = "transport=tls";
constexpr std::size_t kLongestReason = 60;
// More than all that a search for the way and an agreement on keys repeat before they give up.
constexpr std::chrono::seconds kOpening{15};

bool HasBody(const sip_msg& message) {
  return mbuf_get_left(message.mb) > 0;
}

} // namespace

SipCall::SipCall(SipCallHost& host, SipCallNumber number)
    : host_(host), number_(number), media_(*this, host.Settings()) {}

SipCall::~SipCall() {
  // An unanswered caller hears that nobody is there rather than that the line is busy.
  if (session_ && phase_ == Phase::Ringing)
    sipsess_reject(session_.get(), 480, "Temporarily Unavailable", nullptr);
}

// --- incoming

bool SipCall::TakeInvite(const sip_msg& invite) {
  const auto local = host_.AddressTowards(invite.src);
  if (!local || !media_.Prepare(*local, invite.tp == SIP_TRANSP_TLS, !HasBody(invite), host_.Names())) {
    sip_treply(nullptr, host_.Stack(), &invite, 500, "Server Internal Error");
    return false;
  }
  if (HasBody(invite)) {
    if (const int error = media_.Read(invite, true)) {
      sip_treply(nullptr, host_.Stack(), &invite, 488, "Not Acceptable Here");
      Log(error == EPROTO ? "SIP line: a caller was refused: the line and he don't agree on encrypted sound"
                          : "SIP line: a caller with no usable sound format was refused");
      return false;
    }
  }
  sipsess* session = nullptr;
  const std::string contact = host_.NamesAt(*local).contact;
  sip_auth_h* const credentials = host_.Registration() ? &SipRegistration::CredentialsBeyond : nullptr;
  const int error =
      sipsess_accept(&session, host_.Sessions(), &invite, 180, "Ringing", contact.c_str(), kSdpType, nullptr,
                     credentials, host_.Registration(), false, &SipCall::OnOffer, &SipCall::OnAnswer,
                     &SipCall::OnEstablished, &SipCall::OnInfo, nullptr, &SipCall::OnClosed, this, "%s", kAllowHeader);
  if (error != 0)
    return false;
  session_.reset(session);
  answer_lines_ = SessionTimerLines(invite);

  host_.Report({.kind = SipReport::Kind::NewCall, .call = number_});
  ReportRings();
  ReportCaller(invite);
  patience_.StartOnce(host_.Settings().times.ringing, [this](std::uint64_t) {
    Log("SIP line: a caller who rang for too long was refused");
    Over();
  });
  return true;
}

void SipCall::ReportRings() {
  const auto ring = [this](std::uint64_t elapsed) {
    for (std::uint64_t i = 0; i < elapsed; ++i)
      host_.Report({.kind = SipReport::Kind::Ring, .call = number_, .count = ++rings_});
  };
  ring(1);
  const auto period = host_.Settings().ring_period;
  ring_timer_.StartRepeating(period, period, ring);
}

void SipCall::ReportCaller(const sip_msg& invite) {
  const bool vouched = host_.IsFromRegistrar(invite);
  const CallerIdentity caller =
      vouched ? CallerOfAccount(invite)
              : ReadCallerIdentity(ToView(invite.from.dname), UserOf(invite.from.uri, invite.from.auri));
  if (caller.Known())
    host_.Report({.kind = SipReport::Kind::CallerID, .call = number_, .name = caller.name, .text = caller.number});
  if (const std::string forwarder = vouched ? ForwarderOf(invite) : ""; !forwarder.empty())
    Log("Forwarded from " + forwarder);
}

void SipCall::Answer() {
  if (phase_ == Phase::OffHook) {
    Connected();
    return;
  }
  if (phase_ == Phase::Ringing && session_)
    media_.WhenReady([this] { SendAnswer(); });
}

void SipCall::SendAnswer() {
  const bool late_offer = !media_.HasTerms();
  const RePtr<mbuf> body = media_.Write(late_offer);
  if (!body ||
      sipsess_answer(session_.get(), 200, "OK", body.get(), "%s%s", kAllowHeader, answer_lines_.c_str()) != 0) {
    Log("SIP line: the call could not be answered");
    Over();
    return;
  }
  phase_ = Phase::Answered;
  ring_timer_.Stop();
  if (!late_offer) {
    media_.Meet();
    media_.Start();
  }
  patience_.StartOnce(host_.Settings().times.confirm, [this](std::uint64_t) {
    Log("SIP line: the caller never confirmed the answer");
    Over();
  });
}

// --- outgoing

void SipCall::Dial(const std::string& text) {
  outgoing_ = true;
  if (text.empty()) {
    phase_ = Phase::OffHook;
    media_.Start();
    return;
  }
  phase_ = Phase::Dialing;
  ReportState(CallState::Dialing);
  const DialTarget target = ParseDialTarget(text);
  const auto& account = host_.Settings().account;
  switch (target.kind) {
  case DialTarget::Kind::Address:
    Invite(target.uri, false);
    return;
  case DialTarget::Kind::Number:
    if (account) {
      Invite(NumberAt(text, ParseServerName(account->server).value_or(ServerName{}).Text()), true);
      return;
    }
    Log("SIP line: " + text + " can't be called: the line has no registrar, only addresses such as name@host");
    break;
  case DialTarget::Kind::Invalid:
    Log("SIP line: this is no address that can be called");
    break;
  }
  Over();
}

void SipCall::Invite(const std::string& uri, bool own_server) {
  pl text{uri.c_str(), uri.size()};
  ::uri parts{};
  sa peer{};
  // Towards a name the address isn't known yet; the default route is the best guess.
  if (uri_decode(&parts, &text) != 0 || sa_set(&peer, &parts.host, SIP_PORT) != 0)
    sa_init(&peer, AF_UNSPEC);
  const auto local = host_.AddressTowards(peer);
  const bool protected_way = local && host_.NamesAt(*local).contact.find(kOverTls) != std::string::npos;
  if (!local || !media_.Prepare(*local, protected_way, true, host_.Names())) {
    CantCall(uri, EADDRNOTAVAIL);
    return;
  }
  patience_.StartOnce(host_.Settings().times.no_answer, [this](std::uint64_t) {
    Log("SIP line: nobody answers");
    Over();
  });
  media_.WhenReady([this, uri, own_server, local = *local] {
    if (const int error = SendInvite(uri, local, own_server))
      CantCall(uri, error);
  });
}

int SipCall::SendInvite(const std::string& uri, const sa& local, bool own_server) {
  const RePtr<mbuf> body = media_.Write(true);
  if (!body)
    return ENOMEM;
  const SipNames own = host_.NamesAt(local);
  std::vector<std::string> routes = own.routes;
  // An account's calls all go through its server; what is called elsewhere has to be told the way.
  if (host_.Registration() && !own_server && routes.empty())
    routes.push_back("sip:" + ParseServerName(host_.Settings().account->server).value_or(ServerName{}).Text());
  std::vector<const char*> route_texts;
  route_texts.reserve(routes.size());
  for (const std::string& route : routes)
    route_texts.push_back(route.c_str());
  sip_auth_h* const credentials = own_server ? &SipRegistration::Credentials : &SipRegistration::CredentialsBeyond;
  sipsess* session = nullptr;
  const int error = sipsess_connect(
      &session, host_.Sessions(), uri.c_str(), own.display_name.empty() ? nullptr : own.display_name.c_str(),
      own.from.c_str(), own.contact.c_str(), route_texts.data(), static_cast<std::uint32_t>(route_texts.size()),
      kSdpType, body.get(), host_.Registration() ? credentials : nullptr, host_.Registration(), false,
      &SipCall::OnOffer, &SipCall::OnAnswer, &SipCall::OnProgress, &SipCall::OnEstablished, &SipCall::OnInfo, nullptr,
      &SipCall::OnClosed, this, "%s", kAllowHeader);
  session_.reset(session);
  return error;
}

void SipCall::CantCall(const std::string& uri, int error) {
  Log("SIP line: " + uri + " can't be called: " +
      (error == EADDRNOTAVAIL && host_.Registration() ? "there is no way to the account's server now"
                                                      : std::generic_category().message(error)));
  Over();
}

void SipCall::OnProgress(const sip_msg* message, void* self) {
  auto* call = static_cast<SipCall*>(self);
  call->ReportState(message->scode == 180 ? CallState::Ringback : CallState::Proceeding);
  // What is heard before the answer: the network's own tones, and its words on why there will be none.
  if (HasBody(*message) && call->media_.Read(*message, false) == 0) {
    call->ring_back_.Stop();
    call->media_.Meet();
    call->media_.Start();
  } else if (message->scode == 180 && !call->media_.HasTerms()) {
    call->ring_back_.Start();
  }
}

// --- both

int SipCall::OnOffer(mbuf** body, const sip_msg* message, void* self) {
  auto* call = static_cast<SipCall*>(self);
  const bool has_offer = HasBody(*message);
  if (has_offer) {
    if (const int error = call->media_.Read(*message, true))
      return error;
  }
  *body = call->media_.Write(!has_offer).release();
  if (has_offer)
    call->media_.Meet();
  return *body ? 0 : ENOMEM;
}

int SipCall::OnAnswer(const sip_msg* message, void* self) {
  auto* call = static_cast<SipCall*>(self);
  // The terms of the sound before the answer may hold on without being said again.
  if (!HasBody(*message) && call->media_.HasTerms())
    return 0;
  if (const int error = call->media_.Read(*message, false))
    return error;
  call->media_.Meet();
  return 0;
}

void SipCall::OnEstablished(const sip_msg*, void* self) {
  auto* call = static_cast<SipCall*>(self);
  if (call->phase_ == Phase::Up)
    return;
  call->ring_back_.Stop();
  // What is said before the way is open is lost, and the greeting is said at once.
  call->patience_.StartOnce(kOpening, [call](std::uint64_t) {
    call->Log("SIP line: no way for the sound was found to the other side");
    call->Over();
  });
  call->media_.WhenOpen([call] { call->Connected(); });
}

void SipCall::Connected() {
  if (phase_ == Phase::Up)
    return;
  phase_ = Phase::Up;
  ring_timer_.Stop();
  patience_.Stop();
  media_.Start();
  media_.ExpectPeer();
  host_.Report({.kind = SipReport::Kind::Connected, .call = number_});
}

void SipCall::OnInfo(sip* stack, const sip_msg* message, void*) {
  sip_reply(stack, message, 200, "OK");
}

void SipCall::OnClosed(int error, const sip_msg* message, void* self) {
  auto* call = static_cast<SipCall*>(self);
  const bool busy = message && (message->scode == 486 || message->scode == 600);
  if (busy)
    call->host_.Report({.kind = SipReport::Kind::Busy, .call = call->number_});
  else if (message && message->scode >= 300)
    call->Log("SIP line: the call was refused: " + std::to_string(message->scode) + " " +
              ShownText(ToView(message->reason), kLongestReason));
  else if (error == ETIMEDOUT && call->phase_ == Phase::Answered)
    call->Log("SIP line: the caller never confirmed the answer");
  else if (error != 0 && error != ECONNRESET)
    call->Log("SIP line: the call failed: " + std::generic_category().message(error));
  // libre has taken the session down; there is nothing left to refuse.
  if (call->phase_ == Phase::Ringing)
    call->phase_ = Phase::Answered;
  call->Over();
}

void SipCall::SetSoundPort(std::shared_ptr<SoundPort> port) {
  ring_back_.SetPort(port);
  media_.SetPort(std::move(port));
}

void SipCall::Hangup() {
  Over();
}

void SipCall::DigitHeard(char digit) {
  host_.Report({.kind = SipReport::Kind::Digit, .call = number_, .digit = digit});
}

void SipCall::PeerLost() {
  // A network that says nothing before the answer has lost nobody.
  if (phase_ == Phase::Dialing)
    return;
  Log("SIP line: nothing is heard of the other side any more; the call is ended");
  Over();
}

void SipCall::NoKeys() {
  Log("SIP line: the other side doesn't prove that it is the one that was announced; the call is ended");
  Over();
}

void SipCall::ReportState(CallState state) {
  if (state == reported_)
    return;
  reported_ = state;
  host_.Report({.kind = SipReport::Kind::State, .call = number_, .state = state});
}

void SipCall::Log(const std::string& text) {
  host_.Report({.kind = SipReport::Kind::Log, .text = text});
}

void SipCall::Over() {
  host_.Report({.kind = SipReport::Kind::Disconnected, .call = number_});
  host_.CallOver(*this);
}

} // namespace kelmio
