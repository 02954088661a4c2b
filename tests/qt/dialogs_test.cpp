#include "qt/qt_dialogs.h"

#include <gmock/gmock.h>

#include <QClipboard>
#include <QMessageBox>
#include <QMimeData>
#include <QTest>
#include <QTimer>

#include "core/file_drop.h"
#include "qt/binder.h"
#include "qt/form_binding.h"
#include "qt/qt_windows.h"
#include "qt/units.h"
#include "test_form.h"

namespace kelmio {
namespace {

using testing::ElementsAre;

/// Runs a step once the window of that kind is open.
template <class Window, class Step> void WhenOpen(Step step) {
  auto* poll = new QTimer(qApp);
  QObject::connect(poll, &QTimer::timeout, poll, [poll, step] {
    if (auto* window = qobject_cast<Window*>(QApplication::activeModalWidget())) {
      poll->deleteLater();
      poll->stop();
      step(*window);
    }
  });
  poll->start(5);
}

TEST(QtMessageBoxesTest, AsksInPlainTextAndEscIsTheAnswerThatChangesNothing) {
  QtMessageBoxes boxes;
  WhenOpen<QMessageBox>([](QMessageBox& box) {
    EXPECT_EQ(box.text(), "<b>Sure?</b>");
    EXPECT_EQ(box.textFormat(), Qt::PlainText);
    EXPECT_EQ(box.defaultButton(), box.button(QMessageBox::No));
    box.button(QMessageBox::Yes)->click();
  });
  EXPECT_EQ(boxes.Show("<b>Sure?</b>", "", BoxButtons::YesNoCancel, BoxIcon::Warning, 2), BoxAnswer::Yes);
  for (const auto& [buttons, answer] : {std::pair{BoxButtons::YesNoCancel, BoxAnswer::Cancel},
                                        {BoxButtons::YesNo, BoxAnswer::No},
                                        {BoxButtons::Ok, BoxAnswer::Ok}}) {
    WhenOpen<QMessageBox>([](QMessageBox& box) { QTest::keyClick(&box, Qt::Key_Escape); });
    EXPECT_EQ(boxes.Show("?", "", buttons, BoxIcon::None, 1), answer);
  }
}

TEST(QtFileClipboardTest, OffersTheFilesAsFileManagersReadThem) {
  QtFileClipboard clipboard;
  const std::vector<std::string> paths = {"/home/a b/1.wav", "/home/2.wav"};
  ASSERT_TRUE(clipboard.CopyFiles(paths));
  const QMimeData& data = *QGuiApplication::clipboard()->mimeData();
  EXPECT_THAT(data.urls(), ElementsAre(QUrl("file:///home/a%20b/1.wav"), QUrl("file:///home/2.wav")));
  EXPECT_EQ(data.data("x-special/gnome-copied-files"), "copy\nfile:///home/a%20b/1.wav\nfile:///home/2.wav");
  EXPECT_EQ(data.data("application/x-kde-cutselection"), "0");
  EXPECT_EQ(data.data(kFileDropMimeType).toStdString(),
            std::string("\x14\0\0\0", 4) + std::string(16, '\0') + std::string("/home/a b/1.wav\0/home/2.wav\0\0", 29));
  EXPECT_FALSE(clipboard.CopyFiles({}));
  EXPECT_TRUE(QGuiApplication::clipboard()->mimeData()->hasUrls()) << "left alone";
}

TEST(LinkAddressTest, OnlyWebAndMailAddressesAreLinks) {
  const auto address = [](const char* text) {
    const auto url = LinkAddress(QString::fromUtf8(text));
    return url ? url->toString().toStdString() : "none";
  };
  EXPECT_EQ(address(" www.example.com/a?b=c "), "https://www.example.com/a?b=c");
  EXPECT_EQ(address("HTTP://example.com"), "http://example.com");
  EXPECT_EQ(address("example.com:8080/x"), "https://example.com:8080/x");
  EXPECT_EQ(address("mailto:jane@example.com"), "mailto:jane@example.com");
  EXPECT_EQ(address("mailto:jane@example.com?attach=/etc/passwd"), "mailto:jane@example.com");
  for (const char* text : {"", "file:///bin/sh", "/bin/sh", "~/x.desktop", "./run.sh", "\\\\host\\share",
                           "javascript:alert(1)", "smb://host/x", "ssh:-oProxyCommand=x", "http://",
                           "https:///etc/passwd", "two words.com", "--version", "mailto:", "mailto:?to=x"})
    EXPECT_EQ(address(text), "none") << text;
}

struct NameWindow : Form {
  TextBox txtName;
  Button cmdOK;
  std::vector<std::string> told;

