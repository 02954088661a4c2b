#include "controls/tree_view.h"

#include <algorithm>
#include <utility>

namespace kelmio {

TreeNode* TreeView::Add(const std::string& parent_key, const std::string& key, const std::string& text, int image) {
  if (key.empty() || Find(key) != nullptr || (!parent_key.empty() && Find(parent_key) == nullptr))
    return nullptr;
  TreeNode& node = nodes_.emplace_back();
  node.parent_key = parent_key;
  node.key = key;
  node.text = text;
  node.image = image;
  Changed();
  return &node;
}

void TreeView::Clear() {
  nodes_.clear();
  selected_.clear();
  DropHighlight = "";
  Changed();
}

TreeNode* TreeView::Find(const std::string& key) {
  return const_cast<TreeNode*>(std::as_const(*this).Find(key));
}

const TreeNode* TreeView::Find(const std::string& key) const {
  if (key.empty())
    return nullptr;
  const auto found = std::find_if(nodes_.begin(), nodes_.end(), [&](const TreeNode& node) { return node.key == key; });
  return found == nodes_.end() ? nullptr : &*found;
}

void TreeView::Select(const std::string& key) {
  const std::string selected = Find(key) != nullptr ? key : "";
  if (selected == selected_)
    return;
  selected_ = selected;
  Changed();
}

} // namespace kelmio
