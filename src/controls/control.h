// Control models: what a form's controls are, without a toolkit.
#pragma once

#include <functional>
#include <string>
#include <utility>

namespace kelmio {

/// A control model. It tells at most one view when its state changes and never keeps that view alive.
/// User interface thread only. Forms own their controls as members; a control never moves.
class Control {
public:
  Control() = default;
  Control(const Control&) = delete;
  Control& operator=(const Control&) = delete;
  virtual ~Control() = default;

  /// Names the view to tell; an empty function detaches it.
  void SetView(std::function<void()> changed) { view_ = std::move(changed); }

  /// Moves the keyboard to the control's view; nothing happens without one.
  void SetFocus() const {
    if (focus_)
      focus_();
  }
  /// Names who moves the keyboard: the view, or a test.
  void SetFocusTaker(std::function<void()> focus) { focus_ = std::move(focus); }

  /// Tells the view that some state changed. Properties call it by themselves.
  void Changed() const {
    if (view_)
      view_();
  }

private:
  std::function<void()> view_;
  std::function<void()> focus_;
};

/// One piece of a control's state. Assigning a different value tells the control's view.
template <class T> class Property {
public:
  explicit Property(const Control& owner, T initial = {}) : owner_(owner), value_(std::move(initial)) {}
  Property(const Property&) = delete;
  Property& operator=(const Property&) = delete;

  Property& operator=(T value) {
    if (!(value == value_)) {
      value_ = std::move(value);
      owner_.Changed();
    }
    return *this;
  }
  operator const T&() const { return value_; } // NOLINT(google-explicit-constructor): reads like the value it holds
  const T& Get() const { return value_; }

private:
  const Control& owner_;
  T value_;
};

} // namespace kelmio
