// The system-wide key that brings the main window to the front.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>

#include "platform/clock.h"
#include "platform/hot_keys.h"

namespace kelmio {

/// Who comes to the front.
class HotKeyWindow {
public:
  virtual ~HotKeyWindow() = default;
  /// Shows the window, also from the tray, before all others, and paints it anew.
  virtual void HotKeyPressed() = 0;
};

/// User interface thread only. The keys and the window outlive it.
class mHotKeys {
public:
  mHotKeys(HotKeys& keys, const Clock& clock) : keys_(keys), clock_(clock) {}
  mHotKeys(const mHotKeys&) = delete;
  mHotKeys& operator=(const mHotKeys&) = delete;
  ~mHotKeys() { RestoreProcedure(); }

  /// A key that another program has is not to be had, and nothing is said.
  void RegisterGlobalHotKey(int key_code, int modifiers, HotKeyWindow& window);
  /// Afterwards the key brings no window to the front. The desktop may keep it for this program all the same: what is
  /// given back is the number 0, which is the outcome of the atom's deletion and not the atom.
  void UnregisterGlobalHotKey(const HotKeyWindow& window);

private:
  using Atom = std::uint16_t;
  struct AtomEntry {
    std::string text;
    int uses = 0;
  };

  /// A number for a text; the same one while the text is in use.
  Atom GlobalAddAtom(const std::string& text);
  /// 0 when it was there, or else the atom.
  Atom GlobalDeleteAtom(Atom atom);
  void HotKeyWindowProc(int id);
  void RestoreProcedure();

  HotKeys& keys_;
  const Clock& clock_;
  HotKeyWindow* window_ = nullptr; // while the procedure is ours
  Atom atom_ = 0;
  std::map<Atom, AtomEntry> atoms_;
  std::function<void(int)> old_procedure_;
};

} // namespace kelmio
