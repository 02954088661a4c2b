#include "drivers/sip/server_certificate.h"

#include <arpa/inet.h>

#include <openssl/ssl.h>
#include <openssl/x509v3.h>

// The library tells its context only to those who know OpenSSL.
extern "C" struct ssl_ctx_st* tls_openssl_context(const struct tls* tls);

namespace kelmio {

namespace {

constexpr const char* kSystemAuthorities = "/etc/ssl/certs/ca-certificates.crt";
// Longer than any chain that is in use.
constexpr int kLongestChain = 8;

bool IsAddress(const std::string& host) {
  in6_addr unused{};
  return inet_pton(AF_INET, host.c_str(), &unused) == 1 || inet_pton(AF_INET6, host.c_str(), &unused) == 1;
}

std::string FaultInWords(const std::string& host, int error) {
  const std::string certificate = "The certificate of " + host;
  switch (error) {
  case X509_V_ERR_CERT_HAS_EXPIRED:
    return certificate + " has expired";
  case X509_V_ERR_CERT_NOT_YET_VALID:
    return certificate + " isn't valid yet, by this computer's clock";
  case X509_V_ERR_HOSTNAME_MISMATCH:
  case X509_V_ERR_IP_ADDRESS_MISMATCH:
    return certificate + " was made out to another name";
  case X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT:
  case X509_V_ERR_SELF_SIGNED_CERT_IN_CHAIN:
  case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT:
  case X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY:
  case X509_V_ERR_UNABLE_TO_VERIFY_LEAF_SIGNATURE:
    return certificate + " comes from an authority that is not trusted here";
  default:
    return certificate + " can't be trusted: " + X509_verify_cert_error_string(error);
  }
}

} // namespace

struct ServerCertificate::Checks {
  static ServerCertificate* Of(const SSL* connection) {
    return static_cast<ServerCertificate*>(SSL_CTX_get_app_data(SSL_get_SSL_CTX(connection)));
  }

  static int Verified(int good, X509_STORE_CTX* chain) {
    const auto* connection =
        static_cast<const SSL*>(X509_STORE_CTX_get_ex_data(chain, SSL_get_ex_data_X509_STORE_CTX_idx()));
    if (ServerCertificate* self = connection ? Of(connection) : nullptr; self && good == 0)
      self->fault_ = FaultInWords(self->host_, X509_STORE_CTX_get_error(chain));
    return good;
  }

  // A server for several names needs to be told which one is meant, before it shows its certificate. The library makes
  // its connections by itself; this is called as each one begins.
  static void Progressed(const SSL* connection, int where, int) {
    const ServerCertificate* self = (where & SSL_CB_HANDSHAKE_START) != 0 ? Of(connection) : nullptr;
    if (self && !self->numeric_ && SSL_get_servername(connection, TLSEXT_NAMETYPE_host_name) == nullptr)
      SSL_set_tlsext_host_name(const_cast<SSL*>(connection), self->host_.c_str()); // NOLINT
  }
};

ServerCertificate::ServerCertificate() = default;

ServerCertificate::~ServerCertificate() {
  // The stack may hold the context for a moment longer.
  if (context_)
    SSL_CTX_set_app_data(tls_openssl_context(context_.get()), nullptr);
}

bool ServerCertificate::Prepare(const std::string& host, const std::string& authority) {
  host_ = host;
  numeric_ = IsAddress(host);
  fault_.clear();
  tls* made = nullptr;
  if (tls_alloc(&made, TLS_METHOD_SSLV23, nullptr, nullptr) != 0) {
    fault_ = "Encryption can't be used";
    return false;
  }
  context_.reset(made);
  const std::string trusted = authority.empty() ? kSystemAuthorities : authority;
  if (tls_add_ca(made, trusted.c_str()) != 0) {
    fault_ = "The authorities in " + trusted + " can't be read";
    return false;
  }
  // By itself the library takes any certificate at all.
  SSL_CTX* context = tls_openssl_context(made);
  X509_VERIFY_PARAM* wanted = SSL_CTX_get0_param(context);
  X509_VERIFY_PARAM_set_hostflags(wanted, X509_CHECK_FLAG_NO_PARTIAL_WILDCARDS);
  const bool named = numeric_ ? X509_VERIFY_PARAM_set1_ip_asc(wanted, host.c_str()) == 1
                              : X509_VERIFY_PARAM_set1_host(wanted, host.c_str(), host.size()) == 1;
  if (!named || SSL_CTX_set_min_proto_version(context, TLS1_2_VERSION) != 1) {
    fault_ = "Encryption can't be used";
    return false;
  }
  SSL_CTX_set_app_data(context, this);
  SSL_CTX_set_verify_depth(context, kLongestChain);
  SSL_CTX_set_verify(context, SSL_VERIFY_PEER, &Checks::Verified);
  SSL_CTX_set_info_callback(context, &Checks::Progressed);
  return true;
}

} // namespace kelmio
