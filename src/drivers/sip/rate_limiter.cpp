#include "drivers/sip/rate_limiter.h"

#include <algorithm>

namespace kelmio {

RateLimiter::RateLimiter(double per_second, double burst) : per_second_(per_second), burst_(burst) {}

bool RateLimiter::Take(Bucket& bucket, double per_second, double burst, Time now) {
  if (!bucket.used) {
    bucket = {burst, now, true};
  } else {
    const double seconds = std::chrono::duration<double>(now - bucket.filled).count();
    bucket.tokens = std::min(burst, bucket.tokens + std::max(0.0, seconds) * per_second);
    bucket.filled = now;
  }
  // What is refused counts as well: who goes on all the same gets in again once he has been quiet.
  bucket.tokens = std::max(-burst, bucket.tokens - 1);
  return bucket.tokens >= 0;
}

bool RateLimiter::Allow(std::uint32_t source, Time now) {
  // The source's own bucket comes first: one that is over its limit takes nothing from the others.
  return Take(slots_[source % slots_.size()], per_second_, burst_, now) &&
         Take(all_, per_second_ * kTogether, burst_ * kTogether, now);
}

} // namespace kelmio
