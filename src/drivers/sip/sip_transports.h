// The sockets on which a SIP line is reached.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "drivers/sip/libre.h"
#include "drivers/sip/monotonic_timer.h"

namespace kelmio {

/// Owns the SIP stack and binds it: for direct calls over UDP and TCP to one address or to all that this computer has,
/// in the latter case also to those it gets later; for an account to the addresses that lead to its registrar, over the
/// one transport that is spoken there. Strangers who connect to a line for direct calls and stay are put out before
/// they use up the descriptors, which recordings need too. Engine thread only.
class SipTransports {
public:
  SipTransports();
  ~SipTransports();
  SipTransports(const SipTransports&) = delete;
  SipTransports& operator=(const SipTransports&) = delete;

  /// `names` may be absent. With port 0 the system chooses one. Gives 0 or an error number.
  int Open(const sa& listen, dnsc* names);

  /// Makes the stack alone, which reaches nobody yet.
  int OpenUnbound(dnsc* names);
  /// Binds the stack to `addresses`, whose ports are those that are wanted, 0 for any, and lets go of those it was
  /// bound to. `context` is for TLS alone. Nothing happens when all is as it was. Gives 0 or an error number; nothing
  /// is bound then.
  int BindTo(const std::vector<sa>& addresses, sip_transp transport, tls* context);
  /// Ends every connection, and reaches nobody.
  void Unbind();
  /// Datagrams for which this is false are not even read; from when the stack is bound to what it is by then.
  void SetFilter(std::function<bool(const sa& source)> admits) { admits_ = std::move(admits); }

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
  int Alloc(dnsc* names);
  void BindNewAddresses();
  void PutCrowdOut();
  void Knock(const sa& address);
  static bool IsBroken(sa* source, mbuf* datagram, void* self);

  RePtr<sip> stack_;
  sa listen_{};
  std::vector<sa> bound_;
  std::vector<sa> wanted_;                 // of `BindTo`
  sip_transp transport_ = SIP_TRANSP_NONE; // of `BindTo`
  std::function<bool(const sa& source)> admits_;
  std::vector<RePtr<udp_helper>> guards_;
  std::string knock_;
  MonotonicTimer look_again_;
  int quiet_ = 0; // the descriptor that was free without strangers
  MonotonicTimer count_;
};

/// The address of this computer from which a way leads to `peer`; nothing when there is no way. Nothing is sent.
std::optional<sa> SourceTowards(const sa& peer);

} // namespace kelmio
