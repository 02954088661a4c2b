#include "drivers/sip/sip_line.h"

#include <system_error>
#include <utility>

#include "drivers/sip/account_file.h"
#include "drivers/sip/self_call.h"
#include "drivers/sip/sip_account.h"
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

constexpr const char* kNotSetUp = "No account has been entered yet.";

/// Opens the address for a moment. Gives 0 or an error number; `answers` is told whether a line there would answer.
int Probe(const SipSettings& settings, bool* answers = nullptr) {
  SipEngine engine(settings, [](const SipReport&) {});
  const int error = engine.Start();
  if (error == 0 && answers)
    *answers = AnswersOptions({settings.listen.host, engine.Port()}, kAnswerLimit);
  return error;
}

} // namespace

/// An account that is being tried, and who waits for what comes of it.
struct SipLine::Trial {
  std::function<void(std::string)> told;
  std::unique_ptr<SipEngine> engine;
};

SipLine::SipLine(EventLoop& loop, SipSettings settings) : loop_(loop), settings_(std::move(settings)) {}

SipLine::~SipLine() {
  changed_ = nullptr;
  account_changed_ = nullptr;
  trial_.reset();
  Close();
}

void SipLine::SetConfigDialog(SipConfigDialog& dialog, LinesFile file) {
  dialog_ = &dialog;
  file_ = std::move(file);
}

void SipLine::SetAccount(int number, std::function<void()> changed) {
  account_number_ = number;
  account_changed_ = std::move(changed);
}

bool SipLine::IsSetUp() const {
  return !settings_.account || kelmio::IsSetUp(*settings_.account);
}

LineCaps SipLine::Caps() const {
  LineCaps caps;
  const auto& account = settings_.account;
  if (!account)
    caps.line_name = "SIP line (" + ToText(settings_.listen) + ")";
  else if (IsSetUp())
    caps.line_name = "SIP account " + account->user + " at " + account->server;
  else
    caps.line_name = "SIP account (not set up yet)";
  caps.provider_info = "libre " + std::string(sys_libre_version_get());
  caps.switch_info = "SIP";
  caps.bearer_modes = kBearerModeVoice;
  // One that is not set up yet too, since only lines for speech are offered to be chosen and set up.
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
  const std::string fault = settings_.account ? FaultOf(*settings_.account) : "";
  if (!fault.empty()) {
    status_.words = IsSetUp() ? fault : kNotSetUp;
    events.Log(LogName() + ": " + status_.words);
    return false;
  }
  auto session = NewSession(events);
  logged_reason_.clear();
  open_error_ = session->Start(settings_);
  if (open_error_ != 0) {
    events.Log(LogName() + ": " + ToText(settings_.listen) +
               " can't be opened: " + std::generic_category().message(open_error_));
    SetStatus(LineStatus::Health::Trouble, HindranceInWords(settings_.listen, open_error_));
    return false;
  }
  session_ = std::move(session);
  events_ = &events;
  if (settings_.account)
    SetStatus(LineStatus::Health::Trying, "Registering with " + settings_.account->server + ".");
  else
    SetStatus(LineStatus::Health::Ready, ReachableInWords(settings_, session_->Port()));
  if (changed_)
    changed_();
  return true;
}

void SipLine::Close() {
  if (session_)
    session_->Close();
  session_.reset();
  removed_ = false;
  open_error_ = 0;
  TakeOverWaiting();
  events_ = nullptr;
  SetStatus(LineStatus::Health::Off, "");
  if (changed_)
    changed_();
}

std::shared_ptr<SipSession> SipLine::NewSession(LineEvents& events) {
  SipSessionOwner& owner = *this;
  return std::make_shared<SipSession>(loop_, events, owner);
}

std::string SipLine::LogName() const {
  if (!settings_.account)
    return "SIP line";
  return IsSetUp() ? "SIP account " + settings_.account->user : "SIP account";
}

// --- how it stands

LineStatus SipLine::Status() const {
  return status_;
}

void SipLine::SetStatus(LineStatus::Health health, std::string words) {
  if (health == status_.health && words == status_.words)
    return;
  if (health != status_.health)
    status_.since = std::chrono::system_clock::now();
  status_.health = health;
  status_.words = std::move(words);
  if (events_)
    events_->StatusChanged();
}

void SipLine::CallBegan() {
  status_.last_call = std::chrono::system_clock::now();
  if (events_)
    events_->StatusChanged();
}

