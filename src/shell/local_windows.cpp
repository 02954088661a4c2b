#include "shell/local_windows.h"

#include <chrono>
#include <utility>
#include <vector>

namespace kelmio {

LocalWindows::~LocalWindows() {
  for (const auto& [handle, window] : windows_)
    for (const auto& [id, token] : window.timers)
      timers_.Stop(token);
}

WindowHandle LocalWindows::Create(WindowProcedure procedure) {
  if (!procedure)
    procedure = [](WindowHandle, std::uint32_t, MessageWord, MessageWord) { return MessageResult{0}; };
  windows_[++last_handle_].procedure = std::move(procedure);
  return last_handle_;
}

void LocalWindows::Destroy(WindowHandle window) {
  Send(window, window_message::kDestroy, 0, 0);
  const auto found = windows_.find(window); // its procedure may have destroyed it already
  if (found == windows_.end())
    return;
  for (const auto& [id, token] : found->second.timers)
    timers_.Stop(token);
  windows_.erase(found);
}

MessageResult LocalWindows::Send(WindowHandle window, std::uint32_t message, MessageWord word, MessageWord long_word) {
  const auto found = windows_.find(window);
  if (found == windows_.end())
    return 0;
  const WindowProcedure procedure = found->second.procedure; // held, as the window may get another meanwhile
  return procedure(window, message, word, long_word);
}

void LocalWindows::Broadcast(std::uint32_t message) {
  std::vector<WindowHandle> standing;
  for (const auto& [handle, window] : windows_)
    standing.push_back(handle);
  for (const WindowHandle handle : standing)
    Send(handle, message, 0, 0);
}

std::uint32_t LocalWindows::RegisterMessage(const std::string& name) {
  const auto next = kFirstRegistered + static_cast<std::uint32_t>(messages_.size());
  return messages_.emplace(name, next).first->second;
}

void LocalWindows::SetTimer(WindowHandle window, std::uint32_t id, int interval_ms) {
  KillTimer(window, id);
  const auto found = windows_.find(window);
  if (found != windows_.end())
    found->second.timers[id] = timers_.Start(std::chrono::milliseconds(interval_ms), [this, window, id] {
      Send(window, window_message::kTimer, static_cast<MessageWord>(id), 0);
    });
}

void LocalWindows::KillTimer(WindowHandle window, std::uint32_t id) {
  const auto found = windows_.find(window);
  if (found == windows_.end())
    return;
  const auto timer = found->second.timers.find(id);
  if (timer == found->second.timers.end())
    return;
  timers_.Stop(timer->second);
  found->second.timers.erase(timer);
}

std::optional<WindowProcedure> LocalWindows::SetProcedure(WindowHandle window, WindowProcedure procedure) {
  const auto found = windows_.find(window);
  if (found == windows_.end())
    return std::nullopt;
  return std::exchange(found->second.procedure, std::move(procedure));
}

std::shared_ptr<SubclassTable> LocalWindows::Table(WindowHandle window) const {
  const auto found = windows_.find(window);
  return found != windows_.end() ? found->second.table : nullptr;
}

void LocalWindows::SetTable(WindowHandle window, std::shared_ptr<SubclassTable> table) {
  const auto found = windows_.find(window);
  if (found != windows_.end())
    found->second.table = std::move(table);
}

} // namespace kelmio
