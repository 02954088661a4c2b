// The wall clock in local civil time.
#pragma once

namespace kelmio {

/// Local civil date and time to the second. `month` and `day` count from 1.
struct LocalDateTime {
  int year = 1970;
  int month = 1;
  int day = 1;
  int hour = 0;
  int minute = 0;
  int second = 0;
};

/// Reads the wall clock. Each call is a reading of its own. Any thread.
class Clock {
public:
  virtual ~Clock() = default;
  virtual LocalDateTime Now() const = 0;
};

} // namespace kelmio
