// Check boxes, choices, tabs and progress.
#include <QCheckBox>
#include <QComboBox>
#include <QProgressBar>
#include <QTabWidget>

#include "controls/tab_control.h"
#include "qt/bindings.h"
#include "qt/form_factory.h"
#include "qt/units.h"

namespace kelmio {

namespace {

class CheckBoxBinding : public ControlBinding {
public:
  CheckBoxBinding(QCheckBox& widget, CheckBox& model) : ControlBinding(model, widget), widget_(widget), model_(model) {
    connect(&widget, &QCheckBox::clicked, this, [this](bool checked) {
      if (Write([this, checked] { model_.Value = checked; }))
        RunHandler([this] { model_.Click(); });
    });
  }

protected:
  void Show() override {
    if (!model_.Caption.Get().empty())
      widget_.setText(ToText(model_.Caption.Get()));
    widget_.setChecked(model_.Value);
    widget_.setEnabled(model_.Enabled);
  }

private:
  QCheckBox& widget_;
  CheckBox& model_;
};

class ComboBoxBinding : public ControlBinding {
public:
  ComboBoxBinding(QComboBox& widget, ComboBox& model) : ControlBinding(model, widget), widget_(widget), model_(model) {
    connect(&widget, &QComboBox::activated, this, [this](int index) {
      if (Write([this, index] { model_.ListIndex = index; }))
        RunHandler([this] { model_.Click(); });
    });
  }

protected:
  void Show() override {
    QStringList items;
    for (const std::string& item : model_.Items.Get())
      items.append(ToText(item));
    if (items != items_) {
      widget_.clear();
      widget_.addItems(items);
      items_ = items;
    }
    widget_.setCurrentIndex(model_.ListIndex);
    widget_.setEnabled(model_.Enabled);
  }

private:
  QComboBox& widget_;
  ComboBox& model_;
  QStringList items_;
};

class ProgressBinding : public ControlBinding {
public:
  ProgressBinding(QProgressBar& widget, ProgressBar& model)
      : ControlBinding(model, widget), widget_(widget), model_(model) {}

protected:
  void Show() override {
    widget_.setRange(model_.Min, model_.Max);
    widget_.setValue(model_.Value);
  }

private:
  QProgressBar& widget_;
  ProgressBar& model_;
};

class TabsBinding : public ControlBinding {
public:
  TabsBinding(QTabWidget& widget, TabControl& model) : ControlBinding(model, widget), widget_(widget), model_(model) {
    connect(&widget, &QTabWidget::currentChanged, this, [this](int index) {
      if (Write([this, index] { model_.Selected = index; }))
        RunHandler([this] { model_.Click(); });
    });
  }

protected:
  void Show() override {
    // Pages are only ever added.
    for (auto page = static_cast<std::size_t>(widget_.count()); page < model_.Pages().size(); ++page) {
      Form& form = *model_.Pages()[page].form;
      widget_.addTab(MakeWindow(form, form.Name()).release(), ToText(model_.Pages()[page].caption));
    }
    widget_.setCurrentIndex(model_.Selected);
  }

private:
  QTabWidget& widget_;
  TabControl& model_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, CheckBox& box) {
  auto* target = qobject_cast<QCheckBox*>(&widget);
  return target != nullptr ? new CheckBoxBinding(*target, box) : nullptr;
}

ControlBinding* BindControl(QWidget& widget, ComboBox& box) {
  auto* target = qobject_cast<QComboBox*>(&widget);
  return target != nullptr ? new ComboBoxBinding(*target, box) : nullptr;
}

ControlBinding* BindControl(QWidget& widget, ProgressBar& bar) {
  auto* target = qobject_cast<QProgressBar*>(&widget);
  return target != nullptr ? new ProgressBinding(*target, bar) : nullptr;
}

ControlBinding* BindControl(QWidget& widget, TabControl& tabs) {
  auto* target = qobject_cast<QTabWidget*>(&widget);
  return target != nullptr ? new TabsBinding(*target, tabs) : nullptr;
}

} // namespace kelmio
