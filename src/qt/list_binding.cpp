// Report-style lists.
#include <QHeaderView>
#include <QMouseEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QTreeView>

#include <algorithm>
#include <vector>

#include "controls/list_view.h"
#include "qt/bindings.h"
#include "qt/colors.h"
#include "qt/column_widths.h"
#include "qt/list_rows.h"
#include "qt/units.h"

namespace kelmio {

namespace {

/// Air above and below a row's text together, in pixels.
constexpr int kRowAir = 10;
/// Column widths are drawn for a font with characters of this width, in pixels.
constexpr double kDrawnCharacterWidth = 5.5;
/// Air left and right of a cell's text together, in pixels.
constexpr int kCellAir = 12;
/// The first rows tell what a column needs; a few long texts among them may be cut.
constexpr int kRowsMeasured = 100;
constexpr std::size_t kMostTextsPercent = 80;

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
      : ControlBinding(model, widget), widget_(widget), viewport_(widget.viewport()), model_(model),
        rows_(new ListRows(&widget)), click_([this] { TellClick(); }) {
    widget.setModel(rows_);
    widget.setItemDelegate(new RowDelegate(&widget));
    widget.setRootIsDecorated(false);
    widget.setItemsExpandable(false);
    widget.setUniformRowHeights(true);
    widget.setAllColumnsShowFocus(true);
    widget.setEditTriggers(QAbstractItemView::NoEditTriggers);
    widget.setSelectionBehavior(QAbstractItemView::SelectRows);
    widget.setDragEnabled(true);
    widget.setDragDropMode(QAbstractItemView::DragOnly);
    widget.header()->setSectionsClickable(true);
    widget.header()->setSectionsMovable(false);
    widget.header()->setStretchLastSection(false);
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
    connect(widget.header(), &QHeaderView::sectionResized, this, [this] { user_sizes_ = user_sizes_ || !sizing_; });
    widget.viewport()->installEventFilter(this);
    widget.installEventFilter(this);
  }

protected:
  void Show() override {
    SetBackColor(widget_, model_.BackColor);
    // A list that grows row by row, tens of thousands of them, is on the screen meanwhile.
    const auto shown = static_cast<std::size_t>(rows_->rowCount());
    if (shown != 0 && model_.Shape() == shape_ && model_.RowCount() > shown) {
      rows_->TakeNewRows(model_);
      return;
    }
    shape_ = model_.Shape();
    const int place = widget_.verticalScrollBar()->value();
    const int columns_before = rows_->columnCount();
    sizing_ = true; // new columns have a size before they have their size
    const bool same = rows_->Take(model_);
    sizing_ = false;
    if (rows_->columnCount() != columns_before || (!same && !user_sizes_))
      SizeColumns();
    ShowSortIcon();
    ShowSelection();
    if (!same) {
      widget_.doItemsLayout();
      widget_.verticalScrollBar()->setValue(place);
      // A list that has just been filled shows what is chosen in it.
      if (shown == 0)
        widget_.scrollTo(widget_.currentIndex());
    }
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    if (watched == &widget_ && event->type() == QEvent::KeyPress &&
        static_cast<QKeyEvent*>(event)->matches(QKeySequence::Delete)) {
      Later([this] { model_.DeleteKey(); });
      return true;
    }
    if (watched == viewport_)
      switch (event->type()) {
      case QEvent::MouseButtonPress:
        click_told_ = false;
        break;
      case QEvent::MouseButtonRelease:
        TellMouse(static_cast<QMouseEvent*>(event)->button());
        break;
      case QEvent::ContextMenu:
        if (static_cast<QContextMenuEvent*>(event)->reason() == QContextMenuEvent::Keyboard)
          TellMouse(Qt::RightButton);
        break;
      case QEvent::Resize:
        if (!user_sizes_)
          SizeColumns();
        break;
      default:
        break;
      }
    return ControlBinding::eventFilter(watched, event);
  }

private:
  void SizeColumns() {
    const int count = std::min(rows_->columnCount(), static_cast<int>(model_.Columns().size()));
    std::vector<ColumnWish> wishes;
    wishes.reserve(static_cast<std::size_t>(count));
    for (int column = 0; column < count; ++column)
      wishes.push_back(WishOf(column));
    const std::vector<int> widths = ColumnWidths(wishes, widget_.viewport()->width());
    sizing_ = true;
    for (int column = 0; column < count; ++column)
      widget_.header()->resizeSection(column, widths[static_cast<std::size_t>(column)]);
    sizing_ = false;
  }

  /// The width as drawn, for the font of this desktop, and the one that most texts of the column need.
  ColumnWish WishOf(int column) const {
    QFont bold = widget_.font(); // a row may become bold
    bold.setBold(true);
    const QFontMetrics metrics(bold);
    const ListColumn& drawn = model_.Columns()[static_cast<std::size_t>(column)];
    const double font_scale = std::max(1.0, widget_.fontMetrics().averageCharWidth() / kDrawnCharacterWidth);

    std::vector<int> texts;
    for (int row = 0; row < std::min(rows_->rowCount(), kRowsMeasured); ++row)
      texts.push_back(metrics.horizontalAdvance(rows_->index(row, column).data().toString()));
    std::sort(texts.begin(), texts.end());
    const int most = texts.empty() ? 0 : texts[texts.size() * kMostTextsPercent / 100];
    const int heading = widget_.fontMetrics().horizontalAdvance(ToText(drawn.heading));
    return {static_cast<int>(ToPixels(drawn.width_twips) * font_scale), std::max(most, heading) + kCellAir};
  }

  void ShowSortIcon() {
    const auto [column, order] = rows_->SortIcon();
    widget_.header()->setSortIndicatorShown(column >= 0);
    if (column >= 0)
      widget_.header()->setSortIndicator(column, order);
  }

  void ShowSelection() {
    QItemSelectionModel& selection = *widget_.selectionModel();
    // In runs of rows: the toolkit takes the square of the number of pieces.
    QItemSelection wanted;
    const auto& rows = rows_->Rows();
    const int last_column = std::max(0, rows_->columnCount() - 1);
    for (auto row = rows.begin(); row != rows.end();) {
      const auto first = std::find_if(row, rows.end(), [](const ListRow& each) { return each.selected; });
      row = std::find_if(first, rows.end(), [](const ListRow& each) { return !each.selected; });
      if (first != row)
        wanted.select(rows_->index(static_cast<int>(first - rows.begin()), 0),
                      rows_->index(static_cast<int>(row - rows.begin()) - 1, last_column));
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

  void TellMouse(Qt::MouseButton button) {
    if (button == Qt::LeftButton)
      Later([this] { model_.MouseUp(ListView::MouseButton::Left); });
    else if (button == Qt::RightButton)
      Later([this] { model_.MouseUp(ListView::MouseButton::Right); });
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
  QObject* viewport_; // the widget can't be asked any more while it ends
  ListView& model_;
  ListRows* rows_;
  Refresh click_;
  bool click_told_ = false;
  std::uint64_t shape_ = 0; // of the list as it was last taken in full
  bool sizing_ = false;
  bool user_sizes_ = false;
};

} // namespace

ControlBinding* BindControl(QWidget& widget, ListView& list) {
  auto* target = qobject_cast<QTreeView*>(&widget);
  return target != nullptr ? new ListBinding(*target, list) : nullptr;
}

} // namespace kelmio
