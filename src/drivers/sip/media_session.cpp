#include "drivers/sip/media_session.h"

#include <sys/socket.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <random>
#include <utility>

namespace kelmio {

namespace {

constexpr std::chrono::milliseconds kFrameTime{20};
constexpr std::uint32_t kFrameBytes = JitterBuffer::kFrameUnits;
// Ports are even by custom (RFC 3550 section 11); the system hands out any.
constexpr int kPortAttempts = 16;
// A peer behind an address translator speaks from another port than it named. It is believed when nothing has
// come from the named one for this long.
constexpr std::chrono::milliseconds kGraceForNamedPort{500};
// Frames that are made up for a process that did not run for a while; more than that is not a slow moment any more.
constexpr std::uint64_t kMostFramesAtOnce = 3000;
// Of those only the last few are sent: the peer has no use for a burst.
constexpr std::uint64_t kMostPacketsAtOnce = 10;
// Larger than any frame of a codec that is offered; the rest of a longer packet is cut off.
constexpr std::size_t kLargestPacket = 2048;
// A peer that floods the line must not hold up the frame.
constexpr int kMostPacketsTaken = 200;
// Frames with no sample above this are silence in which time may be adjusted (some -50 dB of full scale).
constexpr int kSilentSample = 100;
// More than the authentication tag of any cipher (RFC 3711 section 3.1, RFC 7714).
constexpr std::size_t kRoomForTag = 16;
// 15 s, less than the strictest router takes to forget (RFC 6263 section 8 asks for no more often).
constexpr std::uint64_t kFramesBetweenSigns = 750;
// How much of what follows a hole is looked at.
constexpr std::uint32_t kFramesAhead = 5;

bool IsSilent(std::span<const std::int16_t> samples) {
  return std::all_of(samples.begin(), samples.end(), [](std::int16_t s) { return std::abs(s) <= kSilentSample; });
}

RePtr<srtp> StreamWith(const SrtpKey& key) {
  srtp* made = nullptr;
  return srtp_alloc(&made, key.suite, key.bytes.data(), key.bytes.size(), 0) == 0 ? RePtr<srtp>(made) : nullptr;
}

} // namespace

MediaSession::MediaSession(MediaEvents& events, std::chrono::milliseconds lost_peer)
    : events_(events), lost_peer_(lost_peer) {
  std::random_device random;
  // RFC 3550 section 5.1 asks for unpredictable starts.
  own_ssrc_ = random();
  sequence_ = static_cast<std::uint16_t>(random());
  timestamp_ = random();
  UseDecoder(AudioCoding::Pcmu);
  encoder_ = std::make_unique<AudioCodec>(AudioCoding::Pcmu);
}

MediaSession::~MediaSession() = default;

bool MediaSession::Bind(const sa& address) {
  for (int attempt = 0; attempt < kPortAttempts; ++attempt) {
    sa wanted = address;
    sa_set_port(&wanted, 0);
    udp_sock* socket = nullptr;
    if (udp_listen(&socket, &wanted, &MediaSession::Arrived, this) != 0)
      return false;
    socket_.reset(socket);
    if (udp_local_get(socket, &local_) != 0)
      return false;
    if (sa_port(&local_) % 2 == 0)
      break;
  }
  return true;
}

void MediaSession::ShareSocket() {
  if (started_ && !shared_)
    udp_thread_attach(socket_.get());
  shared_ = true;
}

void MediaSession::SetTerms(const MediaTerms& terms) {
  const bool moved = !terms_ || !sa_cmp(&terms_->peer, &terms.peer, SA_ALL);
  if (moved) {
    latched_.reset();
    latched_exactly_ = false;
    waiting_since_.reset();
  }
  if (!terms_ || terms_->send_coding != terms.send_coding)
    encoder_ = std::make_unique<AudioCodec>(terms.send_coding);
  if (!terms_ || terms_->send_coding != terms.send_coding)
    UseDecoder(terms.send_coding);
  if (!terms_ || terms_->OnHold() != terms.OnHold())
    frames_unheard_ = 0;
  UseKeysOf(terms);
  terms_ = terms;
}

void MediaSession::MovePeer(const sa& place) {
  if (!terms_)
    return;
  MediaTerms moved = *terms_;
  moved.peer = place;
  SetTerms(moved);
}

void MediaSession::UseKeys(const SrtpKey& send, const SrtpKey& receive) {
  to_peer_ = StreamWith(send);
  from_peer_ = StreamWith(receive);
}

void MediaSession::UseKeysOf(const MediaTerms& terms) {
  // The same key goes on counting packets where it was, and so do keys that were agreed on with the same side.
  const bool same_side = terms_ && terms_->dtls == terms.dtls;
  if (!same_side || terms_->send_key != terms.send_key)
    to_peer_ = terms.send_key ? StreamWith(*terms.send_key) : nullptr;
  if (!same_side || terms_->receive_key != terms.receive_key)
    from_peer_ = terms.receive_key ? StreamWith(*terms.receive_key) : nullptr;
}

std::optional<std::span<const std::uint8_t>> MediaSession::Opened(std::span<const std::uint8_t> packet) {
  if (!terms_->IsProtected())
    return packet;
  if (!from_peer_)
    return std::nullopt;
  opened_.assign(packet.begin(), packet.end());
  mbuf buffer{opened_.data(), opened_.size(), 0, opened_.size()};
  if (srtp_decrypt(from_peer_.get(), &buffer) != 0)
    return std::nullopt;
  return std::span<const std::uint8_t>(opened_).first(buffer.end);
}

void MediaSession::UseDecoder(AudioCoding coding) {
  if (decoder_ && decoder_->Coding() == coding)
    return;
  decoder_ = std::make_unique<AudioCodec>(coding);
  concealment_ = std::make_unique<Concealment>(decoder_->Rate());
  jitter_.Reset();
}

void MediaSession::Start() {
  if (started_)
    return;
  started_ = true;
  // From here on each frame takes what has come since the last one: sooner nobody asks for it, and the thread wakes up
  // half as often.
  if (!shared_)
    udp_thread_detach(socket_.get());
  timer_.StartRepeating(std::chrono::milliseconds{0}, kFrameTime, [this](std::uint64_t elapsed) { Ticks(elapsed); });
}

// --- receiving

void MediaSession::Arrived(const sa* source, mbuf* packet, void* self) {
  static_cast<MediaSession*>(self)->Take(*source, {mbuf_buf(packet), mbuf_get_left(packet)});
}

void MediaSession::TakeArrived() {
  if (shared_)
    return;
  const int descriptor = udp_sock_fd(socket_.get(), sa_af(&local_));
  std::array<std::uint8_t, kLargestPacket> packet;
  for (int i = 0; i < kMostPacketsTaken; ++i) {
    sa source{};
    source.len = sizeof(source.u);
    const ssize_t size = recvfrom(descriptor, packet.data(), packet.size(), MSG_DONTWAIT, &source.u.sa, &source.len);
    if (size < 0 && errno == EINTR)
      continue;
    // What an earlier packet of ours met is told here once, and hides nothing that has come.
    if (size < 0 && errno == ECONNREFUSED)
      continue;
    if (size < 0)
      return;
    Take(source, std::span(packet).first(static_cast<std::size_t>(size)));
  }
}

void MediaSession::Take(const sa& source, std::span<const std::uint8_t> packet) {
  if (!terms_)
    return;
  const auto opened = Opened(packet);
  const auto rtp = opened ? ReadRtpPacket(*opened) : std::nullopt;
  if (rtp)
    Receive(source, *rtp);
}

bool MediaSession::IsPeer(const sa& source) {
  if (sa_cmp(&source, &terms_->peer, SA_ALL)) {
    if (!latched_exactly_) {
      latched_ = source;
      latched_exactly_ = true;
    }
    return true;
  }
  if (latched_)
    return !latched_exactly_ && sa_cmp(&source, &*latched_, SA_ALL);
  if (!sa_cmp(&source, &terms_->peer, SA_ADDR))
    return false;
  const Time now = std::chrono::steady_clock::now();
  if (!waiting_since_)
    waiting_since_ = now;
  if (now - *waiting_since_ < kGraceForNamedPort)
    return false;
  latched_ = source;
  return true;
}

void MediaSession::Receive(const sa& source, const RtpPacket& packet) {
  if (!IsPeer(source))
    return;
  // Comfort noise and whatever else the peer sends is a sign of life, too.
  frames_unheard_ = 0;
  const bool event = terms_->IsEvent(packet.payload_type);
  const auto coding = terms_->CodingOf(packet.payload_type);
  if (event) {
    if (const auto digit = digits_.Put(packet, std::chrono::steady_clock::now()))
      events_.DigitHeard(*digit);
    return;
  }
  // On hold the peer may play music; the line's own silence is what is recorded then.
  if (!coding || terms_->OnHold())
    return;
  if (ssrc_ != packet.ssrc) {
    ssrc_ = packet.ssrc;
    jitter_.Reset();
  }
  UseDecoder(*coding);
  if (const auto arrived = decoder_->Take(packet.timestamp, packet.payload))
    jitter_.Put(arrived->timestamp, packet.marker, arrived->bytes);
}

// --- the tick

void MediaSession::Ticks(std::uint64_t elapsed) {
  TakeArrived();
  const std::uint64_t frames = std::min(elapsed, kMostFramesAtOnce);
  for (std::uint64_t i = 0; i < frames; ++i) {
    Hear();
    Say(frames - i <= kMostPacketsAtOnce);
  }
  frames_unheard_ += frames;
  if (!WatchPeer())
    events_.PeerLost();
}

bool MediaSession::WatchPeer() {
  const bool watched = terms_ && !terms_->OnHold();
  return !watched || frames_unheard_ * kFrameTime < lost_peer_;
}

void MediaSession::Hear() {
  heard_.assign(kFrameBytes * decoder_->SamplesPerByte(), 0);
  const bool on_hold = !terms_ || terms_->OnHold();
  if (!on_hold && !std::exchange(pause_, false)) {
    DecodeInto(heard_, jitter_.Pull());
    if (const auto advice = jitter_.Adjustment(); advice != JitterBuffer::Advice::None && IsSilent(heard_)) {
      // One silent frame less, or one more in the next frame's time.
      if (advice == JitterBuffer::Advice::DropFrame)
        DecodeInto(heard_, jitter_.Pull());
      else
        pause_ = true;
      jitter_.Adjusted(advice);
    }
  }
  if (port_)
    port_->Received(heard_, decoder_->Rate());
}

void MediaSession::DecodeInto(std::span<std::int16_t> samples, const JitterBuffer::Frame& frame) {
  const std::size_t per_byte = decoder_->SamplesPerByte();
  // Packets of other lengths than the frame leave runs of bytes and holes in it.
  for (std::size_t start = 0; start < kFrameBytes;) {
    std::size_t end = start;
    while (end < kFrameBytes && frame.present[end] == frame.present[start])
      ++end;
    const auto run = samples.subspan(start * per_byte, (end - start) * per_byte);
    if (frame.present[start]) {
      decoder_->Decode(std::span(frame.bytes).subspan(start, end - start), run);
      concealment_->Heard(run);
    } else {
      const std::size_t more = LookAhead(frame, end) * per_byte;
      concealment_->Fill(run, more, after_);
    }
    start = end;
  }
}

std::size_t MediaSession::LookAhead(const JitterBuffer::Frame& frame, std::size_t from) {
  after_.clear();
  // A decoder with a memory can't try what comes later.
  if (!decoder_->Stateless())
    return 0;
  std::size_t hole = 0;
  std::vector<std::uint8_t> coded;
  const auto look_at = [&](const JitterBuffer::Frame& looked_at, std::size_t start) {
    for (std::size_t i = start; i < kFrameBytes; ++i) {
      if (looked_at.present[i])
        coded.push_back(looked_at.bytes[i]);
      else if (coded.empty())
        ++hole;
      else
        return false;
    }
    return true;
  };
  bool more = look_at(frame, from);
  for (std::uint32_t i = 0; more && i < kFramesAhead; ++i)
    more = look_at(jitter_.Peek(i), 0);
  after_.resize(coded.size());
  decoder_->Decode(coded, after_);
  return hole;
}

void MediaSession::Say(bool transmit) {
  said_.assign(kFrameBytes * encoder_->SamplesPerByte(), 0);
  if (port_)
    port_->ToSend(said_, encoder_->Rate());
  std::array<std::uint8_t, kFrameBytes> coded{};
  const auto payload = encoder_->Encode(said_, coded);
  const bool wanted = terms_ && terms_->may_send;
  if (transmit && wanted && !payload.empty()) {
    Transmit(payload);
  } else {
    mark_next_ = true;
    if (++frames_unsent_ % kFramesBetweenSigns == 0)
      StayKnown();
  }
  timestamp_ += kFrameBytes * encoder_->ClockPerByte();
}

// A router on the way forgets who says nothing. An empty datagram is a sign to it, and nothing to the peer (RFC 6263
// section 4.1).
void MediaSession::StayKnown() {
  mbuf nothing{};
  if (!latched_ && !terms_)
    return;
  const sa& destination = latched_ ? *latched_ : terms_->peer;
  if (sa_isset(&destination, SA_ALL) && !sa_is_any(&destination))
    udp_send(socket_.get(), &destination, &nothing);
}

void MediaSession::Transmit(std::span<const std::uint8_t> payload) {
  RtpPacket packet;
  packet.marker = mark_next_;
  packet.payload_type = static_cast<std::uint8_t>(terms_->send_type);
  packet.sequence = sequence_++;
  packet.timestamp = timestamp_;
  packet.ssrc = own_ssrc_;
  packet.payload = payload;
  mark_next_ = false;
  WriteRtpPacket(packet, packet_);
  const std::size_t plain_size = packet_.size();
  packet_.resize(plain_size + kRoomForTag);
  mbuf buffer{packet_.data(), packet_.size(), 0, plain_size};
  // What can't be encrypted isn't said at all.
  if (terms_->IsProtected() && (!to_peer_ || srtp_encrypt(to_peer_.get(), &buffer) != 0))
    return;
  buffer.pos = 0;
  const sa& destination = latched_ ? *latched_ : terms_->peer;
  udp_send(socket_.get(), &destination, &buffer);
}

} // namespace kelmio
