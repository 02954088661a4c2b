#include <chrono>

#include "contacts/contact_desk.h"
#include "contacts/import_values.h"
#include "core/ini_text.h"

namespace kelmio {
namespace {

using test::BytesOf;
using test::WriteBytes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

AddressItem Person(const std::string& name, const std::string& phone = "") {
  AddressItem item;
  item.FullName = name;
  item.HomeTelephoneNumber = phone;
  return item;
}

// What one contact after the other, each by itself, makes of a file.
std::string OneByOne(const std::string& bytes, const std::vector<AddressItem>& items) {
  IniText text(bytes);
  for (const AddressItem& item : items) {
    int id = 1;
    while (!text.Read(std::to_string(id), "Name").value_or("").empty())
      ++id;
    const ContactValues values = ValuesOf(item);
    for (std::size_t field = 0; field < values.size(); ++field)
      if (values[field])
        text.Write(std::to_string(id), kContactFields[field].key, *values[field]);
  }
  return text.Bytes();
}

class Import : public test::ContactDesk {
protected:
  void Run(const std::vector<AddressItem>& items) {
    address_books.desktop = items;
    table.LoadContacts();
    frmImport form(ImportHouse());
    form.Load();
    form.Visible = true;
    form.cmdOK.Click();
    EXPECT_FALSE(form.Visible);
  }
};

TEST_F(Import, SkipsWhatTheTableHadAtTheStart) {
  WriteBytes(app.ContactsFile, "[1]\nName=M\xFCller\nPhone=1\nEmail=theirs\n[2]\nName=Jane\nMobile=2\n");
  AddressItem umlaut = Person(" Müller\n", "1");
  umlaut.Email1Address = "mine"; // doesn't tell two contacts apart
  AddressItem nothing_read;
  nothing_read.FullName = "Jane";
  nothing_read.MobileTelephoneNumber = "2";
  const std::vector<AddressItem> book = {umlaut, nothing_read, Person("jane"), Person("New", "3"), Person("New", "3")};
  Run(book);
  EXPECT_THAT(Sections(), ElementsAre("1", "2", "3", "4", "5")) << "two of one run are both taken";
  EXPECT_EQ(Value("1", "Email"), "theirs");
  EXPECT_THAT(mIni::IniSectionKeys("4", app.ContactsFile), ElementsAre("Name", "Phone"));
  Run(book);
  EXPECT_THAT(Sections(), SizeIs(5)) << "the second run knows those of the first";
  EXPECT_EQ(refreshes, 2);
  std::filesystem::remove(app.ContactsFile);
  Run(book);
  EXPECT_THAT(Sections(), IsEmpty()) << "the rows of an emptied file are still in the table";
}

TEST_F(Import, EveryPropertyGoesToItsKey) {
  Run({{"a", "b", "c", "d", "e", "f", "g", "h", "i", "j", "k", "l", "m", "n"}});
  std::string all;
  for (const ContactField& field : kContactFields)
    all += Value("1", std::string(field.key));
  EXPECT_EQ(all, "abcdefghijklmn");
}

TEST_F(Import, ValuesStayOnTheirLine) {
  using namespace std::string_literals;
  AddressItem item = Person("Eve\r\n[9]\nName=Mallory");
  item.BusinessAddressStreet = "\n1 High\x01 Street \r\n\r\n Flat\t2\0!\n"s;
  item.JobTitle = " \"quoted\"; ";
  Run({item});
  EXPECT_THAT(Sections(), ElementsAre("1"));
  EXPECT_EQ(Value("1", "Name"), "Eve, [9], Name=Mallory");
  EXPECT_EQ(Value("1", "StreeAddress"), "1 High  Street, Flat 2 !");
  EXPECT_EQ(Value("1", "JobTitle"), "\"quoted\";");
  Run({item});
  EXPECT_THAT(Sections(), SizeIs(1)) << "it reads back as it was compared";
}

TEST_F(Import, ManyAtOnceMakeTheFileThatOneByOneMakes) {
  std::vector<AddressItem> items;
  for (int i = 0; i < 220; ++i) {
    AddressItem item = Person(i % 7 == 3 ? " " : "P" + std::to_string(i), std::to_string(i));
    if (i % 5 == 0)
      item.FullName.reset();
    if (i % 3 == 0)
      item.JobTitle = "j";
    items.push_back(i % 11 == 10 ? AddressItem() : item);
  }
  items.push_back(Person("", "no name"));
  for (const char* before :
       {"", "; mine\n[3]\nName=c\n[1]\nName=\nPhone=9\nfoo=bar\n[x]\nName=x\n[ 4 ]\n[5]\nName=e"}) {
    WriteBytes(app.ContactsFile, before);
    Run(items);
    EXPECT_TRUE(BytesOf(app.ContactsFile) == OneByOne(before, items)) << BytesOf(app.ContactsFile);
  }
}

TEST_F(Import, TenThousandContactsTakeSeconds) {
  constexpr int kContacts = 10000;
  std::vector<AddressItem> items;
  for (int i = 0; i < kContacts; ++i)
    items.push_back(Person("Contact " + std::to_string(i), std::to_string(i)));
  const auto start = std::chrono::steady_clock::now();
  Run(items);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  EXPECT_EQ(Value("10000", "Name"), "Contact 9999");
}

TEST_F(Import, OnlyTheEndOfTheProgramEndsIt) {
  address_books.desktop = std::vector<AddressItem>(50, Person("a"));
  frmImport form(ImportHouse());
  form.Load();
  form.Visible = true;
  loop.on_pump = [&] {
    form.EscapePressed();
    EXPECT_TRUE(form.QueryUnload() && (form.Visible || form.pbProgressBar.Value == 2));
    EXPECT_FALSE(form.cmdOK.Enabled || form.cmdCancel.Enabled);
    table.LoadContacts(); // changes nothing for this run
    if (form.pbProgressBar.Value == 2)
      form.Visible = false;
  };
  form.cmdOK.Click();
  EXPECT_THAT(Sections(), SizeIs(2)) << "what was read is kept";
}

TEST_F(Import, TheUserChoosesTheSource) {
  const struct {
    const char* name;
    bool desktop;
    int choice;
    const char* file;
    std::vector<std::string> sections;
    bool closes;
  } cases[] = {
      {"desktop", true, 0, "/a.vcf", {"1", "2"}, true},
      {"file", true, 1, "/a.vcf", {"1"}, true},
      {"given up", false, 0, "", {}, false},
      {"no address book", false, 0, "/missing", {}, true},
  };
  for (const auto& one : cases) {
    std::filesystem::remove(app.ContactsFile); // the table keeps its rows, and so each case has a person of its own
    address_books.files["/a.vcf"] = {Person(one.name)};
    address_books.desktop.reset();
    if (one.desktop)
      address_books.desktop = {Person("a"), Person("b")};
    file_picker.choice = one.file;
    frmImport form(ImportHouse());
    form.Load();
    form.Visible = true;
    form.cboSource.ListIndex = one.choice;
    form.cmdOK.Click();
    EXPECT_EQ(Sections(), one.sections) << one.name;
    EXPECT_EQ(form.Visible, !one.closes) << one.name;
  }
}

} // namespace
} // namespace kelmio
