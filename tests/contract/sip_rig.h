#pragma once

#include <gtest/gtest.h>
#include <unistd.h>

#include "contract/line_rig.h"
#include "drivers/sip/loop_of_test.h"
#include "drivers/sip/sip_driver.h"
#include "drivers/sip/sip_peer.h"

namespace kelmio::test {

class SipRig : public LineRig {
public:
  EventLoop& Loop() override { return loop_; }
  std::unique_ptr<LineDriver> MakeDriver() override {
    // Below the ports that the system hands out by itself, and another one for each process.
    constexpr int kFirstPort = 20000;
    constexpr int kPorts = 10000;
    settings_.listen.port = static_cast<std::uint16_t>(kFirstPort + ::getpid() % kPorts);
    Prepare();
    return std::make_unique<SipDriver>(loop_, settings_);
  }
  bool RunUntil(const std::function<bool()>& done) override { return loop_.RunUntil(done); }
  void FarEndCalls() override {
    up_ = false;
    peer_ = std::make_unique<SipPeer>(settings_.listen.port);
    peer_->from = "\"Jane Sample\" <sip:5551234@127.0.0.1>";
    peer_->Invite(peer_->Sdp());
  }
  void FarEndSeesAnswer() override {
    EXPECT_TRUE(peer_->Await(200));
    peer_->Ack();
    up_ = true;
  }
  void FarEndHangsUp() override {
    if (up_)
      peer_->Bye();
    else
      peer_->Cancel();
  }
  void TakeDevice(bool taken) override {
    other_ = taken ? std::make_unique<SipDriver>(loop_, settings_) : nullptr;
    if (other_ != nullptr) {
      EXPECT_TRUE(other_->Line().Open(deaf_));
    }
  }

protected:
  /// Before the line is made, once its port is chosen.
  virtual void Prepare() {}

  SipSettings settings_;

private:
  class DeafEvents : public LineEvents {
    void NewCall(std::shared_ptr<DeviceCall> /*call*/) override {}
    void Ring(DeviceCall& /*call*/, int /*count*/) override {}
    void CallerID(DeviceCall& /*call*/, const std::string& /*name*/, const std::string& /*number*/) override {}
    void StateChanged(DeviceCall& /*call*/, CallState /*state*/) override {}
    void Connected(DeviceCall& /*call*/) override {}
    void Busy(DeviceCall& /*call*/) override {}
    void Digit(DeviceCall& /*call*/, char /*digit*/) override {}
    void Disconnected(DeviceCall& /*call*/) override {}
    void Log(const std::string& /*text*/) override {}
  };

  LoopOfTest loop_;
  std::unique_ptr<SipPeer> peer_;
  bool up_ = false;
  DeafEvents deaf_;
  std::unique_ptr<SipDriver> other_;
};

} // namespace kelmio::test
