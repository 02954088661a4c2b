// Finds the modems that are plugged in and asks each of them once what it is.
#pragma once

#include <atomic>
#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "drivers/voice_modem/device_watch.h"
#include "drivers/voice_modem/modem_identity.h"
#include "drivers/voice_modem/modem_link.h"

namespace kelmio {

/// A device that is or may be a modem.
struct FoundModem {
  std::string name; // stays the same wherever it is plugged in, where the device has a serial number
  std::string port; // what to open
  ModemKind kind = ModemKind::Silent;
  std::string model;   // in words; may be empty
  std::string trouble; // why it could not be asked; it will be, once that is over
};

/// A device that is opened may do something about it, so that whoever was asked once is never asked again: the owner
/// keeps what was found. One that didn't answer may have been switched off; it is asked again when it is plugged in
/// anew. Ports that stand on the board are not looked at. The public functions belong to the owner's thread.
class ModemFinder {
public:
  struct Options {
    std::string folder = "/dev";
    std::string lock_folder;
    double speed = 1;               // see `ModemSession::Options`
    std::set<std::string> known{};  // names of modems that need not be asked
    std::set<std::string> silent{}; // of the known ones, those that didn't answer
  };

  /// `news` runs on threads of the finder's: devices came, went, got other rights, are free again, or one was asked.
  ModemFinder(Options options, std::function<void()> news);
  ~ModemFinder();
  ModemFinder(const ModemFinder&) = delete;
  ModemFinder& operator=(const ModemFinder&) = delete;

  /// What was found out since the last call, in the order of the names.
  std::vector<FoundModem> Take();

  /// Waits until the devices that were there at the start have been asked, at most for `limit`.
  void WaitForFirst(std::chrono::milliseconds limit);

  /// Gives news once the program that uses `port` has let go of it.
  void AwaitFree(const std::string& port);
  /// That doesn't matter any more.
  void DontAwait(const std::string& port);

  /// The devices that are there now, without asking them.
  std::vector<FoundModem> Devices() const;

private:
  void Run();
  void AskNewOnes();
  void Note(FoundModem modem);
  /// Whether one of those that are waited for is free.
  bool LookForFreeOnes();
  FoundModem Ask(FoundModem modem);

  const Options options_;
  const std::function<void()> news_;
  const ModemClock clock_;
  ModemWake wake_;
  DeviceWatch watch_;                    // its queue is the finder's thread's
  std::atomic<bool> one_in_use_ = false; // of those that could not be asked
  mutable std::mutex mutex_;
  std::condition_variable first_done_;
  // Guarded by `mutex_`, but for the last.
  std::set<std::string> asked_;
  std::set<std::string> silent_;                // of those that were asked
  std::map<std::string, std::string> troubles_; // of those that could not be asked, by their names
  std::vector<FoundModem> found_;
  std::set<std::string> awaited_; // ports
  std::set<ModemWake*> asking_;   // what wakes those who ask now
  bool first_ = true;
  std::atomic<bool> quit_ = false;
  std::thread thread_;
};

} // namespace kelmio
