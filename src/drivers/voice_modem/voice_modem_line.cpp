#include "drivers/voice_modem/voice_modem_line.h"

#include <filesystem>
#include <utility>

namespace kelmio {
namespace {

// Words of the Telephony API for what a line's user can do here.
constexpr std::uint32_t kAddressIsNumber = 0x1;
constexpr std::uint32_t kCallFeatures = 0x1       // accept
                                        | 0x4     // answer
                                        | 0x80    // drop
                                        | 0x2000  // watch for digits
                                        | 0x8000; // watch for tones
constexpr std::uint32_t kLineMakesCalls = 0x8;
constexpr std::uint32_t kAddressMakesCalls = 0x2;
constexpr std::uint32_t kHandset = 1;
constexpr std::uint32_t kBitsPerSecond = 56'000; // V.90 and V.92, towards the modem
// What a user can scroll back to in the live view.
constexpr std::size_t kTraceLines = 300;

} // namespace

class VoiceModemLine::Call : public DeviceCall {
public:
  enum class Phase : std::uint8_t { Offered, OffHook, Outgoing, Answered, Over };

  Call(std::weak_ptr<VoiceModemLine> line, ModemCallNumber number, Phase phase)
      : line_(std::move(line)), number_(number), phase_(phase) {}

  ModemCallNumber Number() const { return number_; }
  void SetPhase(Phase phase) { phase_ = phase; }

  bool Accept() override { return phase_ == Phase::Offered; }

  bool Answer() override {
    // A line taken off hook here is up by itself.
    if (phase_ == Phase::Answered || phase_ == Phase::OffHook)
      return true;
    if (phase_ != Phase::Offered)
      return false;
    phase_ = Phase::Answered;
    Push({.kind = ModemCommand::Kind::Answer, .call = number_});
    return true;
  }

  void Hangup() override {
    if (phase_ != Phase::Over)
      Push({.kind = ModemCommand::Kind::Hangup, .call = number_});
  }

  void SetSoundPort(std::shared_ptr<SoundPort> port) override {
    if (phase_ != Phase::Over)
      Push({.kind = ModemCommand::Kind::SetSoundPort, .call = number_, .port = std::move(port)});
  }

private:
  void Push(ModemCommand command) const {
    if (const auto line = line_.lock(); line && line->session_)
      line->session_->Push(std::move(command));
  }

