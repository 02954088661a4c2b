// Report-style lists.
#include <QHeaderView>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTreeView>

#include <algorithm>

#include "controls/list_view.h"
#include "qt/bindings.h"
#include "qt/colors.h"
#include "qt/list_rows.h"
#include "qt/units.h"

namespace kelmio {

namespace {

/// Air above and below a row's text together, in pixels.
constexpr int kRowAir = 10;

/// Roomy rows, and a selection without the box around its one focused cell.
class RowDelegate : public QStyledItemDelegate {
public:
  using QStyledItemDelegate::QStyledItemDelegate;

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override {
    const QSize text = QStyledItemDelegate::sizeHint(option, index);
    return {text.width(), option.fontMetrics.height() + kRowAir};
  }

protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    option->state &= ~QStyle::State_HasFocus;
  }
};

class ListBinding : public ControlBinding {
public:
  ListBinding(QTreeView& widget, ListView& model)
      : ControlBinding(model, widget), widget_(widget), model_(model), rows_(new ListRows(&widget)),
        click_([this] { TellClick(); }) {
    widget.setModel(rows_);
    widget.setItemDelegate(new RowDelegate(&widget));
    widget.setRootIsDecorated(false);
    widget.setItemsExpandable(false);
    widget.setUniformRowHeights(true);
    widget.setAllColumnsShowFocus(true);
    widget.setEditTriggers(QAbstractItemView::NoEditTriggers);
    widget.setSelectionBehavior(QAbstractItemView::SelectRows);
    widget.header()->setSectionsClickable(true);
    widget.header()->setSectionsMovable(false);
    widget.header()->setHighlightSections(false);

    connect(widget.selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] { TakeSelection(); });
    connect(widget.selectionModel(), &QItemSelectionModel::currentChanged, this, [this] {
      if (TakeSelection())
        click_.Request();
    });
    connect(&widget, &QTreeView::clicked, this, [this] {
      // A press that moved the focus has told its click already.
      if (!click_told_)
        click_.Request();
    });
    connect(&widget, &QTreeView::doubleClicked, this, [this] { Later([this] { model_.DblClick(); }); });
    connect(widget.header(), &QHeaderView::sectionClicked, this, [this](int section) {
      RunHandler([this, section] { model_.ColumnClick(static_cast<std::size_t>(section) + 1); });
    });
    widget.viewport()->installEventFilter(this);
  }

protected:
  void Show() override {
    SetBackColor(widget_, model_.BackColor);
    const int place = widget_.verticalScrollBar()->value();
    const bool had_columns = rows_->columnCount() > 0;
    const bool same = rows_->Take(model_);
    if (!had_columns || columns_shown_ != model_.Columns().size())
      ShowColumns();
    ShowSelection();
    if (!same) {
      widget_.doItemsLayout();
      widget_.verticalScrollBar()->setValue(place);
    }
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (event->type() == QEvent::MouseButtonPress)
      click_told_ = false;
    if (event->type() == QEvent::MouseButtonRelease) {
      const Qt::MouseButton button = static_cast<QMouseEvent*>(event)->button();
      if (button == Qt::LeftButton || button == Qt::RightButton) {
        const auto told = button == Qt::LeftButton ? ListView::MouseButton::Left : ListView::MouseButton::Right;
        Later([this, told] { model_.MouseUp(told); });
      }
    }
    return ControlBinding::eventFilter(watched, event);
  }

private:
  void ShowColumns() {
    columns_shown_ = model_.Columns().size();
    for (std::size_t column = 0; column < columns_shown_; ++column)
      widget_.header()->resizeSection(static_cast<int>(column), ToPixels(model_.Columns()[column].width_twips));
  }

  void ShowSelection() {
    QItemSelectionModel& selection = *widget_.selectionModel();
    QItemSelection wanted;
    for (std::size_t row = 0; row < rows_->Rows().size(); ++row)
      if (rows_->Rows()[row].selected) {
        const int at = static_cast<int>(row);
        wanted.select(rows_->index(at, 0), rows_->index(at, std::max(0, rows_->columnCount() - 1)));
      }
    selection.select(wanted, QItemSelectionModel::ClearAndSelect);
    if (const std::size_t current = model_.SelectedRow(); current != 0)
      selection.setCurrentIndex(rows_->index(static_cast<int>(current) - 1, 0), QItemSelectionModel::NoUpdate);
  }

  bool TakeSelection() {
    return Write([this] {
      std::vector<std::uint64_t> keys;
      for (const QModelIndex& index : widget_.selectionModel()->selectedRows())
        keys.push_back(rows_->KeyOf(index));
      model_.SetSelection(keys, rows_->KeyOf(widget_.currentIndex()));
    });
  }

  void TellClick() {
    click_told_ = true;
    if (model_.SelectedRow() != 0)
      RunHandler([this] { model_.ItemClick(); });
  }

  // The widget settles its selection first: it sees an event after this binding does.
  template <class Handler> void Later(Handler handler) {
    QMetaObject::invokeMethod(
        this, [handler] { RunHandler(handler); }, Qt::QueuedConnection);
  }

  QTreeView& widget_;
  ListView& model_;
  ListRows* rows_;
  Refresh click_;
  std::size_t columns_shown_ = 0;
  bool click_told_ = false;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, ListView& list) {
  auto* target = qobject_cast<QTreeView*>(&widget);
  return target != nullptr ? new ListBinding(*target, list) : nullptr;
}

} // namespace kelmio
