// The notification area of the desktop.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>

namespace kelmio {

class CommandBar;

/// In pixels of the screen; right and bottom are just outside.
struct ScreenRect {
  int left = 0;
  int top = 0;
  int right = 0;
  int bottom = 0;
};

/// Images for the icon, by number. There is only the program's own.
inline constexpr int kNoIcon = 0;
inline constexpr int kProgramIcon = 1;

/// What an icon shows. A balloon with neither text nor title is none.
struct TrayRecord {
  int icon = kNoIcon;
  std::string tip;
  std::string info;
  std::string info_title;
  int info_flags = 0;       // 1 information, 2 warning, 3 error
  int info_time_out_ms = 0; // for trays that can't be told to close a balloon; 0 leaves it to them
};

/// Which parts of a record are to be shown anew.
namespace tray_flag {
inline constexpr unsigned kMessage = 1;
inline constexpr unsigned kIcon = 2;
inline constexpr unsigned kTip = 4;
inline constexpr unsigned kInfo = 16;
} // namespace tray_flag

/// One icon in the tray. User interface thread only.
class Tray {
public:
  virtual ~Tray() = default;
  /// Shows the icon. False where the desktop has no tray now; `on_restarted` tells when one has come.
  virtual bool Add(const TrayRecord& record) = 0;
  virtual void Modify(unsigned flags, const TrayRecord& record) = 0;
  virtual void Delete() = 0;
  /// Whether the icon stands in a tray now.
  virtual bool Created() const = 0;

  /// Where the icon stands. Nothing for trays that don't tell, and for an icon that can't be seen.
  virtual std::optional<ScreenRect> IconRect() const = 0;
  /// The number of the tray's own window, 0 when it has none that is known.
  virtual std::uint32_t HostWindow() const = 0;
  /// Whether `Modify` can show a balloon of the desktop's own.
  virtual bool ShowsBalloons() const = 0;

  /// Opens a popup at the icon and returns; what is picked there runs through `on_command`. Some trays draw the popup
  /// themselves: they ask `on_popup` for its content and don't send the message of the right button.
  virtual void ShowPopup(const CommandBar& popup) = 0;
  std::function<const CommandBar&()> on_popup;
  std::function<void(int command)> on_command;

  /// What happens at the icon, as the numbers that the Windows API sends: mouse messages from 513 on, 1024 and 1025 for
  /// keys, 1026 to 1029 for the desktop's balloon. Trays that don't tell double clicks send a click as one.
  std::function<void(std::uint32_t message)> on_message;

  /// Between `Add` and `Delete`. The tray with the icon has died and no other is there; or one has come, in which the
  /// icon is missing until it is added anew.
  std::function<void()> on_gone;
  std::function<void()> on_restarted;
};

} // namespace kelmio
