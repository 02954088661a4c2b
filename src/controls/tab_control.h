// Pages behind tabs, each with a form inside.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "controls/control.h"

namespace kelmio {

class Form;

/// User interface thread only. The forms outlive the control. A control without pages shows the tabs of its layout.
class TabControl : public Control {
public:
  struct Page {
    std::string caption;
    Form* form = nullptr; // a part of the window, under its own name and layout
  };

  Property<int> Selected{*this}; // from 0

  /// The user chose another tab; `Selected` is that one already.
  std::function<void()> Click = [] {};

  void AddPage(std::string caption, Form& form) {
    pages_.push_back({std::move(caption), &form});
    Changed();
  }
  const std::vector<Page>& Pages() const { return pages_; }

private:
  std::vector<Page> pages_;
};

} // namespace kelmio
