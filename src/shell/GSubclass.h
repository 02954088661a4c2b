// The dispatcher as an object holds it.
#pragma once

#include "shell/MSubclass.h"

namespace kelmio {

/// User interface thread only; the dispatcher outlives it.
class GSubclass {
public:
  explicit GSubclass(MSubclass& subclass) : subclass_(subclass) {}

  SubclassOutcome AttachMessage(ISubclass& object, WindowHandle window, std::uint32_t message) {
    return subclass_.AttachMessage(object, window, message);
  }
  void DetachMessage(const ISubclass& object, WindowHandle window, std::uint32_t message) {
    subclass_.DetachMessage(object, window, message);
  }
  std::uint32_t CurrentMessage() const { return subclass_.CurrentMessage(); }
  MessageResult CurrentResult() const { return subclass_.CurrentResult(); }
  MessageResult CallOldWindowProc(WindowHandle window, std::uint32_t message, MessageWord word,
                                  MessageWord long_word) const {
    return subclass_.CallOldWindowProc(window, message, word, long_word);
  }
  bool IsWindowLocal(WindowHandle window) const { return subclass_.IsWindowLocal(window); }

private:
  MSubclass& subclass_;
};

} // namespace kelmio
