// The simple control models: label, button, text box, status bar.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "controls/control.h"

namespace kelmio {

/// A colour with red in the lowest byte, then green, then blue.
using Color = std::int32_t;

/// A text. One whose `Click` is assigned is a link while it is enabled and not empty.
class Label : public Control {
public:
  Property<std::string> Caption{*this};
  Property<bool> Enabled{*this, true};
  Property<bool> Visible{*this, true};
  Property<std::string> ToolTip{*this};
  std::function<void()> Click; // empty for a mere text
};

/// A push button or a link. `Click` is assigned by the form; views and tests call it.
class Button : public Control {
public:
  Property<std::string> Caption{*this};
  Property<bool> Enabled{*this, true};
  Property<bool> Visible{*this, true};
  std::function<void()> Click = [] {};
};

/// A text box with a selection, in bytes of `Text` (which is not necessarily valid UTF-8).
class TextBox : public Control {
public:
  Property<std::string> Text{*this};
  Property<bool> Enabled{*this, true};
  Property<bool> Locked{*this, false};
  Property<Color> BackColor{*this, 0xFFFFFF};
  Property<std::size_t> SelStart{*this};
  Property<std::size_t> SelLength{*this};
  std::function<void()> Change = [] {};

  /// Puts `text` in the place of the selection and leaves the cursor behind it.
  void ReplaceSelection(const std::string& text);
};

/// A status bar. Panels count from 1. Date and time panels are filled by the view.
class StatusBar : public Control {
public:
  enum class PanelKind { Text, Date, Time };
  struct Panel {
    PanelKind kind = PanelKind::Text;
    std::string text;
  };

  Property<bool> Visible{*this, true};

  void AddPanel(PanelKind kind, std::string text);
  /// Nothing happens for a panel that isn't there.
  void SetPanel(std::size_t number, std::string text);
  /// Empty text for a panel that isn't there.
  const std::string& PanelText(std::size_t number) const;
  const std::vector<Panel>& Panels() const { return panels_; }

private:
  std::vector<Panel> panels_;
};

} // namespace kelmio
