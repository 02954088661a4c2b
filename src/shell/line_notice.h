// What the tray's tip tells of the line.
#pragma once

#include <chrono>
#include <cstddef>
#include <optional>
#include <string>

#include "platform/clock.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// User interface thread only. `clock` outlives it.
class LineNotice {
public:
  explicit LineNotice(const Clock& clock) : clock_(clock) {}

  /// The line stands like this from now on; an empty status is that of a line that is closed.
  void Take(const LineStatus& status);

  /// A line each for the program, the state of its telephone line, and its last call; at most `characters` of them.
  /// Only the caption while there is nothing to tell, as with a line that is off.
  std::string Tip(const std::string& caption, std::size_t characters) const;

private:
  const Clock& clock_;
  LineStatus status_;
  std::optional<std::chrono::system_clock::time_point> last_call_; // of which `last_call_text_` tells
  std::string last_call_text_;
};

} // namespace kelmio
