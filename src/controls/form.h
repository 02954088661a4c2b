// A window or pane as a model: geometry, visibility, controls by name.
#pragma once

#include <functional>
#include <string>
#include <string_view>

#include "controls/basic_controls.h"
#include "controls/control.h"

namespace kelmio {

class CommandBars;
class DockingPanes;
class ListView;
class PictureBox;
class SpectrumView;
class TabControl;
class TreeView;
class WebBrowser;
class jcForms;
class ucSlider;

/// Visits a form's controls; one overload a control kind. The binder and tests implement it.
class ControlVisitor {
public:
  virtual ~ControlVisitor() = default;
  virtual void Visit(std::string_view name, Label& control) = 0;
  virtual void Visit(std::string_view name, Button& control) = 0;
  virtual void Visit(std::string_view name, CheckBox& control) = 0;
  virtual void Visit(std::string_view name, ComboBox& control) = 0;
  virtual void Visit(std::string_view name, ProgressBar& control) = 0;
  virtual void Visit(std::string_view name, TextBox& control) = 0;
  virtual void Visit(std::string_view name, ListView& control) = 0;
  virtual void Visit(std::string_view name, StatusBar& control) = 0;
  virtual void Visit(std::string_view name, CommandBars& control) = 0;
  virtual void Visit(std::string_view name, DockingPanes& control) = 0;
  virtual void Visit(std::string_view name, TabControl& control) = 0;
  virtual void Visit(std::string_view name, TreeView& control) = 0;
  virtual void Visit(std::string_view name, PictureBox& control) = 0;
  virtual void Visit(std::string_view name, SpectrumView& control) = 0;
  virtual void Visit(std::string_view name, ucSlider& control) = 0;
  virtual void Visit(std::string_view name, jcForms& control) = 0;
  virtual void Visit(std::string_view name, WebBrowser& control) = 0;
};

enum class WindowState { Normal, Minimized, Maximized };

/// A window's model. It outlives its widgets. Geometry is in twips. User interface thread only.
/// The view writes geometry and state back when the user moves, resizes or minimises the window.
class Form : public Control {
public:
  Property<std::string> Caption{*this};
  Property<int> Left{*this};
  Property<int> Top{*this};
  Property<int> Width{*this};
  Property<int> Height{*this};
  Property<bool> Visible{*this, false};
  Property<WindowState> State{*this, WindowState::Normal};
  Property<Color> BackColor{*this, 0xFFFFFF};
  /// A longer work is under way: the pointer over the window is an hourglass.
  Property<bool> Busy{*this, false};

  /// The form's fixed name, which is also the name of its layout. Empty for a form that no view has to find.
  virtual std::string_view Name() const { return {}; }

  /// Visits every control under its fixed name, which is also the name of its widget.
  virtual void VisitControls(ControlVisitor& visitor) = 0;

  /// The window is about to be shown modally: fill the controls. It is made anew for each showing.
  virtual void Load() {}
  /// False for a window that sets `Left` and `Top` in `Load`, instead of standing in the middle of its owner.
  virtual bool Centered() const { return true; }
  /// The Esc key was pressed in the window.
  virtual void EscapePressed() {}
  /// The user asks to close the window by its close box. True cancels the closing.
  virtual bool QueryUnload() { return false; }
  /// The window closes.
  virtual void Unload() {}
};

} // namespace kelmio
