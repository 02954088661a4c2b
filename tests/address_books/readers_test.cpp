#include <gmock/gmock.h>

#include <chrono>
#include <vector>

#include "address_books/readers/address_file.h"
#include "address_books/readers/quiet_libraries.h"
#include "address_books/shown_items.h"
#include "core/text.h"
#include "support/file_text.h"

namespace kelmio {
namespace {

using test::Shown;
using testing::ElementsAre;
using testing::StartsWith;

const bool quiet = (QuietLibraries(), true);

std::vector<std::string> ItemsIn(const std::string& bytes) {
  std::vector<std::string> items;
  if (!ReadAddressBytes(bytes, [&](const AddressItem& item) { items.push_back(Shown(item)); }))
    items.push_back("no address book");
  return items;
}

/// The only contact of a card with these lines.
std::string ItemOf(const std::string& lines) {
  const auto items = ItemsIn("BEGIN:VCARD\r\n" + lines + "\r\nEND:VCARD\r\n");
  return items.size() == 1 ? items.front() : std::to_string(items.size()) + " items";
}

TEST(AddressFile, ReadsWhatOtherProgramsExport) {
  ASSERT_TRUE(quiet);
  const std::pair<std::string, std::vector<std::string>> samples[] = {
      {"evolution_3.0.vcf",
       {"+Mrs. Jane Sample, PhD|++1 555 555 0102|++1 555 555 0103|+jane@example.com|"
        "+http://www.example.com/jane?a=1;b=2|++1 555 555 0101|++1 555 555 0104|+Head of Purchasing|"
        "+Sample, Son & Daughter; Ltd.|+1 Market Street, Back door, Floor 3, PO 77|+Sampleton|+SA|+00001|+Sampleland|",
        "+Team|-|-|-|-|-|-|-|-|-|-|-|-|-|"}},
      {"thunderbird_4.0.vcf",
       {"+John Sample|+|+555 0203|+john@example.com|+https://www.example.com|+555 0201|+555 0204|+Clerk|+Sample Ltd.|"
        "+1 Market Street|+Sampleton|+SA|+00001|+Sampleland|",
        "+All of us|-|-|-|-|-|-|-|-|-|-|-|-|-|"}},
      {"kde_4.0.vcf",
       {"+Dr. Jürgen Muster|++49-30-5550302|++49 151 5550303|+juergen@example.com|+https://example.com|"
        "++49-30-5550301|+|+|+Muster GmbH|+Musterweg 3|+Musterstadt|+|+12345|+Deutschland|"}},
      {"phone_2.1.vcf",
       {"+Zoé Müller|++15555550402|++15555550403|+zoe@example.com|+http://example.com/zoe|++15555550401|++15555550404|"
        "+Prokuristin für alles|+Müller AG|+1 Market Street, House B|+Sampleton|+SA|+00001|+Sampleland|"}},
      {"outlook.csv",
       {"+Mr. John Sample Jr.|+555 0502|+555 0503|+john@example.com|+http://example.com|+555 0501|+555 0504|+Clerk|"
        "+Sample, Son & Daughter|+1 Market Street, Back door|+Sampleton|+SA|+00001|+Sampleland|",
        "+Müller AG|+|+|+|+|+555 0511|+|+|+Müller AG|+Weg 3|+Musterstadt|+|+12345|+|"}},
      {"thunderbird.csv",
       {"+Zoé Müller|+555 0602|+555 0603|+zoe@example.com|+http://example.com|+555 0601|+555 0604|+Clerk|+Müller AG|"
        "+1 Market Street, House B|+Sampleton|+SA|+00001|+Sampleland|"}},
      {"google.csv",
       {"+Jane Sample|+|+555 0703|+jane@example.com|+http://example.com|+555 0701|+555 0704|+Clerk|+Sample Ltd.|"
        "+1 Market Street|+Sampleton|+SA|+00001|+Sampleland|"}},
  };
  for (const auto& [name, items] : samples)
    EXPECT_EQ(ItemsIn(test::BytesOf(KELMIO_SAMPLES "/" + name)), items) << name;
}

TEST(AddressFile, ReadsEachEncodingAndLineEndAlike) {
  const std::string latin = "BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Zo\xE9\r\nTEL:1\r\nEND:VCARD\r\n";
  const std::string utf8 = DisplayText(latin);
  const auto expected = ItemsIn(utf8);
  ASSERT_THAT(expected, ElementsAre(StartsWith("+Zoé|+1|")));
  const auto with = [](std::string text, const std::string& line_end) {
    for (std::size_t at = text.find("\r\n"); at != std::string::npos; at = text.find("\r\n", at + line_end.size()))
      text.replace(at, 2, line_end);
    return text;
  };
  const std::string little = Utf8ToUtf16Le(utf8);
  std::string big = "\xFE\xFF";
  for (std::size_t at = 0; at < little.size(); at += 2)
    big += {little[at + 1], little[at]};
  for (const std::string& bytes :
       {latin, "\xEF\xBB\xBF" + utf8, "\xFF\xFE" + little, big, with(utf8, "\n"), with(utf8, "\r"), with(utf8, "\n\n")})
    EXPECT_EQ(ItemsIn(bytes), expected) << bytes;
  EXPECT_THAT(ItemOf("VERSION:3.0\r\nFN:Zo\xC3\r\n \xA9"), StartsWith("+Zoé|"));
  EXPECT_THAT(ItemOf("VERSION:2.1\r\nFN;CHARSET=ISO-8859-5:\xB8\xD2\xD0\xDD"), StartsWith("+Иван|"));
  for (const std::string delimiter : {",", ";", "\t"})
    EXPECT_THAT(ItemsIn("Name" + delimiter + "Home Phone\nZo\xE9" + delimiter + "1"), expected) << delimiter;
}

TEST(AddressFile, TakesWhatIsNearestWhenAPropertyIsMissing) {
  const struct {
    const char* lines;
    const char* item;
  } cases[] = {
      {"N:Sample;Jane;M.;Dr.;Jr.\r\nFN:", "+Dr. Jane M. Sample Jr.|+|"},
      {"ORG:Sample Ltd.;Sales", "+Sample Ltd.|+|"},
      {"NICKNAME:Jay\r\nEMAIL:j@example.com", "+Jay|+|+|+j@example.com|"},
      {"EMAIL:mailto:j@example.com", "+j@example.com|+|+|+j@example.com|"},
      {"TEL;TYPE=VOICE:1\r\nTEL;HOME:2", "+|+2|+|"},
      {"TEL;TYPE=\"work,cell\":1", "+|+|+1|+|+|+|+|"},
      {"TEL;TYPE=work,cell:1\r\nTEL;TYPE=work,cell;PREF=1:2", "+|+|+2|+|+|+1|+|"},
      {"TEL;TYPE=home,fax:1\r\nTEL;TYPE=pager:2", "+|+|+|+|+|+|+1|"},
      {"TEL;VALUE=uri:TEL:+1-555;phone-context=example.com", "+|++1-555|+|"},
      {"TEL:555;12", "+|+555;12|+|"},
      {"URL:http\\://example.com", "+|+|+|+|+http://example.com|"},
      {"X-ADDRESSBOOKSERVER-KIND:group\r\nN:Club;;;;\r\nTEL:1", "+Club|-|-|"},
      {"NOTE:nothing that a contact has\r\nADR:;;;;;;", "0 items"},
  };
  for (const auto& sample : cases)
    EXPECT_THAT(ItemOf(sample.lines), StartsWith(sample.item)) << sample.lines;
  EXPECT_THAT(ItemOf("ADR;TYPE=work:;;;;;;\r\nADR;TYPE=home:7;;;Town;;;"), testing::HasSubstr("|+7|+Town|"));
}

TEST(AddressFile, TakesTheRestOfWhatIsDamaged) {
  EXPECT_THAT(ItemsIn("BEGIN:VCARD\nFN:One\nBEGIN:VCARD\nFN:Two\nTEL:2"),
              ElementsAre(StartsWith("+One|"), StartsWith("+Two|+2|")));
  EXPECT_THAT(ItemsIn("BEGIN:VCARD\nFN;QUOTED-PRINTABLE:One=20Two=\nEND:VCARD\nBEGIN:VCARD\nFN;QUOTED-PRINTABLE:Thr=E"),
              ElementsAre(StartsWith("+One Two|"), StartsWith("+Thr")));
  EXPECT_THAT(ItemsIn("begin:vcard\nfn:One\nAGENT:\nBEGIN:VCARD\nFN:Two\nend:vcard"), ElementsAre(StartsWith("+One|")));
  EXPECT_THAT(ItemOf("FN:" + std::string(5000, 'a') + "\r\nTEL:1\x01\x7F;2"),
              StartsWith("+" + std::string(4000, 'a') + "|+1  ;2|"));

  for (const std::string& bytes : {std::string(), std::string(" \r\n"), std::string("BEGIN:VCALENDAR\nEND:VCALENDAR"),
                                   std::string("Some,words\nin,lines"), std::string("Name\nalone"),
                                   std::string(1 << 18, '\0'), std::string("\xFF\xFE\0", 3)})
    EXPECT_THAT(ItemsIn(bytes), ElementsAre("no address book"));
  EXPECT_THAT(ItemsIn("Name,Home Phone\n\"never closed,1\nmore"), testing::SizeIs(1));
  std::string noise;
  for (unsigned state = 1; noise.size() < 1 << 18; state = state * 1664525U + 1013904223U)
    noise += static_cast<char>(state >> 24U);
  EXPECT_THAT(ItemsIn(noise), ElementsAre("no address book"));
  ItemsIn("BEGIN:VCARD\n" + noise);

  const auto none = [](const AddressItem&) {};
  for (const char* path : {"/nonexistent", "/", "/dev/zero", ""})
    EXPECT_FALSE(ReadAddressFile(path, none)) << path;
}

TEST(AddressFile, IsQuickWithMuch) {
  const auto started = std::chrono::steady_clock::now();
  const std::string card = test::BytesOf(KELMIO_SAMPLES "/evolution_3.0.vcf");
  std::string many;
  for (int count = 0; count < 2000; ++count)
    many += card;
  EXPECT_EQ(ItemsIn(many).size(), 4000U);
  // Everything opens and nothing closes, in one card and in many.
  for (const char* line : {"TEL;TYPE=\"work:1\r\n", "FN;ENCODING=QUOTED-PRINTABLE:=\r\n", " fold\r\n",
                           "BEGIN:VCARD\r\n", "AGENT:\r\nBEGIN:VCARD\r\n", "\"", "a;"}) {
    std::string damaged = "BEGIN:VCARD\r\nFN:One\r\n";
    for (int count = 0; count < 100000; ++count)
      damaged += line;
    EXPECT_THAT(ItemsIn(damaged), ElementsAre(StartsWith("+One"))) << line;
  }
  // A second in an ordinary build; what grows with the square of its length takes minutes.
  EXPECT_LT(std::chrono::steady_clock::now() - started, std::chrono::seconds(60));
}

} // namespace
} // namespace kelmio