  std::weak_ptr<VoiceModemLine> line_;
  ModemCallNumber number_;
  Phase phase_;
};

VoiceModemLine::VoiceModemLine(House& house, std::string section, ModemSettings settings)
    : house_(house), section_(std::move(section)), settings_(std::move(settings)) {}

VoiceModemLine::~VoiceModemLine() {
  changed_ = nullptr;
  Close();
}

void VoiceModemLine::SetKind(ModemKind kind, const std::string& model) {
  kind_ = kind;
  model_ = model;
  Changed();
}

void VoiceModemLine::SetTrouble(const std::string& trouble) {
  if (!session_)
    SetStatus(LineStatus::Health::Trouble, trouble);
}

void VoiceModemLine::DevicesChanged() {
  if (session_)
    session_->Push({.kind = ModemCommand::Kind::Look});
  Changed();
}

LineCaps VoiceModemLine::Caps() const {
  const std::string node = std::filesystem::path(settings_.port).filename().string();
  LineCaps caps;
  caps.line_name = "Modem (" + (model_.empty() ? node : model_ + ", " + node) + ")";
  caps.provider_info = model_;
  caps.switch_info = "Telephone line";
  caps.address_type = kAddressIsNumber;
  caps.max_data_rate = kBitsPerSecond;
  if (kind_ == ModemKind::Silent)
    return caps;
  caps.media_modes = media_mode::kDataModem;
  if (kind_ == ModemKind::Data)
    return caps;
  caps.media_modes |= media_mode::kInteractiveVoice | media_mode::kAutomatedVoice;
  caps.address_features = kAddressMakesCalls;
  caps.call_features = kCallFeatures;
  caps.line_features = kLineMakesCalls;
  for (const CallState state : {CallState::Idle, CallState::Offering, CallState::Accepted, CallState::Dialing,
                                CallState::Ringback, CallState::Busy, CallState::Connected, CallState::Disconnected})
    caps.call_states |= static_cast<std::uint32_t>(state);
  // Who speaks does so at the telephone that hangs on the same line.
  caps.phone.emplace();
  caps.phone->name = "Telephone at the modem";
  caps.phone->hook_switch_devices = kHandset;
  return caps;
}

// --- the open line

bool VoiceModemLine::Open(LineEvents& events) {
  if (session_)
    return false;
  for (const std::string& note : settings_.notes)
    events.Log(note);
  if (kind_ == ModemKind::Data) {
    events.Log(section_ + ": this modem has no voice, it can't answer calls");
    return false;
  }
  events_ = &events;
  const std::string trouble = Start(settings_);
  if (trouble.empty())
    return true;
  events.Log(section_ + ": " + trouble);
  events_ = nullptr;
  SetStatus(LineStatus::Health::Trouble, trouble);
  return false;
}

std::string VoiceModemLine::Start(const ModemSettings& settings, bool awaited) {
  PortResult port = OpenSerialPort(settings.port, house_.lock_folder);
  if (house_.in_use)
    house_.in_use(settings.port, port.trouble == PortTrouble::InUse);
  if (!port.port && !awaited) {
    // What probes new modems lets go of them after a while.
    const bool probed = port.trouble == PortTrouble::InUse;
    return port.text + (probed ? "; if ModemManager has it, it lets go within half a minute" : "");
  }
  auto post = [&loop = house_.loop, self = weak_from_this(), opened = ++opened_](ModemReport report) {
    loop.Post([self, opened, report = std::move(report)] {
      const auto line = self.lock();
      if (line && line->session_ && line->opened_ == opened)
        line->Handle(report);
    });
  };
  session_ = std::make_unique<ModemSession>(ModemSession::Options{settings, house_.lock_folder, house_.speed},
                                            std::move(port.port), std::move(post), next_call_);
  return port.text;
}

void VoiceModemLine::Stop() {
  if (call_)
    call_->SetPhase(Call::Phase::Over);
  call_.reset();
  if (!session_)
    return;
  session_->Stop();
  next_call_ = session_->NextCallNumber();
  session_.reset();
}

void VoiceModemLine::Close() {
  events_ = nullptr;
  Stop();
  SetStatus(LineStatus::Health::Off, "");
  if (waiting_)
    TakeOver(*std::exchange(waiting_, std::nullopt));
}

std::shared_ptr<DeviceCall> VoiceModemLine::MakeCall(const std::string& number) {
  if (!session_ || call_)
    return nullptr;
  call_ = std::make_shared<Call>(weak_from_this(), session_->NextCallNumber(),
                                 number.empty() ? Call::Phase::OffHook : Call::Phase::Outgoing);
  session_->Push({.kind = ModemCommand::Kind::Dial, .call = call_->Number(), .text = number});
  return call_;
}

void VoiceModemLine::Handle(const ModemReport& report) {
  switch (report.kind) {
  case ModemReport::Kind::Log:
    events_->Log(report.text);
    break;
  case ModemReport::Kind::Status:
    if (report.text != status_.words)
      events_->Log("Modem: " + report.text);
    SetStatus(report.health, report.text);
    break;
  case ModemReport::Kind::Model:
    if (kind_ != ModemKind::Voice || model_ != report.text)
      WriteKnownModem(house_.file, section_, {ModemKind::Voice, report.text});
    SetKind(ModemKind::Voice, report.text);
    break;
  case ModemReport::Kind::Trace:
    TakeTrace(report.text);
    break;
  default:
    HandleCall(report);
    break;
  }
}

void VoiceModemLine::HandleCall(const ModemReport& report) {
  // Kept through the report: its handler may end the call or close the line.
  LineEvents& events = *events_;
  if (report.kind == ModemReport::Kind::NewCall && !call_) {
    status_.last_call = std::chrono::system_clock::now();
    call_ = std::make_shared<Call>(weak_from_this(), report.call, Call::Phase::Offered);
    const std::shared_ptr<Call> call = call_;
    events.StatusChanged();
    events.NewCall(call);
    return;
  }
  const std::shared_ptr<Call> call = call_;
  if (!call || call->Number() != report.call)
    return;
  switch (report.kind) {
  case ModemReport::Kind::Ring:
    events.Ring(*call, report.count);
    break;
  case ModemReport::Kind::CallerID:
    events.CallerID(*call, report.name, report.text);
    break;
  case ModemReport::Kind::State:
    events.StateChanged(*call, report.state);
    break;
  case ModemReport::Kind::Connected:
    call->SetPhase(Call::Phase::Answered);
    events.Connected(*call);
    break;
  case ModemReport::Kind::Busy:
    events.Busy(*call);
    break;
  case ModemReport::Kind::Digit:
    events.Digit(*call, report.digit);
    break;
  default:
    call->SetPhase(Call::Phase::Over);
    call_.reset();
    events.Disconnected(*call);
    if (session_ && waiting_)
      TakeOver(*std::exchange(waiting_, std::nullopt));
    break;
  }
}

void VoiceModemLine::SetStatus(LineStatus::Health health, const std::string& words) {
  if (health == status_.health && words == status_.words)
    return;
  if (health != status_.health)
    status_.since = std::chrono::system_clock::now();
  status_.health = health;
  status_.words = words;
  if (events_)
    events_->StatusChanged();
  Changed();
}

// --- setting the line up

void VoiceModemLine::Configure() {
  if (house_.dialog)
    house_.dialog->Show(*this);
}

std::string VoiceModemLine::StateInWords() const {
  std::string words = status_.words.empty() ? "Switched off." : status_.words + ".";
  if (waiting_)
    words += " A call is up: the new settings are taken over when it has ended.";
  return words;
}

ModemTakeOver VoiceModemLine::TakeOver(const ModemSettings& settings) {
  waiting_.reset();
  ModemSettings next = settings;
  next.device_id = settings_.device_id;
  next.notes.clear();
  if (next == settings_)
    return {};
  if (call_) {
    waiting_ = next;
    return {ModemTakeOver::State::Waiting, "The new settings are kept for the end of the call."};
  }
  return TryTakeOver(next);
}

ModemTakeOver VoiceModemLine::TryTakeOver(const ModemSettings& next) {
  if (session_) {
    Stop();
    // A modem that is unplugged now is waited for, with other settings too.
    const bool same = next.port == settings_.port;
    const std::string trouble = Start(next, same);
    if (!trouble.empty() && !same) {
      Start(settings_, true);
      return {ModemTakeOver::State::Refused, trouble + ". The settings stay as they were."};
    }
  }
  settings_ = next;
  Changed();
  if (!WriteModemSettings(house_.file, section_, settings_))
    return {ModemTakeOver::State::Done, "The settings are taken, but " + house_.file.Path() +
                                            " can't be written: they last until the program ends."};
  return {};
}

void VoiceModemLine::Listen(std::function<void(const std::string& line)> line) {
  listener_ = std::move(line);
  if (!listener_)
    return;
  for (const std::string& earlier : trace_)
    listener_(earlier);
}

void VoiceModemLine::TakeTrace(const std::string& line) {
  trace_.push_back(line);
  if (trace_.size() > kTraceLines)
    trace_.pop_front();
  if (listener_)
    listener_(line);
}

void VoiceModemLine::Changed() {
  if (changed_)
    changed_();
}

} // namespace kelmio
