// The one line service of the process: which lines there are, and who listens to them.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/event_loop.h"
#include "telephony/tapi_control/call_sound.h"
#include "telephony/tapi_control/line_driver.h"
#include "telephony/tapi_control/wave_format.h"

namespace kelmio {

class SharedLine;
class TAPIExCtl;

/// Lets the user choose a wave format.
class FormatDialog {
public:
  virtual ~FormatDialog() = default;
  /// Nothing when the user gives up.
  virtual std::optional<WaveFormatRecord> Select(const std::string& title, const WaveFormatRecord& current) = 0;
};

/// User interface thread only. `app/` makes it and keeps it longer than every control instance.
class LineService {
public:
  LineService(EventLoop& loop, CallSoundFactory& sounds) : loop_(loop), sounds_(sounds) {}
  LineService(const LineService&) = delete;
  LineService& operator=(const LineService&) = delete;
  ~LineService();

  /// The lines of drivers stand in the order in which the drivers were added.
  void AddDriver(std::unique_ptr<LineDriver> driver);
  /// `dialog` outlives the service; without one, choosing a format changes nothing.
  void SetFormatDialog(FormatDialog* dialog) { dialog_ = dialog; }

  /// Every line of the machine, as it is now. A line keeps its object for as long as its driver shows it.
  const std::vector<std::shared_ptr<SharedLine>>& Lines();

  EventLoop& Loop() { return loop_; }
  CallSoundFactory& Sounds() { return sounds_; }
  FormatDialog* Dialog() { return dialog_; }

  /// A plain word to every instance's `OnLogText`.
  void Log(const std::string& text);

  // For the control instances. The main window's instance hears everything before the others.
  void AddInstance(TAPIExCtl& instance, bool first);
  void RemoveInstance(TAPIExCtl& instance);
  bool HasInstance(const TAPIExCtl* instance) const;
  /// Orders two instances by who hears first.
  bool HearsBefore(const TAPIExCtl* left, const TAPIExCtl* right) const;
  /// Tells those of `audience` that are still there when their turn comes.
  void Tell(const std::vector<TAPIExCtl*>& audience, const std::function<void(TAPIExCtl&)>& event) const;

private:
  EventLoop& loop_;
  CallSoundFactory& sounds_;
  FormatDialog* dialog_ = nullptr;
  std::vector<std::unique_ptr<LineDriver>> drivers_;
  std::vector<std::shared_ptr<SharedLine>> lines_;
  std::vector<TAPIExCtl*> instances_;
};

} // namespace kelmio
