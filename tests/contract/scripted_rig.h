#pragma once

#include "contract/line_rig.h"
#include "fakes/fake_loop.h"
#include "fakes/scripted_line.h"

namespace kelmio::test {

class ScriptedRig : public LineRig {
public:
  EventLoop& Loop() override { return loop_; }
  std::unique_ptr<LineDriver> MakeDriver() override {
    return std::make_unique<ScriptedDriver>(std::vector<std::shared_ptr<ScriptedLine>>{line_});
  }
  bool RunUntil(const std::function<bool()>& done) override {
    loop_.RunPending();
    return done();
  }
  void FarEndCalls() override {
    const auto call = line_->Incoming();
    call->Ring(1);
    call->SendCallerID("Jane Sample", "5551234");
  }
  void FarEndSeesAnswer() override {}
  void FarEndHangsUp() override { line_->LastCall()->FarEndHangsUp(); }
  void TakeDevice(bool taken) override { line_->taken = taken; }

private:
  FakeLoop loop_;
  std::shared_ptr<ScriptedLine> line_ =
      std::make_shared<ScriptedLine>(loop_, 3, media_mode::kInteractiveVoice | media_mode::kAutomatedVoice);
};

} // namespace kelmio::test
