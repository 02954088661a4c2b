// Speech for the desk, and where it comes out.
#pragma once

#include <algorithm>
#include <span>

#include "drivers/sip/sound_of_test.h"
#include "media/desk_stream.h"
#include "media/resampler.h"
#include "media/signals.h"

namespace kelmio::test {

/// A sound made at 8000 samples per second at another rate.
inline Samples At(int rate, const Samples& sound) {
  FixedRate converter(rate);
  Samples out;
  const auto keep = [&out](std::span<const std::int16_t> part) { out.insert(out.end(), part.begin(), part.end()); };
  converter.Put(sound, 8000, keep);
  converter.End(keep);
  return out;
}

inline std::span<const std::int16_t> Seconds(std::span<const std::int16_t> sound, int rate, double from, double to) {
  const auto at = [rate](double seconds) { return static_cast<std::size_t>(seconds * rate); };
  return sound.subspan(at(from), at(to) - at(from));
}

struct Likeness {
  double correlation = -1;
  std::size_t delay = 0; // samples
};

/// How like `original` `heard` is, at the delay at which it is most alike.
inline Likeness Compare(std::span<const std::int16_t> original, std::span<const std::int16_t> heard,
                        std::size_t longest_delay) {
  Likeness best;
  const std::size_t count = std::min(original.size(), heard.size()) - longest_delay;
  for (std::size_t delay = 0; delay < longest_delay; ++delay) {
    const double correlation = FidelityOf(original.first(count), heard.subspan(delay, count)).correlation;
    if (correlation > best.correlation)
      best = {correlation, delay};
  }
  return best;
}

} // namespace kelmio::test
