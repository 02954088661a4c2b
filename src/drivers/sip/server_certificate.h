// Whether a server is the one it says it is.
#pragma once

#include <memory>
#include <string>

#include "drivers/sip/libre.h"

namespace kelmio {

/// A context for encrypted connections to one server. No connection comes up unless the server's certificate is valid
/// now, was made out to the server's name, and comes from an authority that is trusted. Engine thread only.
class ServerCertificate {
public:
  ServerCertificate();
  ~ServerCertificate();
  ServerCertificate(const ServerCertificate&) = delete;
  ServerCertificate& operator=(const ServerCertificate&) = delete;

  /// `host` is a name or a numeric address. `authority` is the path of a PEM file; empty: the system's authorities.
  /// False when it can't be made; `Fault` then says why.
  bool Prepare(const std::string& host, const std::string& authority);

  /// For the stack's transport; nothing before `Prepare`.
  tls* Context() const { return context_.get(); }

  /// What was wrong with the certificate that was seen last, as a sentence without its end; empty when nothing was.
  const std::string& Fault() const { return fault_; }
  void ForgetFault() { fault_.clear(); }

private:
  struct Checks; // what OpenSSL calls

  std::string host_;
  bool numeric_ = false;
  std::string fault_;
  RePtr<tls> context_;
};

} // namespace kelmio
