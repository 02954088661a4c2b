// One device as the process shares it: who has it open, which calls are on it.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "telephony/tapi_control/TAPICall.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio {

class LineService;
class TAPIExCtl;
class TAPILine;

/// User interface thread only. The line service owns it and outlives it.
///
/// Every event of a call goes to each control instance that has the line open, the main window's first, with
/// the same call object. An event that this side causes (a hang-up, a closed line) is posted, so that no
/// operation raises events from inside itself.
class SharedLine : public std::enable_shared_from_this<SharedLine>, private LineEvents {
public:
  SharedLine(LineService& service, std::shared_ptr<LineDevice> device);

  LineDevice& Device() { return *device_; }
  LineService& Service() { return service_; }

  bool Open(TAPILine& line);
  void Close(TAPILine& line);
  std::shared_ptr<TAPICall> MakeCall(const std::string& number);

  /// The instances that have the line open, the main window's first.
  std::vector<TAPIExCtl*> Audience() const;
  /// Tells the present audience.
  void Tell(const std::function<void(TAPIExCtl&)>& event) const;
  /// The line whose format and limits a recording follows; nothing when nobody has the line open.
  TAPILine* FirstOpen() const;

  /// Ends the call from a closure of its own.
  void PostEnd(const std::shared_ptr<TAPICall>& call);

private:
  void NewCall(std::shared_ptr<DeviceCall> call) override;
  void Ring(DeviceCall& call, int count) override;
  void CallerID(DeviceCall& call, const std::string& name, const std::string& number) override;
  void StateChanged(DeviceCall& call, CallState state) override;
  void Connected(DeviceCall& call) override;
  void Busy(DeviceCall& call) override;
  void Digit(DeviceCall& call, char digit) override;
  void Disconnected(DeviceCall& call) override;
  void Log(const std::string& text) override;
  void StatusChanged() override;

  std::shared_ptr<TAPICall> CallOf(const DeviceCall& device) const;
  void EndNow(const std::shared_ptr<TAPICall>& call, const std::vector<TAPIExCtl*>& audience);

  LineService& service_;
  std::shared_ptr<LineDevice> device_;
  std::vector<TAPILine*> open_lines_; // in the order of their events
  std::vector<std::shared_ptr<TAPICall>> calls_;
};

} // namespace kelmio
