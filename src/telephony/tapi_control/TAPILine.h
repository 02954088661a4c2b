// One line as a window sees it: a handle of its own on a device that several windows may share.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>

#include "telephony/tapi_control/TAPIWaveFormat.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

class SharedLine;
class TAPICall;
class TAPIExCtl;

/// What a line can do; the rest of it is for the device report.
class TAPILineCaps {
public:
  explicit TAPILineCaps(LineCaps caps) : caps_(std::move(caps)) {}
  std::uint32_t MediaModes() const { return caps_.media_modes; }
  std::uint32_t BearerModes() const { return caps_.bearer_modes; }
  const LineCaps& All() const { return caps_; }

private:
  LineCaps caps_;
};

/// User interface thread only. Each control instance has line objects of its own; opening and closing one
/// doesn't open or close the others of the same device.
class TAPILine {
public:
  TAPILine(LineService& service, std::shared_ptr<SharedLine> shared, TAPIExCtl& control);
  TAPILine(const TAPILine&) = delete;
  TAPILine& operator=(const TAPILine&) = delete;
  ~TAPILine();

  std::string Name() const;
  long DeviceID() const;
  TAPILineCaps Caps() const;
  /// The telephone set behind the line, where there is one.
  std::optional<PhoneCaps> Phone() const;

  /// How the line stands now.
  LineStatus Status() const;

  bool IsOpen() const { return open_; }
  /// False when the device can't be used; nothing is raised then. Opening an open line gives True.
  bool Open();
  /// Closes this line object. Calls end with the main window's line, or with the last one that was open.
  void Close();
  /// Nothing when this line isn't open or the device is in use.
  std::shared_ptr<TAPICall> MakeCall(const std::string& number);
  TAPIWaveFormat& WaveFormat() { return wave_format_; }
  /// The driver's own configuration dialog, where it has one.
  void ConfigDialog();

  /// The instance that holds this line; nothing once that instance has been shut down.
  TAPIExCtl* Control() const { return control_; }
  /// For the instance only: closes the line and forgets the instance.
  void Detach();

private:
  std::shared_ptr<SharedLine> shared_;
  TAPIExCtl* control_;
  TAPIWaveFormat wave_format_;
  bool open_ = false;
};

} // namespace kelmio
