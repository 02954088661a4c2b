#include "qt/item_actions.h"

#include <QCursor>
#include <QToolBar>

#include <algorithm>

#include "qt/command_icons.h"
#include "qt/handler_guard.h"
#include "qt/units.h"

namespace kelmio {

ItemActions::ItemActions(QWidget& surface, Execute execute, KeyText key_text)
    : surface_(surface), execute_(std::move(execute)), key_text_(std::move(key_text)),
      in_menu_(qobject_cast<QToolBar*>(&surface) == nullptr) {}

void ItemActions::Show(const std::vector<CommandItem>& items, bool rebuild) {
  if (!SameShape(nodes_, items)) {
    if (!rebuild)
      return;
    // A menu of the old items may be open, or be the one whose command runs: it goes when that is over.
    for (QAction* action : surface_.actions()) {
      surface_.removeAction(action);
      if (QMenu* menu = action->menu<QMenu*>())
        menu->deleteLater();
      action->deleteLater();
    }
    nodes_ = Build(surface_, items, true);
  }
  ShowStates(nodes_, items);
}

bool ItemActions::SameShape(const std::vector<Node>& nodes, const std::vector<CommandItem>& items) {
  return std::equal(
      nodes.begin(), nodes.end(), items.begin(), items.end(), [](const Node& node, const CommandItem& item) {
        return node.id == item.id && node.begins_group == item.begins_group && SameShape(node.nodes, item.items);
      });
}

std::vector<ItemActions::Node> ItemActions::Build(QWidget& surface, const std::vector<CommandItem>& items, bool top) {
  std::vector<Node> nodes;
  for (const CommandItem& item : items) {
    Node node;
    node.id = item.id;
    node.begins_group = item.begins_group;
    node.action = new QAction(&surface);
    if (item.begins_group) {
      auto* separator = new QAction(&surface);
      separator->setSeparator(true);
      surface.addAction(separator);
    }
    if (!item.items.empty()) {
      auto* menu = new QMenu(&surface);
      node.action->setMenu(menu);
      if (top)
        QObject::connect(menu, &QMenu::aboutToShow, menu, [this] {
          if (on_open)
            on_open();
        });
      node.nodes = Build(*menu, item.items, false);
    } else {
      node.action->setIcon(CommandIcon(item.id));
      QObject::connect(node.action, &QAction::triggered, &surface,
                       [execute = execute_, id = item.id] { RunHandler([&] { execute(id); }); });
    }
    surface.addAction(node.action);
    nodes.push_back(std::move(node));
  }
  return nodes;
}

void ItemActions::ShowStates(const std::vector<Node>& nodes, const std::vector<CommandItem>& items) const {
  for (std::size_t index = 0; index < nodes.size(); ++index) {
    const CommandItem& item = items[index];
    QAction& action = *nodes[index].action;
    QString text = ToText(item.caption);
    if (const QString keys = key_text_ && item.items.empty() ? key_text_(item.id) : QString();
        in_menu_ && !keys.isEmpty())
      text += '\t' + keys;
    action.setText(text);
    action.setEnabled(item.enabled);
    // A box that can be ticked is drawn only where there is a tick.
    action.setCheckable(item.checked);
    action.setChecked(item.checked);
    ShowStates(nodes[index].nodes, item.items);
  }
}

namespace {

class Popup : public QMenu {
public:
  Popup(QWidget* parent, ItemActions::Execute execute, ItemActions::KeyText key_text)
      : QMenu(parent), actions(*this, std::move(execute), std::move(key_text)) {
    setAttribute(Qt::WA_DeleteOnClose);
  }
  ItemActions actions;
};

} // namespace

void OpenPopup(const CommandBar& popup, QWidget* parent, ItemActions::Execute execute, ItemActions::KeyText key_text) {
  if (popup.items.empty()) // a menu without items never closes, and so would never go
    return;
  auto* menu = new Popup(parent, std::move(execute), std::move(key_text));
  menu->actions.Show(popup.items);
  menu->popup(QCursor::pos());
}

} // namespace kelmio
