#include "qt/qt_hot_keys.h"

#include <QCoreApplication>

#include <xcb/xcb_keysyms.h>

#include <algorithm>

#include "qt/handler_guard.h"
#include "qt/x11_connection.h"

namespace kelmio {

namespace {

// Virtual key codes and modifier bits of the Windows API.
constexpr int kFirstFunctionKey = 112;
constexpr int kLastFunctionKey = 127; // F16
constexpr int kAlt = 1;
constexpr int kControl = 2;
constexpr int kShift = 4;

// Key symbols of X11 (keysymdef.h).
constexpr std::uint32_t kSymbolF1 = 0xFFBE;
constexpr std::uint32_t kSymbolNumLock = 0xFF7F;

/// 0 for a code that stands for no key.
std::uint32_t SymbolOf(int key_code) {
  if (key_code >= kFirstFunctionKey && key_code <= kLastFunctionKey)
    return kSymbolF1 + static_cast<std::uint32_t>(key_code - kFirstFunctionKey);
  if (key_code >= 'A' && key_code <= 'Z')
    return static_cast<std::uint32_t>(key_code - 'A' + 'a'); // as the key is without Shift
  return key_code >= '0' && key_code <= '9' ? static_cast<std::uint32_t>(key_code) : 0;
}

std::uint16_t ModifiersOf(int modifiers) {
  std::uint16_t mask = 0;
  if ((modifiers & kAlt) != 0)
    mask |= XCB_MOD_MASK_1;
  if ((modifiers & kControl) != 0)
    mask |= XCB_MOD_MASK_CONTROL;
  if ((modifiers & kShift) != 0)
    mask |= XCB_MOD_MASK_SHIFT;
  return mask;
}

/// Keys of the keyboard that bear the symbol.
std::vector<std::uint8_t> CodesOf(xcb_key_symbols_t* symbols, std::uint32_t symbol) {
  std::vector<std::uint8_t> codes;
  const ReplyPtr<xcb_keycode_t> found(xcb_key_symbols_get_keycode(symbols, symbol));
  for (const xcb_keycode_t* code = found.get(); code != nullptr && *code != XCB_NO_SYMBOL; ++code)
    codes.push_back(*code);
  return codes;
}

} // namespace

QtHotKeys::QtHotKeys() {
  connection_ = X11Connection();
  if (connection_ == nullptr)
    return;
  root_ = X11Screen(connection_)->root;
  symbols_ = xcb_key_symbols_alloc(connection_);
  QCoreApplication::instance()->installNativeEventFilter(this);
}

QtHotKeys::~QtHotKeys() {
  if (connection_ == nullptr)
    return;
  QCoreApplication::instance()->removeNativeEventFilter(this);
  for (auto& [id, key] : keys_)
    Release(key);
  xcb_key_symbols_free(symbols_);
}

bool QtHotKeys::RegisterHotKey(int id, int modifiers, int key_code) {
  Key key{ModifiersOf(modifiers), SymbolOf(key_code)};
  if (connection_ == nullptr || key.symbol == 0 || keys_.contains(id) || !Grab(key))
    return false;
  keys_.emplace(id, std::move(key));
  return true;
}

bool QtHotKeys::UnregisterHotKey(int id) {
  const auto found = keys_.find(id);
  if (found == keys_.end())
    return false;
  Release(found->second);
  keys_.erase(found);
  return true;
}

std::vector<std::uint16_t> QtHotKeys::LockCombinations() const {
  std::uint16_t num_lock = 0;
  const std::vector<std::uint8_t> num_lock_codes = CodesOf(symbols_, kSymbolNumLock);
  const ReplyPtr<xcb_get_modifier_mapping_reply_t> map(
      xcb_get_modifier_mapping_reply(connection_, xcb_get_modifier_mapping(connection_), nullptr));
  if (map != nullptr) {
    constexpr int kModifiers = 8;
    const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(map.get());
    for (int modifier = 0; modifier < kModifiers; ++modifier)
      for (int i = 0; i < map->keycodes_per_modifier; ++i)
        if (std::ranges::count(num_lock_codes, codes[modifier * map->keycodes_per_modifier + i]) != 0)
          num_lock = static_cast<std::uint16_t>(num_lock | (1U << static_cast<unsigned>(modifier)));
  }
  constexpr std::uint16_t kCapsLock = XCB_MOD_MASK_LOCK;
  return {0, kCapsLock, num_lock, static_cast<std::uint16_t>(kCapsLock | num_lock)};
}

bool QtHotKeys::Grab(Key& key) {
  key.codes = CodesOf(symbols_, key.symbol);
  bool taken = !key.codes.empty();
  for (const std::uint8_t code : key.codes)
    for (const std::uint16_t locks : LockCombinations()) {
      const auto mask = static_cast<std::uint16_t>(key.modifiers | locks);
      const auto asked =
          xcb_grab_key_checked(connection_, 0, root_, mask, code, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
      const ReplyPtr<xcb_generic_error_t> error(xcb_request_check(connection_, asked));
      taken = taken && error == nullptr;
    }
  if (!taken)
    Release(key);
  return taken;
}

void QtHotKeys::Release(Key& key) {
  for (const std::uint8_t code : key.codes)
    for (const std::uint16_t locks : LockCombinations())
      xcb_ungrab_key(connection_, code, root_, static_cast<std::uint16_t>(key.modifiers | locks));
  key.codes.clear();
  xcb_flush(connection_);
}

void QtHotKeys::RegrabAll() {
  for (auto& [id, key] : keys_) {
    Release(key);
    Grab(key);
  }
}

bool QtHotKeys::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) {
  if (type != "xcb_generic_event_t")
    return false;
  auto* event = static_cast<xcb_generic_event_t*>(message);
  constexpr std::uint8_t kSentBySomeone = 0x80;
  switch (event->response_type & ~kSentBySomeone) {
  case XCB_MAPPING_NOTIFY:
    xcb_refresh_keyboard_mapping(symbols_, reinterpret_cast<xcb_mapping_notify_event_t*>(event));
    RegrabAll();
    return false;
  case XCB_KEY_PRESS: {
    const auto* press = reinterpret_cast<const xcb_key_press_event_t*>(event);
    if (press->event != root_)
      return false;
    constexpr std::uint16_t kAsked = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;
    for (const auto& [id, key] : keys_)
      if ((press->state & kAsked) == key.modifiers && std::ranges::count(key.codes, press->detail) != 0) {
        RunHandler([this, pressed = id] { on_hot_key(pressed); });
        return true;
      }
    return false;
  }
  default:
    return false;
  }
}

} // namespace kelmio
