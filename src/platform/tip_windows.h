// Tips that stand where they are told to, above all windows.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

namespace kelmio {

/// Colours have red in the lowest byte. One with its highest bit set is one of the desktop's own, by the number of the
/// Windows API's in the lowest byte.
inline constexpr std::uint32_t kDesktopColorBit = 0x80000000;
inline constexpr std::int32_t kDesktopTipText = static_cast<std::int32_t>(kDesktopColorBit | 0x17);
inline constexpr std::int32_t kDesktopTipBack = static_cast<std::int32_t>(kDesktopColorBit | 0x18);

struct TipContent {
  bool balloon = true;   // rounded, and points at its place
  bool centered = false; // over or under its place, not beside it
  int icon = 0;          // 1 information, 2 warning, 3 error
  std::string title;     // with no title and no icon there is no heading
  std::string prompt;
  std::int32_t fore = kDesktopTipText;
  std::int32_t back = kDesktopTipBack;
};

/// A tip on the screen. Its end takes it off.
class TipWindow {
public:
  virtual ~TipWindow() = default;
  /// Moves the tip to a place in pixels of the screen; it never lies outside. 0, 0 stands for no place at all: the tip
  /// is in the corner where a tray usually is, and points at nothing.
  virtual void MoveTo(int x, int y) = 0;
};

/// User interface thread only. A tip never takes the keyboard.
class TipWindows {
public:
  virtual ~TipWindows() = default;
  /// `on_mouse` gets the mouse messages over the tip, by the numbers of the Windows API from 512 on, and may end the
  /// tip. Nothing where no window may choose its place.
  virtual std::unique_ptr<TipWindow> Create(const TipContent& content, int x, int y,
                                            std::function<void(std::uint32_t message)> on_mouse) = 0;
};

} // namespace kelmio
