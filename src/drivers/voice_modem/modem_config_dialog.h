// The dialog in which the user sets a modem line up, as the driver asks for it.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "drivers/voice_modem/modem_settings.h"

namespace kelmio {

/// A serial device that may be a modem.
struct ModemChoice {
  std::string port;  // as in `ModemSettings::port`
  std::string words; // for the list, such as "U.S. Robotics 56K (ttyACM0)" or "ttyUSB0, not asked yet"
};

/// What came of new settings.
struct ModemTakeOver {
  enum class State {
    Done,    // in use and written down
    Waiting, // a call is up; they are taken over when it has ended
    Refused, // nothing has changed
  };
  State state = State::Done;
  std::string words{}; // what the user should know, as whole sentences; may be empty when it is done
};

/// The line, as its dialog sees it. User interface thread only.
class ModemConfiguration {
public:
  virtual ~ModemConfiguration() = default;

  /// The settings in use, or those that wait for the end of a call.
  virtual ModemSettings Settings() const = 0;
  /// The devices that are there, and the one of the settings even when it isn't.
  virtual std::vector<ModemChoice> Ports() const = 0;
  /// Maker, model and abilities as the modem told them; empty while it is not known.
  virtual std::string ModelInWords() const = 0;
  /// Whether calls can come, or why not and what to do about it. Whole sentences.
  virtual std::string StateInWords() const = 0;

  /// Takes settings over without ever cutting a call.
  virtual ModemTakeOver TakeOver(const ModemSettings& settings) = 0;

  /// `changed` runs whenever one of the texts or ports above has changed. An empty function ends it.
  virtual void Watch(std::function<void()> changed) = 0;

  /// `line` gets each command and each reply from now on, as one printable line: "> AT+VCID=1", "< OK", and for sound
  /// its amount alone. An empty function ends it. The last lines before it come at once.
  virtual void Listen(std::function<void(const std::string& line)> line) = 0;
};

/// User interface thread only. Implemented above the drivers.
class ModemConfigDialog {
public:
  virtual ~ModemConfigDialog() = default;
  /// Returns once the user has closed it. `line` outlives it.
  virtual void Show(ModemConfiguration& line) = 0;
};

} // namespace kelmio
