// What a drawn control does with a failure inside itself.
#pragma once

#include <string>

#include "platform/clock.h"
#include "platform/dialogs.h"

namespace kelmio {

/// A failure, and where it happened.
struct ControlError {
  int number = 0;
  std::string description;
  std::string module;
  std::string function;
};

/// User interface thread only. What it is made of outlives it.
class ErrorLog {
public:
  struct House {
    const Clock& clock;
    MessageBoxes& boxes;
    std::string folder; // the program's folder with a closing separator
    std::string program;
    std::string version;
  };
  explicit ErrorLog(House house) : house_(std::move(house)) {}

  /// Appends one line to "ErrorLog.txt" in the folder: date, user, computer, version, failure. `show` opens a box too.
  /// A line that can't be written is lost quietly.
  void Report(const ControlError& error, bool show) const;

private:
  House house_;
};

} // namespace kelmio
