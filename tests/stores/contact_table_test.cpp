#include "contacts/store/contact_table.h"

#include <gmock/gmock.h>

#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using test::WriteBytes;
using testing::ElementsAre;

class ContactTableTest : public testing::Test {
protected:
  void Load(const std::string& bytes) {
    WriteBytes(file, bytes);
    table.LoadContacts();
  }
  std::vector<std::string> SortedBy(int column) {
    table.LoadContacts();
    table.SortContacts(column);
    std::vector<std::string> ids;
    for (const ContactRecord& contact : table.Contacts())
      ids.push_back(contact.ContactID);
    return ids;
  }
  test::TemporaryFolder folder;
  std::string file = folder.Path() + "Contacts.ini";
  ContactTable table{file};
};

TEST_F(ContactTableTest, FindsWhatALinearWalkWouldFind) {
  std::string bytes;
  for (int i = 1; i <= 300; ++i) {
    const auto number = [&](int factor) { return std::to_string(i * factor % 97); };
    bytes += "[" + std::to_string(i) + "]\nName=" + number(7) + "\nPhone=" + number(5) + "\nMobile=" + number(11) +
             "\nBusinessPhone=" + number(3) + "\nBusinessFax=" + (i % 9 == 0 ? "" : number(13)) + "\n";
  }
  Load(bytes);
  const auto walk = [&](const std::string& number) -> std::string {
    for (const ContactRecord& row : table.Contacts())
      if (row.Mobile == number || row.Phone == number || row.BusinessPhone == number || row.BusinessFax == number)
        return row.ContactID;
    return "";
  };
  for (const int sort_by : {0, 2, -3, 6}) {
    table.SortContacts(sort_by);
    for (int number = 0; number < 100; ++number)
      EXPECT_EQ(table.GetMessageContactID(std::to_string(number)), walk(std::to_string(number)));
    EXPECT_EQ(table.GetMessageContactID(""), walk(""));
    EXPECT_EQ(table.GetMessageContactID("0 "), "");
  }
}

TEST_F(ContactTableTest, SortsByItsColumnsWithTiesInFileOrder) {
  WriteBytes(file, "[1]\nName=b\nEmail=x\nCompany=a\n[2]\nName=B\nEmail=x\nBusinessFax=1\n[5]\nName=\nCompany=b\n");
  EXPECT_THAT(SortedBy(2), ElementsAre("5", "2", "1"));
  EXPECT_THAT(SortedBy(5), ElementsAre("5", "1", "2"));
  EXPECT_THAT(SortedBy(-6), ElementsAre("2", "1", "5"));
  EXPECT_THAT(SortedBy(1), ElementsAre("1", "2", "5"));
}

TEST_F(ContactTableTest, AnEmptiedFileLeavesRowsThatAreStillFound) {
  EXPECT_EQ(table.GetMessageContactID("1"), "");
  Load("[7]\nName=Jane\nPhone=1\n[x]\n");
  EXPECT_EQ(table.ContactCount(), 2U);
  Load("; nothing left");
  EXPECT_EQ(table.ContactCount(), 0U);
  EXPECT_EQ(table.Contacts().size(), 2U);
  table.SortContacts(-2);
  EXPECT_EQ(table.GetMessageContactID("1"), "7");
}

} // namespace
} // namespace kelmio
