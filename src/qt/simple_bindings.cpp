// Labels and buttons.
#include <QAbstractButton>
#include <QLabel>

#include "qt/bindings.h"
#include "qt/units.h"

namespace kelmio {

namespace {

class LabelBinding : public ControlBinding {
public:
  LabelBinding(QLabel& widget, Label& model) : ControlBinding(model, widget), widget_(widget), model_(model) {
    widget.setTextFormat(Qt::PlainText); // a caller's name must not become markup
  }

protected:
  void Show() override {
    widget_.setText(ToText(model_.Caption.Get()));
    widget_.setVisible(model_.Visible);
  }

private:
  QLabel& widget_;
  Label& model_;
};

class ButtonBinding : public ControlBinding {
public:
  ButtonBinding(QAbstractButton& widget, Button& model)
      : ControlBinding(model, widget), widget_(widget), model_(model) {
    connect(&widget, &QAbstractButton::clicked, this, [this] { RunHandler([this] { model_.Click(); }); });
  }

protected:
  void Show() override {
    widget_.setText(ToText(model_.Caption.Get()));
    widget_.setEnabled(model_.Enabled);
    widget_.setVisible(model_.Visible);
  }

private:
  QAbstractButton& widget_;
  Button& model_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, Label& label) {
  auto* target = qobject_cast<QLabel*>(&widget);
  return target != nullptr ? new LabelBinding(*target, label) : nullptr;
}

ControlBinding* BindControl(QWidget& widget, Button& button) {
  auto* target = qobject_cast<QAbstractButton*>(&widget);
  return target != nullptr ? new ButtonBinding(*target, button) : nullptr;
}

} // namespace kelmio
