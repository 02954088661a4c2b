#include "core/mGeneral.h"

#include <gtest/gtest.h>

#include <map>

#include "core/program_paths.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;
using namespace mGeneral;

TEST(Formatting, ByteSizesTakeTheLargestUnitThatFits) {
  EXPECT_EQ(FormatByteSize(0), "");
  EXPECT_EQ(FormatByteSize(1023), "1,023 Bytes");
  EXPECT_EQ(FormatByteSize(184364), "180.04 KB");
  EXPECT_EQ(FormatByteSize(1048575), "1,024.00 KB");
  EXPECT_EQ(FormatByteSize(2147483647), "2.000 GB");
}

TEST(Files, FolderContentsGoAndWhatLinksPointToStays) {
  test::TemporaryFolder folder;
  test::TemporaryFolder elsewhere;
  test::WriteBytes(elsewhere.Path() + "kept", "1");
  EXPECT_TRUE(EnsureFolder(folder.Path() + "a/b/c"));
  test::WriteBytes(folder.Path() + "a/b/file", "1");
  fs::create_directory_symlink(elsewhere.Path(), folder.Path() + "a/link");
  DeleteFolderContents(folder.Path() + "a");
  EXPECT_TRUE(fs::is_empty(folder.Path() + "a"));
  EXPECT_TRUE(FileExists(elsewhere.Path() + "kept"));
  DeleteFolderContents("");
}

struct Variables : std::map<std::string, std::string> {
  using map::map;
  Surroundings Around(bool may_write) const {
    return {[this](const std::string& name) -> std::optional<std::string> {
              const auto found = find(name);
              return found == end() ? std::nullopt : std::make_optional(found->second);
            },
            [may_write](const std::string&) { return may_write; }};
  }
};

TEST(ProgramPaths, TheProgramsFolderIsNamedOrItsOwnOrTheUsers) {
  const Variables named{{"KELMIO_HOME", "/data/k"}, {"HOME", "/home/u"}};
  EXPECT_EQ(ChooseAppPath(named.Around(true), "/home/u/k/kelmio"), "/data/k/");
  const Variables user{{"HOME", "/home/u"}};
  EXPECT_EQ(ChooseAppPath(user.Around(true), "/home/u/k/kelmio"), "/home/u/k/");
  EXPECT_EQ(ChooseAppPath(user.Around(true), "/usr/local/bin/kelmio"), "/home/u/.local/share/kelmio/");
  EXPECT_EQ(ChooseAppPath(user.Around(true), "/usrlocal/kelmio"), "/usrlocal/");
  EXPECT_EQ(ChooseAppPath(user.Around(false), "/mnt/k/kelmio"), "/home/u/.local/share/kelmio/");
  const Variables based{{"HOME", "/home/u"}, {"XDG_DATA_HOME", "/d"}, {"XDG_CONFIG_HOME", "relative"}};
  EXPECT_EQ(ChooseAppPath(based.Around(false), "/mnt/k/kelmio"), "/d/kelmio/");
  EXPECT_EQ(ChooseRegistryPath(based.Around(false), "/mnt/k/kelmio"), "/home/u/.config/kelmio/registry.reg");
  const Variables hive{{"KELMIO_REGISTRY", "/r/x.reg"}};
  EXPECT_EQ(ChooseRegistryPath(hive.Around(false), "/mnt/k/kelmio"), "/r/x.reg");
}

} // namespace
} // namespace kelmio
