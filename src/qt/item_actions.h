// Menus and buttons made from command items.
#pragma once

#include <QAction>
#include <QMenu>
#include <QWidget>

#include <functional>
#include <memory>
#include <vector>

#include "controls/command_bars.h"

namespace kelmio {

/// The actions of one surface: a menu bar, a tool bar or a popup. They are the surface's children.
class ItemActions {
public:
  using Execute = std::function<void(int id)>;
  /// The text shown behind a caption for the keys of a command; may be empty.
  using KeyText = std::function<QString(int id)>;

  ItemActions(QWidget& surface, Execute execute, KeyText key_text = {});

  /// Brings captions and states up to date, and builds everything anew when other items stand there.
  /// `rebuild` false leaves the items themselves alone, as a menu that is opening needs it.
  void Show(const std::vector<CommandItem>& items, bool rebuild = true);

  /// Called before a menu of the surface opens.
  std::function<void()> on_open;

private:
  struct Node {
    int id = 0;
    bool begins_group = false;
    QAction* action = nullptr;
    std::vector<Node> nodes;
  };

  static bool SameShape(const std::vector<Node>& nodes, const std::vector<CommandItem>& items);
  std::vector<Node> Build(QWidget& surface, const std::vector<CommandItem>& items, bool top);
  void ShowStates(const std::vector<Node>& nodes, const std::vector<CommandItem>& items) const;

  QWidget& surface_;
  Execute execute_;
  KeyText key_text_;
  bool in_menu_ = false;
  std::vector<Node> nodes_;
};

/// Opens a popup of these items at the pointer; it deletes itself when it closes. Nothing happens without items.
void OpenPopup(const CommandBar& popup, QWidget* parent, ItemActions::Execute execute,
               ItemActions::KeyText key_text = {});

} // namespace kelmio
