// Windows in the program's own frame, and the pages of the help.
#include <gmock/gmock.h>

#include <QMenu>
#include <QTest>
#include <QTextBrowser>
#include <QToolButton>

#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "qt/form_factory.h"
#include "qt/frame_widget.h"
#include "qt/qt_windows.h"
#include "shell/frmHelp.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"
#include "test_form.h"

namespace kelmio {
namespace {

struct FrameBindingTest : testing::Test {
  FakeDesktop desktop;
  FakeLinkOpener links;
  FakeLoop loop;
  FakeMessageBoxes boxes;
  test::TemporaryFolder home;
  const ErrorLog::House errors{loop, boxes, home.Path(), "Kelmio Standard", "1"};
  QtWindows windows;

  /// Shows the manual's own copy beside the others.
  std::shared_ptr<frmHelp> ShowHelp(const std::string& page) {
    auto help = std::make_shared<frmHelp>(frmHelp::House{desktop, links, errors, page, 0});
    windows.Show(help, Activation::Takes);
    Settle();
    return help;
  }
  template <class Widget> static Widget* Find(const char* name) {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->isVisible())
        if (auto* found = window->findChild<Widget*>(name))
          return found;
    return nullptr;
  }
};

TEST_F(FrameBindingTest, TheFrameMovesSizesAndMaximisesItsWindow) {
  const auto help = ShowHelp("qrc:/manual/Help.html");
  auto* frame = Find<FrameWidget>("jcForms1");
  ASSERT_NE(frame, nullptr);
  QWidget* window = frame->window();
  const auto drag = [&](QPoint from, QPoint way) {
    const auto send = [&](QEvent::Type type, QPoint place, Qt::MouseButtons held) {
      QMouseEvent event(type, place, frame->mapToGlobal(place),
                        type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton, held, {});
      QCoreApplication::sendEvent(frame, &event);
    };
    const QPoint held_to = frame->mapToGlobal(from) + way;
    send(QEvent::MouseButtonPress, from, Qt::LeftButton);
    send(QEvent::MouseMove, frame->mapFromGlobal(held_to), Qt::LeftButton);
    send(QEvent::MouseButtonRelease, frame->mapFromGlobal(held_to), Qt::NoButton);
    Settle();
  };
  const QRect before = window->geometry();
  drag({300, 8}, {40, 25});
  EXPECT_EQ(window->geometry(), before.translated(40, 25));
  drag({window->width() - 2, window->height() - 2}, {-30, -20});
  EXPECT_EQ(window->size(), before.size() - QSize(30, 20));
  QTest::mouseDClick(frame, Qt::LeftButton, {}, {300, 8});
  Settle();
  EXPECT_TRUE(window->isMaximized());
  EXPECT_EQ(help->State, WindowState::Maximized);
  EXPECT_EQ(window->layout()->contentsMargins().left(), 0);

  QContextMenuEvent ask(QContextMenuEvent::Mouse, {300, 8}, frame->mapToGlobal(QPoint(300, 8)));
  QCoreApplication::sendEvent(frame, &ask);
  auto* menu = frame->findChild<QMenu*>();
  ASSERT_NE(menu, nullptr);
  menu->actions()[jcForms::kClose]->trigger();
  Settle();
  EXPECT_FALSE(help->Visible);
}

TEST_F(FrameBindingTest, TheBrowserFollowsLinksAndButtons) {
  test::WriteBytes(home.Path() + "a.html", "<title>First</title><p><a href='b.html#there'>next</a></p>");
  test::WriteBytes(home.Path() + "b.html", "<title>Second</title><p>Two</p><a name='there'></a>");
  const auto help = ShowHelp("file://" + home.Path() + "a.html");
  auto* page = Find<QTextBrowser>("brwHelp");
  ASSERT_NE(page, nullptr);
  EXPECT_EQ(page->window()->windowTitle(), "First");
  Q_EMIT page->anchorClicked(QUrl("b.html#there"));
  Settle();
  EXPECT_EQ(page->window()->windowTitle(), "Second");
  auto* back = Find<QToolButton>("cmdBack");
  back->click();
  Settle();
  EXPECT_EQ(page->window()->windowTitle(), "First");
  test::WriteBytes(home.Path() + "a.html", "<title>Changed</title><p>new</p>");
  EXPECT_EQ(Find<QToolButton>("cmdRefresh")->shortcut(), QKeySequence(Qt::Key_F5)) << "the key of the layout";
  Find<QToolButton>("cmdRefresh")->click();
  Settle();
  EXPECT_EQ(page->toPlainText(), "new");
  Q_EMIT page->anchorClicked(QUrl("https://example.org/"));
  EXPECT_EQ(links.requests.back().file, "https://example.org/");
  QTest::keyClick(page, Qt::Key_Escape);
  Settle();
  EXPECT_FALSE(help->Visible);
}

TEST_F(FrameBindingTest, TheManualInsideTheProgramIsWhole) {
  const auto help = ShowHelp("qrc:/manual/Help.html");
  auto* page = Find<QTextBrowser>("brwHelp");
  EXPECT_GT(page->toPlainText().size(), 5000);
  EXPECT_FALSE(page->loadResource(QTextDocument::ImageResource, QUrl("../icons/403.svg")).value<QImage>().isNull());
  const QString sheet = page->loadResource(QTextDocument::StyleSheetResource, QUrl("Help.css")).toString();
  EXPECT_TRUE(sheet.contains("h1 {"));
  EXPECT_FALSE(sheet.contains("color: palette("));
}

} // namespace
} // namespace kelmio
