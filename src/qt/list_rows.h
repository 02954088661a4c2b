// A list's rows as the toolkit's table model.
#pragma once

#include <QAbstractTableModel>
#include <QPalette>

#include <cstdint>
#include <utility>
#include <vector>

#include "controls/list_view.h"

namespace kelmio {

/// A snapshot of a ListView: the widget never reaches into rows that the logic may be changing. Rows and columns
/// count from 0 here, as the toolkit counts.
class ListRows : public QAbstractTableModel {
public:
  using QAbstractTableModel::QAbstractTableModel;

  /// Takes over the list's present state. The same rows in the same order keep the widget's selection and place;
  /// otherwise the model is reset, and false comes back.
  bool Take(const ListView& list);
  /// Takes only the rows at the end that are new; the others must be as they were taken.
  void TakeNewRows(const ListView& list);

  /// 0 for a row that isn't there.
  std::uint64_t KeyOf(const QModelIndex& index) const;
  /// An invalid index for a key that is gone.
  QModelIndex IndexOf(std::uint64_t key) const;
  const std::vector<ListRow>& Rows() const { return rows_; }

  /// The column that bears a sort icon, -1 for none.
  std::pair<int, Qt::SortOrder> SortIcon() const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

  // Rows can be dragged away; what is offered is their text, a line a row.
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  QStringList mimeTypes() const override;
  QMimeData* mimeData(const QModelIndexList& indexes) const override;
  Qt::DropActions supportedDragActions() const override { return Qt::CopyAction | Qt::MoveAction; }

private:
  QPalette Palette() const; // of the view that is the model's parent

  std::vector<ListColumn> columns_;
  std::vector<ListRow> rows_;
};

} // namespace kelmio
