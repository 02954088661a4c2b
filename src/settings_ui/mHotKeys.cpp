#include "settings_ui/mHotKeys.h"

#include <utility>

#include "core/date_time.h"

namespace kelmio {

namespace {

/// Numbers of atoms that stand for a text begin here in the Windows API.
constexpr std::uint16_t kFirstAtom = 0xC000;

} // namespace

void mHotKeys::RegisterGlobalHotKey(int key_code, int modifiers, HotKeyWindow& window) {
  const LocalDateTime now = clock_.Now();
  atom_ = GlobalAddAtom(FormatMonthDayYear(now) + " " + FormatTimeAmPm(now));
  // A procedure that were its own predecessor would never end.
  if (window_ == nullptr) {
    old_procedure_ = std::move(keys_.on_hot_key);
    keys_.on_hot_key = [this](int id) { HotKeyWindowProc(id); };
  }
  window_ = &window;
  keys_.RegisterHotKey(atom_, modifiers, key_code);
}

void mHotKeys::UnregisterGlobalHotKey(const HotKeyWindow& window) {
  keys_.UnregisterHotKey(GlobalDeleteAtom(atom_));
  if (window_ == &window)
    RestoreProcedure();
}

mHotKeys::Atom mHotKeys::GlobalAddAtom(const std::string& text) {
  Atom next = kFirstAtom;
  for (auto& [atom, entry] : atoms_) {
    if (entry.text == text) {
      ++entry.uses;
      return atom;
    }
    if (next == atom)
      ++next;
  }
  atoms_[next] = {text, 1};
  return next;
}

mHotKeys::Atom mHotKeys::GlobalDeleteAtom(Atom atom) {
  const auto found = atoms_.find(atom);
  if (found == atoms_.end())
    return atom;
  if (--found->second.uses == 0)
    atoms_.erase(found);
  return 0;
}

void mHotKeys::HotKeyWindowProc(int id) {
  // Any number of ours: the key of an earlier registration still stands for the same window.
  window_->HotKeyPressed();
  if (old_procedure_)
    old_procedure_(id);
}

void mHotKeys::RestoreProcedure() {
  if (window_ == nullptr)
    return;
  keys_.on_hot_key = std::move(old_procedure_);
  window_ = nullptr;
}

} // namespace kelmio
