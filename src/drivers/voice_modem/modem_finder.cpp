#include "drivers/voice_modem/modem_finder.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <future>
#include <system_error>
#include <utility>

#include "drivers/voice_modem/serial_port.h"

namespace kelmio {
namespace {

// A device that has come gets its name and its rights a moment later.
constexpr std::chrono::milliseconds kSettle{300};
// A program that lets go of a device tells nobody.
constexpr ModemClock::Seconds kLookForFree{5};

/// The name under `serial/by-id` that leads to `device`; nothing for a device without a serial number.
std::filesystem::path NameBySerial(const std::string& folder, const std::string& device) {
  std::error_code error;
  const auto real = std::filesystem::canonical(device, error);
  const auto names = std::filesystem::path(folder) / "serial" / "by-id";
  for (std::filesystem::directory_iterator entry(names, error), end; !error && entry != end; entry.increment(error)) {
    std::error_code dangling;
    if (std::filesystem::canonical(entry->path(), dangling) == real && !dangling)
      return entry->path();
  }
  return {};
}

} // namespace

ModemFinder::ModemFinder(Options options, std::function<void()> news)
    : options_(std::move(options)), news_(std::move(news)), clock_(options_.speed), watch_(options_.folder),
      asked_(options_.known), silent_(options_.silent), thread_([this] { Run(); }) {}

ModemFinder::~ModemFinder() {
  quit_ = true;
  wake_.Wake();
  {
    const std::lock_guard lock(mutex_);
    for (ModemWake* const each : asking_)
      each->Wake();
  }
  thread_.join();
}

std::vector<FoundModem> ModemFinder::Take() {
  std::vector<FoundModem> found;
  {
    const std::lock_guard lock(mutex_);
    found.swap(found_);
  }
  std::sort(found.begin(), found.end(), [](const FoundModem& a, const FoundModem& b) { return a.name < b.name; });
  return found;
}

void ModemFinder::WaitForFirst(std::chrono::milliseconds limit) {
  std::unique_lock lock(mutex_);
  first_done_.wait_for(lock, limit, [this] { return !first_; });
}

void ModemFinder::AwaitFree(const std::string& port) {
  {
    const std::lock_guard lock(mutex_);
    awaited_.insert(port);
  }
  wake_.Wake();
}

void ModemFinder::DontAwait(const std::string& port) {
  const std::lock_guard lock(mutex_);
  awaited_.erase(port);
}

std::vector<FoundModem> ModemFinder::Devices() const {
  std::vector<FoundModem> modems;
  for (const std::string& device : watch_.Devices()) {
    const auto by_serial = NameBySerial(options_.folder, device);
    const std::filesystem::path port = by_serial.empty() ? std::filesystem::path(device) : by_serial;
    modems.push_back({.name = port.filename().string(), .port = port.string(), .model = {}, .trouble = {}});
  }
  return modems;
}

// --- the finder's thread

void ModemFinder::Run() {
  AskNewOnes();
  {
    const std::lock_guard lock(mutex_);
    first_ = false;
  }
  first_done_.notify_all();
  while (!quit_) {
    bool looks = one_in_use_;
    {
      const std::lock_guard lock(mutex_);
      looks = looks || !awaited_.empty();
    }
    const auto limit = std::chrono::duration_cast<std::chrono::milliseconds>(clock_.Real(kLookForFree));
    std::array<pollfd, 2> waited{pollfd{watch_.Descriptor(), POLLIN, 0}, pollfd{wake_.Descriptor(), POLLIN, 0}};
    const int ready = ::poll(waited.data(), waited.size(), looks ? static_cast<int>(limit.count()) : -1);
    if (ready == 0) {
      AskNewOnes();
      if (LookForFreeOnes())
        news_();
    }
    if (ready <= 0)
      continue;
    wake_.Clear();
    if (!watch_.Changed())
      continue;
    pollfd quit{wake_.Descriptor(), POLLIN, 0};
    ::poll(&quit, 1, static_cast<int>(kSettle.count()));
    watch_.Changed();
    AskNewOnes();
    news_();
  }
}

bool ModemFinder::LookForFreeOnes() {
  std::set<std::string> ports;
  {
    const std::lock_guard lock(mutex_);
    ports = awaited_;
  }
  bool found = false;
  for (const std::string& port : ports) {
    if (OpenSerialPort(port, options_.lock_folder).trouble == PortTrouble::InUse)
      continue;
    DontAwait(port);
    found = true;
  }
  return found;
}

void ModemFinder::AskNewOnes() {
  one_in_use_ = false;
  // All at once: one that never answers holds up nobody.
  std::vector<std::future<void>> asking;
  std::vector<FoundModem> devices = Devices();
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(silent_, [&](const std::string& name) {
      const bool gone =
          std::none_of(devices.begin(), devices.end(), [&](const auto& each) { return each.name == name; });
      if (gone)
        asked_.erase(name);
      return gone;
    });
  }
  for (FoundModem& device : devices) {
    {
      const std::lock_guard lock(mutex_);
      if (asked_.contains(device.name))
        continue;
    }
    asking.push_back(std::async(std::launch::async, [this, device = std::move(device)] { Note(Ask(device)); }));
  }
}

void ModemFinder::Note(FoundModem modem) {
  {
    const std::lock_guard lock(mutex_);
    // One that is unplugged while it is asked, or that nobody may ask, gets another chance.
    if (modem.trouble.empty()) {
      asked_.insert(modem.name);
      if (modem.kind == ModemKind::Silent)
        silent_.insert(modem.name);
    } else if (std::exchange(troubles_[modem.name], modem.trouble) == modem.trouble) {
      return;
    }
    found_.push_back(std::move(modem));
  }
  news_();
}

FoundModem ModemFinder::Ask(FoundModem modem) {
  PortResult port = OpenSerialPort(modem.port, options_.lock_folder);
  if (!port.port) {
    if (port.trouble == PortTrouble::InUse)
      one_in_use_ = true;
    modem.trouble = port.text;
    return modem;
  }
  const ModemLink::Sinks deaf{[](const ModemReply&) {}, [](std::string_view) {}, {}, [this] { return quit_.load(); }};
  // One that all share would wake one of them only.
  ModemWake wake;
  {
    const std::lock_guard lock(mutex_);
    asking_.insert(&wake);
  }
  ModemLink link(std::move(port.port), clock_, wake, deaf);
  const ModemIdentity identity = IdentifyModem(link, clock_);
  modem.model = identity.model;
  // A modem whose sound can't be used is none that could answer.
  modem.kind = identity.kind == ModemKind::Voice && !identity.format ? ModemKind::Data : identity.kind;
  if (link.Gone())
    modem.trouble = "It was unplugged";
  else if (identity.kind != ModemKind::Silent)
    link.Command("ATZ", ModemClock::Seconds(1));
  const std::lock_guard lock(mutex_);
  asking_.erase(&wake);
  return modem;
}

} // namespace kelmio
