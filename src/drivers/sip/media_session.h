// The sound of one call: RTP on one side, a sound port on the other, 20 ms at a time.
#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "drivers/sip/audio_codec.h"
#include "drivers/sip/concealment.h"
#include "drivers/sip/digit_receiver.h"
#include "drivers/sip/jitter_buffer.h"
#include "drivers/sip/libre.h"
#include "drivers/sip/monotonic_timer.h"
#include "drivers/sip/sdp_negotiation.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// What a media session tells its call. Called on the engine thread; `PeerLost` may destroy the session.
class MediaEvents {
public:
  virtual ~MediaEvents() = default;
  virtual void DigitHeard(char digit) = 0;
  virtual void PeerLost() = 0;
};

/// Engine thread only, and so are its calls of the sound port. The port gets a frame every 20 ms of the monotonic
/// clock from `Start` on, whatever the network does, so that a recording keeps true time.
class MediaSession {
public:
  /// `events` outlives the session. `lost_peer`: silence of the peer's side after which it counts as gone.
  MediaSession(MediaEvents& events, std::chrono::milliseconds lost_peer);
  ~MediaSession();
  MediaSession(const MediaSession&) = delete;
  MediaSession& operator=(const MediaSession&) = delete;

  /// Binds a port of `address` for RTP. False when there is none.
  bool Bind(const sa& address);
  /// The bound address and port.
  const sa& Local() const { return local_; }

  /// For those who look at its packets before this session does, which holds the socket for as long as it lives. From
  /// then on packets are taken as they come.
  udp_sock* Socket() { return socket_.get(); }
  void ShareSocket();

  /// The terms from now on. Sound of a peer that moves is taken from its new place only.
  void SetTerms(const MediaTerms& terms);
  /// The peer of the terms is at `place`.
  void MovePeer(const sa& place);
  /// The keys that the terms leave to be agreed on.
  void UseKeys(const SrtpKey& send, const SrtpKey& receive);
  void SetPort(std::shared_ptr<SoundPort> port) { port_ = std::move(port); }

  /// Starts the frames; the first comes at once. Nothing happens when they run already.
  void Start();
  /// The peer's silence counts anew: so far nothing had to be heard of it.
  void ExpectPeer() { frames_unheard_ = 0; }

private:
  using Time = std::chrono::steady_clock::time_point;

  static void Arrived(const sa* source, mbuf* packet, void* self);
  void TakeArrived();
  void Take(const sa& source, std::span<const std::uint8_t> packet);
  void UseKeysOf(const MediaTerms& terms);
  /// The packet as it was before it was encrypted; nothing when it wasn't with the peer's key.
  std::optional<std::span<const std::uint8_t>> Opened(std::span<const std::uint8_t> packet);
  void Receive(const sa& source, const RtpPacket& packet);
  bool IsPeer(const sa& source);
  void UseDecoder(AudioCoding coding);

  void Ticks(std::uint64_t elapsed);
  void Hear();
  void DecodeInto(std::span<std::int16_t> samples, const JitterBuffer::Frame& frame);
  /// Length in bytes of the hole that goes on behind this frame, and the sound behind the hole.
  std::size_t LookAhead(const JitterBuffer::Frame& frame, std::size_t from);
  void Say(bool transmit);
  void StayKnown();
  void Transmit(std::span<const std::uint8_t> payload);
  bool WatchPeer();

  MediaEvents& events_;
  std::chrono::milliseconds lost_peer_;
  RePtr<udp_sock> socket_;
  sa local_{};
  std::optional<MediaTerms> terms_;
  std::shared_ptr<SoundPort> port_;
  MonotonicTimer timer_;
  bool started_ = false;
  bool shared_ = false; // others look at the packets, too

  // Encryption, with the keys of the terms.
  RePtr<srtp> to_peer_;
  RePtr<srtp> from_peer_;
  std::vector<std::uint8_t> opened_; // a packet that was decrypted

  // Receiving.
  std::optional<sa> latched_;
  bool latched_exactly_ = false;
  std::optional<Time> waiting_since_;
  std::optional<std::uint32_t> ssrc_;
  std::uint64_t frames_unheard_ = 0; // since the peer's last packet
  JitterBuffer jitter_;
  bool pause_ = false; // the next frame is silence, and nothing is taken from the buffer
  DigitReceiver digits_;
  std::unique_ptr<AudioCodec> decoder_;
  std::unique_ptr<Concealment> concealment_;
  std::vector<std::int16_t> after_; // sound to come, for the concealment
  std::vector<std::int16_t> heard_;

  // Sending.
  std::unique_ptr<AudioCodec> encoder_;
  std::uint16_t sequence_ = 0;
  std::uint32_t timestamp_ = 0;
  std::uint32_t own_ssrc_ = 0;
  bool mark_next_ = true;
  std::uint64_t frames_unsent_ = 0;
  std::vector<std::int16_t> said_;
  std::vector<std::uint8_t> packet_;
};

} // namespace kelmio
