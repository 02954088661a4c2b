// Lets objects listen to chosen messages of a window, before or after the window's own procedure.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "shell/window_messages.h"

namespace kelmio {

/// When the window's old procedure runs for a message.
enum class MessageResponse {
  Consume = 0,  // not at all
  OldLast = 1,  // behind the objects, and its result is returned
  OldFirst = 2, // before the object that decides
};

/// An object that listens. A window holds no reference that would keep it alive; one that is gone is left out.
class ISubclass {
public:
  ISubclass() = default;
  ISubclass(const ISubclass&) = delete;
  ISubclass& operator=(const ISubclass&) = delete;
  virtual ~ISubclass() = default;
  /// Asked while a message is in progress, so the answer may differ from message to message.
  virtual MessageResponse MsgResponse() const = 0;
  virtual void SetMsgResponse(MessageResponse response) = 0;
  virtual MessageResult WindowProc(WindowHandle window, std::uint32_t message, MessageWord word,
                                   MessageWord long_word) = 0;

private:
  friend class MSubclass;
  std::shared_ptr<void> life_ = std::make_shared<char>();
};

struct SubclassError {
  int number;
  std::string source;
  std::string description;
};
/// Nothing on success.
using SubclassOutcome = std::optional<SubclassError>;

/// The dispatcher. It keeps no list of its own: who listens is kept with each window. Of the listeners to a message the
/// last attached runs first, and the first attached alone decides the response. A listener may attach, detach or
/// destroy listeners and windows while it runs: who is detached isn't called any more, who comes anew isn't called for
/// the message in progress. User interface thread only; the windows outlive it.
class MSubclass {
public:
  static constexpr int kCannotSubclass = 13081;
  static constexpr int kAlreadyHandled = 13082;
  static constexpr int kInvalidWindow = 13083;
  static constexpr int kExternalWindow = 13084;

  /// `program` is the name that stands in the source of an error.
  explicit MSubclass(MessageWindows& windows, std::string program = "Kelmio");
  MSubclass(const MSubclass&) = delete;
  MSubclass& operator=(const MSubclass&) = delete;

  SubclassOutcome AttachMessage(ISubclass& object, WindowHandle window, std::uint32_t message);
  /// Does nothing for an object that isn't attached. The last one gives the window its old procedure back.
  void DetachMessage(const ISubclass& object, WindowHandle window, std::uint32_t message);

  /// The message in progress, 0 while there is none.
  std::uint32_t CurrentMessage() const { return current_message_; }
  /// What the message in progress has come to so far: the result of the old procedure or of the object before.
  MessageResult CurrentResult() const { return current_result_; }
  /// 0 for a window that nobody listens to.
  MessageResult CallOldWindowProc(WindowHandle window, std::uint32_t message, MessageWord word,
                                  MessageWord long_word) const;
  bool IsWindowLocal(WindowHandle window) const { return windows_.IsLocal(window); }
  /// Whether the program runs inside a development environment, which one that is compiled never does.
  static constexpr bool InIDE() { return false; }

private:
  struct Listener;
  friend struct SubclassTable;

  MessageResult WindowProc(WindowHandle window, std::uint32_t message, MessageWord word, MessageWord long_word);
  /// The listeners stand in the order in which they run.
  MessageResult CallListeners(const std::vector<Listener>& listeners, const WindowProcedure& old_procedure,
                              WindowHandle window, MessageWord word, MessageWord long_word);
  /// Those of a message that still live, the first attached first; forgets the others.
  std::vector<Listener> Listeners(WindowHandle window, std::uint32_t message) const;
  bool IsAttached(const Listener& listener, WindowHandle window, std::uint32_t message) const;
  /// Index 1, or nothing.
  const ISubclass* First(WindowHandle window, std::uint32_t message) const;
  void Restore(WindowHandle window);
  SubclassError Error(int number, const char* description) const;

  MessageWindows& windows_;
  std::string program_;
  std::uint32_t current_message_ = 0;
  MessageResult current_result_ = 0;
};

} // namespace kelmio
