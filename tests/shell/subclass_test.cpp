#include <gmock/gmock.h>

#include "fakes/fake_loop.h"
#include "shell/GSubclass.h"
#include "shell/local_windows.h"

namespace kelmio::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::uint32_t kMessage = 700;

/// Windows of which some are another program's, and some keep their procedure.
class TestWindows : public LocalWindows {
public:
  using LocalWindows::LocalWindows;
  bool IsLocal(WindowHandle window) const override { return window != external && LocalWindows::IsLocal(window); }
  std::optional<WindowProcedure> SetProcedure(WindowHandle window, WindowProcedure procedure) override {
    return window == stubborn ? std::nullopt : LocalWindows::SetProcedure(window, std::move(procedure));
  }
  WindowHandle external = 0;
  WindowHandle stubborn = 0;
};

class Listener : public ISubclass {
public:
  using Handler = std::function<void()>;
  Listener(std::vector<std::string>& told, std::string name, MessageResult result, MessageResponse response)
      : told_(told), name_(std::move(name)), result_(result), response_(response) {}
  MessageResponse MsgResponse() const override { return response_; }
  void SetMsgResponse(MessageResponse response) override { response_ = response; }
  MessageResult WindowProc(WindowHandle, std::uint32_t, MessageWord, MessageWord) override {
    told_.push_back(name_);
    const MessageResult result = result_;
    if (const Handler run = handler) // held: it may end this object
      run();
    return result;
  }
  Handler handler;

private:
  std::vector<std::string>& told_;
  std::string name_;
  MessageResult result_;
  MessageResponse response_;
};

class Subclass : public testing::Test {
protected:
  std::unique_ptr<Listener> Attach(const std::string& name, MessageResult result, MessageResponse response) {
    auto listener = std::make_unique<Listener>(told, name, result, response);
    EXPECT_EQ(subclass.AttachMessage(*listener, window, kMessage), std::nullopt);
    return listener;
  }
  MessageResult Send() {
    told.clear();
    return windows.Send(window, kMessage, 1, 2);
  }
  int ErrorOf(const SubclassOutcome& outcome) { return outcome ? outcome->number : 0; }

  FakeLoop loop;
  TestWindows windows{loop};
  MSubclass subclass{windows};
  std::vector<std::string> told;
  WindowHandle window = windows.Create([this](WindowHandle, std::uint32_t, MessageWord, MessageWord) {
    told.emplace_back("old");
    return MessageResult{9};
  });
};

TEST_F(Subclass, TheLastAttachedRunsFirstAndTheFirstAttachedDecides) {
  const auto first = Attach("1", 1, MessageResponse::Consume);
  const auto second = Attach("2", 2, MessageResponse::OldFirst);
  const auto third = Attach("3", 3, MessageResponse::OldLast);
  const struct {
    MessageResponse response;
    std::vector<std::string> order;
    MessageResult result;
  } rows[] = {{MessageResponse::Consume, {"3", "2", "1"}, 1},
              {MessageResponse::OldLast, {"3", "2", "1", "old"}, 9},
              {MessageResponse::OldFirst, {"3", "2", "old", "1"}, 1}};
  for (const auto& row : rows) {
    first->SetMsgResponse(row.response);
    EXPECT_EQ(Send(), row.result);
    EXPECT_EQ(told, row.order);
  }
  subclass.DetachMessage(*first, window, kMessage);
  EXPECT_EQ(Send(), 2) << "the next one decides";
  EXPECT_THAT(told, ElementsAre("3", "old", "2"));
}

