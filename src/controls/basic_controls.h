// The simple control models: label, button, check box, choice, text box, progress and status bar.
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

/// A box that is ticked or not. A view sets `Value` and then calls `Click`; the form's own changes don't.
class CheckBox : public Control {
public:
  Property<std::string> Caption{*this};
  Property<bool> Value{*this};
  Property<bool> Enabled{*this, true};
  std::function<void()> Click = [] {};
};

/// A list of which one item is chosen. A view sets `ListIndex` and then calls `Click`.
class ComboBox : public Control {
public:
  static constexpr int kNone = -1;

  Property<std::vector<std::string>> Items{*this};
  Property<int> ListIndex{*this, kNone}; // from 0
  Property<bool> Enabled{*this, true};
  std::function<void()> Click = [] {};
};

/// How far a long work has come.
class ProgressBar : public Control {
public:
  Property<int> Min{*this};
  Property<int> Max{*this, 100};
  Property<int> Value{*this};
};

/// A text box with a selection, in bytes of `Text` (which is not necessarily valid UTF-8).
class TextBox : public Control {
public:
  Property<std::string> Text{*this};
  Property<bool> Enabled{*this, true};
  Property<bool> Locked{*this, false};
  /// Anything but 0 hides what stands in a box of one line; the view may have a sign of its own for it.
  Property<char> PasswordChar{*this, '\0'};
  Property<Color> BackColor{*this, 0xFFFFFF};
  Property<std::size_t> SelStart{*this};
  Property<std::size_t> SelLength{*this};
  std::function<void()> Change = [] {};
  /// The Enter key was pressed in a box of one line. While it is assigned, the key presses no default button.
  std::function<void()> EnterPressed;

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
