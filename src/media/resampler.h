// Changes the rate of a running stream of samples.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <span>

struct SRC_STATE_tag;

namespace kelmio {

/// One mono stream. Its sound is neither delayed nor cut: output sample 0 stands where input sample 0 stood,
/// and what the filter still holds comes out when the end is announced. With a ratio of 1 from the start the
/// samples pass unchanged, bit by bit. The ratio may change within the stream.
/// One thread at a time; allocates only when made.
class Resampler {
public:
  Resampler();
  ~Resampler();
  Resampler(const Resampler&) = delete;
  Resampler& operator=(const Resampler&) = delete;

  struct Step {
    std::size_t used = 0; // samples taken from the input
    std::size_t made = 0; // samples written to the output
  };
  /// One step of work. `ratio` is output rate by input rate. `last` says that nothing follows `in`: call
  /// again with the rest until nothing more is made.
  Step Convert(std::span<const std::int16_t> in, std::span<std::int16_t> out, double ratio, bool last) noexcept;

private:
  struct Free {
    void operator()(SRC_STATE_tag* state) const noexcept;
  };
  static constexpr std::size_t kChunk = 1024;

  std::unique_ptr<SRC_STATE_tag, Free> state_;
  double ratio_ = 1.0;
  bool converting_ = false; // a ratio other than 1 has been seen: the filter holds sound
  std::array<float, kChunk> in_{};
  std::array<float, kChunk> out_{};
};

/// Sends all of `in` through `resampler` and hands each stretch of output to `sink`.
template <typename Sink>
void ConvertAll(Resampler& resampler, std::span<const std::int16_t> in, double ratio, bool last, Sink&& sink) {
  std::array<std::int16_t, 1024> out;
  for (;;) {
    const Resampler::Step step = resampler.Convert(in, out, ratio, last);
    in = in.subspan(step.used);
    if (step.made != 0)
      sink(std::span<const std::int16_t>(out).first(step.made));
    if (step.used == 0 && step.made == 0)
      return;
  }
}

} // namespace kelmio
