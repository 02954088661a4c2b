// Widths of a list's columns.
#pragma once

#include <vector>

namespace kelmio {

/// In pixels.
struct ColumnWish {
  int drawn = 0;  // as the list was drawn
  int needed = 0; // for most of its texts
};

/// The widths in a list of this width. Drawn widths are proportions: a wider list widens all columns alike. In one that
/// is too narrow for them, columns give away first what they don't need, then a little of what they do, and then the
/// list scrolls.
std::vector<int> ColumnWidths(const std::vector<ColumnWish>& wishes, int room);

} // namespace kelmio
