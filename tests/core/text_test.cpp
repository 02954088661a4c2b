#include "core/text.h"

#include <gtest/gtest.h>

#include "core/date_time.h"

namespace kelmio {
namespace {

TEST(DisplayText, ReadsUtf8AsItIsAndAllElseAsWindows1252) {
  EXPECT_EQ(DisplayText("J\xC3\xBCrgen \xE2\x82\xAC"), "J\xC3\xBCrgen \xE2\x82\xAC");
  EXPECT_EQ(DisplayText("J\xFCrgen \x80"), "J\xC3\xBCrgen \xE2\x82\xAC");
  EXPECT_EQ(DisplayText("caf\xC3"), "caf\xC3\x83"); // cut within a character
  for (const char* broken : {"\xC0\x80", "\xED\xA0\x80", "\xF5\x80\x80\x80", "\xE0\x80\x80", "\x80"})
    EXPECT_FALSE(IsValidUtf8(broken));
  EXPECT_TRUE(IsValidUtf8(DisplayText("\x81\xFF\xED\xA0\x80")));
}

TEST(Utf16, RoundTripsLoneSurrogatesAndPairs) {
  const std::string wide("\x3D\xD8\x00\xDE\x00\xD8\x41\x00\x00\xDC", 10); // a pair, a high one alone, A, a low one
  EXPECT_EQ(Utf8ToUtf16Le(Utf16LeToUtf8(wide)), wide);
  EXPECT_EQ(Utf16LeToUtf8(wide.substr(0, 4)), "\xF0\x9F\x98\x80");
  EXPECT_EQ(Utf8ToUtf16Le("\xFC"), std::string("\xFC\x00", 2));
}

TEST(Numbers, LeadingOnesStopAtTheFirstOtherCharacter) {
  EXPECT_EQ(LeadingNumber("  007abc"), 7);
  EXPECT_EQ(LeadingNumber(""), 0);
  EXPECT_EQ(LeadingNumber32("99999999999999999999999"), 2147483647);
  EXPECT_EQ(LeadingNumber32("-99999999999999999999999"), -2147483647 - 1);
}

TEST(Numbers, WholeTextsConvertOrDoNot) {
  EXPECT_EQ(NumberOfText(" -1 "), -1);
  EXPECT_EQ(NumberOfText("3.5"), 4);
  EXPECT_EQ(NumberOfText("2.51"), 3);
  for (const char* text : {"", "4x", "-", ".", "1 2", "2147483648", "True"})
    EXPECT_FALSE(NumberOfText(text)) << text;
  EXPECT_EQ(BooleanOfText("fALSE"), false);
  EXPECT_FALSE(BooleanOfText("yes"));
}

TEST(Dates, AreFormattedWithoutALocale) {
  EXPECT_EQ(FormatMonthDayYear(CivilTimeOf({}), '-'), "12-30-1899");
  EXPECT_EQ(FormatTimeAmPm(CivilTimeOf({})), "12:00:00 AM");
  EXPECT_EQ(FormatTimeAmPm({2026, 3, 5, 12, 0, 0}), "12:00:00 PM");
}

TEST(Dates, ParseTheirOwnPatternsOnly) {
  EXPECT_EQ(ParseDate("01/01/1900"), DateValue{2 * kSecondsPerDay});
  EXPECT_EQ(ParseDate("12/29/1899"), DateValue{-kSecondsPerDay});
  for (const char* text : {"", "02/29/2026", "13/01/2026", "2026-01-01", "1/2", "1/2/3/4", "01/01/26", "a/b/c"})
    EXPECT_FALSE(ParseDate(text)) << text;
  EXPECT_EQ(ParseTime("23:59:59"), DateValue{kSecondsPerDay - 1});
  for (const char* text : {"", "24:00:00", "09:07", "9:60:00", "-1:00:00"})
    EXPECT_FALSE(ParseTime(text)) << text;
}

} // namespace
} // namespace kelmio
