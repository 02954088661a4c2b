#include "qt/form_factory.h"

#include <string>

#include "qt/binder.h"
#include "qt/command_icons.h"
#include "qt/form_layouts.h" // made by CMakeLists.txt from the list of layouts

namespace kelmio {

namespace {

/// Builds a layout on the kind of window that it was drawn for.
template <class Layout, class Window> std::unique_ptr<QWidget> Build(void (Layout::*setup)(Window*)) {
  auto window = std::make_unique<Window>();
  Layout layout;
  (layout.*setup)(window.get());
  return window;
}

} // namespace

std::unique_ptr<QWidget> MakeLayout(std::string_view name) {
  LoadIcons();
#define KELMIO_LAYOUT(form)                                                                                            \
  if (name == #form)                                                                                                   \
    return Build(&Ui::form::setupUi);
  KELMIO_LAYOUTS
#undef KELMIO_LAYOUT
  return nullptr;
}

std::unique_ptr<QWidget> MakeWindow(Form& form, std::string_view name) {
  std::unique_ptr<QWidget> window = MakeLayout(name);
  if (window == nullptr) {
    qCritical("There is no layout for \"%s\"", std::string(name).c_str());
    window = std::make_unique<QWidget>();
  }
  window->setWindowIcon(ProgramIcon());
  for (const std::string& control : Bind(*window, form))
    qCritical("\"%s\" has no widget for \"%s\"", std::string(name).c_str(), control.c_str());
  return window;
}

} // namespace kelmio
