// What both ends agree on for the sound of a call: offer and answer in SDP (RFC 3264).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "drivers/sip/audio_codec.h"
#include "drivers/sip/dtls_keys.h"
#include "drivers/sip/libre.h"
#include "drivers/sip/sdes_keys.h"

namespace kelmio {

/// The agreement, as the sound needs it.
struct MediaTerms {
  static constexpr int kNone = -1;

  sa peer{}; // where the sound goes
  AudioCoding send_coding = AudioCoding::Pcmu;
  int send_type = payload_type::kPcmu;                    // payload type of what is sent
  std::array<int, 2> event_types{kNone, kNone};           // payload types of telephone events, one for each clock
  std::array<std::optional<AudioCoding>, 128> receives{}; // sound that may come in, by payload type
  // Both keys, or who they will be agreed on with, or neither. With either, nothing else is sent or heard.
  std::optional<SrtpKey> send_key{};
  std::optional<SrtpKey> receive_key{};
  std::optional<DtlsPeer> dtls{};
  bool may_send = false;
  bool may_receive = false;

  /// Neither end's sound is wanted in full: the peer has put the call aside.
  bool OnHold() const { return !may_send || !may_receive; }
  bool IsProtected() const { return send_key || dtls; }
  std::optional<AudioCoding> CodingOf(int type) const;
  bool IsEvent(int type) const { return type == event_types[0] || type == event_types[1]; }
};

/// How the sound of a call is to be protected.
struct MediaProtection {
  enum class Wish : std::uint8_t {
    Refuse, // never encrypted: an offer that has to be is not taken
    Take,   // when the other side offers it
    Offer,  // and offered, to a side that may leave it
    Demand, // a side without it is not spoken to
  };
  Wish wish = Wish::Take;
};

/// Engine thread only. The functions that return an int give 0 or an error number of libre's.
class SdpNegotiation {
public:
  /// `local` is the address and port on which sound is received. `codings` are offered in their order; others are not
  /// taken either.
  static std::unique_ptr<SdpNegotiation> Create(const sa& local, const std::vector<AudioCoding>& codings,
                                                MediaProtection protection = {});

  /// Takes the offer or answer in the message's body. Fails when there is no coding in common, and with `EPROTO` when
  /// there is no way to protect the sound as it is wished here or demanded there.
  int Read(const sip_msg& message, bool offer);

  /// Calls `take` with each attribute of what was read, those of the session first. The texts go with the call.
  void ForEachAttribute(const std::function<void(const char* name, const char* value)>& take) const;

  /// What the next `Write` says: where the sound is received, the places at which else it may be (as names and values
  /// of attributes), and the certificate that this side will show.
  void SetAddress(const sa& address);
  void SetPlaces(std::vector<std::pair<std::string, std::string>> places) { places_ = std::move(places); }
  void SetFingerprint(const std::string& fingerprint) { fingerprint_ = fingerprint; }
  /// Whether the other side looks for a way between the places; only then an answer names them.
  void SetPeerSearches(bool searches) { peer_searches_ = searches; }
  bool PeerSearches() const { return peer_searches_; }

  /// The body of our offer or answer; nothing when out of memory.
  RePtr<mbuf> Write(bool offer);

  /// The terms after a successful `Read`.
  const std::optional<MediaTerms>& Terms() const { return terms_; }

private:
  SdpNegotiation() = default;
  int ReadKeys(bool offer, MediaTerms& terms);
  std::optional<DtlsPeer> ReadDtlsPeer(bool offer) const;
  int SayPlaces(bool offer);

  RePtr<sdp_session> session_;
  sdp_media* audio_ = nullptr; // owned by the session
  std::optional<MediaTerms> terms_;
  MediaProtection protection_;
  std::optional<SdesKey> own_key_; // what is or was offered or answered
  std::string fingerprint_;
  std::vector<std::pair<std::string, std::string>> places_;
  bool peer_searches_ = false;
};

} // namespace kelmio
