// Docking panes of a window, each with a form inside.
#include <QDockWidget>
#include <QEvent>
#include <QMainWindow>
#include <QVBoxLayout>

#include <map>
#include <string>

#include "controls/docking_panes.h"
#include "qt/bindings.h"
#include "qt/form_factory.h"
#include "qt/units.h"
#include "qt/window_layout.h"

namespace kelmio {

namespace {

Qt::DockWidgetArea ToArea(DockingPane::Edge edge) {
  switch (edge) {
  case DockingPane::Edge::Left:
    return Qt::LeftDockWidgetArea;
  case DockingPane::Edge::Right:
    return Qt::RightDockWidgetArea;
  case DockingPane::Edge::Bottom:
    break;
  }
  return Qt::BottomDockWidgetArea;
}

/// Holds a pane's form, and gives the pane its size at the first start.
class PaneBody : public QWidget {
public:
  PaneBody(QSize size, QWidget* parent) : QWidget(parent), size_(size) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
  }
  QSize sizeHint() const override { return size_; }

private:
  QSize size_;
};

class DockingPanesBinding : public ControlBinding {
public:
  DockingPanesBinding(QWidget& widget, QMainWindow& window, DockingPanes& model)
      : ControlBinding(model, widget), window_(window), model_(model) {
    window.setCorner(Qt::BottomLeftCorner, Qt::LeftDockWidgetArea);
    model.SaveState = [this] { return SaveLayout(window_); };
    model.RestoreState = [this](const std::string& state) { Restore(state); };
  }

  ~DockingPanesBinding() override {
    model_.SaveState = [] { return std::string(); };
    model_.RestoreState = [](const std::string&) {};
  }

protected:
  void Show() override {
    for (const DockingPane& pane : model_.Panes()) {
      Dock& dock = docks_[pane.id];
      if (dock.widget == nullptr)
        dock.widget = MakeDock(pane);
      dock.widget->setWindowTitle(ToText(pane.title));
      if (dock.form != pane.form)
        Fill(dock, pane);
      const bool visible = !pane.closed && !pane.hidden;
      if (dock.widget->isHidden() == visible)
        dock.widget->setVisible(visible);
    }
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::Close) // the pane's own close box
      for (const auto& [id, dock] : docks_)
        if (dock.widget == watched)
          TakeClosed(id, true);
    return ControlBinding::eventFilter(watched, event);
  }

private:
  struct Dock {
    QDockWidget* widget = nullptr;
    const Form* form = nullptr;
  };

  QDockWidget* MakeDock(const DockingPane& pane) {
    auto* dock = new QDockWidget(&window_);
    dock->setObjectName(QStringLiteral("pane:%1").arg(pane.id)); // the saved layout finds it by this name
    dock->setWidget(new PaneBody({pane.width, pane.height}, dock));
    dock->installEventFilter(this);
    window_.addDockWidget(ToArea(pane.edge), dock);
    // "Right of" a neighbour divides the neighbour's own place.
    if (const auto neighbour = docks_.find(pane.neighbour);
        pane.neighbour != 0 && neighbour != docks_.end() && neighbour->second.widget != nullptr)
      window_.splitDockWidget(neighbour->second.widget, dock,
                              pane.edge == DockingPane::Edge::Bottom ? Qt::Vertical : Qt::Horizontal);
    dock->hide(); // said outright: otherwise the window shows it once it is laid out
    return dock;
  }

  void Fill(Dock& dock, const DockingPane& pane) {
    QWidget* body = dock.widget->widget();
    if (QLayoutItem* old = body->layout()->takeAt(0)) {
      delete old->widget();
      delete old;
    }
    dock.form = pane.form;
    if (pane.form != nullptr)
      body->layout()->addWidget(MakeWindow(*pane.form, pane.form->Name()).release());
  }

  void TakeClosed(int id, bool closed) {
    Write([this, id, closed] {
      if (DockingPane* pane = model_.Find(id))
        pane->closed = closed;
    });
  }

  void Restore(const std::string& state) {
    show_form(); // a layout fits the window's own size
    if (!RestoreLayout(window_, state))
      return;
    for (const auto& [id, dock] : docks_)
      TakeClosed(id, dock.widget->isHidden());
  }

  QMainWindow& window_;
  DockingPanes& model_;
  std::map<int, Dock> docks_;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, DockingPanes& panes) {
  auto* window = qobject_cast<QMainWindow*>(widget.window());
  return window != nullptr ? new DockingPanesBinding(widget, *window, panes) : nullptr;
}

} // namespace kelmio
