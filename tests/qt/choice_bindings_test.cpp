// Check boxes, choices, tabs, and what a form asks of its window.
#include <gmock/gmock.h>

#include <QCheckBox>
#include <QComboBox>
#include <QTabWidget>
#include <QTest>

#include "controls/tab_control.h"
#include "messages/folder_name_window.h"
#include "qt/binder.h"
#include "test_form.h"

namespace kelmio {
namespace {

struct ChoiceForm : Form {
  CheckBox chkTones;
  ComboBox cboSource;
  TabControl TabControl1;
  TextBox txtNumber;
  frmNewMsgFolder page{[](const std::string&) { return true; }};

  void VisitControls(ControlVisitor& visitor) override {
    visitor.Visit("chkTones", chkTones);
    visitor.Visit("cboSource", cboSource);
    visitor.Visit("TabControl", TabControl1);
    visitor.Visit("txtNumber", txtNumber);
  }
};

class ChoiceBindingsTest : public testing::Test {
protected:
  ChoiceBindingsTest() {
    auto* rows = new QVBoxLayout(&window_);
    for (QWidget* widget : {static_cast<QWidget*>(check_), static_cast<QWidget*>(combo_), static_cast<QWidget*>(tabs_),
                            static_cast<QWidget*>(line_)})
      rows->addWidget(widget);
    check_->setObjectName("chkTones");
    combo_->setObjectName("cboSource");
    tabs_->setObjectName("TabControl");
    line_->setObjectName("txtNumber");
    form_.cboSource.Items = {"One", "Two"};
    form_.TabControl1.AddPage("Properties", form_.page);
    EXPECT_THAT(Bind(window_, form_), testing::IsEmpty());
    form_.Visible = true;
    Settle();
  }

  ChoiceForm form_;
  QWidget window_;
  QCheckBox* check_ = new QCheckBox;
  QComboBox* combo_ = new QComboBox;
  QTabWidget* tabs_ = new QTabWidget;
  QLineEdit* line_ = new QLineEdit;
};

TEST_F(ChoiceBindingsTest, CarriesChoicesBothWaysAndTellsOnlyTheUsersOwn) {
  int clicks = 0;
  form_.chkTones.Click = form_.cboSource.Click = [&] { ++clicks; };
  form_.chkTones.Value = true;
  form_.cboSource.ListIndex = 1;
  Settle();
  EXPECT_TRUE(check_->isChecked());
  EXPECT_EQ(combo_->currentText(), "Two");
  EXPECT_EQ(clicks, 0);

  QTest::mouseClick(check_, Qt::LeftButton, {}, QPoint(5, check_->height() / 2));
  QTest::keyClick(combo_, Qt::Key_Up);
  EXPECT_FALSE(form_.chkTones.Value);
  EXPECT_EQ(form_.cboSource.ListIndex, 0);
  EXPECT_EQ(clicks, 2);
}

TEST_F(ChoiceBindingsTest, BuildsThePageOfATabFromItsForm) {
  auto* name = tabs_->findChild<QLineEdit*>("txtName");
  ASSERT_NE(name, nullptr);
  QTest::keyClicks(name, "abc");
  EXPECT_EQ(form_.page.txtName.Text.Get(), "abc");
}

struct BareTabsForm : Form {
  TabControl SSTab1;
  void VisitControls(ControlVisitor& visitor) override { visitor.Visit("SSTab1", SSTab1); }
};

TEST(TabsBindingTest, WithoutPagesTheTabsOfTheLayoutStay) {
  for (const int tabs : {0, 2}) {
    BareTabsForm form;
    int told = 0;
    form.SSTab1.Click = [&] { ++told; };
    QWidget window;
    auto* widget = new QTabWidget(&window);
    widget->setObjectName("SSTab1");
    for (int tab = 0; tab < tabs; ++tab)
      widget->addTab(new QWidget, "Tab");
    Bind(window, form);
    form.Visible = true;
    for (const int wanted : {5, 1}) {
      form.SSTab1.Selected = wanted;
      Settle();
    }
    EXPECT_EQ(widget->count(), tabs);
    EXPECT_EQ(widget->currentIndex(), tabs == 0 ? -1 : 1);
    EXPECT_EQ(told, 0);
    widget->setCurrentIndex(0);
    EXPECT_EQ(told, tabs == 0 ? 0 : 1);
  }
}

TEST_F(ChoiceBindingsTest, HandsOnTheEnterKeyAndTheFocus) {
  int entered = 0;
  form_.txtNumber.EnterPressed = [&] { ++entered; };
  window_.activateWindow();
  form_.txtNumber.SetFocus();
  EXPECT_EQ(window_.focusWidget(), line_);
  QTest::keyClick(line_, Qt::Key_Return);
  EXPECT_EQ(entered, 1);
}

} // namespace
} // namespace kelmio
