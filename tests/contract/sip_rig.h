#pragma once

#include <unistd.h>

#include "contract/line_rig.h"
#include "drivers/sip/line_fixture.h"
#include "drivers/sip/registrar_peer.h"

namespace kelmio::test {

class SipRig : public LineRig {
public:
  SipRig() {
    // Below the ports that the system hands out by itself, and another one for each process.
    constexpr int kFirstPort = 20000;
    constexpr int kPorts = 10000;
    settings_.listen.port = static_cast<std::uint16_t>(kFirstPort + ::getpid() % kPorts);
  }
  EventLoop& Loop() override { return loop_; }
  std::unique_ptr<LineDriver> MakeDriver() override { return std::make_unique<SipDriver>(loop_, settings_); }
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
      EXPECT_TRUE(other_->Line().Open(others_));
    }
  }

protected:
  SipSettings settings_;

private:
  LoopOfTest loop_;
  std::unique_ptr<SipPeer> peer_;
  bool up_ = false;
  ReportsOfTest others_;
  std::unique_ptr<SipDriver> other_;
};

/// The same far end, behind a registrar that the line has to find its way to first.
class SipAccountRig : public SipRig {
public:
  SipAccountRig() {
    const auto port = settings_.listen.port;
    settings_ = registrar_.Settings();
    settings_.listen.port = port;
  }
  void FarEndCalls() override {
    EXPECT_TRUE(RunUntil([&] { return registrar_.BoundPort() == settings_.listen.port; }));
    SipRig::FarEndCalls();
  }

private:
  RegistrarPeer registrar_;
};

} // namespace kelmio::test