TEST_F(Subclass, ListenersMayComeAndGoInsideAHandler) {
  auto first = Attach("1", 1, MessageResponse::Consume);
  auto second = Attach("2", 2, MessageResponse::Consume);
  auto third = Attach("3", 3, MessageResponse::Consume);
  std::unique_ptr<Listener> late;

  third->handler = [&] { // a lower one goes: nobody runs twice
    subclass.DetachMessage(*second, window, kMessage);
    late = Attach("late", 4, MessageResponse::Consume);
  };
  Send();
  EXPECT_THAT(told, ElementsAre("3", "1"));
  third->handler = [&] { late.reset(); };
  Send();
  EXPECT_THAT(told, ElementsAre("late", "3", "1"));
  Send();
  EXPECT_THAT(told, ElementsAre("3", "1")) << "one that is gone is left out";

  first->handler = [&] { first.reset(); };
  EXPECT_EQ(Send(), 1) << "it has answered the message before it went";
  third->handler = [&] { subclass.DetachMessage(*third, window, kMessage); };
  EXPECT_EQ(Send(), 3);
  EXPECT_EQ(windows.Table(window), nullptr) << "the last one has given the procedure back";
  EXPECT_EQ(Send(), 9);
}

TEST_F(Subclass, AMessageIsNotLostWithTheOneWhoDecides) {
  const auto first = Attach("1", 1, MessageResponse::Consume);
  const auto second = Attach("2", 2, MessageResponse::Consume);
  second->handler = [&] {
    subclass.DetachMessage(*first, window, kMessage);
    subclass.DetachMessage(*second, window, kMessage);
  };
  EXPECT_EQ(Send(), 9);
  EXPECT_THAT(told, ElementsAre("2", "old"));
}

TEST_F(Subclass, AWindowMayBeDestroyedInsideAHandler) {
  const auto first = Attach("1", 1, MessageResponse::OldLast);
  const auto second = Attach("2", 2, MessageResponse::OldLast);
  second->handler = [&] { windows.Destroy(window); };
  EXPECT_EQ(Send(), 2);
  EXPECT_THAT(told, ElementsAre("2", "old")) << "the old procedure heard of the end, and of nothing afterwards";
  EXPECT_EQ(Send(), 0);
  EXPECT_THAT(told, IsEmpty());
}

TEST_F(Subclass, TakesItselfOffADyingWindow) {
  const auto listener = Attach("1", 1, MessageResponse::Consume);
  windows.Send(window, window_message::kDestroy, 0, 0);
  EXPECT_THAT(told, ElementsAre("old"));
  EXPECT_EQ(windows.Table(window), nullptr);
  EXPECT_EQ(Send(), 9);

  subclass.AttachMessage(*listener, window, window_message::kDestroy);
  windows.Send(window, window_message::kDestroy, 0, 0);
  EXPECT_NE(windows.Table(window), nullptr) << "where an object listens to the end, it stays";
}

TEST_F(Subclass, ErrorsAreNumbered) {
  Listener listener(told, "1", 1, MessageResponse::Consume);
  windows.external = windows.Create();
  windows.stubborn = windows.Create();
  EXPECT_EQ(ErrorOf(subclass.AttachMessage(listener, 77, kMessage)), MSubclass::kInvalidWindow);
  EXPECT_EQ(ErrorOf(subclass.AttachMessage(listener, windows.external, kMessage)), MSubclass::kExternalWindow);
  for (int attempt = 0; attempt < 2; ++attempt) // the first one has left nothing behind
    EXPECT_EQ(ErrorOf(subclass.AttachMessage(listener, windows.stubborn, kMessage)), MSubclass::kCannotSubclass);
  EXPECT_EQ(subclass.AttachMessage(listener, window, kMessage), std::nullopt);
  EXPECT_EQ(ErrorOf(subclass.AttachMessage(listener, window, kMessage)), MSubclass::kAlreadyHandled);
}

TEST_F(Subclass, TimersSendTheirMessageUntilTheWindowGoes) {
  int ticks = 0;
  const WindowHandle timed =
      windows.Create([&](WindowHandle self, std::uint32_t message, MessageWord word, MessageWord) {
        if (message == window_message::kTimer && word == 5 && ++ticks == 2)
          windows.Destroy(self);
        return MessageResult{0};
      });
  windows.SetTimer(timed, 5, 100);
  windows.SetTimer(timed, 5, 50);
  loop.Advance(std::chrono::milliseconds(500));
  EXPECT_EQ(ticks, 2);
  EXPECT_EQ(loop.RunningTimers(), 0U);
}

} // namespace
} // namespace kelmio::test
