// A voice at the other end of a SIP line.
#pragma once

#include <atomic>
#include <chrono>
#include <span>
#include <thread>
#include <utility>
#include <vector>

#include "drivers/sip/audio_codec.h"
#include "drivers/sip/sip_peer.h"

namespace kelmio {

/// How a voice is sent.
struct SpokenAs {
  AudioCoding coding;
  std::uint8_t type;
  std::size_t packet_bytes; // of which a second has 8000
};

/// Says the same over and over in the name of `peer`, on a thread of its own.
class Speaker {
public:
  static constexpr std::uint32_t kSsrc = 0x5EED;

  Speaker(const SipPeer& peer, std::uint16_t to, std::vector<std::int16_t> voice, SpokenAs as)
      : as_(as), voice_(std::move(voice)),
        thread_([this, &peer, to](const std::stop_token& stop) { Speak(peer, to, stop); }) {}

  std::uint16_t Sequence() const { return static_cast<std::uint16_t>(packets_.load()); }
  std::uint32_t Timestamp() const { return packets_.load() * static_cast<std::uint32_t>(as_.packet_bytes); }
  const std::vector<std::int16_t>& Voice() const { return voice_; }
  void Stop() {
    thread_.request_stop();
    thread_.join();
  }

private:
  void Speak(const SipPeer& peer, std::uint16_t to, const std::stop_token& stop) {
    AudioCodec codec(as_.coding);
    const std::size_t samples = as_.packet_bytes * codec.SamplesPerByte();
    std::vector<std::uint8_t> coded(as_.packet_bytes);
    auto next = std::chrono::steady_clock::now();
    while (!stop.stop_requested()) {
      const std::size_t at = packets_.load() * samples % voice_.size();
      codec.Encode(std::span(voice_).subspan(at, samples), coded);
      peer.SendRtp(to, {packets_ == 0, as_.type, Sequence(), Timestamp(), kSsrc, coded});
      ++packets_;
      next += std::chrono::milliseconds(as_.packet_bytes / 8);
      std::this_thread::sleep_until(next);
    }
  }

  SpokenAs as_;
  std::vector<std::int16_t> voice_;
  std::atomic<std::uint32_t> packets_{0};
  std::jthread thread_;
};

} // namespace kelmio
