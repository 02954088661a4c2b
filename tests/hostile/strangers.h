// Ends of the network that mean no good, or at least are none of ours.
#pragma once

#include <cstddef>
#include <random>
#include <string>
#include <string_view>

namespace kelmio {

/// Datagrams that a SIP port meets: damaged messages of all kinds, well-formed ones that fit nothing, offers of a
/// thousand formats, headers without an end, and what belongs to other protocols. The same ones every time.
class HostileMessages {
public:
  explicit HostileMessages(std::string sdp) : sdp_(std::move(sdp)) {}

  std::string Next();
  /// A well-formed INVITE, as from `host`.
  std::string Invite(const std::string& host);

private:
  std::string Request(const std::string& method, const std::string& more, const std::string& body);
  std::string Bomb();

  std::string sdp_;
  std::mt19937 random_{20261123};
  unsigned count_ = 0;
};

/// First bytes of STUN, DTLS, RTCP and of nothing at all, filled up at random.
std::string ForeignBytes(std::mt19937& random);

/// What this process has in memory.
std::size_t ResidentBytes();

} // namespace kelmio
