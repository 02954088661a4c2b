#pragma once

#include <gtest/gtest.h>

#include "contract/line_rig.h"
#include "drivers/sip/loop_of_test.h"
#include "drivers/voice_modem/voice_modem_driver.h"
#include "modem_emulator/modem_emulator.h"
#include "support/temporary_folder.h"

namespace kelmio::test {

class ModemRig : public LineRig {
public:
  EventLoop& Loop() override { return loop_; }
  std::unique_ptr<LineDriver> MakeDriver() override {
    auto driver = std::make_unique<VoiceModemDriver>(
        loop_, LinesFile(folder_.Path() + "Lines.ini"), nullptr,
        VoiceModemDriver::Options{.folder = folder_.Path(), .lock_folder = folder_.Path(), .speed = kSpeed});
    line_ = driver->Lines().at(0);
    return driver;
  }
  bool RunUntil(const std::function<bool()>& done) override { return loop_.RunUntil(done); }
  void FarEndCalls() override {
    // Who rings while a modem is being set up is heard, but not who he is.
    EXPECT_TRUE(loop_.RunUntil([&] { return line_->Status().health == LineStatus::Health::Ready; }));
    modem_.WaitFor([&] { return !modem_.OffHook(); });
    modem_.Ring({.number = "5551234", .name = "Jane Sample"});
  }
  void FarEndSeesAnswer() override {
    EXPECT_TRUE(modem_.WaitFor([&] { return modem_.OffHook(); }));
  }
  void FarEndHangsUp() override { modem_.HangUp(); }
  void TakeDevice(bool taken) override {
    other_ = taken ? OpenSerialPort(modem_.Port().string(), folder_.Path()).port : nullptr;
    EXPECT_EQ(other_ != nullptr, taken);
  }

private:
  static constexpr double kSpeed = 10;

  LoopOfTest loop_;
  TemporaryFolder folder_;
  emulated::ModemEmulator modem_{{.link = folder_.Path() + "ttyACM0", .speed = kSpeed}};
  std::shared_ptr<LineDevice> line_;
  std::unique_ptr<ModemPort> other_;
};

} // namespace kelmio::test
