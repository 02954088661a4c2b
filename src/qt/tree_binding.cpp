// Trees.
#include <QDropEvent>
#include <QMimeData>
#include <QTimer>
#include <QTreeWidget>

#include <algorithm>
#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "controls/tree_view.h"
#include "qt/bindings.h"
#include "qt/command_icons.h"
#include "qt/units.h"

namespace kelmio {

namespace {

/// A drag that rests on a closed node for this long opens it.
constexpr int kOpenAfterMs = 800;

bool SameNode(const TreeNode& one, const TreeNode& other) {
  return one.key == other.key && one.parent_key == other.parent_key && one.image == other.image;
}

class TreeBinding : public ControlBinding {
public:
  TreeBinding(QTreeWidget& widget, TreeView& model)
      : ControlBinding(model, widget), widget_(widget), viewport_(widget.viewport()), model_(model),
        click_([this] { TellClick(); }) {
    widget.setHeaderHidden(true);
    widget.setColumnCount(1);
    widget.setUniformRowHeights(true);
    widget.setSelectionMode(QAbstractItemView::SingleSelection);
    widget.setEditTriggers(QAbstractItemView::NoEditTriggers);
    widget.setAcceptDrops(true);
    connect(&widget, &QTreeWidget::itemSelectionChanged, this, [this] { TakeSelection(); });
    connect(&widget, &QTreeWidget::itemExpanded, this, [this](QTreeWidgetItem* item) { TakeExpanded(*item, true); });
    connect(&widget, &QTreeWidget::itemCollapsed, this, [this](QTreeWidgetItem* item) { TakeExpanded(*item, false); });
    widget.viewport()->installEventFilter(this);
    widget.installEventFilter(this);
    open_.setSingleShot(true);
    open_.setInterval(kOpenAfterMs);
    connect(&open_, &QTimer::timeout, this, [this] {
      if (QTreeWidgetItem* item = ItemOf(model_.DropHighlight))
        item->setExpanded(true);
    });
  }

protected:
  void Show() override {
    const auto& now = model_.Nodes();
    if (std::equal(shown_.begin(), shown_.end(), now.begin(), now.end(), SameNode))
      Update();
    else
      Rebuild();
    shown_.assign(now.begin(), now.end());
    ShowSelection();
    ShowDropHighlight();
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == &widget_ && event->type() == QEvent::KeyPress) {
      // Who walks the nodes by keys has no button to release.
      pressed_ = false;
      const int key = static_cast<QKeyEvent*>(event)->key();
      if ((key == Qt::Key_Return || key == Qt::Key_Enter) && widget_.currentItem() != nullptr)
        Tell(TreeView::MouseButton::Left, KeyOf(widget_.currentItem()));
    }
    if (watched == viewport_)
      switch (event->type()) {
      case QEvent::MouseButtonPress:
        pressed_ = true;
        // A right click asks about a node; the selected one, whose messages are on show, stays.
        if (static_cast<QMouseEvent*>(event)->button() == Qt::RightButton)
          return true;
        break;
      case QEvent::MouseButtonRelease:
        pressed_ = false;
        TellMouse(*static_cast<QMouseEvent*>(event));
        break;
      case QEvent::DragEnter:
      case QEvent::DragMove:
        DragOver(*static_cast<QDragMoveEvent*>(event));
        return true;
      case QEvent::DragLeave:
        EndDrag();
        return true;
      case QEvent::Drop:
        Drop(*static_cast<QDropEvent*>(event));
        return true;
      case QEvent::ContextMenu:
        if (static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard)
          Tell(TreeView::MouseButton::Right, KeyOf(widget_.currentItem()));
        break;
      default:
        break;
      }
    return ControlBinding::eventFilter(watched, event);
  }

private:
  static std::string KeyOf(const QTreeWidgetItem* item) {
    return item != nullptr ? item->data(0, Qt::UserRole).toByteArray().toStdString() : std::string();
  }
  QTreeWidgetItem* ItemOf(const std::string& key) const {
    const auto found = items_.find(key);
    return found != items_.end() ? found->second : nullptr;
  }
  QTreeWidgetItem* ItemAt(const QPointF& place) const { return widget_.itemAt(place.toPoint()); }

  // The nodes are made anew each time the folders are read: what the user had opened stays open.
  void Rebuild() {
    widget_.clear();
    items_.clear();
    for (const TreeNode& node : model_.Nodes()) {
      QTreeWidgetItem* parent = ItemOf(node.parent_key);
      auto* item = parent != nullptr ? new QTreeWidgetItem(parent) : new QTreeWidgetItem(&widget_);
      item->setText(0, ToText(node.text));
      item->setIcon(0, TreeIcon(node.image));
      item->setData(0, Qt::UserRole, QByteArray::fromStdString(node.key));
      items_.emplace(node.key, item);
    }
    for (const TreeNode& node : model_.Nodes()) // a node opens only once it has children
      ItemOf(node.key)->setExpanded(node.expanded || opened_.count(node.key) != 0);
  }

