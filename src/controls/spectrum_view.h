// A display of the signal of a running recording.
#pragma once

#include <cstddef>
#include <functional>
#include <span>

#include "controls/control.h"

namespace kelmio {

/// Takes the format once per recording and a block of 16-bit samples at a time. User interface thread only.
class SpectrumView : public Control {
public:
  Property<long> FormatB{*this}; // bits per sample
  Property<long> FormatA{*this}; // samples per second
  /// Assigned by the view; draws a block, which is valid during the call only.
  std::function<void(std::span<const std::byte>)> Draw = [](std::span<const std::byte>) {};
};

} // namespace kelmio