void SipLine::AccountStands(LineStatus::Health health, const std::string& words, const std::string& reason) {
  // Each attempt has another time of the next one; the log has each thing once.
  if (health != LineStatus::Health::Trying && reason != logged_reason_) {
    logged_reason_ = reason;
    if (events_)
      events_->Log(LogName() + ": " + words);
  }
  SetStatus(health, words);
  if (changed_)
    changed_();
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
  if (settings_.account)
    words = IsSetUp() ? AccountStateInWords(*settings_.account, status_, std::chrono::system_clock::now()) : kNotSetUp;
  else if (session_ && session_->IsRunning())
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
  const bool in_trouble = settings_.account && status_.health == LineStatus::Health::Trouble;
  if (next == settings_ && open_error_ == 0 && !in_trouble)
    return {};
  next.notes.clear();
  if (next.account.has_value() != settings_.account.has_value())
    return {SipTakeOver::State::Refused, "A line with an account and one for direct calls are two lines."};
  if (const std::string fault = next.account ? FaultOf(*next.account) : ""; !fault.empty())
    return {SipTakeOver::State::Refused, fault};
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
  } else if (next.account && removed_) {
    auto session = NewSession(*events_);
    error = session->Start(next);
    if (error == 0)
      session_ = std::move(session);
    removed_ = error != 0;
  } else if (!next.account && next.listen != settings_.listen) {
    error = Probe(next);
  }
  if (error != 0)
    return {SipTakeOver::State::Refused, HindranceInWords(next.listen, error) + " The settings stay as they were."};
  return Adopt(next);
}

SipTakeOver SipLine::Adopt(const SipSettings& next) {
  const bool was_set_up = IsSetUp();
  settings_ = next;
  const bool failed = std::exchange(open_error_, 0) != 0;
  logged_reason_.clear();
  if (session_ && !settings_.account)
    SetStatus(LineStatus::Health::Ready, ReachableInWords(settings_, session_->Port()));
  else if (session_)
    SetStatus(LineStatus::Health::Trying, "Registering with " + settings_.account->server + ".");
  else
    SetStatus(LineStatus::Health::Off, "");
  const bool written = !file_ || WriteSettings();
  if (!was_set_up && account_changed_)
    account_changed_();
  if (!written)
    return {SipTakeOver::State::Done,
            "The settings are taken, but " + file_->Path() + " can't be written: they last until the program ends."};
  if (failed)
    return {SipTakeOver::State::Done, "The line is off. Switch the system on, and it is reached there."};
  return {};
}

bool SipLine::WriteSettings() const {
  return settings_.account ? WriteAccount(*file_, account_number_, settings_) : WriteSipSettings(*file_, settings_);
}

SipTakeOver SipLine::RemoveAccount() {
  if (!settings_.account || !IsSetUp())
    return {};
  if (session_ && session_->HasCall())
    return {SipTakeOver::State::Refused, "A call is up. The account can be removed when it has ended."};
  waiting_.reset();
  if (file_ && !RemoveAccountFiles(*file_, account_number_))
    return {SipTakeOver::State::Refused, file_->Path() + " can't be written. The account stays."};
  if (session_)
    session_->Close();
  session_.reset();
  removed_ = events_ != nullptr;
  open_error_ = 0;
  SipSettings empty;
  empty.account = SipAccount{};
  empty.listen = settings_.listen;
  empty.device_id = settings_.device_id;
  settings_ = std::move(empty);
  SetStatus(LineStatus::Health::Off, kNotSetUp);
  if (account_changed_)
    account_changed_();
  return {};
}

void SipLine::TryAccount(const SipSettings& settings, std::function<void(std::string words)> told) {
  trial_.reset();
  if (!told)
    return;
  const std::string fault = settings.account ? FaultOf(*settings.account) : kNotSetUp;
  auto trial = std::make_shared<Trial>();
  trial->told = std::move(told);
  const auto tell = [this, weak = std::weak_ptr(trial)](std::string words) {
    loop_.Post([this, weak, words = std::move(words)] {
      // Kept until its engine has come to rest; the line may have begun another trial by then.
      const std::shared_ptr<Trial> over = weak.lock();
      if (!over || !over->told)
        return;
      if (trial_ == over)
        trial_.reset();
      std::exchange(over->told, nullptr)(words);
    });
  };
  trial_ = trial;
  if (!fault.empty()) {
    tell(fault);
    return;
  }
  SipSettings alone = settings;
  alone.listen.port = 0;
  const std::string taken = alone.account->server + " takes the account " + alone.account->user;
  const auto heard = [tell, taken](const SipReport& report) {
    if (report.kind != SipReport::Kind::Standing || report.health == LineStatus::Health::Trying)
      return;
    const bool good = report.health == LineStatus::Health::Ready;
    const bool encrypted = good && report.reason.ends_with(kEncryptedMark);
    tell(good ? taken + (encrypted ? ", and the connection is encrypted." : ".") : report.reason + ".");
  };
  trial->engine = std::make_unique<SipEngine>(alone, heard, 1, SipRegistration::Purpose::Probe);
  if (const int error = trial->engine->Start())
    tell(HindranceInWords(alone.listen, error));
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
    events_->Log(LogName() + ": " + words);
  if (changed_)
    changed_();
}

std::string SipLine::Test(const SipSettings& settings) {
  if (settings.account) {
    const std::string fault = FaultOf(*settings.account);
    return fault.empty() ? StateInWords() : fault;
  }
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
