// An open SIP line with what it reports, for tests.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <string>
#include <vector>

#include "drivers/port_of_test.h"
#include "drivers/sip/loop_of_test.h"
#include "drivers/sip/sip_driver.h"
#include "drivers/sip/sip_peer.h"

namespace kelmio {

/// Every report as one word, in order.
class ReportsOfTest : public LineEvents {
public:
  std::vector<std::string> words;
  std::vector<std::string> logs;
  std::shared_ptr<DeviceCall> call;
  std::string name;
  std::string number;

  void NewCall(std::shared_ptr<DeviceCall> device_call) override {
    call = std::move(device_call);
    name.clear();
    number.clear();
    words.push_back("new");
  }
  void Ring(DeviceCall&, int count) override { words.push_back("ring" + std::to_string(count)); }
  void CallerID(DeviceCall&, const std::string& caller_name, const std::string& caller_number) override {
    name = caller_name;
    number = caller_number;
    words.push_back("caller");
  }
  void StateChanged(DeviceCall&, CallState state) override {
    words.push_back("state" + std::to_string(static_cast<unsigned>(state)));
  }
  void Connected(DeviceCall&) override { words.push_back("connected"); }
  void Busy(DeviceCall&) override { words.push_back("busy"); }
  void Digit(DeviceCall&, char digit) override { words.push_back(std::string("digit") + digit); }
  void Disconnected(DeviceCall&) override { words.push_back("disconnected"); }
  void Log(const std::string& text) override { logs.push_back(text); }

  bool Has(const std::string& word) const { return std::find(words.begin(), words.end(), word) != words.end(); }
  bool Logged(const std::string& part) const {
    return std::any_of(logs.begin(), logs.end(), [&](const auto& log) { return log.find(part) != std::string::npos; });
  }
};

class SipLineTest : public testing::Test {
protected:
  static SipSettings OnAnyPort() {
    SipSettings settings;
    settings.listen.port = 0;
    return settings;
  }

  void OpenLine(SipSettings settings = OnAnyPort()) {
    driver = std::make_unique<SipDriver>(loop, std::move(settings));
    ASSERT_TRUE(driver->Line().Open(reports)) << (reports.logs.empty() ? "" : reports.logs.back());
    peer = std::make_unique<SipPeer>(driver->Line().Port());
  }

  bool RunUntilHas(const std::string& word) {
    return loop.RunUntil([&] { return reports.Has(word); });
  }

  /// A call from `peer` that is up when this returns; its answer is kept.
  void CallUp(const std::string& offer) {
    peer->Invite(offer);
    ASSERT_TRUE(peer->Await(180));
    ASSERT_TRUE(RunUntilHas("new"));
    reports.call->SetSoundPort(port);
    ASSERT_TRUE(reports.call->Answer());
    const auto ok = peer->Await(200);
    ASSERT_TRUE(ok);
    answer = *ok;
    peer->Ack();
    ASSERT_TRUE(RunUntilHas("connected"));
  }
  void CallUp() { CallUp(peer->Sdp()); }

  LoopOfTest loop;
  ReportsOfTest reports;
  std::shared_ptr<PortOfTest> port = std::make_shared<PortOfTest>();
  std::unique_ptr<SipDriver> driver;
  std::unique_ptr<SipPeer> peer;
  SipText answer;
};

} // namespace kelmio
