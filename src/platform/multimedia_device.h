// The multimedia device: the desk's wave player, driven by command words.
#pragma once

#include <string>
#include <string_view>

namespace kelmio {

/// One wave device of the computer, not of the telephone line. User interface thread only; no call blocks
/// and none throws. A command that has nothing to act on does nothing.
class MultimediaDevice {
public:
  virtual ~MultimediaDevice() = default;

  /// Full path of the wave file that the next "Open" opens.
  virtual void SetFileName(const std::string& path) = 0;

  /// "Open", "Close" or "Stop", without regard to case; other words are ignored.
  virtual void Command(std::string_view word) = 0;

  /// Length of the open file in milliseconds; 0 when nothing is open or the file can't be read.
  virtual long Length() const = 0;
};

} // namespace kelmio
