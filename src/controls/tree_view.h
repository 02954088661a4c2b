// A tree of nodes, each with a text, a key and a tag.
#pragma once

#include <cstddef>
#include <deque>
#include <functional>
#include <string>

#include "controls/control.h"
#include "controls/list_view.h"

namespace kelmio {

/// One node. `key` names it; no two nodes of a tree have the same.
struct TreeNode {
  std::string parent_key; // empty for a node at the top
  std::string key;
  std::string text;
  std::string tag;
  int image = 0;
  bool expanded = false;
};

/// User interface thread only. Nodes stand in the order in which they were added, children below their parent.
class TreeView : public Control {
public:
  using MouseButton = ListView::MouseButton;

  /// Adds a node below the node of `parent_key`, or at the top when that is empty. Nothing, and no change, when
  /// there is no such parent or the key is there already. The pointer holds until `Clear`.
  TreeNode* Add(const std::string& parent_key, const std::string& key, const std::string& text, int image);
  void Clear();
  const std::deque<TreeNode>& Nodes() const { return nodes_; }
  /// Nothing when there is no such node.
  TreeNode* Find(const std::string& key);
  const TreeNode* Find(const std::string& key) const;

  /// The selected node; nothing when none is.
  const TreeNode* SelectedNode() const { return Find(selected_); }
  /// Selects the node of that key, or none. The view calls it too, before it tells the mouse event.
  void Select(const std::string& key);

  /// Key of the node that a drag hovers over; empty for none.
  Property<std::string> DropHighlight{*this};

  /// The mouse button was released; the node under the pointer, or nothing.
  std::function<void(MouseButton, const TreeNode*)> MouseUp = [](MouseButton, const TreeNode*) {};
  /// The user selected another node without a click that `MouseUp` tells: by keys, or by a press that was let go beside
  /// the nodes.
  std::function<void()> NodeClick = [] {};
  /// A drag hovers over a node; nothing beside the nodes.
  std::function<void(const TreeNode*)> DragOver = [](const TreeNode*) {};
  /// A drag was dropped; whether it offers plain text.
  std::function<void(const TreeNode*, bool has_text)> DragDrop = [](const TreeNode*, bool) {};

private:
  std::deque<TreeNode> nodes_;
  std::string selected_;
};

} // namespace kelmio
