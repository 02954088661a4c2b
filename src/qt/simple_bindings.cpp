// Labels, links and buttons.
#include <QAbstractButton>
#include <QKeySequence>
#include <QLabel>

#include "qt/bindings.h"
#include "qt/link_label.h"
#include "qt/units.h"

namespace kelmio {

namespace {

class LabelBinding : public ControlBinding {
public:
  LabelBinding(QLabel& widget, Label& model)
      : ControlBinding(model, widget), widget_(widget), link_(dynamic_cast<LinkLabel*>(&widget)), model_(model) {
    widget.setTextFormat(Qt::PlainText); // a caller's name must not become markup
    if (link_ != nullptr)
      link_->on_click = [this] { RunHandler([this] { Click(); }); };
  }

protected:
  void Show() override {
    widget_.setText(ToText(model_.Caption.Get()));
    widget_.setToolTip(ToText(model_.ToolTip.Get()).toHtmlEscaped());
    widget_.setEnabled(model_.Enabled);
    widget_.setVisible(model_.Visible);
    if (link_ != nullptr)
      link_->SetLink(IsLink());
  }

private:
  bool IsLink() const { return model_.Click && model_.Enabled && !model_.Caption.Get().empty(); }

  // The model may have changed since it was shown.
  void Click() {
    if (IsLink())
      model_.Click();
  }

  QLabel& widget_;
  LinkLabel* link_; // nothing for a label that can't be clicked
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
    if (!model_.Caption.Get().empty()) // a button of a picture alone, or one whose text is its layout's
      ShowText();
    widget_.setEnabled(model_.Enabled);
    widget_.setVisible(model_.Visible);
  }

private:
  // A new text takes the layout's key away, unless it brings one of its own.
  void ShowText() {
    const QKeySequence key = widget_.shortcut();
    widget_.setText(ToText(model_.Caption.Get()));
    if (widget_.shortcut().isEmpty())
      widget_.setShortcut(key);
  }

  QAbstractButton& widget_;
  Button& model_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, Label& label) {
  auto* target = qobject_cast<QLabel*>(&widget);
  const bool fits = target != nullptr && (!label.Click || dynamic_cast<LinkLabel*>(target) != nullptr);
  return fits ? new LabelBinding(*target, label) : nullptr;
}

ControlBinding* BindControl(QWidget& widget, Button& button) {
  auto* target = qobject_cast<QAbstractButton*>(&widget);
  return target != nullptr ? new ButtonBinding(*target, button) : nullptr;
}

} // namespace kelmio
