#include "drivers/sip/dtls_keys.h"

#include <openssl/evp.h>
#include <openssl/x509.h>

#include <algorithm>
#include <utility>

namespace kelmio {

namespace {

// What is sent and heard here stands before RTP in the order of those who look at a packet, and behind the search for
// the way.
constexpr int kLayer = 10;
constexpr std::uint32_t kHashSize = 4; // one peer
constexpr char kSuites[] = "SRTP_AES128_CM_SHA1_80:SRTP_AES128_CM_SHA1_32";
constexpr std::size_t kKeyBytes = 30; // with the salt, for both
constexpr std::string_view kHashName = "sha-256";
constexpr long kValidSeconds = 24L * 60 * 60; // longer than any call

int HexDigit(char c) {
  if (c >= '0' && c <= '9')
    return c - '0';
  if (c >= 'A' && c <= 'F')
    return c - 'A' + 10;
  return c >= 'a' && c <= 'f' ? c - 'a' + 10 : -1;
}

struct OpenSslDeleter {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(X509* certificate) const { X509_free(certificate); }
};
template <typename Object> using OpenSslPtr = std::unique_ptr<Object, OpenSslDeleter>;

using Bytes = std::vector<std::uint8_t>;

template <typename Object> Bytes Der(const Object* object, int (*write)(const Object*, unsigned char**)) {
  const int size = write(object, nullptr);
  Bytes der(static_cast<std::size_t>(std::max(size, 0)));
  std::uint8_t* place = der.data();
  if (size > 0)
    write(object, &place);
  return der;
}

/// A certificate that its own key has signed. It names nobody: what vouches for it is the signalling.
OpenSslPtr<X509> Certify(EVP_PKEY* key) {
  OpenSslPtr<X509> certificate(X509_new());
  X509* const made = certificate.get();
  if (!made || ASN1_INTEGER_set(X509_get_serialNumber(made), 1) != 1 || X509_set_version(made, X509_VERSION_3) != 1 ||
      !X509_gmtime_adj(X509_getm_notBefore(made), -kValidSeconds) ||
      !X509_gmtime_adj(X509_getm_notAfter(made), kValidSeconds) || X509_set_pubkey(made, key) != 1 ||
      X509_sign(made, key, EVP_sha256()) == 0)
    return nullptr;
  return certificate;
}

} // namespace

std::optional<DtlsPeer> ParseDtlsPeer(std::string_view fingerprint, std::string_view setup) {
  DtlsPeer peer;
  if (setup == "active")
    peer.begins = true;
  else if (setup != "passive" && setup != "actpass")
    return std::nullopt;

  const std::size_t space = fingerprint.find(' ');
  const pl name{fingerprint.data(), std::min(space, fingerprint.size())};
  constexpr std::size_t kCharactersEach = 3; // the last has no colon behind it
  if (space == std::string_view::npos || pl_strcasecmp(&name, kHashName.data()) != 0)
    return std::nullopt;
  const std::string_view hash = fingerprint.substr(space + 1);
  if (hash.size() != peer.certificate.size() * kCharactersEach - 1)
    return std::nullopt;
  for (std::size_t i = 0; i < peer.certificate.size(); ++i) {
    const int high = HexDigit(hash[i * kCharactersEach]);
    const int low = HexDigit(hash[i * kCharactersEach + 1]);
    if (high < 0 || low < 0)
      return std::nullopt;
    peer.certificate[i] = static_cast<std::uint8_t>(high * 16 + low);
  }
  return peer;
}

std::unique_ptr<DtlsKeys> DtlsKeys::Create(udp_sock* socket, const DtlsPeer& peer, Told told) {
  std::unique_ptr<DtlsKeys> made(new DtlsKeys(peer, std::move(told)));
  dtls_sock* listening = nullptr;
  if (!made->MakeIdentity() ||
      dtls_listen(&listening, nullptr, socket, kHashSize, kLayer, &DtlsKeys::OnCaller, made.get()) != 0)
    return nullptr;
  made->socket_.reset(listening);
  return made;
}

DtlsKeys::~DtlsKeys() = default;

bool DtlsKeys::MakeIdentity() {
  const OpenSslPtr<EVP_PKEY> key(EVP_EC_gen("P-256"));
  const OpenSslPtr<X509> certificate = key ? Certify(key.get()) : nullptr;
  if (!certificate)
    return false;
  const Bytes key_bytes = Der(key.get(), &i2d_PrivateKey);
  const Bytes certificate_bytes = Der(certificate.get(), &i2d_X509);
  tls* identity = nullptr;
  if (tls_alloc(&identity, TLS_METHOD_DTLS, nullptr, nullptr) != 0)
    return false;
  identity_.reset(identity);
  // Both sides show a certificate, and each is compared with what the signalling says of it.
  tls_set_verify_client(identity);
  return tls_set_certificate_der(identity, TLS_KEYTYPE_EC, certificate_bytes.data(), certificate_bytes.size(),
                                 key_bytes.data(), key_bytes.size()) == 0 &&
         tls_set_srtp(identity, kSuites) == 0;
}

std::string DtlsKeys::Fingerprint() const {
  std::array<std::uint8_t, DtlsPeer::kHashBytes> hash{};
  if (tls_fingerprint(identity_.get(), TLS_FINGERPRINT_SHA256, hash.data(), hash.size()) != 0)
    return {};
  std::string text(kHashName);
  char separator = ' ';
  for (const std::uint8_t byte : hash) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    text += std::exchange(separator, ':');
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
  }
  return text;
}

