// A real Evolution Data Server on a session bus of its own.
#include <gmock/gmock.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <chrono>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <thread>

#include "address_books/reader_process.h"
#include "address_books/separate_address_books.h"
#include "address_books/shown_items.h"
#include "fakes/fake_loop.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

constexpr const char* kService = "/usr/share/dbus-1/services/org.gnome.evolution.dataserver.Sources5.service";

/// Waits for the end, at most ten seconds.
int ExitCodeOf(ReaderProcess& process) {
  for (int tries = 0; tries < 1000 && !process.ExitCode(); ++tries)
    std::this_thread::sleep_for(10ms);
  return process.ExitCode().value_or(-1);
}

std::vector<pid_t> OwnChildren() {
  std::ifstream list("/proc/self/task/" + std::to_string(getpid()) + "/children");
  std::vector<pid_t> children;
  for (pid_t child = 0; list >> child;)
    children.push_back(child);
  return children;
}

/// The bus starts the services, so they become children of this process when the bus goes, and end with it.
class DesktopServiceTest : public testing::Test {
protected:
  void SetUp() override {
    if (!std::filesystem::exists(kService))
      GTEST_SKIP() << "Evolution Data Server isn't installed";
    ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0);
    for (const char* name : {"HOME", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_CACHE_HOME", "XDG_RUNTIME_DIR"})
      setenv(name, home.Path().c_str(), 1);
    // No settings of the desktop that runs the test, and no services of it.
    setenv("GSETTINGS_BACKEND", "memory", 1);
    setenv("GIO_USE_VFS", "local", 1);
    setenv("XDG_DATA_DIRS", "/usr/local/share:/usr/share", 1);
    for (const char* name : {"DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS"})
      unsetenv(name);
    // The leak checker tells the libraries' own leaks from ours by who called, and glib hides that from its quick look.
    const char* options = getenv("ASAN_OPTIONS");
    setenv("ASAN_OPTIONS", (std::string(options != nullptr ? options : "") + ":fast_unwind_on_malloc=0").c_str(), 1);
    const std::string address = "unix:path=" + home.Path() + "bus";
    bus = std::make_unique<ReaderProcess>(
        "/usr/bin/dbus-daemon",
        std::vector<std::string>{"--session", "--nofork", "--nosyslog", "--print-address", "--address=" + address});
    std::string_view told;
    ASSERT_EQ(bus->Read(10s, told), ReaderProcess::Output::Bytes) << "it tells its address once it listens";
    setenv("DBUS_SESSION_BUS_ADDRESS", address.c_str(), 1);
  }
  void TearDown() override {
    bus.reset();
    for (auto children = OwnChildren(); !children.empty(); children = OwnChildren())
      for (const pid_t child : children) {
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
      }
  }

  test::TemporaryFolder home;
  std::unique_ptr<ReaderProcess> bus;
  FakeLoop loop;
  SeparateAddressBooks books{loop, KELMIO_READER};
};

TEST_F(DesktopServiceTest, BringsTheContactsOfAllAddressBooks) {
  EXPECT_TRUE(books.DesktopAnswers());
  const auto empty = books.OpenDesktop();
  ASSERT_TRUE(empty);
  EXPECT_EQ(empty->Count(), 0U);

  const auto card = [](const std::string& lines) { return "BEGIN:VCARD\r\nVERSION:3.0\r\n" + lines + "END:VCARD"; };
  ReaderProcess filler(KELMIO_FILLER, {card("FN:Jane Sample\r\nTEL;TYPE=CELL:555\r\nORG:Sample\\, Ltd.;Sales\r\n"
                                            "ADR;TYPE=WORK:;;1 Market Street;Sampleton;SA;00001;Sampleland\r\n"),
                                       card("FN:Zoé Müller\r\nEMAIL:zoe@example.com\r\n")});
  ASSERT_EQ(ExitCodeOf(filler), 0);

  const auto book = books.OpenDesktop();
  ASSERT_TRUE(book);
  std::vector<std::string> items;
  for (std::size_t index = 0; index < book->Count(); ++index)
    items.push_back(test::Shown(book->Item(index)));
  EXPECT_THAT(items, testing::UnorderedElementsAre(
                         "+Jane Sample|+|+555|+|+|+|+|+|+Sample, Ltd.|+1 Market Street|+Sampleton|+SA|+00001|"
                         "+Sampleland|",
                         "+Zoé Müller|+|+|+zoe@example.com|+|+|+|+|+|+|+|+|+|+|"));
}

} // namespace
} // namespace kelmio
