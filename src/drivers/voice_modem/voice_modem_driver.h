// Brings voice modems into the house: those that are plugged in, and those that were.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "drivers/lines_file.h"
#include "drivers/voice_modem/modem_config_dialog.h"
#include "drivers/voice_modem/modem_finder.h"
#include "drivers/voice_modem/voice_modem_line.h"
#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

/// A line for each modem that was ever seen, since it may be plugged in again. User interface thread only.
class VoiceModemDriver : public LineDriver {
public:
  struct Options {
    std::string folder = "/dev";
    std::string lock_folder = kLockFolder;
    double speed = 1; // see `ModemSession::Options`
  };

  /// `loop` and `dialog`, which may be null, outlive the driver and its lines.
  VoiceModemDriver(EventLoop& loop, LinesFile file, ModemConfigDialog* dialog, const Options& options);
  ~VoiceModemDriver() override;

  /// The first time, waits for modems of which nothing is known yet: up to some four seconds, and only if there are
  /// any. Who looks for a line at the very first start finds them.
  std::vector<std::shared_ptr<LineDevice>> Lines() override;
  void Watch(std::function<void()> changed) override { changed_ = std::move(changed); }
  void TellTrouble(std::function<void(const std::string& words)> tell) override { tell_ = std::move(tell); }

private:
  void TakeNews();
  void TakeFound();
  void Tell(const std::string& words);
  /// The line of that name, a new one if need be.
  VoiceModemLine& AddLine(const std::string& section, ModemSettings settings);
  std::vector<ModemChoice> Ports() const;

  VoiceModemLine::House house_;
  std::vector<std::shared_ptr<VoiceModemLine>> lines_;
  std::function<void()> changed_;
  std::function<void(const std::string&)> tell_;
  bool waited_ = false;
  std::shared_ptr<VoiceModemDriver*> alive_; // for closures that may come late
  std::unique_ptr<ModemFinder> finder_;
};

} // namespace kelmio
