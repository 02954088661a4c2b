// The telephony control: what a window holds to use the telephone.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "telephony/tapi_control/TAPICall.h"
#include "telephony/tapi_control/TAPILine.h"
#include "telephony/tapi_control/line_service.h"

namespace kelmio {

using CallRef = std::shared_ptr<TAPICall>;

/// One window's client of the line service. User interface thread only; events come on that thread, one at
/// a time, in the order in which things happened. An event that a window has no use for stays unassigned.
class TAPIExCtl {
public:
  /// Value of `InitMode` while the main window's instance is initialised: that one hears first.
  static constexpr int kInitModeMain = 2;

  explicit TAPIExCtl(LineService& service) : service_(service) {}
  TAPIExCtl(const TAPIExCtl&) = delete;
  TAPIExCtl& operator=(const TAPIExCtl&) = delete;
  ~TAPIExCtl();

  /// Starts telephony on this instance; afterwards `Lines` is filled. A second call takes stock anew.
  void Initialize();
  /// Closes this instance's lines and ends its events. Nothing happens before `Initialize`.
  void Shutdown();

  /// Every line of the machine, in a stable order; empty before `Initialize`.
  const std::vector<std::shared_ptr<TAPILine>>& Lines() const { return lines_; }
  /// A new line object for that device; nothing when there is no such device.
  std::shared_ptr<TAPILine> LineByDeviceID(long device_id);

  bool IsMain() const { return main_; }

  int InitMode = 1;
  bool OptionFlagA = false;
  bool OptionFlagB = false;
  /// Bytes of a block of samples.
  int WaveInBufferSize = 2048;
  int WaveOutBufferSize = 2048;
  /// A recording stops by itself after so many seconds.
  long MaxRecordSeconds = 2147483646;

  std::function<void(const CallRef&, int ring_count, long)> OnRing = [](const CallRef&, int, long) {};
  std::function<void(const CallRef&, int digit, long, long)> OnDTMF = [](const CallRef&, int, long, long) {};
  std::function<void(const CallRef&)> OnCallMonitor = [](const CallRef&) {};
  std::function<void(const CallRef&, long)> OnConnected = [](const CallRef&, long) {};
  std::function<void(const CallRef&)> OnIdle = [](const CallRef&) {};
  std::function<void(const std::string&)> OnLogText = [](const std::string&) {};
  std::function<void(const CallRef&, long)> OnDisConnected = [](const CallRef&, long) {};
  std::function<void(const CallRef&, CallState)> OnCallState = [](const CallRef&, CallState) {};
  std::function<void(const CallRef&, const std::string& name, const std::string& number)> OnCallerID =
      [](const CallRef&, const std::string&, const std::string&) {};
  std::function<void(const CallRef&, long)> OnPlayStart = [](const CallRef&, long) {};
  std::function<void(const CallRef&)> OnPlayDone = [](const CallRef&) {};
  std::function<void(const CallRef&)> OnNewCall = [](const CallRef&) {};
  std::function<void(const CallRef&)> OnRecordDone = [](const CallRef&) {};
  std::function<void(const CallRef&, long)> OnBusy = [](const CallRef&, long) {};
  std::function<void(const CallRef&, long)> OnCallEvent27 = [](const CallRef&, long) {};
  std::function<void(const CallRef&, long)> OnOffering = [](const CallRef&, long) {};
  std::function<void(const CallRef&, long)> OnCallEvent32 = [](const CallRef&, long) {};
  std::function<void(const CallRef&, const std::string&, long)> OnCallEvent34 = [](const CallRef&, const std::string&,
                                                                                   long) {};
  std::function<void(const CallRef&)> OnCallEvent35 = [](const CallRef&) {};
  std::function<void(const CallRef&)> OnWaveInBuffer = [](const CallRef&) {};
  std::function<void(const CallRef&, long)> OnCallEvent37 = [](const CallRef&, long) {};
  std::function<void(const std::string&, const std::string&, const std::string&, const std::string&)>
      OnRequestMakeCall = [](const std::string&, const std::string&, const std::string&, const std::string&) {};
  std::function<void(const CallRef&, long)> OnSilence = [](const CallRef&, long) {};
  std::function<void(const CallRef&, long, long)> OnVoice = [](const CallRef&, long, long) {};
  std::function<void(const CallRef&, long, long, long, long, long, long)> OnCallEvent46 = [](const CallRef&, long, long,
                                                                                             long, long, long, long) {};
  /// The tone's strongest frequency in hertz.
  std::function<void(const CallRef&, long)> OnTone = [](const CallRef&, long) {};
  std::function<void(const CallRef&)> OnEndCall = [](const CallRef&) {};
  /// How a line stands that this instance has open.
  std::function<void(const LineStatus&)> OnLineStatus = [](const LineStatus&) {};
  /// A line has come or gone, or one that couldn't be opened may be opened now.
  std::function<void()> OnLinesChanged = [] {};

private:
  std::shared_ptr<TAPILine> MakeLine(const std::shared_ptr<SharedLine>& shared);

  LineService& service_;
  bool main_ = false;
  bool initialized_ = false;
  std::vector<std::shared_ptr<TAPILine>> lines_;
  std::vector<std::weak_ptr<TAPILine>> handed_out_;
};

} // namespace kelmio
