// What the logic needs of the desktop around its windows.
#pragma once

#include <functional>
#include <optional>
#include <string>

namespace kelmio {

/// Lengths of the windows are in twips, 1440 to the inch; a screen of 96 dots an inch has 15 to the pixel.
inline constexpr int kTwipsPerInch = 1440;
inline constexpr int kDotsPerInch = 96;
inline constexpr int kTwipsPerPixel = kTwipsPerInch / kDotsPerInch;

/// The desktop's visual style, where it has one that can be named.
struct VisualStyle {
  std::string file;
  std::string color_scheme;
};

/// The screen. User interface thread only.
class Desktop {
public:
  virtual ~Desktop() = default;
  /// Size of the full-screen work area in twips.
  virtual int WorkAreaWidth() const = 0;
  virtual int WorkAreaHeight() const = 0;
  /// Nothing when the desktop has no such data.
  virtual std::optional<VisualStyle> CurrentStyle() const = 0;
  /// English name of the user's language, such as "Spanish".
  virtual std::string LanguageName() const = 0;
};

/// The clipboard, text only. User interface thread only.
class Clipboard {
public:
  virtual ~Clipboard() = default;
  virtual void Clear() = 0;
  virtual void SetText(const std::string& text) = 0;
  /// Nothing when the clipboard holds no text.
  virtual std::optional<std::string> Text() const = 0;
};

/// A file, folder or address that the desktop is asked to act on. The verb is a word such as "Open"; the show
/// mode is the platform's number for how the window is to appear, 1 for as usual.
struct ShellRequest {
  std::string file;
  std::string verb;
  std::string parameters;
  std::string folder;
  int show_mode = 1;
};

/// The desktop's programs for files and addresses. User interface thread only; failures are silent.
class LinkOpener {
public:
  virtual ~LinkOpener() = default;
  virtual void Open(const ShellRequest& request) = 0;
};

/// Starting with the session. User interface thread only; failures are silent.
class AutoStart {
public:
  virtual ~AutoStart() = default;
  /// Makes or replaces the entry for the program at `executable` (full path).
  virtual void Enable(const std::string& executable) = 0;
  virtual void Disable() = 0;
};

} // namespace kelmio
