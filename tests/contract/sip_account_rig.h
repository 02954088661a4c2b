#pragma once

#include "contract/sip_rig.h"
#include "drivers/sip/registrar_peer.h"

namespace kelmio::test {

/// The same far end, behind a registrar that the line has to find its way to first.
class SipAccountRig : public SipRig {
public:
  void FarEndCalls() override {
    EXPECT_TRUE(RunUntil([&] { return registrar_.BoundPort() == settings_.listen.port; }));
    SipRig::FarEndCalls();
  }

protected:
  void Prepare() override {
    const auto port = settings_.listen.port;
    settings_ = registrar_.Settings();
    settings_.listen.port = port;
  }

private:
  RegistrarPeer registrar_;
};

} // namespace kelmio::test
