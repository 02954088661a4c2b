#include "qt/binder.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QDockWidget>
#include <QMenu>
#include <QTest>
#include <QToolBar>

#include "qt/form_factory.h"
#include "test_form.h"

namespace kelmio {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class BinderTest : public testing::Test {
protected:
  BinderTest() {
    missing_ = Bind(*window_, form_);
    form_.Visible = true;
    Settle();
  }

  void AddBars() {
    form_.Bars.MenuBar().items = {Item(0, "&File", {Item(101, "&Open"), Item(110, "&Exit")})};
    CommandBar standard;
    standard.title = "Standard";
    standard.items = {Item(450, "On"), Item(101, "Open")};
    form_.Bars.ToolBars().push_back(standard);
    form_.Bars.keys = {{true, false, 'O', 101}};
    form_.Bars.Execute = [this](int id) { executed_.push_back(id); };
    form_.Bars.Changed();
    Settle();
  }
  QToolBar& ToolBar() { return *window_->findChild<QToolBar*>(); }
  QAction& MenuAction(int index) { return *window_->menu_bar->actions().at(0)->menu<QMenu*>()->actions().at(index); }

  TestForm form_;
  std::unique_ptr<TestWindow> window_ = std::make_unique<TestWindow>();
  std::vector<std::string> missing_;
  std::vector<int> executed_;
};

TEST_F(BinderTest, NamesTheControlsThatHaveNoFittingWidget) {
  EXPECT_THAT(missing_, IsEmpty());
  TestForm other;
  TestWindow poor;
  poor.title->setObjectName("else");
  poor.list->setObjectName("cmdGo");
  delete poor.go;
  EXPECT_THAT(Bind(poor, other), ElementsAre("lblTitle", "cmdGo", "lvwRows"));
}

TEST_F(BinderTest, ABurstOfChangesIsOneRefreshOfTheLastState) {
  int texts = 0;
  QObject::connect(window_->line, &QLineEdit::textChanged, window_.get(), [&] { ++texts; });
  form_.txtLine.Text = "one";
  form_.txtLine.Text = "two";
  form_.lblTitle.Caption = "<b>Inbox</b>";
  EXPECT_EQ(texts, 0);
  Settle();
  EXPECT_EQ(texts, 1);
  EXPECT_EQ(window_->line->text(), "two");
  EXPECT_EQ(window_->title->text(), "<b>Inbox</b>");
  EXPECT_EQ(window_->title->textFormat(), Qt::PlainText);
}

TEST_F(BinderTest, TheFormOutlivesItsWidgetsAndTakesNewOnes) {
  AddBars();
  window_.reset();
  form_.txtLine.Text = "kept";
  form_.Bars.Changed();
  EXPECT_EQ(form_.Bars.SaveState(), "");
  Settle();
  TestWindow again;
  EXPECT_THAT(Bind(again, form_), IsEmpty());
  EXPECT_EQ(again.line->text(), "kept");
}

TEST_F(BinderTest, AButtonClicksWhileEnabledAndItsTroubleStopsThere) {
  int clicks = 0;
  form_.cmdGo.Click = [&] {
    ++clicks;
    throw std::runtime_error("not the toolkit's trouble");
  };
  window_->go->click();
  form_.cmdGo.Enabled = false;
  Settle();
  window_->go->click();
  EXPECT_EQ(clicks, 1);
}

TEST_F(BinderTest, OneCommandRunsFromMenuToolBarAndKeyWhileItIsAllowed) {
  EXPECT_TRUE(window_->menu_bar->isHidden());
  AddBars();
  EXPECT_FALSE(window_->menu_bar->isHidden());
  MenuAction(0).trigger();
  ToolBar().actions().at(1)->trigger();
  QTest::keyClick(window_->page, Qt::Key_O, Qt::ControlModifier);
  EXPECT_THAT(executed_, ElementsAre(101, 101, 101));
  form_.Bars.Update = [this] { EnableMenuButton(form_.Bars, 101, false); };
  Q_EMIT window_->menu_bar->actions().at(0)->menu<QMenu*>()->aboutToShow();
  EXPECT_FALSE(MenuAction(0).isEnabled());
  QTest::keyClick(window_.get(), Qt::Key_O, Qt::ControlModifier);
  EXPECT_EQ(executed_.size(), 3U);
}

TEST_F(BinderTest, TheToolBarFollowsWhatTheOtherControlsAllow) {
  AddBars();
  form_.Bars.Update = [this] { EnableToolbarButton(form_.Bars, 101, form_.lvwRows.SelectedRow() != 0); };
  const std::uint64_t key = form_.lvwRows.AddRow({"1"}).key;
  Settle();
  EXPECT_FALSE(ToolBar().actions().at(1)->isEnabled());
  form_.lvwRows.SetSelection({key}, key);
  Settle();
  EXPECT_TRUE(ToolBar().actions().at(1)->isEnabled());
}

TEST_F(BinderTest, ATickedButtonShowsWhatTheModelSaysAndNotItsOwnToggle) {
  AddBars();
  CheckToolbarButton(form_.Bars, 450, true);
  Settle();
  QAction* on = ToolBar().actions().at(0);
  EXPECT_TRUE(on->isChecked());
  on->trigger(); // toggles itself; the logic leaves the mark as it is
  Settle();
  EXPECT_TRUE(on->isChecked());
}

TEST_F(BinderTest, APaneClosesBothWays) {
  form_.Panes.CreatePane(1, 200, 140, DockingPane::Edge::Bottom, 0);
  Settle();
  auto* dock = window_->findChild<QDockWidget*>();
  ASSERT_NE(dock, nullptr);
  dock->close();
  EXPECT_TRUE(form_.Panes.Find(1)->closed);
  form_.Panes.Find(1)->closed = false;
  form_.Panes.Changed();
  Settle();
  EXPECT_TRUE(dock->isVisible());
}

TEST_F(BinderTest, TheLayoutComesBackFromItsText) {
  AddBars();
  form_.Panes.CreatePane(1, 200, 140, DockingPane::Edge::Bottom, 0).closed = true;
  form_.Bars.ToolBars()[0].visible = false;
  form_.Bars.Changed();
  Settle();
  const std::string state = form_.Panes.SaveState();
  form_.Bars.RestoreState("no layout");
  EXPECT_FALSE(form_.Bars.ToolBars()[0].visible);

  form_.Panes.Find(1)->closed = false;
  form_.Panes.Changed();
  form_.Bars.ToolBars()[0].visible = true;
  form_.Bars.Changed();
  form_.Bars.RestoreState(state); // with both changes still to be shown
  form_.Panes.RestoreState(state);
  Settle();
  EXPECT_FALSE(form_.Bars.ToolBars()[0].visible);
  EXPECT_TRUE(form_.Panes.Find(1)->closed);
  EXPECT_TRUE(ToolBar().isHidden());
}

} // namespace
} // namespace kelmio
