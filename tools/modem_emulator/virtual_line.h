#pragma once

#include "modem_emulator/caller_id.h"
#include "modem_emulator/schedule.h"
#include "modem_emulator/sound.h"

#include <deque>
#include <functional>
#include <optional>
#include <string>
#include <vector>

namespace kelmio::emulated {

// A call that comes in. The cadence is on and off in turn, in seconds; every burst is one RING of the modem.
struct RingStyle {
  std::vector<double> cadence = {2, 4};
  int bursts = 100;
  int caller_id_after = 1;      // the burst after whose begin the report comes; 0 for before the first
  double caller_id_delay = 1.0; // seconds after that burst began
};

// What becomes of a number that the modem dials.
struct Callee {
  enum class Kind { Answers, Busy, NeverAnswers, NoDialTone, LineInUse };
  Kind kind = Kind::Answers;
  int rings = 2; // bursts of ring-back before the answer
};

// How the modem can notice that the far end has gone.
enum class HangUpSign { LoopBreak, BusyCode, BusyTone, DialToneCode, DialTone, Silence };

struct LineTones {
  Tone dial{{350, 440}, {}};
  Tone busy{{480, 620}, {0.5, 0.5}};
  Tone ring_back{{440, 480}, {2, 4}};
};

// The pair of wires with what hangs on it: exchange and far end on one side, telephones beside the modem on the other.
// Not thread-safe.
class VirtualLine {
public:
  enum class State { Free, Ringing, Connected, RingingBack, Busy, Gone };

  // What the modem can hear of the line.
  struct Events {
    std::function<void()> ring_burst;
    std::function<void(const CallerId&)> caller_id;
    std::function<void()> ring_back;
    std::function<void()> answered; // a dialled call
    std::function<void(char code)> code;
    std::function<void(char key)> key;
  };

  explicit VirtualLine(Schedule& schedule) : schedule_(schedule) {}
  Events events;
  LineTones tones;

  void Ring(const CallerId& caller_id, const RingStyle& style);
  void Says(const Samples& samples);
  void HandsetSays(const Samples& samples);
  void Presses(const std::string& keys);
  // The far end gives up a ring or leaves a call.
  void HangUp(HangUpSign sign);

  // Who is off hook on this side. With the last one gone the call is over.
  void SetModem(bool off_hook);
  void SetHandset(bool off_hook);
  void SetExtension(bool off_hook);
  bool ModemOffHook() const { return modem_; }
  bool HandsetOffHook() const { return handset_; }
  bool ExtensionOffHook() const { return extension_; }

  void Dial(const Callee& callee);
  State Now() const { return state_; }

  struct Moment {
    std::int16_t line;    // from the far end or the exchange
    std::int16_t handset; // from the telephone beside the modem
  };
  // Nobody on this side is off hook: nothing is said or heard.
  bool Unheard() const { return !modem_ && !handset_ && !extension_ && handset_says_.empty(); }
  // One sample goes out and one comes in.
  Moment Step(std::int16_t out);
  const Samples& Heard() const { return heard_; }

private:
  void Hooks();
  void Enter(State state);
  void Burst(int number);

  Schedule& schedule_;
  State state_ = State::Free;
  std::int64_t since_ = 0; // samples in this state
  HangUpSign sign_ = HangUpSign::Silence;
  bool modem_ = false;
  bool handset_ = false;
  bool extension_ = false;
  CallerId caller_id_;
  RingStyle style_;
  std::deque<std::int16_t> says_;
  std::deque<std::int16_t> keys_;
  std::deque<std::int16_t> handset_says_;
  Samples heard_;
};

} // namespace kelmio::emulated
