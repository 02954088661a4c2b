#include "core/registry_hive.h"

#include <gmock/gmock.h>

#include "core/text.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using test::BytesOf;
using test::WriteBytes;
using testing::ElementsAre;
using namespace std::string_literals;

constexpr std::uint32_t kRoot = kHkeyLocalMachine;

TEST(RegistryHiveFile, KeepsValuesOfAllTypes) {
  test::TemporaryFolder folder;
  RegistryHive store{folder.Path() + "r.reg"};
  const std::vector<std::pair<std::string, RegistryValue>> values = {
      {"Text", {registry_type::kText, "a \"quoted\" \\ J\xC3\xBCrgen"}},
      {"Empty", {registry_type::kText, ""}},
      {"Lines", {registry_type::kText, "one\r\ntwo"}},
      {"", {registry_type::kText, "of the key itself"}},
      {"Expandable", {registry_type::kExpandableText, "%HOME%\\x"}},
      {"Binary", {registry_type::kBinary, std::string(100, '\xFE') + "\0"s}},
      {"None", {registry_type::kBinary, ""}},
      {"Number", {registry_type::kNumber, "\x0A\0\0\x80"s}},
      {"BigEndian", {registry_type::kNumberBigEndian, "\0\0\1\2"s}},
      {"List", {registry_type::kTextList, "one\0two\0"s}},
      {"Back\\slash=\"", {registry_type::kText, "["}},
  };
  for (const auto& [name, value] : values)
    EXPECT_EQ(store.Set(kRoot, "Software\\K", name, value), RegistryResult::Ok);
  for (const auto& [name, value] : values)
    EXPECT_EQ(store.Query(kRoot, "software\\k", AsciiUpper(name)), value) << name;
  EXPECT_EQ(store.ValueNames(kRoot, "Software\\K").size(), values.size());
  EXPECT_EQ(store.DeleteValue(kRoot, "Software\\k", "text"), RegistryResult::Ok);
  EXPECT_EQ(store.DeleteValue(kRoot, "Software\\K", "Text"), RegistryResult::NotFound);
  EXPECT_EQ(store.ValueNames(kRoot, "Software\\K").size(), values.size() - 1);
}

TEST(RegistryHiveFile, BelongsToTheUserAlone) {
  test::TemporaryFolder folder;
  const std::string file = folder.Path() + "new/registry.reg";
  RegistryHive hive(file);
  EXPECT_EQ(hive.DeleteValue(kRoot, "A", "v"), RegistryResult::NotFound);
  EXPECT_FALSE(std::filesystem::exists(folder.Path() + "new"));
  hive.Set(kRoot, "A", "v", {registry_type::kText, "1"});
  using std::filesystem::perms;
  EXPECT_EQ(std::filesystem::status(file).permissions(), perms::owner_read | perms::owner_write);
  EXPECT_EQ(std::filesystem::status(folder.Path() + "new").permissions(), perms::owner_all);
  EXPECT_EQ(BytesOf(file), "Windows Registry Editor Version 5.00\n\n[HKEY_LOCAL_MACHINE\\A]\n\"v\"=\"1\"\n");
}

TEST(RegistryHiveFile, TwoCopiesSeeAndKeepEachOthersValues) {
  test::TemporaryFolder folder;
  RegistryHive first(folder.Path() + "r.reg");
  RegistryHive second(folder.Path() + "r.reg");
  first.Set(kRoot, "A", "x", {registry_type::kText, "1"});
  EXPECT_EQ(second.Query(kRoot, "A", "x")->bytes, "1");
  second.Set(kRoot, "A", "y", {registry_type::kText, "2"});
  first.Set(kRoot, "A", "x", {registry_type::kText, "3"}); // same size, new state
  EXPECT_EQ(first.Query(kRoot, "A", "y")->bytes, "2");
  EXPECT_EQ(second.Query(kRoot, "A", "x")->bytes, "3");
}

TEST(RegistryHiveFile, ADamagedLineLosesOnlyItselfAndIsKept) {
  test::TemporaryFolder folder;
  const std::string file = folder.Path() + "r.reg";
  const std::string bytes = "Windows Registry Editor Version 5.00\n\n; mine\n[HKEY_LOCAL_MACHINE\\A]\n"
                            "\"one\"=\"1\"\n\"broken\"=\"no end\n\"worse\"=dword:xyz\n\"cut\"=hex:01,\\\n"
                            "\"two\"=hex:01,\\\n  02\n\"odd\"=hex:1,,2\n\"three\"=\"3\"\n";
  WriteBytes(file, bytes);
  RegistryHive hive(file);
  EXPECT_THAT(hive.ValueNames(kRoot, "A"), ElementsAre("one", "cut", "two", "three"));
  EXPECT_EQ(hive.Query(kRoot, "A", "two")->bytes, "\1\2");
  hive.Set(kRoot, "A", "four", {registry_type::kText, "4"});
  EXPECT_EQ(BytesOf(file), bytes + "\"four\"=\"4\"\n");
}

TEST(RegistryHiveFile, ReadsAnExportOfAnotherSystem) {
  test::TemporaryFolder folder;
  const std::string file = folder.Path() + "r.reg";
  WriteBytes(file, "\xFF\xFE" + Utf8ToUtf16Le("Windows Registry Editor Version 5.00\r\n\r\n[HKEY_LOCAL_MACHINE\\A]\r\n"
                                              "@=\"J\xC3\xBCrgen\"\r\n\"e\"=hex(2):25,00,48,00,\\\r\n  00,00\r\n"
                                              "\"n\"=dword:0000000a\r\n"));
  RegistryHive hive(file);
  EXPECT_EQ(hive.Query(kRoot, "A", "")->bytes, "J\xC3\xBCrgen");
  EXPECT_EQ(hive.Query(kRoot, "A", "e"), (RegistryValue{registry_type::kExpandableText, "%H"}));
  EXPECT_EQ(hive.Query(kRoot, "A", "n")->bytes, "\x0A\0\0\0"s);
}

} // namespace
} // namespace kelmio
