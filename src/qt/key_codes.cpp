#include "qt/key_codes.h"

namespace kelmio {

namespace {

// Virtual key codes of the Windows API.
constexpr int kFirstFunctionKey = 112;
constexpr int kLastFunctionKey = 127; // F16

// Of X11's key symbols (keysymdef.h); letters and digits have their ASCII codes.
constexpr std::uint32_t kSymbolF1 = 0xFFBE;

} // namespace

std::uint32_t KeySymbol(int key_code) {
  if (key_code >= kFirstFunctionKey && key_code <= kLastFunctionKey)
    return kSymbolF1 + static_cast<std::uint32_t>(key_code - kFirstFunctionKey);
  if (key_code >= 'A' && key_code <= 'Z')
    return static_cast<std::uint32_t>(key_code - 'A' + 'a');
  return key_code >= '0' && key_code <= '9' ? static_cast<std::uint32_t>(key_code) : 0;
}

std::string PortalTrigger(int modifiers, int key_code) {
  const std::uint32_t symbol = KeySymbol(key_code);
  if (symbol == 0)
    return {};
  std::string trigger;
  if ((modifiers & kControlKey) != 0)
    trigger += "CTRL+";
  if ((modifiers & kAltKey) != 0)
    trigger += "ALT+";
  if ((modifiers & kShiftKey) != 0)
    trigger += "SHIFT+";
  if (symbol >= kSymbolF1)
    return trigger + "F" + std::to_string(symbol - kSymbolF1 + 1);
  return trigger + static_cast<char>(symbol);
}

} // namespace kelmio
