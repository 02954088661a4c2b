// The dialog in which the user sets a SIP line up, as the driver asks for it.
#pragma once

#include <functional>
#include <string>

#include "drivers/sip/sip_settings.h"

namespace kelmio {

/// What came of new settings.
struct SipTakeOver {
  enum class State {
    Done,    // in use and written down, or to be used when the line is opened
    Waiting, // a call is up; they are taken over when it has ended
    Refused, // nothing has changed
  };
  State state = State::Done;
  std::string words{}; // what the user should know, as whole sentences; may be empty when it is done
};

/// The line, as its dialog sees it. User interface thread only.
class SipConfiguration {
public:
  virtual ~SipConfiguration() = default;

  /// The settings in use, or those that wait for the end of a call.
  virtual SipSettings Settings() const = 0;

  /// Whether the line can be reached now, and where; or why not. Whole sentences.
  virtual std::string StateInWords() const = 0;

  /// Takes settings over without ever cutting a call. An address that can't be opened is refused. A closed line opens
  /// it for a moment when it is a new one.
  virtual SipTakeOver TakeOver(const SipSettings& settings) = 0;

  /// Tries the settings out and says what came of it, within a second or so: opens the address, unless the line itself
  /// has the port, and asks there for an answer. Whole sentences. Nothing changes.
  virtual std::string Test(const SipSettings& settings) = 0;

  /// Asks the registrar of `settings.account` whether it takes the account; `told` hears what came of it, in whole
  /// sentences, within half a minute and from a closure of its own. Nothing changes, and calls go on. An empty
  /// function ends the trial.
  // NOLINTNEXTLINE(performance-unnecessary-value-param): who implements it keeps the function
  virtual void TryAccount(const SipSettings& /*settings*/, std::function<void(std::string words)> /*told*/) {}

  /// Forgets the account, its password too. The line is gone from the list, or stays for another account.
  virtual SipTakeOver RemoveAccount() { return {}; }

  /// Runs when settings that waited have been taken over or refused, and when the state has changed. An empty function
  /// ends it.
  virtual void Watch(std::function<void()> changed) = 0;
};

/// User interface thread only. Implemented above the drivers.
class SipConfigDialog {
public:
  virtual ~SipConfigDialog() = default;
  /// Returns once the user has closed it. `line` outlives it.
  virtual void Show(SipConfiguration& line) = 0;
};

} // namespace kelmio