void DtlsKeys::Begin(const sa& address) {
  address_ = address;
  begun_ = true;
  if (connection_)
    dtls_set_peer(connection_.get(), &address);
  if (peer_.begins || connection_)
    return;
  tls_conn* connection = nullptr;
  if (dtls_connect(&connection, identity_.get(), socket_.get(), &address, &DtlsKeys::OnAgreed, nullptr,
                   &DtlsKeys::OnClosed, this) == 0)
    connection_.reset(connection);
  else
    Tell(std::nullopt);
}

void DtlsKeys::OnCaller(const sa* source, void* self) {
  auto* keys = static_cast<DtlsKeys*>(self);
  if (!keys->begun_ || !keys->peer_.begins || keys->connection_ || !sa_cmp(source, &keys->address_, SA_ADDR))
    return;
  tls_conn* connection = nullptr;
  if (dtls_accept(&connection, keys->identity_.get(), keys->socket_.get(), &DtlsKeys::OnAgreed, nullptr,
                  &DtlsKeys::OnClosed, keys) == 0)
    keys->connection_.reset(connection);
}

std::optional<DtlsKeys::Keys> DtlsKeys::Agreed() const {
  std::array<std::uint8_t, DtlsPeer::kHashBytes> shown{};
  if (tls_peer_fingerprint(connection_.get(), TLS_FINGERPRINT_SHA256, shown.data(), shown.size()) != 0 ||
      shown != peer_.certificate)
    return std::nullopt;
  srtp_suite suite{};
  SrtpKey client{suite, Bytes(kKeyBytes)};
  SrtpKey server{suite, Bytes(kKeyBytes)};
  if (tls_srtp_keyinfo(connection_.get(), &suite, client.bytes.data(), kKeyBytes, server.bytes.data(), kKeyBytes) != 0)
    return std::nullopt;
  client.suite = server.suite = suite;
  return peer_.begins ? Keys{server, client} : Keys{client, server};
}

void DtlsKeys::OnAgreed(void* self) {
  auto* keys = static_cast<DtlsKeys*>(self);
  keys->Tell(keys->Agreed());
}

void DtlsKeys::OnClosed(int, void* self) {
  auto* keys = static_cast<DtlsKeys*>(self);
  keys->connection_.reset();
  keys->Tell(std::nullopt);
}

// Keys that are agreed on stay, whatever becomes of the connection that they come from. What is told may end the call,
// and so waits until the library is done with the packet.
void DtlsKeys::Tell(const std::optional<Keys>& keys) {
  if (!told_)
    return;
  soon_.StartOnce(std::chrono::milliseconds{0},
                  [told = std::exchange(told_, nullptr), keys](std::uint64_t) { told(keys); });
}

} // namespace kelmio
