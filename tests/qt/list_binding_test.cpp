#include <gmock/gmock.h>

#include <QHeaderView>
#include <QMimeData>
#include <QScrollBar>
#include <QTest>

#include "qt/binder.h"
#include "qt/column_widths.h"
#include "test_form.h"

namespace kelmio {
namespace {

using testing::ElementsAre;

class ListBindingTest : public testing::Test {
protected:
  ListBindingTest() : list_(form_.lvwRows) {
    list_.AddColumn({"#", 600, ListColumn::Alignment::Left});
    list_.AddColumn({"Caller Name", 2200, ListColumn::Alignment::Right});
    Fill(3);
    window_.list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    Bind(window_, form_);
    form_.Visible = true;
    Settle();
  }

  void Fill(int rows) {
    list_.Clear();
    for (int row = 1; row <= rows; ++row)
      list_.AddRow({std::to_string(row), "Caller " + std::to_string(row)});
  }

  QModelIndex At(int row, int column = 0) const { return window_.list->model()->index(row - 1, column); }
  QVariant Data(int row, int column, int role) const { return At(row, column).data(role); }
  void Click(int row, Qt::MouseButton button = Qt::LeftButton, Qt::KeyboardModifiers keys = {}) {
    QTest::mouseClick(window_.list->viewport(), button, keys, window_.list->visualRect(At(row)).center());
    Settle();
  }
  std::vector<std::size_t> Selected() const {
    std::vector<std::size_t> rows;
    for (std::size_t row = 1; row <= list_.RowCount(); ++row)
      if (list_.Row(row).selected)
        rows.push_back(row);
    return rows;
  }

