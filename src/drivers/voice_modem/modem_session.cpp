#include "drivers/voice_modem/modem_session.h"

#include <poll.h>

#include <algorithm>
#include <utility>

namespace kelmio {
namespace {

using Seconds = ModemClock::Seconds;

constexpr Seconds kCommandLimit{5};
constexpr Seconds kTryLimit{1};
constexpr int kTries = 3;
constexpr Seconds kKnock{0.5};
// A device that isn't there or doesn't answer is tried again this often; a word that it came back comes sooner.
constexpr Seconds kReopenPeriod{5};
constexpr Seconds kHealthPeriod{60};
constexpr Seconds kHopelessPeriod{60};
// One that was set up anew in vain needs a hand.
constexpr int kMostFailures = 2;
// A report of who is calling belongs to the ring before it.
constexpr Seconds kRingPeriod{6};
constexpr const char* kUnplugged = "The modem is unplugged";
constexpr Seconds kReadyLow{1};
// What is left of a ring when the line is put on hook.
constexpr Seconds kRingRemnant{0.3};

} // namespace

ModemSession::ModemSession(Options options, std::unique_ptr<ModemPort> port, ModemReportSink sink,
                           ModemCallNumber first_call)
    : options_(std::move(options)), sink_(std::move(sink)), clock_(options_.speed), next_call_(first_call),
      rings_(RingEvents()) {
  if (port)
    link_ = std::make_unique<ModemLink>(std::move(port), clock_, wake_, LinkSinks());
  thread_ = std::thread([this] { Run(); });
}

ModemSession::~ModemSession() {
  Stop();
}

void ModemSession::Push(ModemCommand command) {
  {
    const std::lock_guard lock(mutex_);
    commands_.push_back(std::move(command));
  }
  wake_.Wake();
}

void ModemSession::Stop() {
  if (!thread_.joinable())
    return;
  quit_asked_ = true;
  Push({.kind = ModemCommand::Kind::Quit});
  thread_.join();
}

// --- the modem's thread

ModemLink::Sinks ModemSession::LinkSinks() {
  return {[this](const ModemReply& reply) { TakeReply(reply); },
          [this](std::string_view bytes) {
            if (conversation_)
              conversation_->TakeSamples(bytes);
          },
          [this](const std::string& line) { Report({.kind = ModemReport::Kind::Trace, .text = line}); },
          // A line that is taken is put down first.
          [this] { return quit_asked_ && !off_hook_; }, [this] { return quit_asked_.load(); }};
}

RingWatch::Events ModemSession::RingEvents() {
  using Kind = ModemReport::Kind;
  return {[this] {
            call_.emplace();
            call_->number = NextCallNumber();
            Report({.kind = Kind::NewCall, .call = call_->number});
          },
          [this](int count) {
            if (call_)
              Report({.kind = Kind::Ring, .call = call_->number, .count = count});
          },
          [this](const std::string& name, const std::string& number) {
            if (call_)
              Report({.kind = Kind::CallerID, .call = call_->number, .name = name, .text = number});
          },
          [this] {
            if (!dial_)
              EndCall();
          }};
}

void ModemSession::Run() {
  while (!quit_) {
    TakeCommands();
    if (quit_)
      break;
    if (!link_ && !Reopen())
      Sleep(kReopenPeriod);
    else if (link_ && (armed_ || SetUp()))
      WaitForCalls();
  }
  if (off_hook_ && link_)
    HangUp();
  EndCall();
  link_.reset();
}

void ModemSession::Sleep(Seconds time) {
  TakeCommands(); // the word that one came may have been heard elsewhere
  const Seconds end = clock_.Now() + time;
  while (!quit_ && clock_.Now() < end) {
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(clock_.Real(end - clock_.Now()));
    pollfd waited{wake_.Descriptor(), POLLIN, 0};
    if (::poll(&waited, 1, static_cast<int>(left.count()) + 1) > 0) {
      wake_.Clear();
      TakeCommands();
      return;
    }
  }
}

bool ModemSession::Reopen() {
  PortResult result = OpenSerialPort(options_.settings.port, options_.lock_folder);
  if (!result.port) {
    SetHealth(LineStatus::Health::Trouble, result.trouble == PortTrouble::NotThere ? kUnplugged : result.text);
    return false;
  }
  link_ = std::make_unique<ModemLink>(std::move(result.port), clock_, wake_, LinkSinks());
  return true;
}

bool ModemSession::SetUp() {
  if (!identity_) {
    Try("The modem is being set up");
    const ModemIdentity identity = IdentifyModem(*link_, clock_);
    if (identity.kind == ModemKind::Silent) {
      if (!link_->Gone() && ++failures_ >= kMostFailures)
        LoseHope("The modem doesn't answer; unplug it and plug it in again");
      else if (link_->Gone() || (!Recover() && link_))
        Lose(kUnplugged);
      return false;
    }
    if (identity.kind == ModemKind::Data || !identity.format) {
      LoseHope(identity.kind == ModemKind::Data ? "This modem has no voice: it can't answer calls"
                                                : "This modem has no sound format that can be used");
      return false;
    }
    Report({.kind = ModemReport::Kind::Model, .text = identity.model});
    identity_ = identity;
  }
  armed_ = Arm();
  if (armed_) {
    failures_ = 0;
    hopeless_ = false;
    SetHealth(LineStatus::Health::Ready, "The modem is ready for calls");
    return true;
  }
  if (!link_->Gone()) {
    // It answers, so that it may take the next try: no pause in which a call would be lost.
    if (++failures_ >= kMostFailures)
      SetHealth(LineStatus::Health::Trouble, "The modem refuses its settings; unplug it and plug it in again");
    Recover();
  }
  if (link_ && link_->Gone())
    Lose(kUnplugged);
  return false;
}

bool ModemSession::Arm() {
  ModemLink& link = *link_;
  const ModemSettings& settings = options_.settings;
  // What not every modem has is asked for all the same; only what calls need has to work.
  if (!EnterVoiceClass(link, clock_))
    return false;
  link.Command("AT+VIT=0", kCommandLimit);
  link.Command("AT+VSD=0,0", kCommandLimit); // the recording has a silence watch of its own
  if (!link.Command("AT-STE=7", kCommandLimit).Ok())
    link.Command("AT-STE=3", kCommandLimit);
  for (const ModemCountry& country : ModemCountries())
    if (settings.country == country.code)
      link.Command("AT+GCI=" + std::string(country.t35), kCommandLimit);
  if (!settings.wait_for_dial_tone)
    link.Command("ATX3", kCommandLimit);
  // Which of a line's numbers is rung, each maker's way.
  if (settings.ring != RingKind::Every && !link.Command("AT-SDR=7", kCommandLimit).Ok())
    link.Command("ATS41=1", kCommandLimit);
  if (!settings.init.empty())
    link.Command(settings.init, kCommandLimit);
  // In class 0 rings and callers come as text on every modem.
  if (!link.Command("AT+FCLASS=0", kCommandLimit).Ok())
    return false;
  if (!link.Command("AT+VCID=1", kCommandLimit).Ok())
    link.Command("AT#CID=1", kCommandLimit);
  return !link.Gone();
}

void ModemSession::WaitForCalls() {
  // A call may end with another link than it began with.
  Seconds health_check = clock_.Now() + kHealthPeriod;
  while (!quit_ && armed_ && !link_->Gone()) {
    // Before it waits: a command that woke the thread while it talked to the modem wakes it no more.
    TakeCommands();
    rings_.Look(clock_.Now());
    if (std::exchange(answer_, false) && rings_.Ringing() && call_) {
      AnswerCall();
    } else if (dial_) {
      // It stays asked for until its call has ended: what rings until the line is taken is no call beside it.
      PlaceCall(std::string(*dial_));
    } else if (clock_.Now() >= health_check && !rings_.Ringing()) {
      health_check = clock_.Now() + kHealthPeriod;
      if (!link_->Command("AT", kCommandLimit).Ok() && !link_->Gone())
        Recover();
    } else {
      link_->Wait(std::min(health_check, rings_.Due().value_or(health_check)),
                  [this] { return std::exchange(stirred_, false); });
    }
  }
  if (link_ && link_->Gone())
    Lose(kUnplugged);
}

void ModemSession::TakeCommands() {
  std::vector<ModemCommand> commands;
  {
    const std::lock_guard lock(mutex_);
    commands.swap(commands_);
  }
  for (ModemCommand& command : commands)
    Execute(command);
}

void ModemSession::Execute(ModemCommand& command) {
  using Kind = ModemCommand::Kind;
  if (command.kind == Kind::Quit) {
    quit_ = true;
  } else if (command.kind == Kind::Look) {
    failures_ = 0;
    hopeless_ = false;
  } else if (command.kind == Kind::Dial) {
    // A modem that is still being set up dials as soon as it can.
    if (call_ || !link_) {
      Log(call_ ? "The line is in use" : "The modem is not there");
      Report({.kind = ModemReport::Kind::Disconnected, .call = command.call});
      return;
    }
    call_.emplace();
    call_->number = command.call;
    dial_ = command.text;
  } else if (call_ && call_->number == command.call) {
    if (command.kind == Kind::Answer)
      answer_ = true;
    else if (command.kind == Kind::SetSoundPort)
      call_->port = std::move(command.port);
    else if (command.kind == Kind::Hangup && rings_.Ringing())
      EndCall(); // a modem can't refuse a call: it goes on ringing for the telephones, and nobody here is told
    else if (command.kind == Kind::Hangup)
      call_->hang_up = true;
  }
}

void ModemSession::TakeReply(const ModemReply& reply) {
  stirred_ = true;
  const bool ring = reply.kind == ReplyKind::Ring || (reply.kind == ReplyKind::Code && reply.code == 'R');
  if (off_hook_ || answering_ || dial_) {
    if (reply.kind == ReplyKind::RingBack || (reply.kind == ReplyKind::Code && reply.code == 'r'))
      ReportState(CallState::Ringback);
    else if (reply.kind == ReplyKind::Code)
      TakeCodeInCall(reply.code);
    return;
  }
  const bool remnant = clock_.Now() - on_hook_since_ < kRingRemnant;
  if (remnant)
    return;
  if (ring) {
    if (IsWanted(reply.text)) {
      unwanted_ring_at_.reset();
      rings_.Ring(clock_.Now());
    } else {
      unwanted_ring_at_ = clock_.Now();
    }
  } else if (reply.kind == ReplyKind::CallerId &&
             !(unwanted_ring_at_ && clock_.Now() - *unwanted_ring_at_ < kRingPeriod)) {
    rings_.CallerIdLine(reply.text, clock_.Now());
  }
}

bool ModemSession::IsWanted(std::string_view ring) const {
  constexpr std::string_view kBefore = "RING ";
  // A modem that tells no kinds apart rings for every one.
  if (options_.settings.ring == RingKind::Every || !ring.starts_with(kBefore) || ring.size() == kBefore.size())
    return true;
  const int number = static_cast<int>(options_.settings.ring);
  const char kind = ring[kBefore.size()];
  return kind == 'A' + number - 1 || kind == '0' + number;
}

void ModemSession::EndCall() {
  if (!call_)
    return;
  Report({.kind = ModemReport::Kind::Disconnected, .call = call_->number});
  call_.reset();
  answer_ = false;
  dial_.reset();
}

// --- out of trouble

bool ModemSession::Recover() {
  ModemLink& link = *link_;
  EndCall();
  rings_.Forget();
  armed_ = false;
  identity_.reset();
  if (quit_asked_) {
    // Closing the device hangs up; nobody waits for more.
    off_hook_ = false;
    link_.reset();
    return false;
  }
  Try("The modem doesn't follow; it is being set up anew");
  const auto answers = [&] {
    for (int i = 0; i < kTries && !link.Gone(); ++i)
      if (link.Command("AT", kTryLimit).Ok())
        return true;
    return false;
  };
  const auto knock = [&](const std::string& bytes) {
    link.Restart();
    link.Send(bytes);
    link.Wait(clock_.Now() + kKnock);
    link.Restart();
  };
  // Out of a stream that is played, then out of a recording, then by the signal that hangs up.
  knock("\x80" + DleCommand(dle_command::kDropPlay) + DleCommand(dle_command::kEndPlay));
  knock(DleCommand(dle_command::kAbortRecord) + DleCommand(dle_command::kEndRecord) +
        DleCommand(dle_command::kEndDuplex) + "\r");
  bool follows = answers();
  if (!follows && !link.Gone() && link.Port().SetReady(false)) {
    link.Wait(clock_.Now() + kReadyLow);
    link.Port().SetReady(true);
    follows = answers();
  }
  if (follows)
    follows = link.Command("ATH", kCommandLimit).Ok();
  if (follows)
    link.Command("AT+VIP", kCommandLimit);
  off_hook_ = off_hook_ && !follows;
  if (follows || link.Gone())
    return follows;
  // Closing the device hangs up where nothing else does.
  off_hook_ = false;
  link_.reset();
  Sleep(kReadyLow);
  return Reopen();
}

void ModemSession::Lose(const std::string& words) {
  link_.reset();
  identity_.reset();
  armed_ = false;
  off_hook_ = false;
  EndCall();
  rings_.Forget();
  SetHealth(LineStatus::Health::Trouble, words);
  Sleep(hopeless_ ? kHopelessPeriod : kReopenPeriod);
}

void ModemSession::LoseHope(const std::string& words) {
  hopeless_ = true;
  Lose(words);
}

// --- telling

void ModemSession::ReportState(CallState state) {
  if (!call_ || state == reported_)
    return;
  reported_ = state;
  Report({.kind = ModemReport::Kind::State, .call = call_->number, .state = state});
}

void ModemSession::Log(const std::string& text) const {
  Report({.kind = ModemReport::Kind::Log, .text = "Modem: " + text});
}

void ModemSession::Try(const std::string& words) {
  if (!hopeless_ && failures_ < kMostFailures)
    SetHealth(LineStatus::Health::Trying, words);
}

void ModemSession::SetHealth(LineStatus::Health health, const std::string& words) {
  if (health == health_ && words == health_words_)
    return;
  health_ = health;
  health_words_ = words;
  Report({.kind = ModemReport::Kind::Status, .text = words, .health = health});
}

} // namespace kelmio
