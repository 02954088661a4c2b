// The widget of a report-style list.
#pragma once

#include <QTreeView>

namespace kelmio {

/// Rows are dragged under a small picture with their number: their own picture would hide where they are to go.
class RowList : public QTreeView {
public:
  using QTreeView::QTreeView;

protected:
  void startDrag(Qt::DropActions actions) override;
};

} // namespace kelmio
