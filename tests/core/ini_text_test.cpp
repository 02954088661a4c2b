#include "core/ini_text.h"

#include <gmock/gmock.h>

#include "core/ini_document.h"
#include "core/mIni.h"
#include "core/text.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using test::BytesOf;
using test::WriteBytes;
using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::string_literals;

std::string Read(const std::string& bytes, const std::string& section, const std::string& key) {
  const std::string value = IniText(bytes).Read(section, key).value_or("(none)");
  // A loader must never see anything else than a single reading.
  EXPECT_EQ(IniDocument(bytes).Read(section, key), value == "(none)" ? "" : value);
  return value;
}

std::string Written(const std::string& bytes, const std::string& section, const std::string& key,
                    const std::string& value) {
  IniText text(bytes);
  text.Write(section, key, value);
  EXPECT_EQ(text.Changed(), text.Bytes() != bytes);
  return text.Bytes();
}

TEST(IniTextReading, TakesEveryLineEndAndNoBlanksAroundNames) {
  const std::string bytes = "[a]\r\nk = 1 \r[ b ]\nk\t=\v2\f\r\n x y=3";
  EXPECT_EQ(Read(bytes, "A", "K"), "1");
  EXPECT_EQ(Read(bytes, " b ", " k "), "2");
  EXPECT_EQ(Read(bytes, "b", "x y"), "3");
  EXPECT_EQ(Read("[a]\nk=\xA0v\xA0\n", "a", "k"), "\xA0v\xA0");
}

TEST(IniTextReading, FirstSectionAndFirstKeyStandForTheirNames) {
  const std::string bytes = "[a]\nk=1\nK=2\n[A]\nk=3\nother=4\n";
  EXPECT_EQ(Read(bytes, "a", "k"), "1");
  EXPECT_EQ(Read(bytes, "a", "other"), "(none)");
  EXPECT_THAT(IniDocument(bytes).SectionNames(), ElementsAre("a", "A"));
  EXPECT_THAT(IniDocument(bytes).SectionKeys("a"), ElementsAre("k", "K"));
}

TEST(IniTextReading, KnowsKeysFromCommentsAndForeignLines) {
  const std::string bytes = "stray=0\n[a]; tail\n  ;k=1\nforeign\nk=a=b;c\nempty=\n[b\nk=2\n[]\nk=3\n[c] d]\nk=4\n";
  EXPECT_EQ(Read(bytes, "a", "k"), "a=b;c");
  EXPECT_EQ(Read(bytes, "a", "empty"), "");
  EXPECT_EQ(Read(bytes, "a", "foreign"), "(none)");
  EXPECT_EQ(Read(bytes, "a", "stray"), "(none)");
  EXPECT_EQ(Read(bytes, "b", "k"), "2");
  EXPECT_EQ(Read(bytes, "", "k"), "3");
  EXPECT_EQ(Read(bytes, "c", "k"), "4");
  EXPECT_THAT(IniDocument(bytes).SectionKeys("a"), ElementsAre("k", "empty"));
}

TEST(IniTextWriting, ReplacesInPlaceAndKeepsTheSpelling) {
  EXPECT_EQ(Written("; top\n[A]\n K1 = old\nk1=2\n", "a", "k1", "new"), "; top\n[A]\n K1 =new\nk1=2\n");
  EXPECT_EQ(Written("[A]\nk = same \n", "a", "K", "same"), "[A]\nk = same \n");
}

TEST(IniTextWriting, PutsANewKeyBehindTheLastOneAndANewSectionAtTheEnd) {
  EXPECT_EQ(Written("[a]\nk=1\n\n; about b\n[b]\n", "a", "l", "2"), "[a]\nk=1\nl=2\n\n; about b\n[b]\n");
  EXPECT_EQ(Written("[a]\rk=1", "a", "l", "2"), "[a]\rk=1\rl=2\r");
  EXPECT_EQ(Written("[a]\nk=1", "b", "k", "2"), "[a]\nk=1\n[b]\nk=2\n");
  EXPECT_EQ(Written("", "a", "k", ""), "[a]\r\nk=\r\n");
  EXPECT_EQ(Written("; only a comment", "a", "k", "1"), "; only a comment\r\n[a]\r\nk=1\r\n");
}

TEST(IniTextWriting, NoValueMakesALineOfItsOwn) {
  const std::string bytes = Written("", "a", "Name", "x\r\n[evil]\nk=1\0z"s);
  EXPECT_THAT(IniDocument(bytes).SectionNames(), ElementsAre("a"));
  EXPECT_EQ(Read(bytes, "a", "Name"), "x  [evil] k=1 z");
}

