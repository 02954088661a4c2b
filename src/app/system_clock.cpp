#include "app/system_clock.h"

#include <ctime>

namespace kelmio {

LocalDateTime SystemClock::Now() const {
  constexpr int kTmYearZero = 1900;
  const std::time_t now = std::time(nullptr);
  std::tm civil{};
  ::localtime_r(&now, &civil);
  return {civil.tm_year + kTmYearZero, civil.tm_mon + 1, civil.tm_mday, civil.tm_hour, civil.tm_min, civil.tm_sec};
}

} // namespace kelmio
