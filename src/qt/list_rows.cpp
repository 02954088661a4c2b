#include "qt/list_rows.h"

#include <QApplication>
#include <QFont>
#include <QMimeData>

#include <algorithm>
#include <set>

#include "qt/colors.h"
#include "qt/units.h"

namespace kelmio {

namespace {

Qt::Alignment ToAlignment(ListColumn::Alignment alignment) {
  switch (alignment) {
  case ListColumn::Alignment::Right:
    return Qt::AlignRight | Qt::AlignVCenter;
  case ListColumn::Alignment::Center:
    return Qt::AlignCenter;
  case ListColumn::Alignment::Left:
    break;
  }
  return Qt::AlignLeft | Qt::AlignVCenter;
}

bool SameKey(const ListRow& one, const ListRow& other) {
  return one.key == other.key;
}

} // namespace

bool ListRows::Take(const ListView& list) {
  const auto& now = list.Rows();
  const bool same = columns_.size() == list.Columns().size() &&
                    std::equal(rows_.begin(), rows_.end(), now.begin(), now.end(), SameKey);
  if (!same)
    beginResetModel();
  columns_ = list.Columns();
  rows_.assign(now.begin(), now.end());
  if (!same)
    endResetModel();
  else if (!rows_.empty() && !columns_.empty())
    Q_EMIT dataChanged(index(0, 0), index(rowCount() - 1, columnCount() - 1));
  return same;
}

void ListRows::TakeNewRows(const ListView& list) {
  beginInsertRows({}, rowCount(), static_cast<int>(list.RowCount()) - 1);
  rows_.insert(rows_.end(), list.Rows().begin() + static_cast<std::ptrdiff_t>(rows_.size()), list.Rows().end());
  endInsertRows();
}

std::uint64_t ListRows::KeyOf(const QModelIndex& index) const {
  return checkIndex(index, CheckIndexOption::IndexIsValid) ? rows_[static_cast<std::size_t>(index.row())].key : 0;
}

QModelIndex ListRows::IndexOf(std::uint64_t key) const {
  const auto found = std::find_if(rows_.begin(), rows_.end(), [key](const ListRow& row) { return row.key == key; });
  return found == rows_.end() ? QModelIndex() : index(static_cast<int>(found - rows_.begin()), 0);
}

int ListRows::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(rows_.size());
}

int ListRows::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

QVariant ListRows::data(const QModelIndex& index, int role) const {
  if (!checkIndex(index, CheckIndexOption::IndexIsValid))
    return {};
  const ListRow& row = rows_[static_cast<std::size_t>(index.row())];
  const auto column = static_cast<std::size_t>(index.column());
  switch (role) {
  case Qt::DisplayRole:
    return column < row.cells.size() ? ToText(row.cells[column]) : QString();
  case Qt::TextAlignmentRole:
    return QVariant::fromValue(ToAlignment(columns_[column].alignment));
  case Qt::FontRole:
    if (row.bold) {
      QFont font;
      font.setBold(true);
      return font;
    }
    return {};
  case Qt::ForegroundRole:
    return row.text_color == kDefaultTextColor ? QVariant() : QVariant(TextColor(row.text_color, Palette()));
  default:
    return {};
  }
}

QVariant ListRows::headerData(int section, Qt::Orientation orientation, int role) const {
  const auto column = static_cast<std::size_t>(section);
  if (orientation != Qt::Horizontal || section < 0 || column >= columns_.size())
    return {};
  if (role == Qt::DisplayRole)
    return ToText(columns_[column].heading);
  if (role == Qt::TextAlignmentRole)
    return QVariant::fromValue(ToAlignment(columns_[column].alignment));
  return {};
}

std::pair<int, Qt::SortOrder> ListRows::SortIcon() const {
  for (std::size_t column = 0; column < columns_.size(); ++column)
    if (!columns_[column].icon.empty())
      return {static_cast<int>(column),
              columns_[column].icon == kIconAscending ? Qt::AscendingOrder : Qt::DescendingOrder};
  return {-1, Qt::AscendingOrder};
}

QPalette ListRows::Palette() const {
  const auto* view = qobject_cast<const QWidget*>(QObject::parent());
  return view != nullptr ? view->palette() : QApplication::palette();
}

Qt::ItemFlags ListRows::flags(const QModelIndex& index) const {
  return QAbstractTableModel::flags(index) | (index.isValid() ? Qt::ItemIsDragEnabled : Qt::NoItemFlags);
}

QStringList ListRows::mimeTypes() const {
  return {QStringLiteral("text/plain")};
}

QMimeData* ListRows::mimeData(const QModelIndexList& indexes) const {
  std::set<int> dragged;
  for (const QModelIndex& index : indexes)
    if (checkIndex(index, CheckIndexOption::IndexIsValid))
      dragged.insert(index.row());
  QStringList lines;
  for (const int row : dragged) {
    QStringList cells;
    for (const std::string& cell : rows_[static_cast<std::size_t>(row)].cells)
      cells.append(ToText(cell));
    lines.append(cells.join('\t'));
  }
  auto* data = new QMimeData;
  data->setText(lines.join('\n'));
  return data;
}

} // namespace kelmio
