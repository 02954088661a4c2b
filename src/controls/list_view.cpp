#include "controls/list_view.h"

#include <algorithm>

namespace kelmio {

void ListView::AddColumn(ListColumn column) {
  columns_.push_back(std::move(column));
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
  rows_.erase(rows_.begin() + static_cast<std::ptrdiff_t>(row - 1));
  Changed();
}

void ListView::Clear() {
  rows_.clear();
  current_ = 0;
  Changed();
}

std::size_t ListView::SelectedRow() const {
  const std::size_t row = RowOfKey(current_);
  return row != 0 && rows_[row - 1].selected ? row : 0;
}

void ListView::SetSelection(const std::vector<std::uint64_t>& keys, std::uint64_t current) {
  for (ListRow& row : rows_)
    row.selected = std::find(keys.begin(), keys.end(), row.key) != keys.end();
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
