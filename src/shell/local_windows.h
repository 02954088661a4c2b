// The program's own windows for messages, with their timers.
#pragma once

#include <map>
#include <string>

#include "platform/event_loop.h"
#include "shell/window_messages.h"

namespace kelmio {

/// A message is handled before `Send` returns. Any of these calls may come from inside a window's procedure.
/// User interface thread only. The timers outlive it.
class LocalWindows : public MessageWindows {
public:
  explicit LocalWindows(TimerService& timers) : timers_(timers) {}
  LocalWindows(const LocalWindows&) = delete;
  LocalWindows& operator=(const LocalWindows&) = delete;
  ~LocalWindows() override;

  /// A window without a procedure answers 0 to everything.
  WindowHandle Create(WindowProcedure procedure = {});
  /// The window hears of its end, and is no window afterwards. Its timers stop.
  void Destroy(WindowHandle window);

  /// 0 for what is no window.
  MessageResult Send(WindowHandle window, std::uint32_t message, MessageWord word, MessageWord long_word);
  /// To every window that stands now.
  void Broadcast(std::uint32_t message);
  /// The message of that name: the same number for the same name.
  std::uint32_t RegisterMessage(const std::string& name);

  /// Sends the timer message every `interval_ms` (above 0). A running timer of that number starts anew.
  void SetTimer(WindowHandle window, std::uint32_t id, int interval_ms);
  void KillTimer(WindowHandle window, std::uint32_t id);

  bool IsWindow(WindowHandle window) const override { return windows_.count(window) != 0; }
  bool IsLocal(WindowHandle window) const override { return windows_.count(window) != 0; }
  std::optional<WindowProcedure> SetProcedure(WindowHandle window, WindowProcedure procedure) override;
  std::shared_ptr<SubclassTable> Table(WindowHandle window) const override;
  void SetTable(WindowHandle window, std::shared_ptr<SubclassTable> table) override;

private:
  struct Window {
    WindowProcedure procedure;
    std::shared_ptr<SubclassTable> table;
    std::map<std::uint32_t, TimerService::Token> timers; // by number
  };
  /// Registered messages have the numbers from here on.
  static constexpr std::uint32_t kFirstRegistered = 0xC000;

  TimerService& timers_;
  std::map<WindowHandle, Window> windows_;
  WindowHandle last_handle_ = 0;
  std::map<std::string, std::uint32_t> messages_;
};

} // namespace kelmio
