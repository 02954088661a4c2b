#include <gmock/gmock.h>

#include <QDropEvent>
#include <QMimeData>
#include <QTest>

#include "qt/binder.h"
#include "test_form.h"

namespace kelmio {
namespace {

using testing::ElementsAre;

class TreeBindingTest : public testing::Test {
protected:
  TreeBindingTest() : tree_(form_.twvNodes) {
    Fill();
    tree_.MouseUp = [this](TreeView::MouseButton button, const TreeNode* node) {
      told_.push_back((button == TreeView::MouseButton::Left ? "left " : "right ") + (node ? node->key : "nothing") +
                      ", selected " + Selected());
    };
    tree_.DragOver = [this](const TreeNode* node) {
      if (node != nullptr)
        tree_.DropHighlight = node->key;
    };
    tree_.DragDrop = [this](const TreeNode* node, bool has_text) {
      told_.push_back((has_text ? "text on " : "no text on ") + (node ? node->key : "nothing"));
    };
    Bind(window_, form_);
    form_.Visible = true;
    window_.resize(900, 700);
    Settle();
  }

  void Fill() {
    tree_.Clear();
    tree_.Add("", "/m/", "Recorded Messages", 2)->expanded = true;
    tree_.Add("/m/", "/m/Inbox", "Inbox", 3);
    tree_.Add("/m/", "/m/Work/", "Work", 7);
    tree_.Add("/m/Work/", "/m/Work/2026/", "2026", 7);
  }
  std::string Selected() const { return tree_.SelectedNode() ? tree_.SelectedNode()->key : "none"; }
  QTreeWidgetItem* Item(const char* text) const {
    return window_.tree->findItems(text, Qt::MatchExactly | Qt::MatchRecursive).value(0);
  }
  QPoint Place(const char* text) const { return window_.tree->visualItemRect(Item(text)).center(); }
  void Click(QPoint place, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(window_.tree->viewport(), button, {}, place);
    Settle();
  }
  template <class Event> bool Drag(QPoint place, const QMimeData& data) {
    Event event(place, Qt::CopyAction | Qt::MoveAction, &data, Qt::LeftButton, Qt::NoModifier);
    event.ignore();
    QCoreApplication::sendEvent(window_.tree->viewport(), &event);
    Settle();
    return event.isAccepted();
  }

  TestForm form_;
  TreeView& tree_;
  TestWindow window_;
  std::vector<std::string> told_;
};

TEST_F(TreeBindingTest, OpensWhatTheSelectionLiesIn) {
  EXPECT_FALSE(Item("Work")->isExpanded());
  tree_.Select("/m/Work/2026/");
  Settle();
  EXPECT_TRUE(Item("2026")->isSelected());
  EXPECT_TRUE(Item("Work")->isExpanded()) << "what is selected can be seen";
}

TEST_F(TreeBindingTest, TellsTheButtonAndTheNodeWithTheSelectionSettled) {
  int clicks = 0;
  tree_.NodeClick = [&] { ++clicks; };
  Click(Place("Inbox"));
  Click(Place("Inbox"));
  Click(Place("Work"), Qt::RightButton);
  Click({5, window_.tree->viewport()->height() - 3});
  EXPECT_THAT(told_, ElementsAre("left /m/Inbox, selected /m/Inbox", "left /m/Inbox, selected /m/Inbox",
                                 "right /m/Work/, selected /m/Inbox", "left nothing, selected /m/Inbox"));
  EXPECT_EQ(clicks, 0) << "a click is told once";
  QTest::keyClick(window_.tree, Qt::Key_Down);
  Settle();
  EXPECT_EQ(clicks, 1);
  QTest::mousePress(window_.tree->viewport(), Qt::LeftButton, {}, Place("Inbox"));
  Settle();
  EXPECT_EQ(clicks, 1);
  QTest::mouseRelease(window_.tree->viewport(), Qt::LeftButton, {}, {5, window_.tree->viewport()->height() - 3});
  Settle();
  EXPECT_EQ(clicks, 2) << "selected, but let go beside the nodes";
}

TEST_F(TreeBindingTest, ANodeThatOnlyBecomesTheCurrentOneIsNotSelected) {
  int clicks = 0;
  tree_.NodeClick = [&] { ++clicks; };
  Fill();
  Settle();
  // As the view does by itself when it gets the focus.
  window_.tree->selectionModel()->setCurrentIndex(window_.tree->model()->index(0, 0), QItemSelectionModel::NoUpdate);
  Settle();
  EXPECT_EQ(clicks, 0);
  EXPECT_EQ(Selected(), "none");
}

TEST_F(TreeBindingTest, ARefilledTreeKeepsWhatTheUserOpenedAndLosesItsSelection) {
  Item("Work")->setExpanded(true);
  tree_.Select("/m/Inbox");
  Settle();
  Fill();
  Settle();
  EXPECT_TRUE(Item("Work")->isExpanded());
  EXPECT_EQ(Selected(), "none");
  EXPECT_TRUE(window_.tree->selectedItems().isEmpty());
}

TEST_F(TreeBindingTest, ADragOfTextIsTakenOnANodeAndNowhereElse) {
  QMimeData text;
  text.setText("rows");
  EXPECT_TRUE(Drag<QDragEnterEvent>(Place("Work"), text));
  EXPECT_EQ(tree_.DropHighlight.Get(), "/m/Work/");
  EXPECT_FALSE(Drag<QDragMoveEvent>({5, window_.tree->viewport()->height() - 3}, text));
  EXPECT_EQ(tree_.DropHighlight.Get(), "/m/Work/") << "no node under the pointer changes nothing";
  EXPECT_FALSE(Drag<QDragEnterEvent>(Place("Work"), QMimeData()));
  EXPECT_TRUE(Drag<QDragMoveEvent>(Place("Inbox"), text));
  EXPECT_TRUE(Drag<QDropEvent>(Place("Inbox"), text));
  EXPECT_THAT(told_, ElementsAre("text on /m/Inbox"));
  EXPECT_EQ(tree_.DropHighlight.Get(), "");
}

TEST_F(TreeBindingTest, EnterShowsTheFolderThatTheKeysHaveSelected) {
  tree_.Select("/m/Inbox");
  Settle();
  QTest::keyClick(window_.tree, Qt::Key_Down);
  QTest::keyClick(window_.tree, Qt::Key_Return);
  Settle();
  EXPECT_THAT(told_, ElementsAre("left /m/Work/, selected /m/Work/"));
}

} // namespace
} // namespace kelmio
