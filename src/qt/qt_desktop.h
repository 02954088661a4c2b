// The screen and the clipboard.
#pragma once

#include "platform/desktop.h"

namespace kelmio {

class QtDesktop : public Desktop {
public:
  /// Of the main screen; 0 while there is no screen.
  int WorkAreaWidth() const override;
  int WorkAreaHeight() const override;
  /// Always nothing: desktops here have no style files with colour schemes inside.
  std::optional<VisualStyle> CurrentStyle() const override { return std::nullopt; }
  std::string LanguageName() const override;
};

class QtClipboard : public Clipboard {
public:
  void Clear() override;
  /// Stored bytes are put there as the user reads them on the screen.
  void SetText(const std::string& text) override;
  std::optional<std::string> Text() const override;
};

} // namespace kelmio
