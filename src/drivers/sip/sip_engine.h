// The thread that speaks SIP for one open line.
#pragma once

#include <atomic>
#include <future>
#include <memory>
#include <string>
#include <thread>

#include "drivers/sip/engine_messages.h"
#include "drivers/sip/libre.h"
#include "drivers/sip/rate_limiter.h"
#include "drivers/sip/sip_call.h"
#include "drivers/sip/sip_registration.h"
#include "drivers/sip/sip_settings.h"

namespace kelmio {

/// Signalling, RTP and the 20 ms tick of one line live on a thread of its own. The public functions belong to the
/// user interface thread. Reports come on the engine's thread, none once `Stop` has returned.
class SipEngine : public SipCallHost {
public:
  /// Calls are numbered from `first_call` on. An engine that only probes its account takes and makes no calls.
  SipEngine(SipSettings settings, SipReportSink sink, SipCallNumber first_call = 1,
            SipRegistration::Purpose purpose = SipRegistration::Purpose::Stay);
  /// Stops.
  ~SipEngine() override;
  SipEngine(const SipEngine&) = delete;
  SipEngine& operator=(const SipEngine&) = delete;

  /// Binds the address and takes calls from now on; of an account, goes on its way to the registrar. Gives 0, or the
  /// error number of what was in the way; nothing runs then. Call it once.
  int Start();

  /// Ends the call that is up, telling its peer, and the thread. Nothing happens when it doesn't run.
  void Stop();

  /// The same while no call is up, not even one of which nothing has been reported yet; false otherwise, and all goes
  /// on. Only between `Start` and `Stop`.
  bool StopIfIdle();

  /// Hands a command to the engine; false when it is out of memory. Only between `Start` and `Stop`.
  bool Push(SipCommand command);

  SipCallNumber NextCallNumber() { return next_call_.fetch_add(1); }

  /// The bound port, once started.
  std::uint16_t Port() const { return port_; }

private:
  struct Loop; // everything that libre owns; made, used and destroyed on the engine's thread

  const SipSettings& Settings() const override { return settings_; }
  sipsess_sock* Sessions() override;
  sip* Stack() override;
  dnsc* Names() override;
  std::optional<sa> AddressTowards(const sa& peer) override;
  SipNames NamesAt(const sa& local) override;
  bool IsFromRegistrar(const sip_msg& message) override;
  SipRegistration* Registration() override;
  void Report(SipReport report) override { sink_(std::move(report)); }
  void CallOver(SipCall& call) override;

  void Run(std::promise<int> started);
  int OpenLoop();
  int OpenTransports();
  void Quit();
  static void OnCommand(int id, void* data, void* self);
  static void OnInvite(const sip_msg* message, void* self);
  static bool OnAnyRequest(const sip_msg* message, void* self);
  static bool OnRequestLeft(const sip_msg* message, void* self);
  static bool OnResponseLeft(const sip_msg* message, void* self);
  void Execute(SipCommand& command);
  bool Admits(const sip_msg& request) const;
  void Invited(const sip_msg& invite);

  const SipSettings settings_;
  const SipReportSink sink_;
  const SipRegistration::Purpose purpose_;
  std::atomic<SipCallNumber> next_call_;
  std::thread thread_;
  mqueue* commands_ = nullptr; // owned by the loop
  std::uint16_t port_ = 0;

  // Engine thread only.
  std::unique_ptr<Loop> loop_;
  std::unique_ptr<SipCall> call_;
  bool leaving_ = false;
};

} // namespace kelmio
