// The computer's clock.
#pragma once

#include "platform/clock.h"

namespace kelmio {

/// Local time in the time zone of the process. Any thread.
class SystemClock : public Clock {
public:
  LocalDateTime Now() const override;
};

} // namespace kelmio
