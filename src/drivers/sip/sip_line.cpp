#include "drivers/sip/sip_line.h"

#include <system_error>
#include <utility>

#include "drivers/sip/self_call.h"
#include "drivers/sip/sip_session.h"
#include "drivers/sip/sip_words.h"

namespace kelmio {

namespace {

using namespace std::chrono_literals;

// The answer takes a few milliseconds; a user who pressed a button waits for this one.
constexpr std::chrono::milliseconds kAnswerLimit = 1s;

// Words of the Telephony API for what a line's user can do here. Nothing can be held, transferred or joined, and no
// digits are sent.
constexpr std::uint32_t kAddressIsName = 0x4;     // user@host
constexpr std::uint32_t kCallFeatures = 0x1       // accept
                                        | 0x4     // answer
                                        | 0x80    // drop
                                        | 0x2000  // watch for digits
                                        | 0x8000; // watch for tones
constexpr std::uint32_t kLineMakesCalls = 0x8;
constexpr std::uint32_t kAddressMakesCalls = 0x2;
// What an ISDN channel carries, and each of the codings here.
constexpr std::uint32_t kBitsPerSecond = 64'000;

/// Opens the address for a moment. Gives 0 or an error number; `answers` is told whether a line there would answer.
int Probe(const SipSettings& settings, bool* answers = nullptr) {
  SipEngine engine(settings, [](const SipReport&) {});
  const int error = engine.Start();
  if (error == 0 && answers)
    *answers = AnswersOptions({settings.listen.host, engine.Port()}, kAnswerLimit);
  return error;
}

} // namespace

SipLine::SipLine(EventLoop& loop, SipSettings settings) : loop_(loop), settings_(std::move(settings)) {}

SipLine::~SipLine() {
  changed_ = nullptr;
  Close();
}

void SipLine::SetConfigDialog(SipConfigDialog& dialog, LinesFile file) {
  dialog_ = &dialog;
  file_ = std::move(file);
}

LineCaps SipLine::Caps() const {
  LineCaps caps;
  caps.line_name = "SIP line (" + ToText(settings_.listen) + ")";
  caps.provider_info = "libre " + std::string(sys_libre_version_get());
  caps.switch_info = "SIP";
  caps.bearer_modes = kBearerModeVoice;
  caps.media_modes = media_mode::kInteractiveVoice | media_mode::kAutomatedVoice;
  caps.max_data_rate = kBitsPerSecond;
  caps.address_type = kAddressIsName;
  caps.address_features = kAddressMakesCalls;
  caps.call_features = kCallFeatures;
  caps.line_features = kLineMakesCalls;
  for (const CallState state :
       {CallState::Idle, CallState::Offering, CallState::Accepted, CallState::Dialing, CallState::Ringback,
        CallState::Busy, CallState::Connected, CallState::Proceeding, CallState::Disconnected})
    caps.call_states |= static_cast<std::uint32_t>(state);
  return caps;
}

bool SipLine::Open(LineEvents& events) {
  if (session_)
    return false;
  for (const std::string& note : settings_.notes)
    events.Log(note);
  auto session = std::make_shared<SipSession>(loop_, events, [this] { TakeOverWaiting(); });
  open_error_ = session->Start(settings_);
  if (open_error_ != 0) {
    events.Log("SIP line: " + ToText(settings_.listen) +
               " can't be opened: " + std::generic_category().message(open_error_));
    return false;
  }
  session_ = std::move(session);
  events_ = &events;
  return true;
}

void SipLine::Close() {
  if (session_)
    session_->Close();
  session_.reset();
  open_error_ = 0;
  TakeOverWaiting();
  events_ = nullptr;
}

std::shared_ptr<DeviceCall> SipLine::MakeCall(const std::string& number) {
  return session_ ? session_->MakeCall(number) : nullptr;
}

std::uint16_t SipLine::Port() const {
  return session_ ? session_->Port() : std::uint16_t{0};
}

// --- setting the line up

void SipLine::Configure() {
  if (dialog_)
    dialog_->Show(*this);
}

std::string SipLine::StateInWords() const {
  std::string words = "Switched off.";
  if (session_ && session_->IsRunning())
    words = ReachableInWords(settings_, session_->Port());
  else if (open_error_ != 0)
    words = HindranceInWords(settings_.listen, open_error_);
  if (waiting_)
    words += " A call is up: the new settings are taken over when it has ended.";
  else if (session_ && session_->HasCall())
    words += " A call is up: new settings would be taken over when it has ended.";
  return words;
}

SipTakeOver SipLine::TakeOver(const SipSettings& settings) {
  waiting_.reset();
  SipSettings next = settings;
  next.device_id = settings_.device_id;
  if (next == settings_ && open_error_ == 0)
    return {};
  next.notes.clear();
  SipTakeOver result = TryTakeOver(next);
  if (result.state == SipTakeOver::State::Waiting)
    waiting_ = next;
  return result;
}

SipTakeOver SipLine::TryTakeOver(const SipSettings& next) {
  int error = 0;
  if (session_) {
    const std::optional<int> moved = session_->Move(next, settings_);
    if (!moved)
      return {SipTakeOver::State::Waiting, "The new settings are kept for the end of the call."};
    error = *moved;
    open_error_ = session_->IsRunning() ? 0 : error;
  } else if (next.listen != settings_.listen) {
    error = Probe(next);
  }
  if (error != 0)
    return {SipTakeOver::State::Refused, HindranceInWords(next.listen, error) + " The settings stay as they were."};
  return Adopt(next);
}

SipTakeOver SipLine::Adopt(const SipSettings& next) {
  settings_ = next;
  const bool failed = std::exchange(open_error_, 0) != 0;
  if (file_ && !WriteSipSettings(*file_, settings_))
    return {SipTakeOver::State::Done,
            "The settings are taken, but " + file_->Path() + " can't be written: they last until the program ends."};
  if (failed)
    return {SipTakeOver::State::Done, "The line is off. Switch the system on, and it is reached there."};
  return {};
}

void SipLine::TakeOverWaiting() {
  if (!waiting_)
    return;
  const SipTakeOver result = TakeOver(*std::exchange(waiting_, std::nullopt));
  if (result.state == SipTakeOver::State::Waiting)
    return;
  // A line that is being closed has a word for what went wrong alone.
  const std::string words = result.words.empty() && session_ ? StateInWords() : result.words;
  if (events_ && !words.empty())
    events_->Log("SIP line: " + words);
  if (changed_)
    changed_();
}

std::string SipLine::Test(const SipSettings& settings) {
  const std::string where = ToText(settings.listen);
  // The line's own port can't be opened a second time.
  const bool own = session_ && session_->IsRunning() && settings.listen.port == session_->Port();
  bool answers = false;
  if (own) {
    SipSettings elsewhere = settings;
    elsewhere.listen.port = 0;
    if (const int error = Probe(elsewhere))
      return HindranceInWords(settings.listen, error);
    answers = AnswersOptions({settings_.listen.host, session_->Port()}, kAnswerLimit);
  } else if (const int error = Probe(settings, &answers)) {
    return HindranceInWords(settings.listen, error);
  }
  if (!answers)
    return (own ? ToText(settings_.listen) : where) + " is open, but there is no answer. Is it a firewall's doing?";
  if (!own)
    return where + " can be opened, and the line answers there.";
  return settings.listen == settings_.listen
             ? "The line answers at " + where + "."
             : "The line answers at " + ToText(settings_.listen) + ", and it can move to " + where + ".";
}

} // namespace kelmio
