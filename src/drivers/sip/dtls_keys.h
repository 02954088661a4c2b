// Keys for encrypted sound that both ends make up between them, on the sound's own way (DTLS-SRTP, RFC 5763, RFC 5764).
#pragma once

#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "drivers/sip/libre.h"
#include "drivers/sip/monotonic_timer.h"
#include "drivers/sip/sdes_keys.h"

namespace kelmio {

/// What the signalling says of the other side: the certificate that it will show, and who begins.
struct DtlsPeer {
  static constexpr std::size_t kHashBytes = 32; // SHA-256
  std::array<std::uint8_t, kHashBytes> certificate{};
  bool begins = false;
  bool operator==(const DtlsPeer&) const = default;
};

/// Reads the attributes `fingerprint` (RFC 8122) and `setup` (RFC 4145) of an offer. Nothing for another hash than
/// SHA-256, and for a side that will not do it now.
std::optional<DtlsPeer> ParseDtlsPeer(std::string_view fingerprint, std::string_view setup);

/// One end of the agreement on keys. Has a certificate of its own that nobody else has ever seen. Engine thread only.
class DtlsKeys {
public:
  struct Keys {
    SrtpKey send;
    SrtpKey receive;
  };
  /// Called once, or never when the other side stays away: with the keys, or without when it isn't the one of the
  /// signalling or gives up. May destroy the object.
  using Told = std::function<void(const std::optional<Keys>& keys)>;

  /// Nothing when it can't be had. `socket` outlives the object; packets of the agreement are taken from it, and all
  /// others left to it.
  static std::unique_ptr<DtlsKeys> Create(udp_sock* socket, const DtlsPeer& peer, Told told);
  ~DtlsKeys();
  DtlsKeys(const DtlsKeys&) = delete;
  DtlsKeys& operator=(const DtlsKeys&) = delete;

  /// The value of the attribute `fingerprint`.
  std::string Fingerprint() const;

  const DtlsPeer& Peer() const { return peer_; }

  /// Agrees with the peer, who is at `address`, or goes on with him there.
  void Begin(const sa& address);

private:
  DtlsKeys(const DtlsPeer& peer, Told told) : peer_(peer), told_(std::move(told)) {}
  bool MakeIdentity();
  static void OnCaller(const sa* source, void* self);
  static void OnAgreed(void* self);
  static void OnClosed(int error, void* self);
  std::optional<Keys> Agreed() const;
  void Tell(const std::optional<Keys>& keys);

  const DtlsPeer peer_;
  Told told_;
  RePtr<tls> identity_;
  RePtr<dtls_sock> socket_;
  RePtr<tls_conn> connection_;
  bool begun_ = false;
  sa address_{}; // of the peer, once begun
  MonotonicTimer soon_;
};

} // namespace kelmio
