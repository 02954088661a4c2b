#include "telephony/system_control.h"

#include "telephony/call_monitor.h"

namespace kelmio {

void SystemControl::SetSystemStatus() {
  if (settings_.SystemStatus == 1)
    StartSystem();
  else
    StopSystem();
}

void SystemControl::StartSystem() {
  if (settings_.SystemStatus == 0)
    return;
  CloseLine();
  if (settings_.CommDeviceID >= 0)
    OpenLine();
  LineSwitched();
}

void SystemControl::OpenLine() {
  context_.CurrentLine = control_.LineByDeviceID(settings_.CommDeviceID);
  const bool opened = context_.CurrentLine != nullptr && context_.CurrentLine->Open();
  if (opened) {
    host_.SetPanel(kPanelActivity, "Waiting for a call");
    host_.SetPanel(kPanelLine, "Connected");
    host_.SetPanel(kPanelClock, kClockAtStart);
    context_.ForgetCaller();
    context_.CurrentLine->WaveFormat().SetID(settings_.RecordFormatID);
  } else {
    context_.CurrentLine = nullptr;
    host_.SetPanel(kPanelActivity, "No telephony device opened");
    host_.SetPanel(kPanelLine, "Disconnected");
    host_.SetPanel(kPanelClock, kClockAtStart);
  }
}

void SystemControl::StopSystem() {
  CloseLine();
  host_.SetPanel(kPanelActivity, "Stopped");
  host_.SetPanel(kPanelLine, "Disconnected");
  host_.SetPanel(kPanelClock, kClockAtStart);
  LineSwitched();
}

void SystemControl::RestartSystem() {
  StopSystem();
  StartSystem();
}

void SystemControl::AutoDetectCommDevice() {
  const auto has = [](const TAPILine& line, std::uint32_t bits) { return (line.Caps().MediaModes() & bits) != 0; };
  constexpr std::uint32_t kVoice = media_mode::kInteractiveVoice | media_mode::kAutomatedVoice;
  const auto first = [&](bool with_data) -> const TAPILine* {
    for (const auto& line : control_.Lines())
      if (has(*line, kVoice) && (!with_data || has(*line, media_mode::kDataModem)))
        return line.get();
    return nullptr;
  };
  // A voice modem wins over a voice line without a data mode, wherever it stands.
  const TAPILine* winner = first(true);
  if (winner == nullptr)
    winner = first(false);
  if (winner == nullptr)
    return;
  settings_.CommDeviceID = static_cast<int>(winner->DeviceID());
  SaveSetting(settings_, registry_, "CommDeviceID");
}

void SystemControl::LinesChanged() {
  if (settings_.SystemStatus == 1 && context_.CurrentLine == nullptr)
    StartSystem();
}

void SystemControl::CloseLine() {
  if (context_.CurrentLine != nullptr && context_.CurrentLine->IsOpen())
    context_.CurrentLine->Close();
  context_.CurrentLine = nullptr;
}

} // namespace kelmio
