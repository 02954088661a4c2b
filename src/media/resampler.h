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
/// samples pass unchanged, bit by bit, unless asked otherwise. The ratio may change within the stream, by the
/// rate of the output.
/// One thread at a time; allocates only when made.
class Resampler {
public:
  /// A stream that passed unchanged clicks when its ratio moves a little off 1; one that is filtered doesn't.
  enum class AtRatioOne : std::uint8_t { Pass, Filter };
  explicit Resampler(AtRatioOne at_ratio_one = AtRatioOne::Pass);
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
  /// Forgets all sound: a new stream begins.
  void Reset() noexcept;

private:
  struct Free {
    void operator()(SRC_STATE_tag* state) const noexcept;
  };
  static constexpr std::size_t kChunk = 1024;

  const AtRatioOne at_ratio_one_;
  std::unique_ptr<SRC_STATE_tag, Free> state_;
  double ratio_ = 1.0;
  bool converting_ = false; // the filter holds sound
  std::array<float, kChunk> in_{};
  std::array<float, kChunk> out_{};
};

/// Brings a stream to one fixed rate, whatever its own rate is at the moment. As `Resampler` otherwise.
class FixedRate {
public:
  explicit FixedRate(int rate) : rate_(rate) {}

  /// Hands each stretch of converted samples to `sink`.
  template <typename Sink> void Put(std::span<const std::int16_t> samples, int rate, Sink&& sink) {
    if (rate != own_rate_) {
      End(sink); // what the filter still holds is of the old rate
      own_rate_ = rate;
    }
    Convert(samples, false, sink);
  }
  /// Nothing follows: hands out what is still held. A new stream may begin.
  template <typename Sink> void End(Sink&& sink) {
    Convert({}, true, sink);
    resampler_.Reset();
  }

private:
  template <typename Sink> void Convert(std::span<const std::int16_t> in, bool last, Sink& sink) {
    std::array<std::int16_t, 1024> out;
    for (;;) {
      const double ratio = static_cast<double>(rate_) / own_rate_;
      const Resampler::Step step = resampler_.Convert(in, out, ratio, last);
      in = in.subspan(step.used);
      if (step.made != 0)
        sink(std::span<const std::int16_t>(out).first(step.made));
      if (step.used == 0 && step.made == 0)
        return;
    }
  }

  const int rate_;
  int own_rate_ = rate_;
  Resampler resampler_;
};

} // namespace kelmio
