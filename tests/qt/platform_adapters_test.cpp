#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <csignal>

#include "qt/unix_signals.h"
#include "qt/xdg_auto_start.h"
#include "test_form.h"

namespace kelmio {
namespace {

using testing::HasSubstr;
using testing::Not;

class XdgAutoStartTest : public testing::Test {
protected:
  std::string Entry() const {
    QFile file(folder_ + "/kelmio.desktop");
    return file.open(QIODevice::ReadOnly) ? file.readAll().toStdString() : "";
  }

  QTemporaryDir root_;
  QString folder_ = root_.filePath("config/autostart");
  XdgAutoStart auto_start_{folder_.toStdString()};
};

TEST_F(XdgAutoStartTest, WritesReplacesAndRemovesItsEntry) {
  auto_start_.Enable("/opt/old/kelmio");
  auto_start_.Enable("/usr/bin/kelmio");
  EXPECT_THAT(Entry(), HasSubstr("[Desktop Entry]\nType=Application\nName=Kelmio\nExec=\"/usr/bin/kelmio\"\n"
                                 "TryExec=/usr/bin/kelmio\n"));
  EXPECT_THAT(Entry(), Not(HasSubstr("old")));
  EXPECT_EQ(QDir(folder_).entryList(QDir::Files).size(), 1) << "no temporary file stays";
  auto_start_.Disable();
  EXPECT_EQ(Entry(), "");
  auto_start_.Disable();
  XdgAutoStart(folder_.toStdString(), {"KELMIO_HOME=/home/a b/data"}).Enable("/usr/bin/kelmio");
  EXPECT_THAT(Entry(),
              HasSubstr("Exec=env \"KELMIO_HOME=/home/a b/data\" \"/usr/bin/kelmio\"\nTryExec=/usr/bin/kelmio\n"));
}

TEST_F(XdgAutoStartTest, QuotesWhatThePathHolds) {
  auto_start_.Enable("/home/a b/50% \"$x\" `\\/kelmio");
  // Escaped as an argument first, then as a string of the file, which doubles each backslash.
  EXPECT_THAT(Entry(), HasSubstr(R"(Exec="/home/a b/50%% \\"\\$x\\" \\`\\\\/kelmio")"));
  EXPECT_THAT(Entry(), HasSubstr("TryExec=/home/a b/50% \"$x\" `\\\\/kelmio\n"));
  auto_start_.Enable("/home/a=b/kelmio");
  EXPECT_EQ(Entry(), "") << "an Exec key can't name such a program";
}

TEST_F(XdgAutoStartTest, AFolderThatCannotBeMadeIsSilentlyNone) {
  QFile file(root_.filePath("config"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  auto_start_.Enable("/usr/bin/kelmio");
  auto_start_.Disable();
  EXPECT_EQ(Entry(), "");
}

TEST(UnixSignalsTest, SignalsArriveInTheLoopAndGetTheirOldEffectBack) {
  std::vector<int> told;
  {
    const UnixSignals signals([&](int signal) { told.push_back(signal); });
    raise(SIGTERM);
    raise(SIGHUP);
    EXPECT_TRUE(told.empty()) << "not from inside the signal handler";
    ASSERT_TRUE(WaitFor([&] { return told.size() == 2; }));
  }
  EXPECT_THAT(told, testing::ElementsAre(SIGTERM, SIGHUP));
  struct sigaction action = {};
  sigaction(SIGTERM, nullptr, &action);
  EXPECT_EQ(action.sa_handler, SIG_DFL);
}

} // namespace
} // namespace kelmio
