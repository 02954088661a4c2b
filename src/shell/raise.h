// Telling events to handlers that may do anything.
#pragma once

namespace kelmio {

/// Runs an event's handler. It is a copy, as the event may be given another one meanwhile. What it throws ends here:
/// no failure of a user's handler may reach a window procedure.
template <class Event, class... Values> void Raise(Event event, Values... values) noexcept {
  try {
    event(values...);
  } catch (...) { // NOLINT(bugprone-empty-catch): nobody is left to hear of it
  }
}

} // namespace kelmio
