// The real forms on their layouts.
#include <gmock/gmock.h>

#include <QDockWidget>
#include <QPlainTextEdit>
#include <QStatusBar>

#include "qt/binder.h"
#include "qt/form_factory.h"
#include "support/desk.h"
#include "test_form.h"

namespace kelmio {
namespace {

using testing::IsEmpty;

TEST(FormsTest, EveryControlHasItsWidget) {
  test::Desk desk;
  for (Form* form : {static_cast<Form*>(&desk.form), static_cast<Form*>(&desk.form.Output)}) {
    const std::unique_ptr<QWidget> layout = MakeLayout(form->Name());
    ASSERT_NE(layout, nullptr) << form->Name();
    EXPECT_EQ(layout->objectName().toStdString(), form->Name());
    EXPECT_THAT(Bind(*layout, *form), IsEmpty()) << form->Name();
  }
}

TEST(FormsTest, TheMainWindowComesUpWithItsStatusPane) {
  test::Desk desk;
  const std::unique_ptr<QWidget> window = MakeWindow(desk.form, desk.form.Name());
  desk.Start();
  desk.form.Visible = true;
  desk.form.Output.OnLogText("line opened");
  Settle();
  EXPECT_TRUE(window->isVisible());
  EXPECT_EQ(window->windowTitle(), "Kelmio Standard");
  EXPECT_EQ(window->size(), QSize(779, 539));
  const auto* log = window->findChild<QPlainTextEdit*>("txtOutput");
  ASSERT_NE(log, nullptr);
  EXPECT_TRUE(log->isVisible());
  EXPECT_TRUE(log->toPlainText().endsWith("line opened\n"));
  const QList<QLabel*> panels = window->findChild<QStatusBar*>("sbStatusBar")->findChildren<QLabel*>();
  ASSERT_EQ(panels.size(), 6);
  EXPECT_EQ(panels[0]->text().toStdString(), desk.Panel(1));
  EXPECT_EQ(panels[3]->text(), "0 Calls");
}

} // namespace
} // namespace kelmio
