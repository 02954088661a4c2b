#include "drivers/voice_modem/modem_link.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <utility>

namespace kelmio {
namespace {

// Modems lose what comes right behind a final code.
constexpr ModemClock::Seconds kPauseBetweenCommands{0.1};
// A command that was broken off still ends with a final code.
constexpr ModemClock::Seconds kAbandonLimit{2};
// A modem that follows answers in this time; who wants to end doesn't wait for another.
constexpr ModemClock::Seconds kHurriedLimit{1};
// While bytes wait for the modem, it is tried again this often.
constexpr ModemClock::Seconds kRetryWrite{0.01};

} // namespace

ModemWake::ModemWake() : descriptor_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

ModemWake::~ModemWake() {
  ::close(descriptor_);
}

void ModemWake::Wake() {
  ::eventfd_write(descriptor_, 1);
}

void ModemWake::Clear() {
  eventfd_t count = 0;
  ::eventfd_read(descriptor_, &count);
}

ModemLink::ModemLink(std::unique_ptr<ModemPort> port, const ModemClock& clock, ModemWake& wake, Sinks sinks)
    : port_(std::move(port)), clock_(clock), wake_(wake), sinks_(std::move(sinks)) {}

void ModemLink::Trace(const std::string& line) const {
  if (sinks_.trace)
    sinks_.trace(line);
}

CommandResult ModemLink::Command(std::string_view text, Seconds limit, const std::function<bool()>& abandon) {
  while (!Gone() && clock_.Now() < quiet_until_)
    Wait(quiet_until_);
  stray_.reset();
  result_ = {};
  asked_ = true;
  parser_.ExpectEcho(text);
  Trace("> " + std::string(text));
  Send(std::string(text) + "\r");

  Seconds end = clock_.Now() + limit;
  bool abandoned = false;
  bool hurried = false;
  while (!Gone() && asked_ && clock_.Now() < end) {
    if (!abandoned && abandon && abandon()) {
      abandoned = true;
      end = clock_.Now() + kAbandonLimit;
      Send("\r");
    }
    if (!hurried && sinks_.hurried && sinks_.hurried()) {
      hurried = true;
      end = std::min(end, clock_.Now() + kHurriedLimit);
    }
    Wait(end, [this] { return !asked_; });
  }
  asked_ = false;
  quiet_until_ = clock_.Now() + kPauseBetweenCommands;
  if (!result_.final)
    Trace(Gone() ? "The device is gone" : "No answer");
  return std::exchange(result_, {});
}

CommandResult ModemLink::StartReceiving(Seconds limit) {
  receive_next_ = true;
  received_ = 0;
  decoder_.Reset();
  CommandResult result = Command("AT+VRX", limit);
  receive_next_ = false;
  return result;
}

std::optional<FinalCode> ModemLink::TakeStrayFinal() {
  return std::exchange(stray_, std::nullopt);
}

void ModemLink::Wait(Seconds until, const std::function<bool()>& enough) {
  while (!Gone() && !(enough && enough())) {
    Flush();
    Seconds left = until - clock_.Now();
    if (left.count() <= 0)
      return;
    if (!unsent_.empty())
      left = std::min(left, kRetryWrite);
    const auto real = std::chrono::duration_cast<std::chrono::nanoseconds>(clock_.Real(left));
    const timespec time{static_cast<time_t>(real.count() / 1'000'000'000), real.count() % 1'000'000'000};
    std::array<pollfd, 2> waited{pollfd{port_->Descriptor(), POLLIN, 0}, pollfd{wake_.Descriptor(), POLLIN, 0}};
    if (::ppoll(waited.data(), waited.size(), &time, nullptr) <= 0)
      continue;
    if (waited[0].revents != 0)
      Read();
    if (waited[1].revents != 0) {
      wake_.Clear();
      return;
    }
  }
}

void ModemLink::Send(std::string_view bytes) {
  unsent_ += bytes;
  Flush();
}

void ModemLink::Flush() {
  if (gone_ || unsent_.empty())
    return;
  const auto taken = port_->Write(unsent_);
  if (taken)
    unsent_.erase(0, *taken);
  gone_ = !taken;
}

void ModemLink::Read() {
  std::string bytes;
  const bool there = port_->Read(bytes);
  Take(bytes);
  gone_ = gone_ || !there;
}

void ModemLink::Take(std::string_view bytes) {
  while (!bytes.empty()) {
    if (receiving_) {
      samples_.clear();
      const auto rest = decoder_.Push(bytes, samples_, [this](char code) {
        ModemReply reply;
        reply.kind = ReplyKind::Code;
        reply.code = code;
        TakeReply(reply);
      });
      received_ += samples_.size();
      if (!samples_.empty())
        sinks_.samples(samples_);
      if (!rest)
        return;
      // A final code follows as text.
      receiving_ = false;
      Trace("< " + std::to_string(received_) + " bytes of sound");
      parser_.Reset();
      bytes = *rest;
    } else {
      const std::size_t taken = parser_.Push(bytes, [this](const ModemReply& reply) { TakeReply(reply); });
      bytes.remove_prefix(taken);
    }
  }
}

void ModemLink::TakeReply(const ModemReply& reply) {
  Trace("< " + PrintableReply(reply));
  if (reply.kind == ReplyKind::Final) {
    if (asked_) {
      result_.final = reply.final;
      asked_ = false;
      receiving_ = receive_next_ && reply.final == FinalCode::Connect;
      receive_next_ = false;
    } else {
      stray_ = reply.final;
    }
  } else if (reply.kind == ReplyKind::Information && asked_) {
    result_.lines.push_back(reply.text);
  } else {
    sinks_.reply(reply);
  }
}

void ModemLink::Restart() {
  unsent_.clear();
  parser_.Reset();
  decoder_.Reset();
  receiving_ = false;
  asked_ = false;
  stray_.reset();
}

std::string PrintableReply(const ModemReply& reply) {
  if (reply.kind == ReplyKind::Code) {
    const auto byte = static_cast<unsigned char>(reply.code);
    constexpr std::string_view kHex = "0123456789ABCDEF";
    if (byte > 0x20 && byte < 0x7F)
      return std::string("<DLE>") + reply.code;
    return std::string("<DLE><") + kHex[byte >> 4U] + kHex[byte & 0x0FU] + ">";
  }
  std::string text;
  for (const char c : reply.text)
    text += static_cast<unsigned char>(c) >= 0x20 && static_cast<unsigned char>(c) < 0x7F ? c : '?';
  return text;
}

} // namespace kelmio
