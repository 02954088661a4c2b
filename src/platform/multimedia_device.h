// The multimedia device: the desk's wave player, driven by command words.
#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace kelmio {

/// What the device does at present, by the numbers of the Media Control Interface.
enum class MultimediaMode { NotReady = 524, Stopped = 525, Playing = 526, Recording = 527 };

/// One wave device of the computer, not of the telephone line. User interface thread only; no call blocks
/// and none throws. A command that has nothing to act on does nothing. Times are milliseconds.
class MultimediaDevice {
public:
  virtual ~MultimediaDevice() = default;

  /// "WaveAudio" is the one there is.
  virtual void SetDeviceType(const std::string& type) = 0;
  /// Full path of the wave file that the next "Open" opens.
  virtual void SetFileName(const std::string& path) = 0;
  /// Where the next "Play" starts.
  virtual void SetFrom(long position) = 0;
  /// Time between two status events while a file is open; 0 for none.
  virtual void SetUpdateInterval(int interval) = 0;

  /// "Open", "Play", "Stop", "Record", "Save" or "Close", without regard to case; other words are ignored. "Play" and
  /// "Record" return at once. Opening a file that can't be read leaves the device closed for playing.
  /// "Record" takes down what the microphone hears, for the file that was named before "Open", whether there is one or
  /// not. That file is replaced, as a whole, by "Save"; "Close" without it gives the recording up.
  virtual void Command(std::string_view word) = 0;

  /// Not ready while nothing is open.
  virtual MultimediaMode Mode() const = 0;

  /// Length of the open file; 0 when nothing is open or the file can't be read.
  virtual long Length() const = 0;
  /// Present position in the open file; 0 when nothing is open.
  virtual long Position() const = 0;

  /// Kept with the device for its owner and never interpreted.
  std::string Tag;

  /// Raised at each update interval while a file is open.
  std::function<void()> StatusUpdate = [] {};
  /// How loud the microphone is while the device records, some ten times a second: 0 for silence to 100 for the
  /// loudest.
  std::function<void(int percent)> RecordLevel = [](int) {};
  /// A plain word for the status pane: the sound device is gone, a file can't be played, there is no microphone.
  std::function<void(const std::string&)> Trouble = [](const std::string&) {};
};

} // namespace kelmio
