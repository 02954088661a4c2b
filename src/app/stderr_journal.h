// The journal on standard error.
#pragma once

#include <string>

#include "platform/clock.h"
#include "platform/journal.h"

namespace kelmio {

/// Each line with its local date and time before it, for a terminal or the system's log.
class StderrJournal : public Journal {
public:
  explicit StderrJournal(const Clock& clock) : clock_(clock) {}
  void Write(const std::string& line) override;

private:
  const Clock& clock_;
};

} // namespace kelmio