  TestForm form_;
  ListView& list_;
  TestWindow window_;
};

TEST_F(ListBindingTest, TakesNewRowsAtTheEndAndStillSeesEveryOtherChange) {
  list_.AddRow({"4", "New"});
  Settle();
  EXPECT_EQ(Data(4, 0, Qt::DisplayRole).toString(), "4");
  list_.AddRow({"5", "M\xFCller"});
  list_.Row(1).cells[1] = "Changed";
  list_.Row(1).text_color = 0x0000FF; // red
  list_.RemoveRow(2);
  list_.Changed();
  Settle();
  EXPECT_EQ(window_.list->model()->rowCount(), 4);
  EXPECT_EQ(Data(1, 1, Qt::DisplayRole).toString(), "Changed");
  EXPECT_EQ(Data(1, 1, Qt::ForegroundRole).value<QColor>(), QColor(Qt::red));
  EXPECT_FALSE(Data(2, 1, Qt::ForegroundRole).isValid()) << "the default follows the palette, light or dark";
  EXPECT_EQ(Data(4, 1, Qt::DisplayRole).toString(), QString::fromUtf8("M\xC3\xBCller"));
}

TEST_F(ListBindingTest, SelectsTensOfThousandsOfRowsWithoutWaiting) {
  constexpr int kMany = 50000; // row by row the toolkit would take many minutes
  Fill(kMany);
  std::vector<std::uint64_t> keys;
  for (const ListRow& row : list_.Rows())
    if (keys.size() != 3) // all but the fourth
      keys.push_back(row.key);
    else
      keys.push_back(0);
  list_.SetSelection(keys, keys.front());
  Settle();
  EXPECT_EQ(window_.list->selectionModel()->selectedRows().size(), kMany - 1);
  EXPECT_EQ(Selected().size(), static_cast<std::size_t>(kMany - 1));
}

TEST_F(ListBindingTest, AClickSelectsAndTellsOnce) {
  int clicks = 0;
  list_.ItemClick = [&] { ++clicks; };
  Click(2);
  Click(2); // on the row that has the focus already
  EXPECT_EQ(clicks, 2);
  Click(3, Qt::LeftButton, Qt::ControlModifier);
  EXPECT_THAT(Selected(), ElementsAre(2, 3));
  EXPECT_EQ(list_.SelectedRow(), 3U);
  QTest::keyClick(window_.list, Qt::Key_Up);
  Settle();
  EXPECT_THAT(Selected(), ElementsAre(2));
  EXPECT_EQ(clicks, 4);
}

TEST_F(ListBindingTest, TellsDoubleClickHeaderAndRightButtonWithTheSelectionSettled) {
  std::size_t opened = 0;
  std::size_t menu_row = 0;
  std::size_t column = 0;
  list_.DblClick = [&] { opened = list_.SelectedRow(); };
  list_.MouseUp = [&](ListView::MouseButton button) {
    if (button == ListView::MouseButton::Right)
      menu_row = list_.SelectedRow();
  };
  list_.ColumnClick = [&](std::size_t number) { column = number; };
  Click(1);
  QTest::mouseDClick(window_.list->viewport(), Qt::LeftButton, {}, window_.list->visualRect(At(1)).center());
  Settle();
  EXPECT_EQ(opened, 1U);
  Click(3, Qt::RightButton);
  EXPECT_EQ(menu_row, 3U);
  const QHeaderView& header = *window_.list->header();
  QTest::mouseClick(header.viewport(), Qt::LeftButton, {}, QPoint(header.sectionViewportPosition(1) + 20, 5));
  EXPECT_EQ(column, 2U);
}

TEST_F(ListBindingTest, MapsAClickByKeyWhileTheViewShowsAnOlderState) {
  list_.RemoveRow(1); // not shown yet: the click falls on the old second row
  const std::uint64_t wanted = list_.Row(1).key;
  list_.SetSelection({wanted}, wanted);
  Settle();
  EXPECT_EQ(window_.list->currentIndex().row(), 0);
  EXPECT_EQ(At(1, 1).data().toString(), "Caller 2");
  EXPECT_EQ(list_.SelectedRow(), 1U);
}

TEST_F(ListBindingTest, ARefilledListKeepsItsPlaceAndLosesItsSelection) {
  Fill(500);
  Settle();
  QScrollBar* bar = window_.list->verticalScrollBar();
  Click(1);
  bar->setValue(bar->maximum() / 2);
  const int place = bar->value();
  ASSERT_GT(place, 0);
  int clicks = 0;
  list_.ItemClick = [&] { ++clicks; };
  Fill(500);
  Settle();
  EXPECT_EQ(bar->value(), place);
  EXPECT_EQ(window_.list->selectionModel()->selectedRows().size(), 0);
  EXPECT_TRUE(Selected().empty());
  EXPECT_EQ(clicks, 0) << "filling the list is no click";
}

TEST_F(ListBindingTest, RowsAreDraggedAwayAsTextAndDeletedByKey) {
  list_.SetSelection({list_.Row(1).key, list_.Row(3).key}, list_.Row(3).key);
  Settle();
  const std::unique_ptr<QMimeData> data(
      window_.list->model()->mimeData(window_.list->selectionModel()->selectedIndexes()));
  EXPECT_EQ(data->text(), "1\tCaller 1\n3\tCaller 3");
  std::size_t deleted = 0;
  list_.DeleteKey = [&] { deleted = list_.SelectedRow(); };
  QTest::keyClick(window_.list, Qt::Key_Delete);
  Settle();
  EXPECT_EQ(deleted, 3U);
}

TEST(ColumnWidthsTest, ColumnsShareAWideListAndGiveAwaySpareRoomInANarrowOne) {
  const std::vector<ColumnWish> wishes = {{40, 20}, {160, 80}, {100, 100}};
  EXPECT_THAT(ColumnWidths(wishes, 600), ElementsAre(80, 320, 200));
  EXPECT_THAT(ColumnWidths(wishes, 250), ElementsAre(30, 120, 100)) << "half of what can be spared";
  EXPECT_THAT(ColumnWidths(wishes, 50), ElementsAre(17, 68, 85)) << "the list scrolls";
  EXPECT_THAT(ColumnWidths({{0, 0}}, 0), ElementsAre(0));
}

} // namespace
} // namespace kelmio
