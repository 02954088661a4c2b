// What a driver implements to bring lines into the house: signalling, and the sound of a call as samples.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace kelmio {

/// States of a call, by the numbers of the Telephony API.
enum class CallState : std::uint32_t {
  Idle = 1,
  Offering = 2,
  Accepted = 4,
  DialTone = 8,
  Dialing = 16,
  Ringback = 32,
  Busy = 64,
  Connected = 256,
  Proceeding = 512,
  Disconnected = 16384,
  Unknown = 32768,
};

/// Bits of `LineCaps::media_modes`, by the numbers of the Telephony API.
namespace media_mode {
inline constexpr std::uint32_t kInteractiveVoice = 4;
inline constexpr std::uint32_t kAutomatedVoice = 8;
inline constexpr std::uint32_t kDataModem = 16;
} // namespace media_mode

/// Bit of `LineCaps::bearer_modes` that says that the line carries speech.
inline constexpr std::uint32_t kBearerModeVoice = 8;

/// The telephone set behind a line, where the device has one. Words as the Telephony API defines them.
struct PhoneCaps {
  std::string name;
  std::uint32_t ring_modes = 0;
  std::uint32_t buttons = 0;
  std::uint32_t hook_switch_devices = 0; // handset 1, speaker 2, headset 4
  std::uint32_t settable = 0;
  std::uint32_t handset_modes = 0;
  std::uint32_t headset_modes = 0;
  std::uint32_t speaker_modes = 0;
};

/// What a line can do. Words and texts go to the device report unchanged.
struct LineCaps {
  std::string line_name;
  std::string provider_info;
  std::string switch_info;
  std::uint32_t negotiated_version = 0x00020000;
  std::uint32_t bearer_modes = kBearerModeVoice;
  std::uint32_t max_data_rate = 0; // bits per second
  std::uint32_t media_modes = 0;
  std::uint32_t address_type = 0;
  std::uint32_t support = 0;
  std::uint32_t address_capability_flags = 0;
  std::uint32_t max_active_calls = 1;
  std::uint32_t max_held_calls = 0;
  std::uint32_t max_conferenced_calls = 0;
  std::uint32_t call_states = 0;
  std::uint32_t address_features = 0;
  std::uint32_t call_features = 0;
  std::uint32_t line_features = 0;
  std::optional<PhoneCaps> phone; // nothing when the line has no telephone set
};

/// How a line stands, for the user to read.
struct LineStatus {
  enum class Health : std::uint8_t {
    Off,     // not open
    Trying,  // on its way: registering, or looking for its device
    Ready,   // calls can come
    Trouble, // calls can't come, and the line goes on trying
  };
  Health health = Health::Off;
  std::string words; // one sentence such as "Registered with sip.example.org as 4711, encrypted."; empty when there is
                     // nothing to tell
  std::chrono::system_clock::time_point since{}; // of this health
  std::optional<std::chrono::system_clock::time_point>
      last_call{}; // the start of the last one, since the program began
  bool operator==(const LineStatus&) const = default;
};

/// The far end of a driver's sound: takes what the line hears and gives what the line is to say.
/// Both are called on one thread of the driver, never on the user interface thread, in frames of 10 to 60
/// milliseconds. They do not block, allocate little and never throw. `rate` is samples per second of this
/// frame; it may change within a call.
class SoundPort {
public:
  virtual ~SoundPort() = default;
  virtual void Received(std::span<const std::int16_t> samples, int rate) noexcept = 0;
  /// Fills the whole frame; silence where there is nothing to say.
  virtual void ToSend(std::span<std::int16_t> samples, int rate) noexcept = 0;
  /// Whether `ToSend` would give more than silence now. For a line that can only speak or listen.
  virtual bool Speaks() const noexcept { return true; }
};

/// One call of a driver. All calls come from the user interface thread. An operation on a call that has
/// ended does nothing (and gives false).
class DeviceCall {
public:
  virtual ~DeviceCall() = default;
  /// Takes note of an offered call without answering it.
  virtual bool Accept() = 0;
  /// Takes the call off hook; `LineEvents::Connected` follows. True without effect on an answered call.
  virtual bool Answer() = 0;
  /// Drops the call. `LineEvents::Disconnected` may follow or not: the line service ends the call itself.
  virtual void Hangup() = 0;
  /// Where the sound goes from now on; nothing detaches it. The driver shares the port for as long as one
  /// of its threads may still be inside it.
  virtual void SetSoundPort(std::shared_ptr<SoundPort> port) = 0;
};

/// What a driver reports of an open line. Called on the user interface thread only, in the order in which
/// things happened: the driver's threads post closures through the event loop, each with a weak token, and
/// nothing is reported once `LineDevice::Close` has returned.
class LineEvents {
public:
  virtual ~LineEvents() = default;
  /// A call from outside, before its first ring. The line service keeps it until it has ended.
  virtual void NewCall(std::shared_ptr<DeviceCall> call) = 0;
  /// `count` is 1 at the first ring.
  virtual void Ring(DeviceCall& call, int count) = 0;
  /// Name and number as texts, either may be empty. Control characters don't come through.
  virtual void CallerID(DeviceCall& call, const std::string& name, const std::string& number) = 0;
  /// Any state but Connected, Disconnected and Idle, which have their own reports.
  virtual void StateChanged(DeviceCall& call, CallState state) = 0;
  virtual void Connected(DeviceCall& call) = 0;
  /// The far end is busy, by signalling.
  virtual void Busy(DeviceCall& call) = 0;
  /// A digit (0-9, *, #, A-D) that came by signalling.
  virtual void Digit(DeviceCall& call, char digit) = 0;
  /// The call is over, for whatever reason. The last report of a call.
  virtual void Disconnected(DeviceCall& call) = 0;
  /// A plain word for the status pane.
  virtual void Log(const std::string& text) = 0;
  /// `LineDevice::Status` gives something else from now on. Drivers put what a user should know into the log too.
  virtual void StatusChanged() {}
};

/// One line of a driver. User interface thread only.
class LineDevice {
public:
  virtual ~LineDevice() = default;
  /// The same number after every restart; not negative.
  virtual long DeviceID() const = 0;
  virtual LineCaps Caps() const = 0;
  /// Opens the device for calls. False when it can't be used (taken, gone); a plain word then goes to
  /// `events.Log` before this returns. `events` outlives the open line.
  virtual bool Open(LineEvents& events) = 0;
  /// Ends every call and closes the device; returns once it can be opened again. No report follows.
  virtual void Close() = 0;
  /// Calls `number`; empty text takes the line off hook and dials nothing. Nothing when the line is closed
  /// or in use.
  virtual std::shared_ptr<DeviceCall> MakeCall(const std::string& number) = 0;
  /// Opens the driver's own configuration dialog, where it has one.
  virtual void Configure() {}
  /// How the line stands now.
  virtual LineStatus Status() const { return {}; }
};

/// A family of lines.
class LineDriver {
public:
  virtual ~LineDriver() = default;
  /// The lines that are there now, in a stable order.
  virtual std::vector<std::shared_ptr<LineDevice>> Lines() = 0;
  /// `changed` runs on the user interface thread, from a closure of its own, when `Lines` gives others than before or a
  /// line that couldn't be opened may be opened now. An empty function ends it.
  virtual void Watch(std::function<void()> /*changed*/) {} // NOLINT(performance-unnecessary-value-param): kept by most
  /// `tell` hears plain words for the status pane on devices that are no line yet. It runs like `changed`.
  virtual void TellTrouble(std::function<void(const std::string& words)> /*tell*/) { // NOLINT: kept by those that tell
  }
};

} // namespace kelmio
