// One call of a SIP line, on the engine's side.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "drivers/sip/call_media.h"
#include "drivers/sip/engine_messages.h"
#include "drivers/sip/libre.h"
#include "drivers/sip/monotonic_timer.h"
#include "drivers/sip/ring_back_tone.h"
#include "drivers/sip/sip_registration.h"
#include "drivers/sip/sip_settings.h"

namespace kelmio {

class SipCall;

/// How this line names itself to the other side of a call.
struct SipNames {
  std::string display_name;        // as the inside of a quoted string; may be empty
  std::string from;                // a URI
  std::string contact;             // a URI under which this line is reached
  std::vector<std::string> routes; // URIs that each request outside of a call has to pass
};

/// What a call needs of the engine that owns it. Engine thread only.
class SipCallHost {
public:
  virtual ~SipCallHost() = default;
  virtual const SipSettings& Settings() const = 0;
  virtual sipsess_sock* Sessions() = 0;
  virtual sip* Stack() = 0;
  /// What looks up names; may be absent.
  virtual dnsc* Names() = 0;
  /// The address of this computer that `peer` sees, with the line's SIP port; nothing when there is no way there.
  virtual std::optional<sa> AddressTowards(const sa& peer) = 0;
  /// `local` is the line's address towards the other side.
  virtual SipNames NamesAt(const sa& local) = 0;
  /// Of an account: whether the message comes from its registrar, and nothing else is so believed.
  virtual bool IsFromRegistrar(const sip_msg& message) = 0;
  /// Of an account: what answers a challenge to a call, nothing on a line for direct calls. The argument of the answer
  /// lives as long as the stack.
  virtual SipRegistration* Registration() = 0;
  virtual void Report(SipReport report) = 0;
  /// The call is over and reported as such; it is destroyed before this returns.
  virtual void CallOver(SipCall& call) = 0;
};

/// Engine thread only. A call ends by `Hangup`, by its destruction (which tells the peer) or by `CallOver`.
class SipCall : private CallMediaEvents {
public:
  SipCall(SipCallHost& host, SipCallNumber number);
  ~SipCall() override;
  SipCall(const SipCall&) = delete;
  SipCall& operator=(const SipCall&) = delete;

  SipCallNumber Number() const { return number_; }

  /// Takes an INVITE: answers 180 and reports the call, or refuses it by itself and gives false.
  bool TakeInvite(const sip_msg& invite);
  /// Calls `text`, or takes the line off hook when it is empty. A call that can't be made ends at once.
  void Dial(const std::string& text);

  void Answer();
  void Hangup();
  void SetSoundPort(std::shared_ptr<SoundPort> port);

private:
  enum class Phase { Ringing, Answered, OffHook, Dialing, Up };

  // Handlers of libre.
  static int OnOffer(mbuf** body, const sip_msg* message, void* self);
  static int OnAnswer(const sip_msg* message, void* self);
  static void OnProgress(const sip_msg* message, void* self);
  static void OnEstablished(const sip_msg* message, void* self);
  static void OnInfo(sip* stack, const sip_msg* message, void* self);
  static void OnClosed(int error, const sip_msg* message, void* self);

  void DigitHeard(char digit) override;
  void PeerLost() override;
  void NoKeys() override;

  void SendAnswer();
  void ReportRings();
  void ReportCaller(const sip_msg& invite);
  void Invite(const std::string& uri, bool own_server);
  int SendInvite(const std::string& uri, const sa& local, bool own_server);
  void CantCall(const std::string& uri, int error);
  void Connected();
  void ReportState(CallState state);
  void Log(const std::string& text);
  /// Reports the end and leaves; nothing of this object may be touched afterwards.
  void Over();

  SipCallHost& host_;
  SipCallNumber number_;
  Phase phase_ = Phase::Ringing;
  bool outgoing_ = false;
  CallState reported_ = CallState::Unknown;
  int rings_ = 0;
  std::string answer_lines_; // headers of the answer beside the usual ones
  CallMedia media_;
  RingBackTone ring_back_;
  MonotonicTimer ring_timer_;
  MonotonicTimer patience_; // ends a state that the other side never ends
  RePtr<sipsess> session_;
};

} // namespace kelmio
