#include "core/mGeneral.h"

#include <gmock/gmock.h>

#include <cerrno>
#include <map>

#include "controls/form.h"
#include "core/program_paths.h"
#include "core/store_file.h"
#include "fakes/fake_desktop.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;
using namespace mGeneral;

TEST(Formatting, ByteSizesTakeTheLargestUnitThatFits) {
  EXPECT_EQ(FormatByteSize(0), "");
  EXPECT_EQ(FormatByteSize(-5), "");
  EXPECT_EQ(FormatByteSize(1), "1 Bytes");
  EXPECT_EQ(FormatByteSize(1023), "1,023 Bytes");
  EXPECT_EQ(FormatByteSize(1024), "1.00 KB");
  EXPECT_EQ(FormatByteSize(1536), "1.50 KB");
  EXPECT_EQ(FormatByteSize(184364), "180.04 KB");
  EXPECT_EQ(FormatByteSize(1048575), "1,024.00 KB");
  EXPECT_EQ(FormatByteSize(2097152), "2.000 MB");
  EXPECT_EQ(FormatByteSize(2147483647), "2.000 GB");
}

TEST(Formatting, SecondsKeepAnHourOnTheDotInMinutes) {
  EXPECT_EQ(FormatSeconds(59), "00:00:59");
  EXPECT_EQ(FormatSeconds(60), "00:01:00");
  EXPECT_EQ(FormatSeconds(3600), "00:60:00");
  EXPECT_EQ(FormatSeconds(3601), "01:00:01");
  EXPECT_EQ(FormatSeconds(360000), "100:00:00");
}

TEST(Formatting, PathsLoseTheirBracketsAndGainASeparator) {
  EXPECT_EQ(NormalizePath("C:\\a[x]\\b"), "C:\\a\\b\\");
  EXPECT_EQ(NormalizePath(" /a/[x][y]b/ ", true), "/a/[y]b/");
  EXPECT_EQ(NormalizePath("/a/"), "/a/\\");
  EXPECT_EQ(NormalizePath("/a]b[c"), "/a]b[c\\");
}

TEST(SmallHelpers, AnswerAsTold) {
  EXPECT_EQ(StripNull(std::string("a\0b", 3)), "a");
  EXPECT_EQ(TranslateColor(0x123456), 0x123456);
  EXPECT_EQ(TranslateColor(static_cast<Color>(0x80000005U)), 0xFFFFFF);
  EXPECT_EQ(TranslateColor(static_cast<Color>(0x800000FFU)), -1);
  EXPECT_EQ(TranslateColor(0x01000001), -1);
  EXPECT_EQ(SystemErrorText(ENOENT), "No such file or directory");
}

struct PlainForm : Form {
  PlainForm(int left, int top, int width, int height) {
    Left = left;
    Top = top;
    Width = width;
    Height = height;
  }
  void VisitControls(ControlVisitor&) override {}
  std::pair<int, int> Place() const { return {Left.Get(), Top.Get()}; }
};

TEST(CenterForm, MovesOnlyWhenLeftAndTopShareABit) {
  FakeDesktop desktop;
  desktop.width = 19200;
  desktop.height = 15360;
  PlainForm window(7, 7, 5000, 5000);
  CenterForm(window, desktop);
  EXPECT_EQ(window.Place(), std::make_pair(7100, 5180));
  PlainForm owner(100, 200, 6000, 5400);
  CenterForm(window, desktop, &owner);
  EXPECT_EQ(window.Place(), std::make_pair(600, 400));
  owner.Left = 12; // 512 and 400 have no bit in common
  CenterForm(window, desktop, &owner);
  EXPECT_EQ(window.Place(), std::make_pair(600, 400));
}

TEST(Files, ExistOnlyAsFiles) {
  test::TemporaryFolder folder;
  test::WriteBytes(folder.Path() + ".hidden", "");
  EXPECT_TRUE(FileExists(folder.Path() + ".hidden"));
  EXPECT_FALSE(FileExists(folder.Path()));
  EXPECT_FALSE(FileExists("  "));
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

TEST(Files, VersionComesFromTheProgramFileOnly) {
  test::TemporaryFolder folder;
  const std::string version("\xBD\x04\xEF\xFE\0\0\1\0\2\0\1\0\4\0\3\0", 16);
  test::WriteBytes(folder.Path() + "a", "MZ and more " + version);
  test::WriteBytes(folder.Path() + "b", "no program " + version);
  test::WriteBytes(folder.Path() + "c", "MZ" + version.substr(0, 12));
  EXPECT_EQ(FileVersionText(folder.Path() + "a"), "1.2.3.4");
  EXPECT_EQ(FileVersionText(folder.Path() + "b"), "");
  EXPECT_EQ(FileVersionText(folder.Path() + "c"), "");
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
  EXPECT_EQ(ChooseAppPath(user.Around(true), "/kelmio"), "/");
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
