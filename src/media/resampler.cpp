#include "media/resampler.h"

#include <algorithm>
#include <new>

#include <samplerate.h>

namespace kelmio {

void Resampler::Free::operator()(SRC_STATE_tag* state) const noexcept {
  src_delete(state);
}

Resampler::Resampler(AtRatioOne at_ratio_one) : at_ratio_one_(at_ratio_one) {
  int error = 0;
  state_.reset(src_new(SRC_SINC_MEDIUM_QUALITY, 1, &error));
  if (!state_)
    throw std::bad_alloc();
}

Resampler::~Resampler() = default;

Resampler::Step Resampler::Convert(std::span<const std::int16_t> in, std::span<std::int16_t> out, double ratio,
                                   bool last) noexcept {
  if (ratio == 1.0 && !converting_ && at_ratio_one_ == AtRatioOne::Pass) {
    const std::size_t count = std::min(in.size(), out.size());
    std::copy_n(in.begin(), count, out.begin());
    return {count, count};
  }
  if (!converting_ || ratio != ratio_) {
    // Without this the converter glides from the old ratio to the new one, and the pitch with it.
    src_set_ratio(state_.get(), ratio);
    ratio_ = ratio;
    converting_ = true;
  }
  const std::size_t given = std::min(in.size(), kChunk);
  src_short_to_float_array(in.data(), in_.data(), static_cast<int>(given));
  SRC_DATA data{};
  data.data_in = in_.data();
  data.data_out = out_.data();
  data.input_frames = static_cast<long>(given);
  data.output_frames = static_cast<long>(std::min(out.size(), kChunk));
  data.src_ratio = ratio;
  data.end_of_input = last && given == in.size() ? 1 : 0;
  if (src_process(state_.get(), &data) != 0)
    return {given, 0};
  const auto made = static_cast<std::size_t>(data.output_frames_gen);
  src_float_to_short_array(out_.data(), out.data(), static_cast<int>(made));
  return {static_cast<std::size_t>(data.input_frames_used), made};
}

void Resampler::Reset() noexcept {
  if (converting_)
    src_reset(state_.get());
  converting_ = false;
}

} // namespace kelmio
