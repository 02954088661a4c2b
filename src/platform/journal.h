// The program's journal: what the status pane shows, for a terminal or the system's log.
#pragma once

#include <string>

namespace kelmio {

/// User interface thread only. Writing never fails visibly and never blocks for long.
class Journal {
public:
  virtual ~Journal() = default;
  virtual void Write(const std::string& line) = 0;
};

} // namespace kelmio
