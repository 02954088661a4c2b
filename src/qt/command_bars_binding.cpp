// Menu bar, tool bars and keys of a window.
#include <QApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QMainWindow>
#include <QMenuBar>
#include <QPointer>
#include <QShortcut>
#include <QToolBar>

#include <memory>
#include <string>
#include <vector>

#include "controls/command_bars.h"
#include "qt/bindings.h"
#include "qt/item_actions.h"
#include "qt/units.h"
#include "qt/window_layout.h"

namespace kelmio {

namespace {

constexpr int kToolIconSize = 24;

QKeySequence ToKeys(const KeyBinding& binding) {
  const int letter = Qt::Key_A + (binding.letter - 'A');
  Qt::KeyboardModifiers modifiers;
  modifiers.setFlag(Qt::ControlModifier, binding.ctrl);
  modifiers.setFlag(Qt::ShiftModifier, binding.shift);
  return QKeySequence(QKeyCombination(modifiers, static_cast<Qt::Key>(letter)));
}

/// Small captions are better than buttons behind an arrow: the largest of these parts of the usual size that lets all
/// buttons stand in the window.
void FitCaptions(QToolBar& bar, int room) {
  for (const double part : {1.0, 0.92, 0.85, 0.78}) {
    for (QAction* action : bar.actions())
      if (QWidget* button = bar.widgetForAction(action)) {
        QFont font = QApplication::font(button);
        font.setPointSizeF(font.pointSizeF() * part);
        if (font != button->font())
          button->setFont(font);
      }
    bar.layout()->invalidate();
    if (bar.orientation() == Qt::Vertical || bar.sizeHint().width() <= room)
      return;
  }
}

class CommandBarsBinding : public ControlBinding {
public:
  CommandBarsBinding(QMenuBar& menu_bar, QMainWindow& window, CommandBars& model)
      : ControlBinding(model, menu_bar), menu_bar_(menu_bar), window_(window), model_(model),
        menu_actions_(
            menu_bar, [this](int id) { Run(id); }, [this](int id) { return KeyText(id); }),
        update_([this] { RunHandler([this] { model_.Update(); }); }), fit_([this] { Fit(); }) {
    window.setContextMenuPolicy(Qt::NoContextMenu); // bars and panes are shown and hidden by commands
    menu_actions_.on_open = [this] { PrepareMenus(); };
    model.SaveState = [this] { return SaveLayout(window_); };
    model.RestoreState = [this](const std::string& state) { Restore(state); };
    model.ShowPopup = [this](const CommandBar& popup) {
      const QPointer<CommandBarsBinding> self = this;
      OpenPopup(
          popup, &window_,
          [self](int id) {
            if (self)
              self->Run(id);
          },
          [this](int id) { return KeyText(id); });
    };
    qApp->installEventFilter(this);
  }

  ~CommandBarsBinding() override {
    model_.SaveState = [] { return std::string(); };
    model_.RestoreState = [](const std::string&) {};
    model_.ShowPopup = [](const CommandBar&) {};
  }

  // The states of commands hang on other controls, such as a list's selection.
  void OtherChanged() override { update_.Request(); }

protected:
  void Show() override {
    ShowKeys();
    menu_actions_.Show(model_.MenuBar().items);
    menu_bar_.setVisible(!model_.MenuBar().items.empty());
    for (std::size_t bar = 0; bar < model_.ToolBars().size(); ++bar) {
      if (bar == tool_bars_.size())
        tool_bars_.push_back(MakeToolBar(model_.ToolBars()[bar]));
      tool_bars_[bar].actions->Show(model_.ToolBars()[bar].items);
      if (tool_bars_[bar].widget->isHidden() == model_.ToolBars()[bar].visible)
        tool_bars_[bar].widget->setVisible(model_.ToolBars()[bar].visible);
    }
    fit_.Request();
  }

  // The window's keys come before those of a text box in it.
  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == &window_ && (event->type() == QEvent::Resize || event->type() == QEvent::StyleChange))
      fit_.Request();
    if (event->type() == QEvent::ShortcutOverride && watched->isWidgetType() &&
        window_.isAncestorOf(static_cast<QWidget*>(watched))) {
      const QKeySequence pressed(static_cast<QKeyEvent*>(event)->keyCombination());
      for (const auto& shortcut : shortcuts_)
        if (shortcut->key() == pressed) {
          event->ignore();
          return true;
        }
    }
    return ControlBinding::eventFilter(watched, event);
  }

private:
  struct Bar {
    QToolBar* widget = nullptr;
    std::unique_ptr<ItemActions> actions;
  };

  Bar MakeToolBar(const CommandBar& model) {
    auto* widget = new QToolBar(ToText(model.title), &window_);
    widget->setObjectName("bar:" + ToText(model.title)); // the saved layout finds it by this name
    widget->setIconSize({kToolIconSize, kToolIconSize});
    widget->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    window_.addToolBar(widget);
    widget->hide(); // said outright: otherwise the window shows it once it is laid out
    return {widget, std::make_unique<ItemActions>(*widget, [this](int id) { Run(id); })};
  }

  void Fit() {
    for (const Bar& bar : tool_bars_)
      FitCaptions(*bar.widget, window_.width());
  }

  void ShowKeys() {
    if (shortcuts_.size() == model_.keys.size())
      return;
    shortcuts_.clear();
    for (const KeyBinding& binding : model_.keys) {
      auto shortcut = std::make_unique<QShortcut>(ToKeys(binding), &window_);
      shortcut->setAutoRepeat(false);
      connect(shortcut.get(), &QShortcut::activated, this, [this, id = binding.command] { RunByKey(id); });
      shortcuts_.push_back(std::move(shortcut));
    }
  }

  QString KeyText(int id) const {
    for (const KeyBinding& binding : model_.keys)
      if (binding.command == id)
        return ToKeys(binding).toString(QKeySequence::NativeText);
    return {};
  }

  void PrepareMenus() {
    RunHandler([this] { model_.Update(); });
    menu_actions_.Show(model_.MenuBar().items, false);
  }

  void RunByKey(int id) {
    RunHandler([this] { model_.Update(); });
    const CommandItem* item = model_.MenuBar().Find(id);
    for (CommandBar& bar : model_.ToolBars())
      if (item == nullptr)
        item = bar.Find(id);
    if (item == nullptr || item->enabled)
      Run(id);
  }

  // A button that can be ticked has ticked itself; afterwards it shows again what the model says.
  void Run(int id) {
    const QPointer<CommandBarsBinding> self = this;
    RunHandler([this, id] { model_.Execute(id); });
    if (self) {
      RequestShow();
      update_.Request();
    }
  }

  void Restore(const std::string& state) {
    show_form(); // a layout fits the window's own size
    if (!RestoreLayout(window_, state))
      return;
    for (std::size_t bar = 0; bar < tool_bars_.size(); ++bar)
      model_.ToolBars()[bar].visible = !tool_bars_[bar].widget->isHidden();
  }

  QMenuBar& menu_bar_;
  QMainWindow& window_;
  CommandBars& model_;
  ItemActions menu_actions_;
  Refresh update_;
  Refresh fit_;
  std::vector<Bar> tool_bars_;
  std::vector<std::unique_ptr<QShortcut>> shortcuts_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, CommandBars& bars) {
  auto* menu_bar = qobject_cast<QMenuBar*>(&widget);
  auto* window = qobject_cast<QMainWindow*>(widget.window());
  return menu_bar != nullptr && window != nullptr ? new CommandBarsBinding(*menu_bar, *window, bars) : nullptr;
}

} // namespace kelmio
