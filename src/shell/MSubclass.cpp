#include "shell/MSubclass.h"

#include <algorithm>
#include <map>
#include <utility>

namespace kelmio {

struct MSubclass::Listener {
  ISubclass* object;
  std::weak_ptr<void> life;
};

struct SubclassTable {
  WindowProcedure old_procedure;
  std::map<std::uint32_t, std::vector<MSubclass::Listener>> messages;
};

namespace {

/// Sets a value, and puts the old one back at the end: a message may come while another is in progress.
template <class T> class Scoped {
public:
  Scoped(T& place, T value) : place_(place), old_(std::exchange(place, value)) {}
  Scoped(const Scoped&) = delete;
  Scoped& operator=(const Scoped&) = delete;
  ~Scoped() { place_ = old_; }

private:
  T& place_;
  T old_;
};

} // namespace

MSubclass::MSubclass(MessageWindows& windows, std::string program) : windows_(windows), program_(std::move(program)) {}

SubclassOutcome MSubclass::AttachMessage(ISubclass& object, WindowHandle window, std::uint32_t message) {
  if (!windows_.IsWindow(window))
    return Error(kInvalidWindow, "Invalid window");
  if (!IsWindowLocal(window))
    return Error(kExternalWindow, "Can't modify external window");
  std::shared_ptr<SubclassTable> table = windows_.Table(window);
  if (table == nullptr) {
    auto old_procedure = windows_.SetProcedure(
        window, [this](WindowHandle to, std::uint32_t number, MessageWord word, MessageWord long_word) {
          return WindowProc(to, number, word, long_word);
        });
    if (!old_procedure)
      return Error(kCannotSubclass, "Can't subclass window");
    table = std::make_shared<SubclassTable>();
    table->old_procedure = std::move(*old_procedure);
    windows_.SetTable(window, table);
  }
  const Listener listener{&object, object.life_};
  if (IsAttached(listener, window, message))
    return Error(kAlreadyHandled, "Message already handled by another class");
  table->messages[message].push_back(listener);
  return std::nullopt;
}

void MSubclass::DetachMessage(const ISubclass& object, WindowHandle window, std::uint32_t message) {
  const std::shared_ptr<SubclassTable> table = windows_.Table(window);
  if (table == nullptr)
    return;
  const auto found = table->messages.find(message);
  if (found == table->messages.end())
    return;
  std::vector<Listener>& listeners = found->second;
  listeners.erase(std::remove_if(listeners.begin(), listeners.end(),
                                 [&](const Listener& listener) { return listener.object == &object; }),
                  listeners.end());
  if (listeners.empty())
    table->messages.erase(found);
  if (table->messages.empty())
    Restore(window);
}

MessageResult MSubclass::CallOldWindowProc(WindowHandle window, std::uint32_t message, MessageWord word,
                                           MessageWord long_word) const {
  const std::shared_ptr<SubclassTable> table = windows_.Table(window);
  return table != nullptr ? table->old_procedure(window, message, word, long_word) : 0;
}

MessageResult MSubclass::WindowProc(WindowHandle window, std::uint32_t message, MessageWord word,
                                    MessageWord long_word) {
  const std::shared_ptr<SubclassTable> table = windows_.Table(window);
  if (table == nullptr)
    return 0;
  std::vector<Listener> listeners = Listeners(window, message);
  if (!listeners.empty()) {
    std::reverse(listeners.begin(), listeners.end());
    const Scoped message_in_progress(current_message_, message);
    const Scoped result_so_far(current_result_, MessageResult{0});
    return CallListeners(listeners, table->old_procedure, window, word, long_word);
  }
  table->messages.erase(message); // where objects were that are gone
  // A dying window gets its procedure back by itself when nobody listens to its end.
  if (message == window_message::kDestroy || table->messages.empty())
    Restore(window);
  return table->old_procedure(window, message, word, long_word);
}

MessageResult MSubclass::CallListeners(const std::vector<Listener>& listeners, const WindowProcedure& old_procedure,
                                       WindowHandle window, MessageWord word, MessageWord long_word) {
  const std::uint32_t message = current_message_;
  bool old_has_run = false;
  const auto call_old = [&] {
    if (std::exchange(old_has_run, true) || !windows_.IsWindow(window))
      return;
    current_result_ = old_procedure(window, message, word, long_word);
  };
  // Kept from the call of the one that decides, who may be gone when the last has run.
  std::optional<MessageResponse> response;
  for (const Listener& listener : listeners) {
    if (!IsAttached(listener, window, message))
      continue;
    const bool decides = First(window, message) == listener.object;
    if (decides) {
      response = listener.object->MsgResponse();
      if (response == MessageResponse::OldFirst)
        call_old();
      if (!IsAttached(listener, window, message))
        continue;
    }
    current_result_ = listener.object->WindowProc(window, message, word, long_word);
  }
  // Another than the one that has decided may be the first by now.
  if (const ISubclass* first = First(window, message))
    response = first->MsgResponse();
  if (response != MessageResponse::Consume)
    call_old();
  return current_result_;
}

std::vector<MSubclass::Listener> MSubclass::Listeners(WindowHandle window, std::uint32_t message) const {
  const std::shared_ptr<SubclassTable> table = windows_.Table(window);
  if (table == nullptr)
    return {};
  const auto found = table->messages.find(message);
  if (found == table->messages.end())
    return {};
  std::vector<Listener>& listeners = found->second;
  listeners.erase(std::remove_if(listeners.begin(), listeners.end(),
                                 [](const Listener& listener) { return listener.life.expired(); }),
                  listeners.end());
  return listeners;
}

bool MSubclass::IsAttached(const Listener& listener, WindowHandle window, std::uint32_t message) const {
  const std::vector<Listener> attached = Listeners(window, message);
  return std::any_of(attached.begin(), attached.end(), [&](const Listener& other) {
    return !listener.life.expired() && other.object == listener.object;
  });
}

const ISubclass* MSubclass::First(WindowHandle window, std::uint32_t message) const {
  const std::vector<Listener> attached = Listeners(window, message);
  return attached.empty() ? nullptr : attached.front().object;
}

void MSubclass::Restore(WindowHandle window) {
  const std::shared_ptr<SubclassTable> table = windows_.Table(window);
  windows_.SetProcedure(window, table->old_procedure);
  windows_.SetTable(window, nullptr);
}

SubclassError MSubclass::Error(int number, const char* description) const {
  return {number, program_ + ".WindowProc", description};
}

} // namespace kelmio
