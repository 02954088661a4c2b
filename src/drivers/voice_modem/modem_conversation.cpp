#include "drivers/voice_modem/modem_conversation.h"

#include <algorithm>
#include <array>
#include <utility>

namespace kelmio {
namespace {

using Seconds = ModemClock::Seconds;

constexpr Seconds kFrameTime{0.02};
constexpr std::size_t kFrameSamples = kModemRate / 50;
// The caller misses the start of what is played right behind the answer.
constexpr Seconds kAfterAnswer{1};
// Sound that is on its way ahead of the clock: enough for a late thread, little enough to be stopped at once.
constexpr Seconds kLead{0.16};
constexpr Seconds kConnectLimit{5};
constexpr Seconds kStopLimit{2};
constexpr Seconds kOtherStopLimit{1};
// A modem plays what its buffer holds before it says that it is done.
constexpr Seconds kDrainLimit{4};
constexpr Seconds kStall{2};
// A stream that ends by itself this often without a second in between is of no use.
constexpr int kMostFailures = 4;
constexpr Seconds kGoodStream{1};
// A modem that holds back the sound for longer gets no more of it: what waits can't be taken back.
constexpr std::size_t kMostUnsent = kModemRate / 5;
constexpr char kFiller = static_cast<char>(0x80); // silence, whatever a half sample before it makes of it

} // namespace

ModemConversation::ModemConversation(House house) : house_(std::move(house)), began_(house_.clock.Now()) {}

bool ModemConversation::Speaks() const {
  const auto port = house_.port();
  return !early_.empty() || (port && port->Speaks());
}

bool ModemConversation::Run() {
  bool follows = true;
  while (follows && !house_.link.Gone() && !house_.over()) {
    const Seconds begun = house_.clock.Now();
    const bool plays = Speaks() && begun - began_ >= kAfterAnswer;
    follows = plays ? Play() : Listen();
    failures_ = house_.clock.Now() - begun >= kGoodStream ? 0 : failures_;
    follows = follows && failures_ < kMostFailures;
  }
  return follows && !house_.link.Gone();
}

// --- playing

bool ModemConversation::Play() {
  ModemLink& link = house_.link;
  const auto final = link.Command("AT+VTX", kConnectLimit).final;
  if (final != FinalCode::Connect) {
    ++failures_;
    return final.has_value();
  }
  HearMissing();
  Seconds next = house_.clock.Now() - kLead;
  for (;;) {
    if (house_.over())
      return StopPlaying(Stop::Drop);
    // Who stops the sound wants it stopped now; what ends by itself is played to its end.
    if (!Speaks())
      return StopPlaying(Stop::Drop);
    for (; next <= house_.clock.Now() && link.Unsent() < kMostUnsent && Speaks(); next += kFrameTime)
      SendFrame();
    HearMissing();
    if (!Speaks())
      return StopPlaying(Stop::Drain);
    link.Wait(std::max(next, house_.clock.Now() + kFrameTime / 2));
    if (link.Gone())
      return false;
    if (link.TakeStrayFinal()) {
      ++failures_;
      link.DropUnsent();
      return true;
    }
  }
}

void ModemConversation::SendFrame() {
  const auto port = house_.port();
  std::vector<std::int16_t> frame = std::exchange(early_, {});
  if (frame.empty()) {
    frame.resize(kFrameSamples);
    port->ToSend(frame, kModemRate);
  }
  std::string coded;
  EncodeVoice(house_.format, frame, coded);
  sent_ += coded.size();
  house_.link.Send(ShieldSamples(coded));
}

bool ModemConversation::StopPlaying(Stop how) {
  ModemLink& link = house_.link;
  if (const std::size_t sent = std::exchange(sent_, 0); sent > 0)
    link.Trace("> " + std::to_string(sent) + " bytes of sound");
  if (how == Stop::Drop) {
    link.DropUnsent();
    link.Send(std::string(1, kFiller) + DleCommand(dle_command::kDropPlay));
  }
  link.Send(DleCommand(dle_command::kEndPlay));
  const Seconds end = house_.clock.Now() + (how == Stop::Drop ? kStopLimit : kDrainLimit);
  std::optional<FinalCode> final;
  while (!link.Gone() && !final && house_.clock.Now() < end) {
    link.Wait(std::min(end, house_.clock.Now() + kFrameTime));
    final = link.TakeStrayFinal();
    HearMissing();
    // Its hearer may hang up while the rest is played.
    if (how == Stop::Drain && !final && house_.over())
      return StopPlaying(Stop::Drop);
  }
  return final.has_value();
}

// --- listening

bool ModemConversation::Listen() {
  const bool follows = Receive();
  if (!samples_.empty())
    Hear(std::exchange(samples_, {}));
  return follows;
}

bool ModemConversation::Receive() {
  ModemLink& link = house_.link;
  const auto final = link.StartReceiving(kConnectLimit).final;
  if (final != FinalCode::Connect) {
    ++failures_;
    return final.has_value();
  }
  HearMissing();
  bytes_.clear();
  last_sound_ = house_.clock.Now();
  while (link.Receiving()) {
    if (house_.over() || (Speaks() && house_.clock.Now() - began_ >= kAfterAnswer))
      return StopListening();
    link.Wait(house_.clock.Now() + kFrameTime, [&] { return !link.Receiving(); });
    if (link.Gone())
      return false;
    if (house_.clock.Now() - last_sound_ > kStall) {
      ++failures_;
      return StopListening();
    }
  }
  // It ended by itself. Its final code belongs to no command.
  ++failures_;
  const Seconds end = house_.clock.Now() + kStopLimit;
  link.Wait(end, [&, final = false]() mutable { return final || (final = link.TakeStrayFinal().has_value()); });
  return !link.Gone();
}

bool ModemConversation::StopListening() {
  ModemLink& link = house_.link;
  // The first is what most take; a few want another one, and get it at once.
  Seconds limit = kStopLimit;
  for (const char code : {dle_command::kAbortRecord, dle_command::kEndRecord, dle_command::kEndDuplex}) {
    link.Send(DleCommand(code));
    const Seconds end = house_.clock.Now() + std::exchange(limit, kOtherStopLimit);
    bool final = false;
    while (!link.Gone() && !final && house_.clock.Now() < end) {
      link.Wait(end, [&] { return final = final || link.TakeStrayFinal().has_value(); });
    }
    if (final && !link.Receiving())
      return true;
    if (link.Gone())
      return false;
  }
  return false;
}

void ModemConversation::TakeSamples(std::string_view bytes) {
  last_sound_ = house_.clock.Now();
  bytes_ += bytes;
  const std::size_t taken = DecodeVoice(house_.format, bytes_, samples_);
  bytes_.erase(0, taken);
  std::size_t at = 0;
  for (; samples_.size() - at >= kFrameSamples; at += kFrameSamples) {
    const auto begin = samples_.begin() + static_cast<std::ptrdiff_t>(at);
    Hear({begin, begin + kFrameSamples});
  }
  samples_.erase(samples_.begin(), samples_.begin() + static_cast<std::ptrdiff_t>(at));
}

void ModemConversation::Hear(const std::vector<std::int16_t>& samples) {
  heard_ += samples.size();
  const auto port = house_.port();
  if (!port)
    return;
  port->Received(samples, kModemRate);
  if (!early_.empty() || port->Speaks())
    return;
  // The recording of what is said goes on with the clock as well. Should a player come in this very moment, its first
  // frame is kept for the line.
  std::vector<std::int16_t> said(samples.size());
  port->ToSend(said, kModemRate);
  if (std::any_of(said.begin(), said.end(), [](std::int16_t sample) { return sample != 0; }))
    early_ = std::move(said);
}

void ModemConversation::HearMissing() {
  const auto due = static_cast<std::size_t>((house_.clock.Now() - began_).count() * kModemRate);
  const auto port = house_.port();
  const std::vector<std::int16_t> silence(kFrameSamples);
  while (heard_ + kFrameSamples <= due) {
    heard_ += kFrameSamples;
    if (port)
      port->Received(silence, kModemRate);
  }
}

} // namespace kelmio
