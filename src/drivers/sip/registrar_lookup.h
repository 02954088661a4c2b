// Where a registrar is found: by its name, in the order of RFC 3263.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "drivers/sip/libre.h"
#include "drivers/sip/monotonic_timer.h"
#include "drivers/sip/sip_account.h"
#include "drivers/sip/sip_settings.h"

namespace kelmio {

/// One address of a server, and how it is spoken to.
struct SipTarget {
  sip_transp transport = SIP_TRANSP_UDP;
  sa address{};
};

/// The first to be asked comes first.
struct LookupResult {
  std::vector<SipTarget> targets;
  std::string hindrance; // why there are none, as a sentence without its end
};

/// Engine thread only.
class RegistrarLookup {
public:
  using Done = std::function<void(LookupResult)>;

  /// `names` may be absent; then only numeric addresses are found.
  explicit RegistrarLookup(dnsc* names);
  ~RegistrarLookup();
  RegistrarLookup(const RegistrarLookup&) = delete;
  RegistrarLookup& operator=(const RegistrarLookup&) = delete;

  /// `done` is called once, perhaps before this returns, unless another lookup begins or this one is stopped first.
  void Start(const ServerName& server, SipTransport transport, Done done);
  void Stop();

private:
  struct Question; // one that has been sent
  struct Host {
    std::string name;
    std::uint16_t port = 0;
    std::vector<sa> v4;
    std::vector<sa> v6;
  };

  static void OnServices(int error, const dnshdr* header, list* answers, list* authorities, list* more, void* question);
  static void OnAddresses(int error, const dnshdr* header, list* answers, list* authorities, list* more,
                          void* question);
  bool Ask(const std::string& name, std::uint16_t type, std::size_t host, dns_query_h* heard);
  void AskForService();
  void AskForHosts();
  void FinishSoon();
  void Finish();

  dnsc* names_;
  ServerName server_;
  Done done_;
  std::vector<sip_transp> services_; // still to be asked for, the first one now
  sip_transp transport_ = SIP_TRANSP_UDP;
  std::vector<Host> hosts_;
  std::vector<std::unique_ptr<Question>> questions_;
  std::size_t open_questions_ = 0;
  bool unknown_ = false; // the name servers say that there is no such name
  MonotonicTimer limit_;
};

} // namespace kelmio
