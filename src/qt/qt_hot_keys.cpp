#include "qt/qt_hot_keys.h"

#include <QCoreApplication>

#include <xcb/xcb_keysyms.h>

#include <algorithm>
#include <string_view>

#include "qt/handler_guard.h"
#include "qt/key_codes.h"
#include "qt/x11_connection.h"

namespace kelmio {

namespace {

// Key symbol of X11 (keysymdef.h).
constexpr std::uint32_t kSymbolNumLock = 0xFF7F;

// Of the keyboard extension (XKB.h): its name, and the kinds of its event that tell of another layout.
constexpr const char* kKeyboardExtension = "XKEYBOARD";
constexpr std::uint8_t kNewKeyboard = 0;
constexpr std::uint8_t kNewMap = 1;

/// A key that is held comes again and again, each time with a release just before. No finger is as quick.
constexpr std::uint32_t kRepeatGapMs = 10;

std::uint16_t ModifiersOf(int modifiers) {
  std::uint16_t mask = 0;
  if ((modifiers & kAltKey) != 0)
    mask |= XCB_MOD_MASK_1;
  if ((modifiers & kControlKey) != 0)
    mask |= XCB_MOD_MASK_CONTROL;
  if ((modifiers & kShiftKey) != 0)
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
  const auto asked = xcb_query_extension(
      connection_, static_cast<std::uint16_t>(std::string_view(kKeyboardExtension).size()), kKeyboardExtension);
  const ReplyPtr<xcb_query_extension_reply_t> extension(xcb_query_extension_reply(connection_, asked, nullptr));
  if (extension != nullptr && extension->present != 0)
    keyboard_event_ = extension->first_event;
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
  Key key{ModifiersOf(modifiers), KeySymbol(key_code)};
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
  const std::vector<std::uint16_t> locks = LockCombinations();
  for (const std::uint8_t code : CodesOf(symbols_, key.symbol))
    for (const std::uint16_t lock : locks)
      key.grabs.push_back({code, static_cast<std::uint16_t>(key.modifiers | lock)});
  bool taken = !key.grabs.empty();
  for (const auto& [code, mask] : key.grabs) {
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
  for (const auto& [code, mask] : key.grabs)
    xcb_ungrab_key(connection_, code, root_, mask);
  key.grabs.clear();
  key.down = false;
  xcb_flush(connection_);
}

void QtHotKeys::KeyboardChanged() {
  xcb_key_symbols_free(symbols_);
  symbols_ = xcb_key_symbols_alloc(connection_);
  // All are let go first: with the new layout one may stand where another stood.
  for (auto& [id, key] : keys_)
    Release(key);
  for (auto& [id, key] : keys_)
    Grab(key);
}

bool QtHotKeys::Pressed(std::uint8_t code, std::uint16_t state, std::uint32_t time) {
  constexpr std::uint16_t kAsked = XCB_MOD_MASK_SHIFT | XCB_MOD_MASK_CONTROL | XCB_MOD_MASK_1;
  for (auto& [id, key] : keys_) {
    if ((state & kAsked) != key.modifiers || !key.Has(code))
      continue;
    const bool repeated = key.down || time - key.released_at < kRepeatGapMs;
    key.down = true;
    if (!repeated)
      RunHandler([this, pressed = id] { on_hot_key(pressed); });
    return true;
  }
  return false;
}

void QtHotKeys::Released(std::uint8_t code, std::uint32_t time) {
  for (auto& [id, key] : keys_)
    if (key.down && key.Has(code)) {
      key.down = false;
      key.released_at = time;
    }
}

bool QtHotKeys::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/) {
  if (type != "xcb_generic_event_t")
    return false;
  const auto* event = static_cast<const xcb_generic_event_t*>(message);
  constexpr std::uint8_t kSentBySomeone = 0x80;
  const auto kind = static_cast<std::uint8_t>(event->response_type & ~kSentBySomeone);
  // Who has asked for the extension's events, as the toolkit does, isn't told of a new layout in any other way. Of
  // these events the second byte is the kind.
  if (kind == XCB_MAPPING_NOTIFY ||
      (kind == keyboard_event_ && kind != 0 && (event->pad0 == kNewKeyboard || event->pad0 == kNewMap)))
    KeyboardChanged();
  if (kind != XCB_KEY_PRESS && kind != XCB_KEY_RELEASE)
    return false;
  const auto* key = reinterpret_cast<const xcb_key_press_event_t*>(event); // a release has the same form
  if (key->event != root_)
    return false;
  if (kind == XCB_KEY_PRESS)
    return Pressed(key->detail, key->state, key->time);
  Released(key->detail, key->time);
  return false;
}

} // namespace kelmio
