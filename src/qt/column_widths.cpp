#include "qt/column_widths.h"

#include <algorithm>

namespace kelmio {

namespace {

/// The part of its need that a column keeps in any case.
constexpr double kLeastPart = 0.85;

} // namespace

std::vector<int> ColumnWidths(const std::vector<ColumnWish>& wishes, int room) {
  int drawn = 0;
  int needed = 0;
  for (const ColumnWish& wish : wishes) {
    drawn += wish.drawn;
    needed += std::min(wish.drawn, wish.needed);
  }
  std::vector<int> widths;
  for (const ColumnWish& wish : wishes) {
    const double need = std::min(wish.drawn, wish.needed);
    double width = wish.drawn;
    if (room >= drawn)
      width *= drawn > 0 ? static_cast<double>(room) / drawn : 1;
    else if (room >= needed)
      width = need + (wish.drawn - need) * (room - needed) / (drawn - needed);
    else
      width = need * std::max(kLeastPart, static_cast<double>(room) / needed);
    widths.push_back(static_cast<int>(width));
  }
  return widths;
}

} // namespace kelmio
