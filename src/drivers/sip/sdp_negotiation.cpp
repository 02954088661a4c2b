#include "drivers/sip/sdp_negotiation.h"

#include <cerrno>
#include <string>
#include <string_view>

namespace kelmio {

namespace {

constexpr char kTelephoneEvent[] = "telephone-event";
constexpr std::uint32_t kClock = 8000;
constexpr std::uint32_t kOpusClock = 48000;
constexpr char kCrypto[] = "crypto";
// With feedback packets (RFC 4585, RFC 5124), which are neither sent nor listened to.
constexpr char kAvpf[] = "RTP/AVPF";
constexpr char kSavpf[] = "RTP/SAVPF";
// With keys that are agreed on along the sound's own way (RFC 5764).
constexpr char kTlsSavp[] = "UDP/TLS/RTP/SAVP";
constexpr char kTlsSavpf[] = "UDP/TLS/RTP/SAVPF";
constexpr char kFingerprint[] = "fingerprint";
constexpr char kSetup[] = "setup";
// Reports and sound share a port (RFC 5761).
constexpr char kShared[] = "rtcp-mux";

bool IsProtected(std::string_view protocol) {
  return protocol == sdp_proto_rtpsavp || protocol == kSavpf || protocol == kTlsSavp || protocol == kTlsSavpf;
}

bool TakeKey(const char*, const char* value, void* found) {
  auto& key = *static_cast<std::optional<SdesKey>*>(found);
  key = ParseSdesKey(value ? value : "");
  return key.has_value();
}

const char* TypeOf(AudioCoding coding) {
  switch (coding) {
  case AudioCoding::Pcmu:
    return "0";
  case AudioCoding::Pcma:
    return "8";
  case AudioCoding::G722:
    return "9";
  case AudioCoding::Opus:
    return "96"; // of those that have no number for good
  }
  return "";
}

std::optional<AudioCoding> StaticCoding(int type) {
  switch (type) {
  case payload_type::kPcmu:
    return AudioCoding::Pcmu;
  case payload_type::kPcma:
    return AudioCoding::Pcma;
  case payload_type::kG722:
    return AudioCoding::G722;
  default:
    return std::nullopt;
  }
}

// A peer need not name a coding that has a number for good, and may give another number to one.
std::optional<AudioCoding> CodingOfFormat(const sdp_format& format) {
  if (!format.name)
    return StaticCoding(format.pt);
  for (const AudioCoding known : kAllCodings)
    if (str_casecmp(format.name, NameOf(known)) == 0)
      return known;
  return std::nullopt;
}

} // namespace

std::optional<AudioCoding> MediaTerms::CodingOf(int type) const {
  return type >= 0 && type < static_cast<int>(receives.size()) ? receives[static_cast<std::size_t>(type)]
                                                               : std::nullopt;
}

std::unique_ptr<SdpNegotiation> SdpNegotiation::Create(const sa& local, const std::vector<AudioCoding>& codings,
                                                       MediaProtection protection) {
  using Wish = MediaProtection::Wish;
  std::unique_ptr<SdpNegotiation> sdp(new SdpNegotiation);
  sdp_session* session = nullptr;
  if (sdp_session_alloc(&session, &local) != 0)
    return nullptr;
  sdp->session_.reset(session);
  const char* const protocol = protection.wish == Wish::Demand ? sdp_proto_rtpsavp : sdp_proto_rtpavp;
  if (sdp_media_add(&sdp->audio_, session, sdp_media_audio, sa_port(&local), protocol) != 0)
    return nullptr;
  sdp->protection_ = protection;
  int error =
      sdp_media_set_alt_protos(sdp->audio_, 6, sdp_proto_rtpavp, kAvpf, sdp_proto_rtpsavp, kSavpf, kTlsSavp, kTlsSavpf);
  if (protection.wish == Wish::Offer || protection.wish == Wish::Demand) {
    sdp->own_key_ = MakeSdesKey(1, SRTP_AES_CM_128_HMAC_SHA1_80);
    if (!sdp->own_key_)
      return nullptr;
    error |= sdp_media_set_lattr(sdp->audio_, true, kCrypto, "%s", ToText(*sdp->own_key_).c_str());
  }
  // G.722 too names a clock of 8000, for historical reasons (RFC 3551 4.5.2). Opus always names two channels (RFC 7587
  // section 7), and means the encoder here not to hold back what makes up for losses.
  bool has_opus = false;
  for (const AudioCoding coding : codings) {
    const bool opus = coding == AudioCoding::Opus;
    has_opus = has_opus || opus;
    error |= sdp_format_add(nullptr, sdp->audio_, false, TypeOf(coding), NameOf(coding), opus ? kOpusClock : kClock,
                            opus ? 2 : 1, nullptr, nullptr, nullptr, false, opus ? "useinbandfec=1" : nullptr);
  }
  // The clock of events is that of the sound (RFC 4733 section 2.1).
  error |= sdp_format_add(nullptr, sdp->audio_, false, "101", kTelephoneEvent, kClock, 1, nullptr, nullptr, nullptr,
                          false, "0-15");
  if (has_opus)
    error |= sdp_format_add(nullptr, sdp->audio_, false, "102", kTelephoneEvent, kOpusClock, 1, nullptr, nullptr,
                            nullptr, false, "0-15");
  error |= sdp_media_set_lattr(sdp->audio_, true, "ptime", "20");
  return error == 0 ? std::move(sdp) : nullptr;
}

int SdpNegotiation::Read(const sip_msg& message, bool offer) {
  if (!msg_ctype_cmp(&message.ctyp, "application", "sdp"))
    return EBADMSG;
  if (const int error = sdp_decode(session_.get(), message.mb, offer))
    return error;
  if (sdp_media_rport(audio_) == 0)
    return ENOTSUP;

  MediaTerms terms;
  bool found = false;
  const list* formats = sdp_media_format_lst(audio_, false);
  for (const le* element = list_head(formats); element; element = element->next) {
    const auto& format = *static_cast<const sdp_format*>(element->data);
    // Of a payload type that is given twice the first counts.
    if (!format.sup || format.pt < 0 || format.pt >= static_cast<int>(terms.receives.size()) ||
        terms.IsEvent(format.pt) || terms.CodingOf(format.pt))
      continue;
    if (format.name && str_casecmp(format.name, kTelephoneEvent) == 0) {
      terms.event_types[format.srate == kOpusClock ? 1 : 0] = format.pt;
    } else if (const auto coding = CodingOfFormat(format)) {
      terms.receives[static_cast<std::size_t>(format.pt)] = coding;
      if (!found) {
        terms.send_coding = *coding;
        terms.send_type = format.pt;
        found = true;
      }
    }
  }
  if (!found)
    return ENOTSUP;

  if (const int error = ReadKeys(offer, terms))
    return error;
  terms.peer = *sdp_media_raddr(audio_);
  // Our own side always wants both directions, so that the remote one alone decides. An address of zero is how
  // hold was asked for before there were directions (RFC 2543).
  const bool nowhere = sa_is_any(&terms.peer) || !sa_isset(&terms.peer, SA_ADDR);
  const sdp_dir remote = sdp_media_rdir(audio_);
  terms.may_send = (remote & SDP_RECVONLY) != 0 && !nowhere;
  terms.may_receive = (remote & SDP_SENDONLY) != 0 && !nowhere;
  terms_ = terms;
  return 0;
}

int SdpNegotiation::ReadKeys(bool offer, MediaTerms& terms) {
  using Wish = MediaProtection::Wish;
  std::optional<SdesKey> theirs;
  if (protection_.wish != Wish::Refuse)
    terms.dtls = ReadDtlsPeer(offer);
  if (terms.dtls) {
    sdp_media_del_lattr(audio_, kCrypto);
    return 0;
  }
  if (protection_.wish != Wish::Refuse)
    sdp_media_rattr_apply(audio_, kCrypto, &TakeKey, &theirs);
  // Who answers takes the key with the cipher of ours, or none.
  if (!offer && theirs && (!own_key_ || theirs->key.suite != own_key_->key.suite))
    theirs.reset();
  if (!theirs) {
    if (protection_.wish == Wish::Demand || IsProtected(sdp_media_proto(audio_)))
      return EPROTO;
    sdp_media_del_lattr(audio_, kCrypto);
    return 0;
  }
  if (offer && (!own_key_ || own_key_->key.suite != theirs->key.suite || own_key_->tag != theirs->tag)) {
    own_key_ = MakeSdesKey(theirs->tag, theirs->key.suite);
    if (!own_key_ || sdp_media_set_lattr(audio_, true, kCrypto, "%s", ToText(*own_key_).c_str()) != 0)
      return ENOMEM;
  }
  terms.send_key = own_key_->key;
  terms.receive_key = theirs->key;
  return 0;
}

// Keys that both ends make up are taken before any that have passed through the hands of all servers on the way.
std::optional<DtlsPeer> SdpNegotiation::ReadDtlsPeer(bool offer) const {
  const auto value = [&](const char* name) {
    const char* const text = sdp_media_session_rattr(audio_, session_.get(), name);
    return std::string_view(text ? text : "");
  };
  const auto peer = ParseDtlsPeer(value(kFingerprint), value(kSetup));
  if (offer || !peer)
    return peer;
  // It isn't offered first; but a call may have agreed on it, and goes on with the same certificate.
  const bool same = terms_ && terms_->dtls && terms_->dtls->certificate == peer->certificate;
  return same ? terms_->dtls : std::nullopt;
}

void SdpNegotiation::ForEachAttribute(const std::function<void(const char*, const char*)>& take) const {
  using Take = std::function<void(const char*, const char*)>;
  const auto pass_on = [](const char* name, const char* value, void* taker) {
    (*static_cast<const Take*>(taker))(name, value);
    return false; // go on
  };
  auto taker = take;
  sdp_session_rattr_apply(session_.get(), nullptr, pass_on, &taker);
  sdp_media_rattr_apply(audio_, nullptr, pass_on, &taker);
}

void SdpNegotiation::SetAddress(const sa& address) {
  sdp_session_set_laddr(session_.get(), &address);
  sdp_media_set_laddr(audio_, &address);
}

int SdpNegotiation::SayPlaces(bool offer) {
  for (const auto& [name, value] : places_)
    sdp_media_del_lattr(audio_, name.c_str());
  if (!offer && !peer_searches_)
    return 0;
  int error = 0;
  for (const auto& [name, value] : places_)
    error |= sdp_media_set_lattr(audio_, false, name.c_str(), "%s", value.c_str());
  return error;
}

RePtr<mbuf> SdpNegotiation::Write(bool offer) {
  int error = SayPlaces(offer);
  sdp_media_del_lattr(audio_, kShared);
  if (offer ? !places_.empty() : sdp_media_rattr(audio_, kShared) != nullptr)
    error |= sdp_media_set_lattr(audio_, true, kShared, nullptr);
  if (terms_ && terms_->dtls) {
    error |= sdp_media_set_lattr(audio_, true, kFingerprint, "%s", fingerprint_.c_str());
    error |= sdp_media_set_lattr(audio_, true, kSetup, "%s", terms_->dtls->begins ? "passive" : "active");
  }
  if (error != 0)
    return nullptr;
  mbuf* body = nullptr;
  if (sdp_encode(&body, session_.get(), offer) != 0)
    return nullptr;
  return RePtr<mbuf>(body);
}

} // namespace kelmio
