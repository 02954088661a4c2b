#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>

#include "address_books/separate_address_books.h"
#include "address_books/shown_items.h"
#include "fakes/fake_loop.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;
using test::Shown;

struct CountingLoop : FakeLoop {
  void RunPending() override {
    ++runs;
    FakeLoop::RunPending();
  }
  int runs = 0;
};

class SeparateAddressBooksTest : public testing::Test {
protected:
  SeparateAddressBooksTest() {
    // As the program itself does; the reader must not inherit it.
    std::signal(SIGPIPE, SIG_IGN);
    setenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent", 1);
  }
  ~SeparateAddressBooksTest() override {
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);
    EXPECT_EQ(errno, ECHILD) << "A process is left";
  }

  /// A reader that is a shell script.
  std::string Script(const std::string& commands) {
    const std::string path = folder.Path() + "reader" + std::to_string(++scripts_);
    test::WriteBytes(path, "#!/bin/sh\n" + commands + "\n");
    chmod(path.c_str(), 0700);
    return path;
  }
  SeparateAddressBooks Books(const std::string& reader) { return {loop, reader, limits}; }
  /// How many contacts a reader with these commands brings; -1 when it is no address book.
  int Count(const std::string& commands) {
    const auto book = Books(Script(commands)).OpenFile("/a/file");
    return book ? static_cast<int>(book->Count()) : -1;
  }

  test::TemporaryFolder folder;
  CountingLoop loop;
  ReaderLimits limits{300ms, 300ms, 3s, 1000, 1 << 20};

private:
  int scripts_ = 0;
};

constexpr const char* kItem = R"(item() { printf 'item\0+%s\0+\0-\0+\0+\0+\0+\0+\0+\0+\0+\0+\0+\0+Land\0' "$1"; }; )";
const std::string kEnd = R"(; printf 'end\0')";

TEST_F(SeparateAddressBooksTest, BringsWhatTheReaderReads) {
  auto books = Books(Script(
      kItem + std::string(R"(test "$#" = 2 && item "$1" && printf 'alive\0' && sleep 0.1 && item "$2")") + kEnd));
  const auto book = books.OpenFile("/a b/$c");
  ASSERT_TRUE(book);
  ASSERT_EQ(book->Count(), 2U);
  EXPECT_EQ(Shown(book->Item(0)), "+file|+|-|+|+|+|+|+|+|+|+|+|+|+Land|");
  EXPECT_EQ(Shown(book->Item(1)), "+/a b/$c|+|-|+|+|+|+|+|+|+|+|+|+|+Land|");
  EXPECT_GT(loop.runs, 3);
  EXPECT_EQ(Count("true" + kEnd), 0);
}

TEST_F(SeparateAddressBooksTest, GivesUpOnAReaderThatFails) {
  EXPECT_FALSE(Books(folder.Path() + "none").OpenFile("/a"));
  EXPECT_FALSE(Books(folder.Path()).OpenDesktop());
  const std::string item = kItem;
  for (const std::string& commands :
       {item + "item one", item + "item one" + kEnd + "; exit 1", item + "item one" + kEnd + "; kill -SEGV $$",
        item + "item one" + kEnd + "; item two", std::string("echo hello"), std::string("printf 'item\\0end\\0'"),
        std::string("printf 'item\\0-more\\0'") + kEnd, std::string("printf 'end'")})
    EXPECT_EQ(Count(commands), -1) << commands;
}

TEST_F(SeparateAddressBooksTest, EndsAReaderThatHangsOrFloods) {
  const auto started = std::chrono::steady_clock::now();
  for (const char* commands :
       {"sleep 100", "exec >&-; sleep 100", "trap '' TERM; exec sleep 100", "while :; do printf 'alive\\0'; done",
        "printf 'item\\0+'; exec cat /dev/zero", "printf 'item\\0+'; exec yes"})
    EXPECT_EQ(Count(std::string("sleep() { exec /bin/sleep $1; }; ") + commands), -1) << commands;
  EXPECT_EQ(Count(kItem + std::string("while :; do item more; done")), 1000);
  EXPECT_LT(std::chrono::steady_clock::now() - started, 20s);
}

TEST_F(SeparateAddressBooksTest, AnotherReadingMayBeginMeanwhile) {
  auto books = Books(Script(kItem + std::string("item \"$2\"") + kEnd));
  std::string inner;
  loop.Post([&] { inner = *books.OpenFile("/inner")->Item(0).FullName; });
  const auto outer = books.OpenFile("/outer");
  EXPECT_EQ(inner, "/inner");
  EXPECT_EQ(outer->Item(0).FullName, "/outer");
}

TEST_F(SeparateAddressBooksTest, AsksForTheDesktopOnlyWhereThereIsABus) {
  const std::string yes = Script("test \"$*\" = probe && touch " + folder.Path() + "asked");
  EXPECT_TRUE(Books(yes).DesktopAnswers());
  EXPECT_EQ(loop.runs, 0);
  EXPECT_FALSE(Books(Script("exit 1")).DesktopAnswers());
  EXPECT_FALSE(Books(Script("exec sleep 100")).DesktopAnswers());

  std::filesystem::remove(folder.Path() + "asked");
  unsetenv("DBUS_SESSION_BUS_ADDRESS");
  setenv("XDG_RUNTIME_DIR", folder.Path().c_str(), 1);
  EXPECT_FALSE(Books(yes).DesktopAnswers());
  EXPECT_FALSE(Books(yes).OpenDesktop());
  EXPECT_FALSE(std::filesystem::exists(folder.Path() + "asked"));
  test::WriteBytes(folder.Path() + "bus", "");
  EXPECT_TRUE(Books(yes).DesktopAnswers());
}

TEST_F(SeparateAddressBooksTest, TheRealReaderReadsFilesAndRefusesOthers) {
  auto books = SeparateAddressBooks(loop, KELMIO_READER);
  const auto book = books.OpenFile(KELMIO_SAMPLES "/evolution_3.0.vcf");
  ASSERT_TRUE(book);
  ASSERT_EQ(book->Count(), 2U);
  EXPECT_EQ(book->Item(0).FullName, "Mrs. Jane Sample, PhD");
  EXPECT_EQ(book->Item(1).HomeTelephoneNumber, std::nullopt);
  EXPECT_FALSE(books.OpenFile("/bin/sh"));
  EXPECT_FALSE(books.DesktopAnswers());
  EXPECT_FALSE(books.OpenDesktop());
}

} // namespace
} // namespace kelmio
