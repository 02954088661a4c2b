// Keys that reach the program from anywhere on an X11 desktop.
#pragma once

#include <QAbstractNativeEventFilter>

#include <algorithm>
#include <cstdint>
#include <map>
#include <vector>

#include "platform/hot_keys.h"

struct _XCBKeySymbols; // NOLINT(bugprone-reserved-identifier): the library's own name
struct xcb_connection_t;

namespace kelmio {

/// Grabs keys of the root window, whichever of the locks are on. A grab follows the keyboard when its layout changes.
/// On desktops without X11 no key is to be had. User interface thread only.
class QtHotKeys : public HotKeys, private QAbstractNativeEventFilter {
public:
  QtHotKeys();
  QtHotKeys(const QtHotKeys&) = delete;
  QtHotKeys& operator=(const QtHotKeys&) = delete;
  ~QtHotKeys() override;

  bool RegisterHotKey(int id, int modifiers, int key_code) override;
  bool UnregisterHotKey(int id) override;

private:
  struct Grabbed {
    std::uint8_t code;  // of the keyboard
    std::uint16_t mask; // modifiers and locks
  };
  struct Key {
    std::uint16_t modifiers = 0; // of X11
    std::uint32_t symbol = 0;
    std::vector<Grabbed> grabs{};
    bool down = false;
    std::uint32_t released_at = 0; // the server's time in milliseconds

    bool Has(std::uint8_t code) const {
      return std::ranges::any_of(grabs, [&](const Grabbed& grab) { return grab.code == code; });
    }
  };

  bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

  /// What the lock keys add to a key press, alone and together.
  std::vector<std::uint16_t> LockCombinations() const;
  /// All or nothing.
  bool Grab(Key& key);
  void Release(Key& key);
  void KeyboardChanged();
  /// True for a key of ours; a key that is held counts once.
  bool Pressed(std::uint8_t code, std::uint16_t state, std::uint32_t time);
  void Released(std::uint8_t code, std::uint32_t time);

  xcb_connection_t* connection_ = nullptr; // the desktop's; nothing without X11
  std::uint32_t root_ = 0;
  std::uint8_t keyboard_event_ = 0; // number of the keyboard extension's events; 0 without it
  _XCBKeySymbols* symbols_ = nullptr;
  std::map<int, Key> keys_;
};

} // namespace kelmio
