// Keys that reach the program from anywhere on the desktop.
#pragma once

#include <functional>

namespace kelmio {

/// User interface thread only. Where the desktop gives no such keys, nothing is registered and nothing is said.
class HotKeys {
public:
  virtual ~HotKeys() = default;
  /// Asks for a key under a number of the caller's. `modifiers` are the bits of the Windows API (1 Alt, 2 Ctrl,
  /// 4 Shift), `key_code` is one of its virtual key codes. False when another program has it or the desktop has none.
  /// True says that the key was asked for: some desktops decide later, or let the user decide, and then may give
  /// another key or none without a word.
  virtual bool RegisterHotKey(int id, int modifiers, int key_code) = 0;
  /// Gives a key back; false for a number that isn't registered.
  virtual bool UnregisterHotKey(int id) = 0;
  /// The key of that number was pressed. Assigned by the owner.
  std::function<void(int id)> on_hot_key = [](int) {};
};

} // namespace kelmio
