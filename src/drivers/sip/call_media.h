// The sound of one call: what both ends agree on, the way between them, the keys, and the frames.
#pragma once

#include <functional>
#include <memory>
#include <optional>

#include "drivers/sip/dtls_keys.h"
#include "drivers/sip/ice_agent.h"
#include "drivers/sip/libre.h"
#include "drivers/sip/media_session.h"
#include "drivers/sip/sdp_negotiation.h"
#include "drivers/sip/sip_settings.h"

namespace kelmio {

/// What the sound tells its call. Called on the engine thread.
class CallMediaEvents : public MediaEvents {
public:
  /// The other side isn't the one that it says it is, or gives up to agree on keys. May destroy the sound.
  virtual void NoKeys() = 0;
};

/// Engine thread only. The functions that return an int give 0 or an error number of libre's.
class CallMedia {
public:
  /// All outlive the sound.
  CallMedia(CallMediaEvents& events, const SipSettings& settings)
      : events_(events), settings_(settings), media_(events, settings.times.lost_peer) {}

  /// Binds a port of `local`, and asks how it looks from outside where the account says whom. `protected_way`: what the
  /// call's messages say can't be read on their way. `offers`: this side makes the offer. `names` may be absent.
  bool Prepare(const sa& local, bool protected_way, bool offers, dnsc* names);
  /// Calls `ready` when an offer or answer can be written, at once if it can be. The call may end in it.
  void WhenReady(std::function<void()> ready);

  /// As `SdpNegotiation::Read` and `Write`.
  int Read(const sip_msg& message, bool offer);
  RePtr<mbuf> Write(bool offer);
  bool HasTerms() const { return sdp_ && sdp_->Terms(); }

  /// Looks for the way to the other side and agrees on the keys, where the terms say so; both sides know them now.
  void Meet();
  /// Calls `open` when the other side can hear this one, as far as that is for this side to know; at once if it can.
  void WhenOpen(std::function<void()> open);
  /// Starts the frames.
  void Start() { media_.Start(); }
  /// So far nothing had to be heard of the other side.
  void ExpectPeer() { media_.ExpectPeer(); }
  void SetPort(std::shared_ptr<SoundPort> port) { media_.SetPort(std::move(port)); }

private:
  MediaProtection Protection(bool protected_way) const;
  void UseTerms();
  int PrepareKeys();
  void AgreeOnKeys();
  bool IsOpen() const;
  void TellOpen();

  CallMediaEvents& events_;
  const SipSettings& settings_;
  MediaSession media_;
  std::unique_ptr<IceAgent> ice_; // of an account
  std::unique_ptr<DtlsKeys> keys_;
  std::unique_ptr<SdpNegotiation> sdp_;
  bool gathered_ = true;
  std::function<void()> ready_;
  std::function<void()> open_;
  bool searching_ = false;
  bool agreed_ = false;   // on the keys
  std::optional<sa> way_; // found to the other side
};

} // namespace kelmio
