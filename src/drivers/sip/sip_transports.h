// The sockets on which a SIP line is reached.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "drivers/sip/libre.h"
#include "drivers/sip/monotonic_timer.h"

namespace kelmio {

/// Owns the SIP stack and binds it, over UDP and TCP, to one address or to all that this computer has; in the latter
/// case also to those it gets later. Engine thread only.
class SipTransports {
public:
  SipTransports();
  ~SipTransports();
  SipTransports(const SipTransports&) = delete;
  SipTransports& operator=(const SipTransports&) = delete;

  /// `names` may be absent. With port 0 the system chooses one. Gives 0 or an error number.
  int Open(const sa& listen, dnsc* names);
  /// Ends every transaction at once.
  void Close();

  sip* Stack() { return stack_.get(); }
  std::uint16_t Port() const { return sa_port(&listen_); }
  /// Whether others than this computer can reach the line.
  bool BeyondThisComputer() const { return !sa_is_loopback(&listen_); }

  /// The address of this computer that `peer` can reach, with the SIP port; nothing when there is no way there.
  std::optional<sa> AddressTowards(const sa& peer) const;

  /// Takes the message when it is one with which the line calls its own sockets; it is not for anyone else then.
  bool TakeKnock(const sip_msg& request);

private:
  bool Everywhere() const { return sa_is_any(&listen_); }
  std::vector<sa> Addresses() const;
  int BindAll();
  int Bind(sa address);
  void BindNewAddresses();
  void Knock(const sa& address);
  static bool IsBroken(sa* source, mbuf* datagram, void* self);

  RePtr<sip> stack_;
  sa listen_{};
  std::vector<sa> bound_;
  std::vector<RePtr<udp_helper>> guards_;
  std::string knock_;
  MonotonicTimer look_again_;
};

} // namespace kelmio
