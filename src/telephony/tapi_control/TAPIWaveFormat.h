// The wave format that a line records in.
#pragma once

#include <string>

#include "telephony/tapi_control/wave_format.h"

namespace kelmio {

class LineService;

/// One line object's format. User interface thread only. The line service outlives it.
class TAPIWaveFormat {
public:
  explicit TAPIWaveFormat(LineService& service) : service_(service) {}

  /// The format as its 36-digit text. A text that is none is kept as it stands and is not supported.
  const std::string& ID() const { return id_; }
  void SetID(std::string id);

  std::string CodeName() const;
  std::string Detail() const;

  /// Samples per second and bits per sample: what a signal view needs to draw the blocks of a recording.
  long NumberA() const;
  long NumberB() const;

  bool Supported() const;

  /// Lets the user choose; nothing changes when the choice is given up or the desktop has no such dialog.
  void SelectDialog(const std::string& title);

  /// Back to the format of a first start.
  void Reset();

  /// The format that a recording uses: this one, or the default when this one can't be recorded.
  WaveFormatRecord Recordable() const;

private:
  LineService& service_;
  std::string id_ = ToFormatText(WaveFormatRecord{});
};

} // namespace kelmio
