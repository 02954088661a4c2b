#include "modem_emulator/virtual_line.h"

#include <algorithm>

namespace kelmio::emulated {
namespace {

constexpr double KeySeconds = 0.1; // a key's tone, and the pause after it

Time Seconds(double seconds) {
  return Time(static_cast<std::int64_t>(seconds * 1e6));
}

std::int16_t Pop(std::deque<std::int16_t>& queue) {
  if (queue.empty()) {
    return 0;
  }
  const std::int16_t sample = queue.front();
  queue.pop_front();
  return sample;
}

} // namespace

void VirtualLine::Enter(State state) {
  state_ = state;
  since_ = 0;
  schedule_.Cancel(Group::Ringing);
  schedule_.Cancel(Group::FarEnd);
  if (state == State::Ringing || state == State::RingingBack) {
    heard_.clear();
  }
  if (state == State::Free || state == State::Ringing || state == State::RingingBack) {
    says_.clear();
    keys_.clear();
  }
}

void VirtualLine::Ring(const CallerId& caller_id, const RingStyle& style) {
  if (state_ != State::Free || modem_ || handset_ || extension_) {
    return;
  }
  caller_id_ = caller_id;
  style_ = style;
  Enter(State::Ringing);
  constexpr double BeforeRing = 0.5; // a report ahead of the ring comes so much earlier
  if (style.caller_id_after == 0) {
    events.caller_id(caller_id_);
    schedule_.In(Seconds(BeforeRing), Group::Ringing, [this] { Burst(1); });
  } else {
    Burst(1);
  }
}

void VirtualLine::Burst(int number) {
  if (number > style_.bursts) {
    Enter(State::Free);
    return;
  }
  events.ring_burst();
  if (number == style_.caller_id_after) {
    schedule_.In(Seconds(style_.caller_id_delay), Group::Ringing, [this] { events.caller_id(caller_id_); });
  }
  const std::size_t part = static_cast<std::size_t>(number - 1) * 2 % style_.cadence.size();
  const double period = style_.cadence[part] + style_.cadence[part + 1];
  schedule_.In(Seconds(period), Group::Ringing, [this, number] { Burst(number + 1); });
}

void VirtualLine::Says(const Samples& samples) {
  says_.insert(says_.end(), samples.begin(), samples.end());
}

void VirtualLine::HandsetSays(const Samples& samples) {
  handset_says_.insert(handset_says_.end(), samples.begin(), samples.end());
}

void VirtualLine::Presses(const std::string& keys) {
  double at = 0;
  for (const char key : keys) {
    const Samples tone = Dtmf(key).First(KeySeconds);
    keys_.insert(keys_.end(), tone.begin(), tone.end());
    keys_.insert(keys_.end(), static_cast<std::size_t>(KeySeconds * LineRate), 0);
    schedule_.In(Seconds(at + KeySeconds / 2), Group::FarEnd, [this, key] { events.key(key); });
    at += 2 * KeySeconds;
  }
}

void VirtualLine::HangUp(HangUpSign sign) {
  if (state_ == State::Ringing) {
    Enter(State::Free);
    return;
  }
  if (state_ != State::Connected && state_ != State::RingingBack) {
    return;
  }
  sign_ = sign;
  Enter(State::Gone);
  says_.clear();
  keys_.clear();
  // Detectors of modems need a while and then repeat themselves.
  const auto repeat = [this](char code, double first, double period) {
    for (int i = 0; i < 20; ++i) {
      schedule_.In(Seconds(first + i * period), Group::FarEnd, [this, code] { events.code(code); });
    }
  };
  switch (sign) {
  case HangUpSign::LoopBreak:
    schedule_.In(Seconds(0.1), Group::FarEnd, [this] { events.code('l'); });
    break;
  case HangUpSign::BusyCode:
    repeat('b', 2, 4);
    break;
  case HangUpSign::DialToneCode:
    repeat('d', 2, 3);
    break;
  default:
    break;
  }
}

void VirtualLine::Hooks() {
  const bool taken = modem_ || handset_ || extension_;
  if (taken && state_ == State::Ringing) {
    Enter(State::Connected);
  } else if (!taken && state_ != State::Free && state_ != State::Ringing) {
    Enter(State::Free);
  }
}

void VirtualLine::SetModem(bool off_hook) {
  modem_ = off_hook;
  Hooks();
}

void VirtualLine::SetHandset(bool off_hook) {
  handset_ = off_hook;
  Hooks();
}

void VirtualLine::SetExtension(bool off_hook) {
  extension_ = off_hook;
  Hooks();
}

void VirtualLine::Dial(const Callee& callee) {
  if (callee.kind == Callee::Kind::Busy) {
    Enter(State::Busy);
    schedule_.In(Seconds(2), Group::FarEnd, [this] { events.code('b'); });
    return;
  }
  Enter(State::RingingBack);
  const bool answers = callee.kind == Callee::Kind::Answers;
  const double period = tones.ring_back.cadence[0] + tones.ring_back.cadence[1];
  for (int i = 0; i < (answers ? callee.rings : 30); ++i) {
    schedule_.In(Seconds(0.1 + i * period), Group::FarEnd, [this] { events.ring_back(); });
  }
  if (answers) {
    schedule_.In(Seconds(callee.rings * period), Group::FarEnd, [this] {
      Enter(State::Connected);
      events.answered();
    });
  }
}

VirtualLine::Moment VirtualLine::Step(std::int16_t out) {
  const bool taken = modem_ || handset_ || extension_;
  const std::int64_t at = since_++;
  int line = 0;
  switch (state_) {
  case State::Connected: {
    const int spoken = Pop(says_);
    line = std::clamp(spoken + Pop(keys_), -32768, 32767);
    if (modem_) {
      heard_.push_back(out);
    }
    break;
  }
  case State::RingingBack:
    line = tones.ring_back.At(at);
    break;
  case State::Busy:
    line = tones.busy.At(at);
    break;
  case State::Gone:
    if (sign_ == HangUpSign::BusyCode || sign_ == HangUpSign::BusyTone) {
      line = tones.busy.At(at);
    } else if (sign_ == HangUpSign::DialToneCode || sign_ == HangUpSign::DialTone) {
      line = tones.dial.At(at);
    }
    break;
  case State::Free:
    line = taken ? tones.dial.At(at) : 0;
    break;
  case State::Ringing:
    break;
  }
  return {static_cast<std::int16_t>(line), Pop(handset_says_)};
}

} // namespace kelmio::emulated
