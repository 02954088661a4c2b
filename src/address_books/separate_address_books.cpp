#include "address_books/separate_address_books.h"

#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string_view>
#include <thread>
#include <utility>

#include "address_books/item_stream.h"
#include "address_books/reader_process.h"

namespace kelmio {

namespace {

using Clock = std::chrono::steady_clock;

/// How long the user's events wait at most while the reader has nothing to say.
constexpr std::chrono::milliseconds kGlance{20};

class ReadAddressBook : public AddressBook {
public:
  explicit ReadAddressBook(std::vector<AddressItem> items) : items_(std::move(items)) {}
  std::size_t Count() const override { return items_.size(); }
  AddressItem Item(std::size_t index) override { return items_.at(index); }

private:
  std::vector<AddressItem> items_;
};

/// Without a session bus there is nobody to ask, and no process needs to be started for that.
bool HasSessionBus() {
  const char* address = std::getenv("DBUS_SESSION_BUS_ADDRESS");
  if (address != nullptr && *address != '\0')
    return true;
  const char* runtime = std::getenv("XDG_RUNTIME_DIR");
  std::error_code unreadable;
  return runtime != nullptr && *runtime != '\0' &&
         std::filesystem::exists(std::filesystem::path(runtime) / "bus", unreadable);
}

/// Runs the reader to its end. False when it breaks a limit, fails, or `take` refuses its output; then it is killed.
bool RunReader(const std::string& program, const std::vector<std::string>& arguments, std::chrono::milliseconds silence,
               std::chrono::milliseconds whole, const std::function<void()>& meanwhile,
               const std::function<bool(std::string_view)>& take) {
  ReaderProcess reader(program, arguments);
  if (!reader.Started())
    return false;
  const Clock::time_point started = Clock::now();
  Clock::time_point heard = started;
  bool open = true;
  while (Clock::now() - heard < silence && Clock::now() - started < whole) {
    std::string_view bytes;
    const auto output = open ? reader.Read(kGlance, bytes) : ReaderProcess::Output::Closed;
    if (output == ReaderProcess::Output::Bytes) {
      heard = Clock::now();
      if (!take(bytes))
        return false;
    }
    if (output == ReaderProcess::Output::Closed) {
      if (const auto code = reader.ExitCode())
        return *code == 0;
      open = false;
      std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
    meanwhile();
  }
  return false;
}

} // namespace

SeparateAddressBooks::SeparateAddressBooks(EventLoop& loop, std::string reader, ReaderLimits limits)
    : loop_(loop), reader_(std::move(reader)), limits_(limits) {}

bool SeparateAddressBooks::DesktopAnswers() {
  return HasSessionBus() &&
         RunReader(
             reader_, {"probe"}, limits_.probe, limits_.probe, [] {}, [](std::string_view) { return true; });
}

std::unique_ptr<AddressBook> SeparateAddressBooks::OpenDesktop() {
  return HasSessionBus() ? Open({"desktop"}) : nullptr;
}

std::unique_ptr<AddressBook> SeparateAddressBooks::OpenFile(const std::string& path) {
  return Open({"file", path});
}

std::unique_ptr<AddressBook> SeparateAddressBooks::Open(const std::vector<std::string>& arguments) {
  // Copies, because the events that run meanwhile may end whatever owns this.
  const ReaderLimits limits = limits_;
  EventLoop& loop = loop_;
  ItemStream stream(limits.contacts);
  std::size_t taken = 0;
  const auto take = [&](std::string_view bytes) {
    taken += bytes.size();
    return stream.Take(bytes) && taken <= limits.bytes && !stream.Full();
  };
  const bool ended_well = RunReader(
      std::string(reader_), arguments, limits.silence, limits.whole, [&] { loop.RunPending(); }, take);
  if (!stream.Full() && !(ended_well && stream.Ended()))
    return nullptr;
  return std::make_unique<ReadAddressBook>(std::move(stream.Items()));
}

} // namespace kelmio
