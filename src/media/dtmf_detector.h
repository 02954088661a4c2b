// Dialled digits in the sound of a call.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string_view>

struct dtmf_rx_state_s;

namespace kelmio {

/// Tells each key press once. Guards against digits in speech with the usual twist and threshold limits.
/// One thread at a time; samples at 8000 a second.
class DtmfDetector {
public:
  DtmfDetector();
  ~DtmfDetector();
  DtmfDetector(const DtmfDetector&) = delete;
  DtmfDetector& operator=(const DtmfDetector&) = delete;

  /// The digits (0-9, *, #, A-D) that these samples completed; valid until the next call.
  std::string_view Process(std::span<const std::int16_t> samples);

private:
  struct Free {
    void operator()(dtmf_rx_state_s* state) const noexcept;
  };

  std::unique_ptr<dtmf_rx_state_s, Free> state_;
  char digits_[16] = {};
};

} // namespace kelmio
