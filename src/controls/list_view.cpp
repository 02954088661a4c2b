#include "controls/list_view.h"

#include <algorithm>
#include <unordered_set>

namespace kelmio {

void ListView::AddColumn(ListColumn column) {
  ++shape_;
  columns_.push_back(std::move(column));
  Changed();
}

void ListView::SetColumnIcon(std::size_t column, const std::string& icon) {
  if (column < 1 || column > columns_.size() || columns_[column - 1].icon == icon)
    return;
  ++shape_;
  columns_[column - 1].icon = icon;
  Changed();
}

ListRow& ListView::AddRow(std::vector<std::string> cells) {
  ListRow& row = rows_.emplace_back();
  row.key = next_key_++;
  row.cells = std::move(cells);
  Changed();
  return row;
}

void ListView::RemoveRow(std::size_t row) {
  if (row < 1 || row > rows_.size())
    return;
  ++shape_;
  rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(row - 1));
  Changed();
}

void ListView::RemoveRows(const std::function<bool(const ListRow& row)>& goes) {
  ++shape_;
  std::erase_if(rows_, goes);
  Changed();
}

void ListView::Clear() {
  ++shape_;
  rows_.clear();
  current_ = 0;
  Changed();
}

std::size_t ListView::SelectedRow() const {
  const std::size_t row = RowOfKey(current_);
  return row != 0 && rows_[row - 1].selected ? row : 0;
}

void ListView::SetSelection(const std::vector<std::uint64_t>& keys, std::uint64_t current) {
  ++shape_;
  const std::unordered_set<std::uint64_t> selected(keys.begin(), keys.end());
  for (ListRow& row : rows_)
    row.selected = selected.contains(row.key);
  current_ = current;
  Changed();
}

std::size_t ListView::RowOfKey(std::uint64_t key) const {
  if (key == 0)
    return 0;
  const auto found = std::find_if(rows_.begin(), rows_.end(), [key](const ListRow& row) { return row.key == key; });
  return found == rows_.end() ? 0 : static_cast<std::size_t>(found - rows_.begin()) + 1;
}

} // namespace kelmio
