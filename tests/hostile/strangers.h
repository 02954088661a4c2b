// Ends of the network that mean no good, or at least are none of ours.
#pragma once

#include <cstdint>
#include <random>
#include <string>
#include <string_view>

#include "drivers/sip/sip_peer.h"

namespace kelmio {

/// Sends to a port of this computer, from any of its loopback addresses.
class Stranger {
public:
  /// `port` 0 takes any.
  explicit Stranger(std::uint16_t port = 0);

  std::uint16_t Port() const { return socket_.Port(); }
  /// As from 127.0.`host`.
  void Send(std::uint16_t to, std::string_view bytes, std::uint16_t host = 1) const;
  /// Throws away what was answered.
  void Drain() const;

private:
  TestSocket socket_;
};

/// Datagrams that a SIP port meets: damaged messages of all kinds, well-formed ones that fit nothing, offers of a
/// thousand formats, headers without an end, and what belongs to other protocols. The same ones every time.
class HostileMessages {
public:
  HostileMessages(std::uint16_t own_port, std::string sdp) : port_(own_port), sdp_(std::move(sdp)) {}

  std::string Next();
  /// A well-formed INVITE, as from 127.0.`host`.
  std::string Invite(std::uint16_t host = 1);

private:
  std::string Request(const std::string& method, const std::string& more, const std::string& body);
  std::string Bomb();

  std::uint16_t port_;
  std::string sdp_;
  std::mt19937 random_{20261123};
  unsigned count_ = 0;
};

/// First bytes of STUN, DTLS, RTCP and of nothing at all, filled up at random.
std::string ForeignBytes(std::mt19937& random);

/// What this process has in memory.
std::size_t ResidentBytes();

} // namespace kelmio
