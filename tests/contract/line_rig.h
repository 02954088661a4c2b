// What the contract of a line needs of a driver under test: the driver, its event loop and a far end.
#pragma once

#include <functional>
#include <memory>

#include "platform/event_loop.h"
#include "telephony/tapi_control/line_driver.h"

namespace kelmio::test {

/// One driver with one line, and someone at its other end.
class LineRig {
public:
  virtual ~LineRig() = default;
  virtual EventLoop& Loop() = 0;
  virtual std::unique_ptr<LineDriver> MakeDriver() = 0;
  /// Runs the loop until `done` holds; false when it doesn't in good time.
  virtual bool RunUntil(const std::function<bool()>& done) = 0;
  /// The line has been opened by now: a call from "Jane Sample", number 5551234, comes in and rings.
  virtual void FarEndCalls() = 0;
  /// Whatever the far end has to do for an answer of this side to hold.
  virtual void FarEndSeesAnswer() = 0;
  virtual void FarEndHangsUp() = 0;
  /// Another program takes the device and gives it back.
  virtual void TakeDevice(bool taken) = 0;
};

} // namespace kelmio::test
