#include "qt/binder.h"

#include <QPointer>

#include "controls/command_bars.h"
#include "controls/docking_panes.h"
#include "controls/jcForms.h"
#include "controls/list_view.h"
#include "controls/picture_box.h"
#include "controls/spectrum_view.h"
#include "controls/tree_view.h"
#include "controls/ucSlider.h"
#include "controls/web_browser.h"
#include "qt/bindings.h"
#include "qt/form_binding.h"

namespace kelmio {

namespace {

class Binder : public ControlVisitor {
public:
  explicit Binder(QWidget& window) : window_(window) {}

  void Visit(std::string_view name, Label& control) override { BindByName(name, control); }
  void Visit(std::string_view name, Button& control) override { BindByName(name, control); }
  void Visit(std::string_view name, CheckBox& control) override { BindByName(name, control); }
  void Visit(std::string_view name, ComboBox& control) override { BindByName(name, control); }
  void Visit(std::string_view name, ProgressBar& control) override { BindByName(name, control); }
  void Visit(std::string_view name, TextBox& control) override { BindByName(name, control); }
  void Visit(std::string_view name, ListView& control) override { BindByName(name, control); }
  void Visit(std::string_view name, StatusBar& control) override { BindByName(name, control); }
  void Visit(std::string_view name, CommandBars& control) override { BindByName(name, control); }
  void Visit(std::string_view name, DockingPanes& control) override { BindByName(name, control); }
  void Visit(std::string_view name, TabControl& control) override { BindByName(name, control); }
  void Visit(std::string_view name, TreeView& control) override { BindByName(name, control); }
  void Visit(std::string_view name, PictureBox& control) override { BindByName(name, control); }
  void Visit(std::string_view name, SpectrumView& control) override { BindByName(name, control); }
  void Visit(std::string_view name, ucSlider& control) override { BindByName(name, control); }
  void Visit(std::string_view name, jcForms& control) override { BindByName(name, control); }
  void Visit(std::string_view name, WebBrowser& control) override { BindByName(name, control); }

  std::vector<ControlBinding*> bindings;
  std::vector<std::string> missing;

private:
  template <class Model> void BindByName(std::string_view name, Model& control) {
    auto* widget = window_.findChild<QWidget*>(QString::fromUtf8(name.data(), static_cast<qsizetype>(name.size())));
    ControlBinding* binding = widget != nullptr ? BindControl(*widget, control) : nullptr;
    if (binding != nullptr)
      bindings.push_back(binding);
    else
      missing.emplace_back(name);
  }

  QWidget& window_;
};

} // namespace

std::vector<std::string> Bind(QWidget& window, Form& form) {
  Binder binder(window);
  form.VisitControls(binder);
  binder.bindings.push_back(new FormBinding(window, form));
  const std::vector<QPointer<ControlBinding>> all(binder.bindings.begin(), binder.bindings.end());
  for (ControlBinding* binding : binder.bindings) {
    binding->on_change = [all, binding] {
      for (const QPointer<ControlBinding>& other : all)
        if (other && other != binding)
          other->OtherChanged();
    };
    binding->show_form = [all] {
      for (const QPointer<ControlBinding>& one : all)
        if (one)
          one->ShowIfPending();
    };
  }
  // After all are bound: a pane brings widgets of its own, whose names are another form's.
  for (ControlBinding* binding : binder.bindings)
    binding->ShowNow();
  return binder.missing;
}

} // namespace kelmio
