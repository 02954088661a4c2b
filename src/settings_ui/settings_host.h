// What the settings window asks of the main window.
#pragma once

#include <cstdint>

#include "controls/basic_controls.h"

namespace kelmio {

/// User interface thread only.
class SettingsHost {
public:
  virtual ~SettingsHost() = default;
  /// Another device was chosen: the line is closed and the new one is opened.
  virtual void RestartSystem() = 0;
  virtual void RefreshMessageList() = 0;
  /// The back colours of the preview pane and of the status pane, each with its text.
  virtual void SetPreviewColor(Color color) = 0;
  virtual void SetOutputColor(Color color) = 0;
  /// Frequencies in hertz; returns at the end of the sound. It is never heard on the line.
  virtual void PlayTonePair(std::int16_t low_frequency, std::int16_t high_frequency, double seconds) = 0;
};

} // namespace kelmio
