#include "core/store_file.h"

#include <gmock/gmock.h>

#include <csignal>

#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include "core/ini_document.h"
#include "core/mIni.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;
using test::BytesOf;
using test::NamesIn;
using test::WriteBytes;
using testing::ElementsAre;
using testing::UnorderedElementsAre;

// Runs `work` in a process of its own, as another copy of the program.
template <class Work> pid_t OtherCopy(Work work) {
  const pid_t child = ::fork();
  if (child == 0)
    ::_exit(work() ? 0 : 1);
  return child;
}

bool EndedWell(pid_t child) {
  int status = 0;
  return ::waitpid(child, &status, 0) == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

class StoreFile : public testing::Test {
protected:
  test::TemporaryFolder folder;
  std::string file = folder.Path() + "Store.ini";
};

TEST_F(StoreFile, TwoCopiesNeitherTearAFileNorLoseAKey) {
  constexpr int kWrites = 60;
  const auto writer = [&](const std::string& name) {
    return [&, name] {
      for (int i = 0; i < kWrites; ++i)
        if (!mIni::IniWrite("shared", name + std::to_string(i), std::string(500, name[0]), file))
          return false;
      return true;
    };
  };
  const pid_t first = OtherCopy(writer("a"));
  const pid_t second = OtherCopy(writer("b"));
  // Whatever moment is read, the file is whole: it ends with a line end and has no half value.
  for (int i = 0; i < 200; ++i) {
    const IniDocument seen = IniDocument::Load(file);
    for (const std::string& key : seen.SectionKeys("shared"))
      ASSERT_EQ(seen.Read("shared", key), std::string(500, key[0]));
  }
  EXPECT_TRUE(EndedWell(first));
  EXPECT_TRUE(EndedWell(second));
  EXPECT_EQ(mIni::IniSectionKeys("shared", file).size(), 2U * kWrites);
  EXPECT_THAT(NamesIn(folder.Path()), ElementsAre("Store.ini"));
}

TEST_F(StoreFile, AFullDiskLeavesTheOldFileWholeAndNoRemains) {
  const std::string old = "[a]\nk=1\n";
  WriteBytes(file, old);
  const std::string large(100000, 'x');
  const std::string source = folder.Path() + "Large.wav";
  WriteBytes(source, large);
  const pid_t child = OtherCopy([&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{50000, 50000};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    const bool written = mIni::IniWrite("a", "l", large, file);
    const bool copied = CopyFileWhole(source, folder.Path() + "copy", false);
    return !written && !copied;
  });
  EXPECT_TRUE(EndedWell(child));
  EXPECT_EQ(BytesOf(file), old);
  EXPECT_THAT(NamesIn(folder.Path()), UnorderedElementsAre("Store.ini", "Large.wav"));
}

TEST_F(StoreFile, AFileThatMayNotBeWrittenStays) {
  if (::geteuid() == 0)
    GTEST_SKIP() << "needs a user who isn't root";
  WriteBytes(file, "[a]\nk=1\n");
  fs::permissions(file, fs::perms::owner_read);
  EXPECT_FALSE(mIni::IniWrite("a", "k", "2", file));
  EXPECT_EQ(mIni::IniRead("a", "k", file), "1");
}

TEST_F(StoreFile, AFileThatCannotBeReadIsNotWrittenOver) {
  fs::create_directory(file);
  EXPECT_FALSE(mIni::IniWrite("a", "k", "1", file));
  EXPECT_FALSE(ReadStoreFile(file).has_value());
  EXPECT_TRUE(fs::is_directory(file));
}

TEST_F(StoreFile, KeepsTheModeAndTheLink) {
  const std::string real = folder.Path() + "elsewhere.ini";
  WriteBytes(real, "[a]\nk=1\n");
  fs::permissions(real, fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
  fs::create_symlink("elsewhere.ini", file);
  EXPECT_TRUE(mIni::IniWrite("a", "k", "2", file));
  EXPECT_TRUE(fs::is_symlink(file));
  EXPECT_EQ(BytesOf(real), "[a]\nk=2\n");
  EXPECT_EQ(fs::status(real).permissions(), fs::perms::owner_read | fs::perms::owner_write | fs::perms::others_read);
}

TEST_F(StoreFile, ClearsAwayWhatACrashHasLeft) {
  WriteBytes(folder.Path() + ".Store.ini.tmp", "half a file");
  EXPECT_TRUE(mIni::IniWrite("a", "k", "1", file));
  EXPECT_THAT(NamesIn(folder.Path()), ElementsAre("Store.ini"));
}

TEST_F(StoreFile, CopiesAppearWholeWithTheirTime) {
  const std::string target = folder.Path() + "copy";
  WriteBytes(file, std::string(200000, 'w'));
  fs::last_write_time(file, fs::last_write_time(file) - std::chrono::hours(5));
  EXPECT_TRUE(CopyFileWhole(file, target, true));
  EXPECT_EQ(BytesOf(target), BytesOf(file));
  EXPECT_EQ(fs::last_write_time(target), fs::last_write_time(file));
  EXPECT_FALSE(CopyFileWhole(file, target, true));
  EXPECT_TRUE(CopyFileWhole(file, target, false));
  EXPECT_FALSE(CopyFileWhole(file, file, false));
  EXPECT_FALSE(CopyFileWhole(folder.Path() + "none", target, false));
  EXPECT_EQ(NamesIn(folder.Path()).size(), 2U);
}

TEST_F(StoreFile, AFileOnItsWayTakesItsNewNameWithoutSpace) {
  const std::string target = folder.Path() + "moved";
  WriteBytes(file, std::string(100000, 'w'));
  WriteBytes(target, "what was there");
  EXPECT_FALSE(LinkOrCopyFile(folder.Path() + "none", target));
  EXPECT_EQ(BytesOf(target), "what was there");
  const pid_t child = OtherCopy([&] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{10, 10};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    return LinkOrCopyFile(file, target) && LinkOrCopyFile(file, target);
  });
  EXPECT_TRUE(EndedWell(child));
  EXPECT_EQ(BytesOf(target), BytesOf(file));
  EXPECT_THAT(NamesIn(folder.Path()), UnorderedElementsAre("Store.ini", "moved"));
  EXPECT_FALSE(LinkOrCopyFile(folder.Path(), target));
}

TEST_F(StoreFile, ANameThatIsTakenRefusesTheRenaming) {
  fs::create_directories(folder.Path() + "a/b");
  fs::create_directory(folder.Path() + "empty");
  EXPECT_EQ(RenameUnlessTaken(folder.Path() + "a", folder.Path() + "empty"), std::errc::file_exists);
  EXPECT_EQ(RenameUnlessTaken(folder.Path() + "none", folder.Path() + "c"), std::errc::no_such_file_or_directory);
  EXPECT_FALSE(RenameUnlessTaken(folder.Path() + "a", folder.Path() + "c"));
  EXPECT_THAT(NamesIn(folder.Path()), UnorderedElementsAre("c", "empty"));
}

} // namespace
} // namespace kelmio
