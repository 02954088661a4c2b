// A report-style list: columns, rows, selection.
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "controls/basic_controls.h"
#include "controls/control.h"

namespace kelmio {

struct ListColumn {
  enum class Alignment { Left, Right, Center };
  std::string heading;
  int width_twips = 0;
  Alignment alignment = Alignment::Left;
  std::string icon{}; // key of the picture beside the heading; empty for none
};

/// Pictures beside a heading that tell the order of the rows.
inline constexpr const char* kIconAscending = "UP";
inline constexpr const char* kIconDescending = "DN";

/// One row. `key` names the row for as long as the list lives: a view that shows an older state maps a
/// click by key, never by position.
struct ListRow {
  std::uint64_t key = 0;
  std::string tag;
  std::vector<std::string> cells; // the first cell is the row's own text
  bool bold = false;
  Color text_color = 0;
  bool selected = false;
};

/// Rows and columns count from 1, as users count them. User interface thread only.
/// After changing a row through `Row`, call `Changed`.
class ListView : public Control {
public:
  enum class MouseButton { Left, Right };

  Property<Color> BackColor{*this, 0xFFFFFF};

  void AddColumn(ListColumn column);
  const std::vector<ListColumn>& Columns() const { return columns_; }
  /// Nothing happens for a column that isn't there.
  void SetColumnIcon(std::size_t column, const std::string& icon);

  /// Adds a row at the end; the reference holds until the next change of the rows.
  ListRow& AddRow(std::vector<std::string> cells);
  void RemoveRow(std::size_t row);
  /// Removes every row that `goes` holds for.
  void RemoveRows(const std::function<bool(const ListRow& row)>& goes);
  void Clear();
  std::size_t RowCount() const { return rows_.size(); }
  ListRow& Row(std::size_t row) {
    ++shape_;
    return rows_.at(row - 1);
  }
  const ListRow& Row(std::size_t row) const { return rows_.at(row - 1); }
  const std::deque<ListRow>& Rows() const { return rows_; }

  /// Another number after every change but a row added at the end, so that a view of a long list that grows takes only
  /// what is new.
  std::uint64_t Shape() const { return shape_; }

  /// The row that has the focus and is selected; 0 when there is none.
  std::size_t SelectedRow() const;
  /// Selects exactly the rows of these keys; `current` gets the focus (0 for none). The view calls it.
  void SetSelection(const std::vector<std::uint64_t>& keys, std::uint64_t current);
  /// The row of a key; 0 when it is gone.
  std::size_t RowOfKey(std::uint64_t key) const;

  std::function<void(std::size_t column)> ColumnClick = [](std::size_t) {};
  std::function<void()> ItemClick = [] {};
  std::function<void()> DblClick = [] {};
  std::function<void(MouseButton)> MouseUp = [](MouseButton) {};
  std::function<void()> DeleteKey = [] {};

private:
  std::vector<ListColumn> columns_;
  std::deque<ListRow> rows_;
  std::uint64_t next_key_ = 1;
  std::uint64_t current_ = 0;
  std::uint64_t shape_ = 0;
};

} // namespace kelmio
