// Keeps an account known to its registrar, so that calls find their way here.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

#include "drivers/sip/libre.h"
#include "drivers/sip/monotonic_timer.h"
#include "drivers/sip/network_watch.h"
#include "drivers/sip/registrar_lookup.h"
#include "drivers/sip/server_certificate.h"
#include "drivers/sip/sip_account.h"
#include "drivers/sip/sip_settings.h"
#include "drivers/sip/sip_transports.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// What stands at the end of the reason when the way to the registrar is encrypted.
inline constexpr std::string_view kEncryptedMark = ", encrypted";

/// How an account stands.
struct AccountStanding {
  LineStatus::Health health = LineStatus::Health::Trying;
  std::string words;  // a sentence
  std::string reason; // the same without what changes with each attempt
  bool encrypted = false;
};

/// Registers (RFC 3261 section 10), refreshes, and begins anew whenever the registrar, the network or the computer has
/// been away. Engine thread only.
class SipRegistration {
public:
  enum class Purpose : std::uint8_t {
    Stay,  // goes on until it leaves
    Probe, // asks once, and leaves no trace at the registrar
  };
  using Told = std::function<void(const AccountStanding&)>;

  /// `settings` hold an account. All that is given outlives the registration; `names` may be absent. `told` hears of
  /// each change.
  SipRegistration(const SipSettings& settings, SipTransports& transports, dnsc* names, Purpose purpose, Told told);
  ~SipRegistration();
  SipRegistration(const SipRegistration&) = delete;
  SipRegistration& operator=(const SipRegistration&) = delete;

  void Start();
  /// Takes the registration back, and calls `done` when the registrar has confirmed it or has had its time.
  void Leave(std::function<void()> done);

  /// Whether what comes from `source` comes from the registrar, as far as an address can say so.
  bool IsRegistrar(const sa& source) const;
  /// The address under which the registrar reaches this line, as a URI; `local` is used until it has told.
  std::string ContactUri(const sa& local) const;
  /// What each request outside of a call has to pass, as URIs.
  std::vector<std::string> Routes() const;
  /// Name and password for a challenge, as the library asks for them: for whatever the account's own server asks, and
  /// for what may come from elsewhere, where only those hear them who have asked for the registration too. The argument
  /// is the registration.
  static int Credentials(char** user, char** password, const char* realm, void* self);
  static int CredentialsBeyond(char** user, char** password, const char* realm, void* self);

private:
  enum class Phase : std::uint8_t { Idle, Looking, Asking, Registered, Waiting, Leaving };

  static int CredentialsOfRegistrar(char** user, char** password, const char* realm, void* self);
  void Begin();
  void Found(LookupResult result);
  void TryTarget();
  bool BindTowards(const SipTarget& target);
  void Ask();
  static void OnResponse(int error, const sip_msg* message, void* self);
  void Answered(int error, const sip_msg* message);
  void Challenged(const sip_msg& message);
  void Accepted(const sip_msg& message);
  void Refused(const sip_msg& message);
  void NoAnswer(int error);
  /// Words without their end, and whether asking again soon makes no sense.
  void Fail(const std::string& reason, bool refused, std::chrono::seconds at_least = {});
  bool TakeObserved(const sip_msg& message);
  std::chrono::seconds Granted(const sip_msg& message) const;
  void Refresh();
  void KeepAlive();
  static void OnPong(int error, const sip_msg* message, void* self);
  void Left();
  void NetworkChanged(NetworkWatch::Change change);
  void Tell(LineStatus::Health health, const std::string& reason, const std::string& more = "");
  std::string Contact(const sa& address) const;
  std::string ContactHeader() const;
  const SipTarget& Target() const { return targets_[target_]; }
  std::optional<sa> Local() const;
  /// The address of this computer from which a way leads to the registrar now, or anywhere while it isn't known.
  std::optional<sa> Way() const;

  const SipSettings& settings_;
  const SipAccount& account_;
  const ServerName server_;
  SipTransports& transports_;
  dnsc* names_;
  const Purpose purpose_;
  const Told told_;

  Phase phase_ = Phase::Idle;
  RegistrarLookup lookup_;
  ServerCertificate certificate_;
  bool protected_once_ = false; // the name servers have offered TLS
  std::vector<SipTarget> targets_;
  std::size_t target_ = 0;
  std::vector<std::string> routes_;

  std::string call_id_;
  std::string tag_;
  std::uint32_t sequence_ = 0;
  std::uint64_t expires_;
  RePtr<sip_auth> auth_;
  struct sip_request* request_ = nullptr; // told by the library when it is over
  struct sip_request* ping_ = nullptr;    // the same
  std::vector<std::string> realms_;       // that have asked for the registration
  int questions_ = 0;                     // after the password, in this attempt
  int moves_ = 0;                         // to another address as the registrar sees it, in a row
  bool longer_ = false;                   // a longer time has been asked for in this attempt
  bool ask_for_nothing_ = false;          // a probe sends no contact at first
  std::optional<sa> observed_;            // this line, as the registrar sees it
  std::string asked_contact_;             // the one of the last request
  std::string bound_contact_;             // the one the registrar knows
  bool pong_seen_ = false;
  bool pings_ = true; // the registrar answers them, as far as is known

  LineStatus::Health health_ = LineStatus::Health::Off;
  bool refused_ = false; // asking again soon would be no use
  int failures_ = 0;     // in a row
  std::optional<sa> failed_from_;
  std::function<void()> left_;
  std::minstd_rand random_;
  MonotonicTimer next_;  // the next attempt, or the end of one
  MonotonicTimer alive_; // signs of life
  std::optional<NetworkWatch> watch_;
};

} // namespace kelmio
