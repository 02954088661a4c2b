#include "modem_emulator/modem_emulator.h"

#include <cerrno>
#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <system_error>
#include <utility>

namespace kelmio::emulated {
namespace {

using Clock = std::chrono::steady_clock;
constexpr Time Step{10'000};
constexpr auto MostLate = std::chrono::milliseconds(50);

const Personality& PersonalityOf(const std::string& name) {
  const Personality* found = FindPersonality(name);
  return found != nullptr ? *found : *FindPersonality("conexant");
}

} // namespace

ModemEmulator::ModemEmulator(Options options)
    : options_(std::move(options)), line_(schedule_),
      modem_(PersonalityOf(options_.personality), options_.settings, schedule_, line_, faults_),
      terminal_(options_.link), began_(Clock::now()) {
  if (!terminal_.Plug() || pipe2(wake_, O_NONBLOCK | O_CLOEXEC) != 0) {
    throw std::system_error(errno, std::generic_category(), "pseudo terminal");
  }
  thread_ = std::thread([this] { Run(); });
}

ModemEmulator::~ModemEmulator() {
  {
    const std::lock_guard lock(mutex_);
    over_ = true;
  }
  Nudge();
  thread_.join();
  close(wake_[0]);
  close(wake_[1]);
}

void ModemEmulator::Nudge() const {
  const char byte = 0;
  [[maybe_unused]] const ssize_t written = write(wake_[1], &byte, 1); // a full pipe wakes as well
}

void ModemEmulator::Run() {
  std::unique_lock lock(mutex_);
  while (!over_) {
    Serve();
    const bool listen = open_ && waiting_.empty();
    const bool hurry = open_ && !modem_.Out().empty();
    pollfd entries[2] = {{wake_[0], POLLIN, 0}, {listen ? terminal_.Master() : -1, POLLIN, 0}};
    const auto pause = std::chrono::nanoseconds(static_cast<std::int64_t>(
        (hurry ? 1e6 : static_cast<double>(Step.count()) * 1e3) / std::max(options_.speed, 0.01)));
    const timespec timeout{pause.count() / 1'000'000'000, pause.count() % 1'000'000'000};
    lock.unlock();
    ppoll(entries, 2, &timeout, nullptr);
    char drained[64];
    while (read(wake_[0], drained, sizeof drained) > 0) {
    }
    lock.lock();
    // Here and not in Unplug: a file that this thread is waiting for isn't closed before it stops to wait.
    if (unplug_) {
      terminal_.Unplug();
      unplug_ = false;
      unplugged_.notify_all();
    }
  }
}

void ModemEmulator::Serve() {
  const auto time_of = [this](Clock::time_point moment) {
    const auto elapsed = std::chrono::duration<double, std::micro>(moment - began_);
    return Time(static_cast<std::int64_t>(elapsed.count() * options_.speed));
  };
  Time now = time_of(Clock::now());
  // On a machine that gives this thread no time, the modem's clock stands still with it rather than run after.
  if (const Time late = now - schedule_.Now() - time_of(began_ + MostLate); late > Time(0)) {
    began_ += std::chrono::duration_cast<Clock::duration>(
        std::chrono::duration<double, std::micro>(static_cast<double>(late.count()) / options_.speed));
    now -= late;
  }
  if (const bool open = terminal_.IsOpen(); open && !open_) {
    open_ = true;
    modem_.Opened();
  }
  // In small steps, so that what the host wrote in time is there in time, even if this thread comes late.
  do {
    schedule_.RunUntil(std::min(now, schedule_.Now() + Step));
    ReadHost();
    WriteHost();
    UnplugOnFault();
  } while (schedule_.Now() < now);
  if (open_ && !terminal_.IsOpen()) {
    ReadHost();
    waiting_.clear();
    open_ = false;
    modem_.Closed();
  }
}

void ModemEmulator::ReadHost() {
  while (open_ && terminal_.Master() >= 0) {
    if (waiting_.empty()) {
      char bytes[512];
      const ssize_t count = read(terminal_.Master(), bytes, sizeof bytes);
      if (count <= 0) {
        return;
      }
      waiting_.assign(bytes, static_cast<std::size_t>(count));
      modem_.HostSpeed(terminal_.Speed());
    }
    std::size_t taken = 0;
    while (taken < waiting_.size() && modem_.Take(static_cast<unsigned char>(waiting_[taken]))) {
      ++taken;
    }
    waiting_.erase(0, taken);
    if (!waiting_.empty()) {
      return;
    }
  }
}

void ModemEmulator::WriteHost() {
  auto& out = modem_.Out();
  if (!open_) {
    out.clear();
    return;
  }
  std::string bytes;
  while (!out.empty() && out.front().due <= schedule_.Now()) {
    const bool apart = out.front().apart;
    if (apart && !bytes.empty()) {
      break;
    }
    bytes += out.front().bytes;
    out.pop_front();
    if (apart) {
      break;
    }
  }
  if (bytes.empty()) {
    return;
  }
  const ssize_t count = write(terminal_.Master(), bytes.data(), bytes.size());
  const std::size_t written = count > 0 ? static_cast<std::size_t>(count) : 0;
  if (written < bytes.size()) {
    out.push_front({Time(0), false, bytes.substr(written)});
  }
}

void ModemEmulator::UnplugOnFault() {
  if (!faults_.On(28) || !open_) {
    return;
  }
  const auto stream = modem_.Streaming();
  const auto line = line_.Now();
  using State = VirtualLine::State;
  const std::string now = stream == Modem::Stream::Play                       ? "play"
                          : stream != Modem::Stream::None                     ? "record"
                          : line == State::Ringing                            ? "ring"
                          : line == State::RingingBack || line == State::Busy ? "dial"
                          : line_.ModemOffHook() && line == State::Connected  ? "call"
                                                                              : "idle";
  if (faults_.Is(28, now)) {
    faults_.Clear(28);
    terminal_.Unplug();
  }
}

std::filesystem::path ModemEmulator::Port() const {
  const std::lock_guard lock(mutex_);
  return terminal_.Port();
}

void ModemEmulator::Ring(const CallerId& caller_id, const RingStyle& style) {
  CallerId sent = caller_id;
  RingStyle used = style;
  {
    const std::lock_guard lock(mutex_);
    if (faults_.On(10)) {
      used.cadence = faults_.Is(10, "one") ? used.cadence : std::vector<double>{0.3, 0.3};
      used.bursts = faults_.Is(10, "one") ? 1 : used.bursts;
    }
    if (faults_.Is(11, "before")) {
      used.caller_id_after = 0;
    } else if (faults_.Is(11, "after-3")) {
      used.caller_id_after = 3;
    } else if (faults_.On(11)) {
      sent.form = faults_.Detail(11);
    }
    line_.Ring(sent, used);
  }
  Nudge();
}

void ModemEmulator::CallerSays(const Samples& samples) {
  const std::lock_guard lock(mutex_);
  line_.Says(samples);
}

void ModemEmulator::CallerPresses(const std::string& keys) {
  const std::lock_guard lock(mutex_);
  line_.Presses(keys);
}

void ModemEmulator::HangUp(HangUpSign sign) {
  constexpr std::pair<const char*, HangUpSign> Always[] = {
      {"loop", HangUpSign::LoopBreak},    {"busy", HangUpSign::BusyCode},      {"busy-tone", HangUpSign::BusyTone},
      {"dial", HangUpSign::DialToneCode}, {"dial-tone", HangUpSign::DialTone}, {"silence", HangUpSign::Silence}};
  const std::lock_guard lock(mutex_);
  for (const auto& [name, instead] : Always) {
    sign = faults_.Is(17, name) ? instead : sign;
  }
  line_.HangUp(sign);
}

void ModemEmulator::WhenDialled(const Callee& callee) {
  const std::lock_guard lock(mutex_);
  modem_.WhenDialled(callee);
}

void ModemEmulator::Handset(bool off_hook) {
  const std::lock_guard lock(mutex_);
  modem_.HandsetMoved(off_hook);
}

void ModemEmulator::HandsetSays(const Samples& samples) {
  const std::lock_guard lock(mutex_);
  line_.HandsetSays(samples);
}

void ModemEmulator::Extension(bool off_hook) {
  const std::lock_guard lock(mutex_);
  modem_.ExtensionMoved(off_hook);
}

void ModemEmulator::Unplug() {
  std::unique_lock lock(mutex_);
  unplug_ = true;
  Nudge();
  unplugged_.wait(lock, [this] { return !unplug_; });
}

void ModemEmulator::Replug(Node node) {
  Unplug();
  const std::lock_guard lock(mutex_);
  open_ = false;
  waiting_.clear();
  modem_.Closed();
  modem_.PowerUp();
  if (!terminal_.Plug()) {
    modem_.Complain("the emulator found no pseudo terminal");
  } else if (node == Node::NoRights) {
    terminal_.RefuseRights();
  } else if (node == Node::Busy) {
    terminal_.RefuseAsBusy();
  }
}

void ModemEmulator::SetFault(int number, const std::string& detail) {
  const std::lock_guard lock(mutex_);
  faults_.Set(number, detail);
}

void ModemEmulator::ClearFault(int number) {
  const std::lock_guard lock(mutex_);
  faults_.Clear(number);
}

bool ModemEmulator::OffHook() const {
  const std::lock_guard lock(mutex_);
  return line_.ModemOffHook();
}

int ModemEmulator::Class() const {
  const std::lock_guard lock(mutex_);
  return modem_.Class();
}

Modem::Stream ModemEmulator::Streaming() const {
  const std::lock_guard lock(mutex_);
  return modem_.Streaming();
}

Samples ModemEmulator::Heard() const {
  const std::lock_guard lock(mutex_);
  return line_.Heard();
}

std::string ModemEmulator::Played() const {
  const std::lock_guard lock(mutex_);
  return modem_.Played();
}

std::string ModemEmulator::Recorded() const {
  const std::lock_guard lock(mutex_);
  return modem_.Recorded();
}

std::string ModemEmulator::Dialled() const {
  const std::lock_guard lock(mutex_);
  return modem_.Dialled();
}

std::string ModemEmulator::Transcript() const {
  const std::lock_guard lock(mutex_);
  return modem_.Transcript();
}

std::vector<std::string> ModemEmulator::Complaints() const {
  const std::lock_guard lock(mutex_);
  return modem_.Complaints();
}

std::vector<std::string> ModemEmulator::ComplaintsAtEnd() const {
  const std::lock_guard lock(mutex_);
  std::vector<std::string> complaints = modem_.Complaints();
  if (line_.ModemOffHook()) {
    complaints.emplace_back("the modem was left off hook");
  }
  return complaints;
}

bool ModemEmulator::WaitFor(const std::function<bool()>& holds, double real_seconds) const {
  const auto end = Clock::now() + std::chrono::duration<double>(real_seconds);
  while (!holds()) {
    if (Clock::now() > end) {
      return false;
    }
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  }
  return true;
}

double ModemEmulator::Now() const {
  const std::lock_guard lock(mutex_);
  return static_cast<double>(schedule_.Now().count()) / 1e6;
}

} // namespace kelmio::emulated
