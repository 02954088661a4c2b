#include "drivers/sip/call_media.h"

#include <cerrno>
#include <utility>

namespace kelmio {

bool CallMedia::Prepare(const sa& local, bool protected_way, bool offers, dnsc* names) {
  if (!media_.Bind(local))
    return false;
  sdp_ = SdpNegotiation::Create(media_.Local(), settings_.codings, Protection(protected_way));
  if (!sdp_)
    return false;
  const auto& account = settings_.account;
  const auto server = account ? ParseServerName(account->stun_server) : std::nullopt;
  if (!account || (!account->ice && !server))
    return true;
  ice_ = IceAgent::Create(media_.Socket(), media_.Local(), offers, [this](const std::optional<sa>& peer) {
    searching_ = false;
    if (peer) {
      way_ = peer;
      media_.MovePeer(*way_);
    }
    AgreeOnKeys();
    TellOpen();
  });
  if (!ice_)
    return false;
  media_.ShareSocket();
  gathered_ = false;
  ice_->Gather(server, names, [this] {
    gathered_ = true;
    if (const auto ready = std::exchange(ready_, nullptr))
      ready();
  });
  return true;
}

MediaProtection CallMedia::Protection(bool protected_way) const {
  using Wish = MediaProtection::Wish;
  const auto& account = settings_.account;
  switch (account ? account->encryption : SipEncryption::Preferred) {
  case SipEncryption::Off:
    return {Wish::Refuse};
  case SipEncryption::Required:
    return {Wish::Demand};
  case SipEncryption::Preferred:
    break;
  }
  // Keys that everyone on the way can read are of no use to offer.
  return {protected_way ? Wish::Offer : Wish::Take};
}

void CallMedia::WhenReady(std::function<void()> ready) {
  if (gathered_)
    ready();
  else
    ready_ = std::move(ready);
}

int CallMedia::Read(const sip_msg& message, bool offer) {
  if (const int error = sdp_->Read(message, offer))
    return error;
  if (ice_ && settings_.account->ice) {
    sdp_->ForEachAttribute([this](const char* name, const char* value) { ice_->TakeAttribute(name, value); });
    sdp_->SetPeerSearches(ice_->PeerTakesPart(sdp_->Terms()->peer));
  }
  if (const int error = PrepareKeys())
    return error;
  UseTerms();
  return 0;
}

int CallMedia::PrepareKeys() {
  const auto& peer = sdp_->Terms()->dtls;
  if (!peer || (keys_ && keys_->Peer() == *peer))
    return 0;
  keys_.reset();
  media_.ShareSocket();
  keys_ = DtlsKeys::Create(media_.Socket(), *peer, [this](const std::optional<DtlsKeys::Keys>& keys) {
    if (!keys) {
      events_.NoKeys();
      return;
    }
    media_.UseKeys(keys->send, keys->receive);
    agreed_ = true;
    TellOpen();
  });
  agreed_ = false;
  if (!keys_)
    return ENOMEM;
  sdp_->SetFingerprint(keys_->Fingerprint());
  return 0;
}

void CallMedia::UseTerms() {
  MediaTerms terms = *sdp_->Terms();
  if (way_)
    terms.peer = *way_;
  media_.SetTerms(terms);
}

RePtr<mbuf> CallMedia::Write(bool offer) {
  if (ice_) {
    sdp_->SetAddress(ice_->Reachable());
    if (settings_.account->ice)
      sdp_->SetPlaces(ice_->Attributes());
  }
  return sdp_->Write(offer);
}

void CallMedia::Meet() {
  if (!HasTerms())
    return;
  if (ice_ && sdp_->PeerSearches() && ice_->Begin())
    searching_ = true;
  if (!searching_)
    AgreeOnKeys();
}

bool CallMedia::IsOpen() const {
  return !searching_ && (!keys_ || agreed_);
}

void CallMedia::WhenOpen(std::function<void()> open) {
  if (IsOpen())
    open();
  else
    open_ = std::move(open);
}

void CallMedia::TellOpen() {
  if (IsOpen())
    if (const auto open = std::exchange(open_, nullptr))
      open();
}

void CallMedia::AgreeOnKeys() {
  if (keys_)
    keys_->Begin(way_.value_or(sdp_->Terms()->peer));
}

} // namespace kelmio
