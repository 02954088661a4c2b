// A call on a modem, from the line that is taken to the line that is put down.
#include <algorithm>
#include <utility>

#include "drivers/voice_modem/modem_session.h"

namespace kelmio {
namespace {

using Seconds = ModemClock::Seconds;

constexpr Seconds kCommandLimit{5};
// A line that was just put down isn't free at once.
constexpr Seconds kOnHookBeforeDialling{2};
constexpr int kAnswerWait = 60; // seconds that the called end may ring
constexpr Seconds kDialLimit{kAnswerWait + 17};
// Between two codes for one tone: modems repeat it every 3 or 4 s, and take speech for it only now and then.
constexpr Seconds kCodeAgainFrom{1.5};
constexpr Seconds kCodeAgainTo{6.5};
// One key gives one code or several in a row.
constexpr Seconds kSameKey{0.12};
// Whatever the modem or the program believes, no call takes longer than this.
constexpr Seconds kLongestCall{4 * 3600};

std::string KeysOf(const std::string& number) {
  constexpr std::string_view kKeys = "0123456789*#ABCD,W@!";
  std::string keys;
  for (const char c : number)
    if (kKeys.find(c) != std::string_view::npos)
      keys += c;
  return keys;
}

} // namespace

bool ModemSession::PrepareVoice() {
  ModemLink& link = *link_;
  if (!EnterVoiceClass(link, clock_)) {
    // The caller still rings: time enough to begin anew.
    ResetModem(link, clock_);
    if (!Arm() || !EnterVoiceClass(link, clock_))
      return false;
  }
  const std::string format = "AT+VSM=" + std::to_string(identity_->format->id) + "," + std::to_string(kModemRate);
  if (!link.Command(format + ",0,0", kCommandLimit).Ok() && !link.Command(format, kCommandLimit).Ok())
    return false;
  link.Command("AT+VGT=" + std::to_string(options_.settings.play_gain), kCommandLimit);
  link.Command("AT+VGR=" + std::to_string(options_.settings.record_gain), kCommandLimit);
  return !link.Gone();
}

bool ModemSession::TakeLine(int device) {
  off_hook_ = true;
  off_hook_since_ = clock_.Now();
  return link_->Command("AT+VLS=" + std::to_string(device), kCommandLimit).Ok();
}

void ModemSession::AnswerCall() {
  rings_.Forget();
  answering_ = true; // what rings from here on is this call
  const bool up = PrepareVoice() &&
                  (TakeLine(identity_->line_device) || (!quit_asked_ && link_->Command("ATA", kCommandLimit).Ok()));
  if (up) {
    Report({.kind = ModemReport::Kind::Connected, .call = call_->number});
    Converse();
  } else {
    Log("The call could not be answered");
  }
  HangUp();
}

void ModemSession::PlaceCall(const std::string& number) {
  rings_.Forget();
  while (!CallOver() && clock_.Now() - on_hook_since_ < kOnHookBeforeDialling)
    link_->Wait(on_hook_since_ + kOnHookBeforeDialling);
  bool up = false;
  call_->joined = number.empty();
  if (!CallOver() && PrepareVoice()) {
    const std::string keys = KeysOf(number);
    if (number.empty())
      up = TakeLine(identity_->joined_device) || TakeLine(identity_->line_device);
    else if (keys.empty())
      Log("This is no number that can be dialled");
    else
      up = Dial(keys);
  }
  if (up) {
    Report({.kind = ModemReport::Kind::Connected, .call = call_->number});
    Converse();
  }
  HangUp();
}

bool ModemSession::Dial(const std::string& keys) {
  ModemLink& link = *link_;
  // 7 s without ring-back mean that it was answered; 10 s without any that it can't be told.
  link.Command("AT+VRA=70;+VRN=10", kCommandLimit);
  link.Command("ATS7=" + std::to_string(kAnswerWait), kCommandLimit);
  off_hook_ = true;
  off_hook_since_ = clock_.Now();
  ReportState(CallState::Dialing);
  const CommandResult result = link.Command("ATDT" + keys, kDialLimit, [this] { return CallOver(); });
  if (CallOver())
    return false;
  if (result.Ok())
    return true;
  switch (result.final.value_or(FinalCode::Error)) {
  case FinalCode::Busy:
    Report({.kind = ModemReport::Kind::Busy, .call = call_->number});
    break;
  case FinalCode::NoAnswer:
  case FinalCode::NoCarrier:
    Log("Nobody answers");
    break;
  case FinalCode::NoDialTone:
    Log("There is no dial tone; is the telephone line plugged in?");
    break;
  case FinalCode::LineInUse:
    Log("Another telephone on this line is in use");
    break;
  case FinalCode::Refused:
    Log("The modem refuses to dial this number again so soon");
    break;
  default:
    Log("The number could not be dialled");
    break;
  }
  return false;
}

bool ModemSession::CallOver() {
  TakeCommands();
  if (call_ && clock_.Now() - off_hook_since_ > kLongestCall && off_hook_)
    call_->gone = true;
  return quit_ || !call_ || call_->hang_up || call_->gone;
}

void ModemSession::Converse() {
  key_held_ = false;
  last_digit_ = 0;
  hang_up_code_at_.reset();
  ModemConversation conversation({*link_, clock_, *identity_->format, [this] { return CallOver(); },
                                  [this] { return call_ ? call_->port : nullptr; }});
  conversation_ = &conversation;
  const bool follows = conversation.Run();
  conversation_ = nullptr;
  if (!follows && !link_->Gone()) {
    Log("The modem lost the call");
    Recover();
  }
}

void ModemSession::HangUp() {
  EndCall();
  answering_ = false;
  reported_ = CallState::Unknown;
  armed_ = false;
  if (!link_ || link_->Gone()) {
    off_hook_ = false;
    return;
  }
  const bool down = !off_hook_ || link_->Command("ATH", kCommandLimit).Ok();
  off_hook_ = false;
  on_hook_since_ = clock_.Now();
  if (!down && !link_->Gone())
    Recover();
}

void ModemSession::TakeCodeInCall(char code) {
  if (!call_)
    return;
  constexpr char kIsdnGone = 0x14;
  constexpr char kKeyUp = '~';
  constexpr char kKeyUpElsewhere = 0x7F;
  switch (code) {
  case '/':
    key_held_ = true;
    last_digit_ = 0;
    break;
  case kKeyUp:
  case kKeyUpElsewhere:
    key_held_ = false;
    last_digit_ = 0;
    break;
  case 'l':
  case kIsdnGone:
    call_->gone = true;
    break;
  case 'b':
  case 'K':
  case 'd':
  case 'i':
    call_->gone = call_->gone || IsHangUpCode();
    break;
  case 'H':
  case 'P':
    // Somebody lifts a telephone on this line: the call is his.
    if (!call_->joined) {
      Log("The call is taken at a telephone");
      call_->gone = true;
    }
    break;
  case 'h':
  case 'p':
    call_->gone = call_->gone || call_->joined;
    break;
  default:
    if (std::string_view("0123456789*#ABCD").find(code) != std::string_view::npos)
      TakeDigit(code);
    break;
  }
}

void ModemSession::TakeDigit(char digit) {
  const Seconds now = clock_.Now();
  const bool same = digit == last_digit_ && (key_held_ || now - last_digit_at_ < kSameKey);
  last_digit_ = digit;
  last_digit_at_ = now;
  if (!same)
    Report({.kind = ModemReport::Kind::Digit, .call = call_->number, .digit = digit});
}

/// Modems take music and speech for a tone now and then, so a single code says nothing; the sound itself is watched
/// too.
bool ModemSession::IsHangUpCode() {
  const Seconds now = clock_.Now();
  const Seconds since = hang_up_code_at_ ? now - *hang_up_code_at_ : kCodeAgainTo;
  if (since < kCodeAgainFrom)
    return false;
  hang_up_code_at_ = now;
  return since < kCodeAgainTo;
}

} // namespace kelmio