  void Update() {
    for (std::size_t at = 0; at < shown_.size(); ++at) {
      const TreeNode& node = model_.Nodes()[at];
      QTreeWidgetItem& item = *ItemOf(node.key);
      item.setText(0, ToText(node.text));
      if (node.expanded != shown_[at].expanded)
        item.setExpanded(node.expanded);
    }
  }

  void ShowSelection() {
    const TreeNode* selected = model_.SelectedNode();
    QTreeWidgetItem* item = selected != nullptr ? ItemOf(selected->key) : nullptr;
    if (item != widget_.currentItem() || (item != nullptr && !item->isSelected()))
      widget_.setCurrentItem(item);
    if (item == nullptr)
      widget_.clearSelection();
  }

  void ShowDropHighlight() {
    QTreeWidgetItem* item = ItemOf(model_.DropHighlight);
    for (const auto& [key, other] : items_) {
      other->setBackground(0, other == item ? widget_.palette().brush(QPalette::Highlight) : QBrush());
      other->setForeground(0, other == item ? widget_.palette().brush(QPalette::HighlightedText) : QBrush());
    }
  }

  void TakeSelection() {
    // The view makes some node the current one when it gets the focus; that alone selects nothing.
    const QList<QTreeWidgetItem*> selected = widget_.selectedItems();
    const std::string key = selected.isEmpty() ? std::string() : KeyOf(selected.front());
    if (key.empty() || !Write([&] { model_.Select(key); }))
      return;
    if (pressed_)
      selected_by_press_ = true; // the release tells
    else
      click_.Request();
  }

  void TellClick() {
    if (model_.SelectedNode() != nullptr)
      RunHandler([this] { model_.NodeClick(); });
  }

  void TakeExpanded(const QTreeWidgetItem& item, bool expanded) {
    if (Showing())
      return;
    if (expanded)
      opened_.insert(KeyOf(&item));
    else
      opened_.erase(KeyOf(&item));
  }

  void TellMouse(const QMouseEvent& event) {
    QTreeWidgetItem* item = ItemAt(event.position());
    const bool on_arrow =
        item != nullptr && item->childCount() > 0 && event.position().x() < widget_.visualItemRect(item).left();
    if (event.button() == Qt::RightButton)
      Tell(TreeView::MouseButton::Right, KeyOf(item));
    else if (event.button() == Qt::LeftButton && !on_arrow) // which opens and closes, and selects nothing
      Tell(TreeView::MouseButton::Left, KeyOf(item));
    const bool clicked = item != nullptr && !on_arrow && event.button() == Qt::LeftButton;
    if (std::exchange(selected_by_press_, false) && !clicked)
      click_.Request();
  }

  // Later, when the widget has settled its selection and the model has been told of it.
  void Tell(TreeView::MouseButton button, const std::string& key) {
    QMetaObject::invokeMethod(
        this, [this, button, key] { RunHandler([&] { model_.MouseUp(button, model_.Find(key)); }); },
        Qt::QueuedConnection);
  }

  void DragOver(QDragMoveEvent& event) {
    const std::string key = KeyOf(ItemAt(event.position()));
    RunHandler([&] { model_.DragOver(model_.Find(key)); });
    if (key != hovered_) {
      hovered_ = key;
      open_.start();
    }
    if (key.empty() || !event.mimeData()->hasText()) {
      event.ignore();
      return;
    }
    event.setDropAction(event.possibleActions().testFlag(Qt::MoveAction) ? Qt::MoveAction : Qt::CopyAction);
    event.accept();
  }

  void Drop(QDropEvent& event) {
    const std::string key = KeyOf(ItemAt(event.position()));
    const bool has_text = event.mimeData()->hasText();
    event.accept();
    EndDrag();
    // The source waits for the answer; what the drop does may take its time and may rebuild both views.
    QMetaObject::invokeMethod(
        this, [this, key, has_text] { RunHandler([&] { model_.DragDrop(model_.Find(key), has_text); }); },
        Qt::QueuedConnection);
  }

  void EndDrag() {
    open_.stop();
    hovered_.clear();
    model_.DropHighlight = "";
  }

  QTreeWidget& widget_;
  QObject* viewport_; // the widget can't be asked any more while it ends
  TreeView& model_;
  Refresh click_;
  QTimer open_;
  std::vector<TreeNode> shown_;
  std::map<std::string, QTreeWidgetItem*> items_;
  std::set<std::string> opened_; // keys of the nodes that the user has opened
  std::string hovered_;
  bool pressed_ = false;           // a button is down
  bool selected_by_press_ = false; // and another node is selected since
};

} // namespace

ControlBinding* BindControl(QWidget& widget, TreeView& tree) {
  auto* target = qobject_cast<QTreeWidget*>(&widget);
  return target != nullptr ? new TreeBinding(*target, tree) : nullptr;
}

} // namespace kelmio
