#include "core/registry_hive.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <memory>

#include "core/cRegistry.h"
#include "core/text.h"
#include "fakes/fake_desktop.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using test::BytesOf;
using test::WriteBytes;
using testing::ElementsAre;
using namespace std::string_literals;

constexpr std::uint32_t kRoot = kHkeyLocalMachine;

struct HiveInAFile {
  test::TemporaryFolder folder;
  RegistryHive store{folder.Path() + "config/kelmio/registry.reg"};
};
struct InMemory {
  FakeRegistryStore store;
};

// What holds for every registry store.
template <class Fixture> class AnyRegistryStore : public testing::Test {
protected:
  Fixture fixture;
};
using Stores = testing::Types<HiveInAFile, InMemory>;
TYPED_TEST_SUITE(AnyRegistryStore, Stores);

TYPED_TEST(AnyRegistryStore, KeepsValuesOfAllTypes) {
  RegistryStore& store = this->fixture.store;
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
}

TYPED_TEST(AnyRegistryStore, KnowsItsKeys) {
  RegistryStore& store = this->fixture.store;
  EXPECT_FALSE(store.KeyExists(kRoot, "A"));
  EXPECT_EQ(store.CreateKey(kRoot, "A\\B\\C"), RegistryResult::Ok);
  EXPECT_EQ(store.CreateKey(kRoot, "A\\b\\c"), RegistryResult::Ok);
  EXPECT_TRUE(store.KeyExists(kRoot, "a\\B"));
  EXPECT_FALSE(store.KeyExists(kHkeyCurrentUser, "A"));
  EXPECT_THAT(store.SubKeys(kRoot, "A"), ElementsAre("B"));
  EXPECT_EQ(store.DeleteKey(kRoot, "A\\B"), RegistryResult::AccessDenied);
  EXPECT_EQ(store.DeleteKey(kRoot, "A\\B\\C"), RegistryResult::Ok);
  EXPECT_FALSE(store.KeyExists(kRoot, "A\\B\\C"));
  EXPECT_TRUE(store.KeyExists(kRoot, "A\\B"));
  EXPECT_EQ(store.DeleteKey(kRoot, "A\\B\\C"), RegistryResult::NotFound);
}

TYPED_TEST(AnyRegistryStore, ReplacesAndDeletesValues) {
  RegistryStore& store = this->fixture.store;
  store.Set(kRoot, "A", "v", {registry_type::kText, "1"});
  store.Set(kRoot, "A", "V", {registry_type::kText, "2"});
  EXPECT_EQ(store.Query(kRoot, "A", "v")->bytes, "2");
  EXPECT_EQ(store.ValueNames(kRoot, "A").size(), 1U);
  EXPECT_EQ(store.DeleteValue(kRoot, "A", "v"), RegistryResult::Ok);
  EXPECT_EQ(store.DeleteValue(kRoot, "A", "v"), RegistryResult::NotFound);
  EXPECT_TRUE(store.KeyExists(kRoot, "A"));
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

class RegistryClass : public testing::Test {
protected:
  RegistryClass() {
    registry.SectionKey = "Software\\K";
    registry.ValueKey = "v";
  }
  RegistryData Reread() {
    registry.Default = "default"s;
    return registry.Value();
  }
  FakeRegistryStore store;
  cRegistry registry{store, "kelmio"};
};

TEST_F(RegistryClass, GivesTheDefaultOnlyForAMissingValue) {
  EXPECT_EQ(Reread(), RegistryData("default"s));
  registry.SetValue(""s);
  EXPECT_EQ(Reread(), RegistryData(""s));
}

TEST_F(RegistryClass, TextBetweenTwoPercentSignsIsExpandable) {
  ::setenv("KELMIO_TEST_NAME", "value", 1);
  const std::vector<std::pair<std::string, std::uint32_t>> types = {
      {"50%", registry_type::kText}, {"a%%b", registry_type::kText}, {"100% %x", registry_type::kExpandableText}};
  for (const auto& [text, type] : types) {
    registry.ValueType = registry_type::kText;
    registry.SetValue(text);
    EXPECT_EQ(store.Query(kRoot, "Software\\K", "v")->type, type) << text;
    EXPECT_EQ(Reread(), RegistryData(text));
  }
  registry.SetValue("<%KELMIO_TEST_NAME%> %KELMIO_NO_SUCH%KELMIO_TEST_NAME%"s);
  EXPECT_EQ(Reread(), RegistryData("<value> %KELMIO_NO_SUCHvalue"s));
  EXPECT_EQ(registry.ValueType, registry_type::kExpandableText);
}

TEST_F(RegistryClass, WritesWhatItsTypeSays) {
  registry.SetValue(-7);
  EXPECT_EQ(Reread(), RegistryData("-7"s));
  registry.ValueType = registry_type::kNumberBigEndian;
  EXPECT_FALSE(registry.SetValue("no number"s));
  EXPECT_EQ(Reread(), RegistryData("-7"s));
  registry.ValueType = registry_type::kNumberBigEndian;
  registry.SetValue(258);
  EXPECT_EQ(store.Query(kRoot, "Software\\K", "v"), (RegistryValue{registry_type::kNumber, "\2\1\0\0"s}));
  store.Set(kRoot, "Software\\K", "v", {registry_type::kNumberBigEndian, "\0\0\1\2"s});
  EXPECT_EQ(Reread(), RegistryData(258));
  registry.ValueType = registry_type::kBinary;
  registry.SetValue(RegistryBytes{1, 2});
  EXPECT_EQ(Reread(), RegistryData(RegistryBytes{1, 2}));
}

TEST_F(RegistryClass, DescribesItsFailures) {
  const auto description = [](const RegistryOutcome& outcome) { return outcome ? outcome->description : "(none)"; };
  EXPECT_EQ(description(registry.DeleteKey()), "Failed to delete registry Key: '2147483650',Section: 'Software\\K'");
  EXPECT_EQ(description(registry.DeleteValue()),
            "Failed to open key '2147483650',Section: 'Software\\K' for delete access");
  registry.ValueType = registry_type::kBinary;
  const RegistryOutcome outcome = registry.SetValue("text"s);
  EXPECT_EQ(description(outcome), "Failed to set registry value Key: '2147483650',Section: 'Software\\K',Key: 'v' to "
                                  "value: 'text'");
  EXPECT_EQ(outcome->number, 26001);
  EXPECT_EQ(outcome->source, "kelmio.cRegistry");
  registry.ValueType = registry_type::kTextList;
  EXPECT_TRUE(registry.SetValue("text"s));
}

} // namespace
} // namespace kelmio
