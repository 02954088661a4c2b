// Finds the way of a call's sound through routers that translate addresses (ICE, RFC 8445; STUN, RFC 8489).
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "drivers/sip/libre.h"
#include "drivers/sip/monotonic_timer.h"
#include "drivers/sip/sip_account.h"

namespace kelmio {

/// Works on the socket of the sound: takes the packets of the search from it, and leaves all others to it. Engine
/// thread only.
class IceAgent {
public:
  /// The longest that a STUN server is waited for; the call goes on without it then.
  static constexpr std::chrono::milliseconds kLongestGathering{1000};
  /// The longest that the call waits for a way before it takes the one that the signalling names.
  static constexpr std::chrono::milliseconds kLongestSearch{5000};

  using Ready = std::function<void()>;
  /// The address at which the other side's sound is from now on, or nothing when no way was found, not in time at
  /// least.
  using Found = std::function<void(const std::optional<sa>& peer)>;

  /// `socket` is bound to `local` and outlives the agent. `offers`: this side makes the offer, and so has the last word
  /// on the way. Nothing when out of memory.
  static std::unique_ptr<IceAgent> Create(udp_sock* socket, const sa& local, bool offers, Found found);
  ~IceAgent();
  IceAgent(const IceAgent&) = delete;
  IceAgent& operator=(const IceAgent&) = delete;

  /// Asks `server` how this socket looks from outside. `names` may be absent. `ready` is called once, when that is
  /// known, or won't be; perhaps before this returns. It may destroy the agent.
  void Gather(const std::optional<ServerName>& server, dnsc* names, Ready ready);

  /// Where others best send the sound to, as far as is known.
  const sa& Reachable() const { return reachable_; }
  /// What an offer or answer says of the places at which this side may be, as names and values of SDP.
  std::vector<std::pair<std::string, std::string>> Attributes() const;

  /// Takes what the other side says, an attribute of SDP each; what is none of the search's is passed over.
  void TakeAttribute(const char* name, const char* value);
  /// Whether the other side takes part; `named` is where it says that its sound is.
  bool PeerTakesPart(const sa& named);
  /// Begins to look for a way. False when that can't be, or has been begun before.
  bool Begin();

private:
  IceAgent(const sa& local, Found found) : local_(local), reachable_(local), found_(std::move(found)) {}
  bool Open(udp_sock* socket, bool offers);
  static void OnServer(int error, const sa* server, void* self);
  static void OnSeen(int error, std::uint16_t status, const char* reason, const stun_msg* answer, void* self);
  static void OnChecked(int error, bool update, void* self);
  void Gathered();
  void GatheredSoon();

  const sa local_;
  sa reachable_;
  const Found found_;
  Ready ready_;
  udp_sock* socket_ = nullptr;
  std::string name_;   // of this side, for the checks
  std::string secret_; // the same
  RePtr<icem> checks_;
  RePtr<stun_dns> lookup_;
  stun_ctrans* question_ = nullptr; // told by the library when it is over
  sa server_{};
  int places_ = 0; // of the other side
  bool begun_ = false;
  MonotonicTimer limit_;
  MonotonicTimer stay_known_;
};

} // namespace kelmio
