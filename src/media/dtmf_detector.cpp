#include "media/dtmf_detector.h"

#include <new>

#include "media/spandsp.h"

namespace kelmio {

void DtmfDetector::Free::operator()(dtmf_rx_state_s* state) const noexcept {
  dtmf_rx_free(state);
}

DtmfDetector::DtmfDetector() : state_(dtmf_rx_init(nullptr, nullptr, nullptr)) {
  if (!state_)
    throw std::bad_alloc();
}

DtmfDetector::~DtmfDetector() = default;

std::string_view DtmfDetector::Process(std::span<const std::int16_t> samples) {
  dtmf_rx(state_.get(), samples.data(), static_cast<int>(samples.size()));
  const std::size_t count = dtmf_rx_get(state_.get(), digits_, static_cast<int>(sizeof digits_) - 1);
  return {digits_, count};
}

} // namespace kelmio