TEST(IniTextWriting, NamesThatCouldNotBeReadBackWriteNothing) {
  for (const std::string& section : {"a]"s, "a\nb"s, "a\0b"s})
    EXPECT_EQ(Written("", section, "k", "1"), "") << section;
  for (const std::string& key : {"k=l"s, "k\rl"s, "[k"s, " ;k"s})
    EXPECT_EQ(Written("", "a", key, "1"), "") << key;
}

TEST(IniTextDeleting, TakesTheKeysAndLeavesTheRest) {
  IniText text("; top\n[a]\nk=1\nl=2\n\n; about b\n[b]\nk=3\n[a]\nk=4\n");
  text.DeleteKey("b", "none");
  text.DeleteSection("none");
  EXPECT_FALSE(text.Changed());
  text.DeleteKey("A", "K");
  EXPECT_EQ(text.Bytes(), "; top\n[a]\nl=2\n\n; about b\n[b]\nk=3\n[a]\nk=4\n");
  text.DeleteSection("a");
  EXPECT_EQ(text.Bytes(), "; top\n\n; about b\n[b]\nk=3\n[a]\nk=4\n");
}

TEST(IniTextEncodings, KeepsMarksAndUtf16) {
  EXPECT_EQ(Written("\xEF\xBB\xBF[a]\nk=1\n", "a", "k", "2"), "\xEF\xBB\xBF[a]\nk=2\n");
  const std::string wide = "\xFF\xFE" + Utf8ToUtf16Le("[a]\r\nk=J\xC3\xBCrgen \xF0\x9F\x98\x80\r\n");
  EXPECT_EQ(Read(wide, "a", "k"), "J\xC3\xBCrgen \xF0\x9F\x98\x80");
  EXPECT_EQ(Written(wide, "a", "l", "\xC3\xA9"), wide + Utf8ToUtf16Le("l=\xC3\xA9\r\n"));
  EXPECT_EQ(Written("[a]\nk=J\xFCrgen\n", "a", "l", "1"), "[a]\nk=J\xFCrgen\nl=1\n");
}

class IniFile : public testing::Test {
protected:
  test::TemporaryFolder folder;
  std::string file = folder.Path() + "Store.ini";
};

TEST_F(IniFile, CutsLongValuesWhenReading) {
  mIni::IniWrite("a", "k", std::string(9999, 'x'), file);
  mIni::IniWrite("a", "l", std::string(20000, 'y'), file);
  EXPECT_EQ(mIni::IniRead("a", "k", file).size(), 9999U);
  EXPECT_EQ(mIni::IniRead("a", "l", file), std::string(9999, 'y'));
  EXPECT_EQ(IniDocument::Load(file).Read("a", "l").size(), 9999U);
  mIni::IniWrite("a", "m", "1", file);
  EXPECT_NE(BytesOf(file).find(std::string(20000, 'y')), std::string::npos); // writing cuts nothing
}

TEST_F(IniFile, CutsAListOnlyWhereAsked) {
  std::string bytes;
  for (int i = 1000; i < 2000; ++i)
    bytes += "[Msg" + std::to_string(i) + "1511260.wav]\n"; // 18 characters and a zero each
  WriteBytes(file, bytes);
  EXPECT_EQ(mIni::IniSectionNames(file).size(), 1000U);
  const auto cut = mIni::IniSectionNames(file, mIni::ListLimit::Cut);
  ASSERT_EQ(cut.size(), 527U); // 526 whole ones take 9,994
  EXPECT_EQ(cut.back(), "Msg1");
}

TEST_F(IniFile, MissingOrEmptyFilesHaveNothingAndDeletingMakesNone) {
  EXPECT_THAT(mIni::IniSectionNames(file), IsEmpty());
  EXPECT_TRUE(mIni::IniDeleteSection("a", file));
  EXPECT_TRUE(mIni::IniDeleteKey("a", "k", file));
  EXPECT_FALSE(std::filesystem::exists(file));
  EXPECT_FALSE(mIni::IniWrite("a", "k", "1", folder.Path() + "none/Store.ini"));
  EXPECT_FALSE(std::filesystem::exists(folder.Path() + "none"));
  WriteBytes(file, "");
  EXPECT_EQ(mIni::IniRead("a", "k", file), "");
  EXPECT_TRUE(mIni::IniWrite("a", "k", "1", file));
  EXPECT_THAT(test::NamesIn(folder.Path()), ElementsAre("Store.ini"));
}

} // namespace
} // namespace kelmio