  NameWindow() {
    cmdOK.Click = [this] {
      told.emplace_back("ok");
      Visible = false;
    };
  }
  std::string_view Name() const override { return "frmNewMsgFolder"; }
  void VisitControls(ControlVisitor& visitor) override {
    visitor.Visit("txtName", txtName);
    visitor.Visit("cmdOK", cmdOK);
  }
  void Load() override { txtName.Text = ""; }
  void EscapePressed() override {
    told.emplace_back("esc");
    Visible = false;
  }
  void Unload() override { told.emplace_back("unload"); }
};

class QtWindowsTest : public testing::Test {
protected:
  QtWindowsTest() {
    owner_form_.Left = 3000;
    owner_form_.Top = 1500;
    owner_form_.Width = 6000;
    owner_form_.Height = 6000;
    Bind(owner_, owner_form_);
    owner_form_.Visible = true;
    Settle();
  }
  template <class Step> void Show(Step step) {
    WhenOpen<QWidget>([step](QWidget& window) { step(window); });
    windows_.ShowModal(form_, &owner_form_);
  }

  TestForm owner_form_;
  TestWindow owner_;
  NameWindow form_;
  QtWindows windows_;
};

TEST_F(QtWindowsTest, ShowsTheFormOverItsOwnerUntilItHides) {
  Show([this](QWidget& window) {
    EXPECT_EQ(window.windowModality(), Qt::ApplicationModal);
    EXPECT_LE((window.geometry().center() - owner_.frameGeometry().center()).manhattanLength(), 4);
    QTest::keyClicks(window.findChild<QLineEdit*>("txtName"), "Work");
    QTest::keyClick(window.findChild<QLineEdit*>("txtName"), Qt::Key_Return);
  });
  EXPECT_EQ(form_.txtName.Text.Get(), "Work");
  EXPECT_FALSE(form_.Visible);
  EXPECT_EQ(WindowOf(form_), nullptr);
  Show([](QWidget& window) { QTest::keyClick(window.findChild<QLineEdit*>("txtName"), Qt::Key_Escape); });
  EXPECT_EQ(form_.txtName.Text.Get(), "") << "loaded anew";
  Show([](QWidget& window) { window.close(); });
  EXPECT_THAT(form_.told, ElementsAre("ok", "esc", "unload"));
}

TEST_F(QtWindowsTest, AWindowIsOnTheScreenWhollyThoughItsOwnerIsNot) {
  const QRect screen = owner_.screen()->availableGeometry();
  owner_.move(screen.bottomRight() - QPoint(80, 40));
  Settle();
  form_.Height = ToTwips(2 * screen.height());
  form_.Width = ToTwips(300);
  Show([&](QWidget& window) {
    EXPECT_TRUE(screen.contains(window.frameGeometry()));
    form_.Visible = false;
  });
}

TEST_F(QtWindowsTest, AWindowThatIsShownAlreadyIsNotShownTwice) {
  int rounds = 0;
  Show([&](QWidget& window) {
    ++rounds;
    windows_.ShowModal(form_, nullptr);
    NameWindow second;
    windows_.ShowModal(second, nullptr);
    EXPECT_FALSE(second.Visible);
    EXPECT_TRUE(window.isVisible());
    form_.Visible = false;
  });
  EXPECT_EQ(rounds, 1);
}

TEST_F(QtWindowsTest, AFormThatHidesBeforeItIsSeenReturnsAtOnce) {
  QMetaObject::invokeMethod(
      qApp, [this] { form_.Visible = false; }, Qt::QueuedConnection);
  windows_.ShowModal(form_, &owner_form_);
  EXPECT_FALSE(form_.Visible);
}

TEST(FilePickerTest, ReadsFiltersAndLeavesOutWhatHasNoCounterpart) {
  EXPECT_EQ(NameFilters("Wave Files (*.wav)|*.wav;|All Files (*.*)|*.*"),
            (QStringList{"Wave Files (*.wav *.WAV)", "All Files (*)"}));
  // Entries that run into one another stay what they are, and the dialog still takes them.
  const QStringList filters = NameFilters("Images (*.gif)|*.gif;*.jpg|GIF Files (*.gif)|*.gifAll Files (*.*)|*.*");
  ASSERT_EQ(filters.size(), 2);
  EXPECT_EQ(filters[0], "Images (*.gif *.GIF *.jpg *.JPG)");
  EXPECT_TRUE(filters[1].startsWith("GIF Files ("));
}

} // namespace
} // namespace kelmio
