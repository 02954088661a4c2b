// The keys of the Windows API, as the desktops of this system call them.
#pragma once

#include <cstdint>
#include <string>

namespace kelmio {

/// Modifier bits of the Windows API.
inline constexpr int kAltKey = 1;
inline constexpr int kControlKey = 2;
inline constexpr int kShiftKey = 4;

/// X11 key symbol of a virtual key code (F1 to F16, letters, digits), as the key is without Shift; 0 for others.
std::uint32_t KeySymbol(int key_code);

/// The same with modifiers as text, such as "CTRL+ALT+F8", by the Shortcuts Specification of freedesktop.org; empty
/// for a code that stands for no key.
std::string PortalTrigger(int modifiers, int key_code);

} // namespace kelmio
