#include <chrono>
#include <set>

#include "contacts/contact_desk.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;
using test::WriteBytes;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class ContactList : public test::ContactDesk {
protected:
  void Open() {
    form.Load();
    form.Visible = true;
    loop.Advance(std::chrono::milliseconds(5));
  }
  std::vector<std::string> Tags() const {
    std::vector<std::string> tags;
    for (const ListRow& row : form.lvwContacts.Rows())
      tags.push_back(row.tag);
    return tags;
  }
  void Select(const std::vector<std::size_t>& rows) {
    std::vector<std::uint64_t> keys;
    for (const std::size_t row : rows)
      keys.push_back(form.lvwContacts.Row(row).key);
    form.lvwContacts.SetSelection(keys, keys.empty() ? 0 : keys.back());
  }
  void DeleteWithYes() {
    boxes.answers = {BoxAnswer::Yes, BoxAnswer::Yes};
    form.lvwContacts.DeleteKey();
  }
  std::string Panels() const { return form.sbStatusBar.PanelText(1) + "|" + form.sbStatusBar.PanelText(2); }
  // Rows numbered 1 to n, each contact once, whatever came in between.
  void ExpectWholeList(std::size_t count) {
    const std::vector<std::string> tags = Tags();
    EXPECT_THAT(std::set<std::string>(tags.begin(), tags.end()), SizeIs(count));
    ASSERT_THAT(tags, SizeIs(count));
    for (std::size_t row = 1; row <= count; ++row)
      EXPECT_EQ(form.lvwContacts.Row(row).cells[0], std::to_string(row));
    EXPECT_EQ(Panels(), "Ready|" + std::to_string(count) + " Contacts");
    EXPECT_FALSE(form.Busy);
  }

  frmContacts form{ListHouse()};
};

TEST_F(ContactList, ShowsAHandWrittenFile) {
  WriteBytes(app.ContactsFile, "[3]\nName=b\nPhone=1\nMobile=2\nCompany=c\nBusinessPhone=3\nBusinessFax=4\n"
                               "[abc]\nName=a\n[settings]\nfoo=bar\n[3]\nName=d\n");
  Open();
  EXPECT_THAT(Tags(), ElementsAre("settings", "abc", "3", "3"));
  EXPECT_THAT(form.lvwContacts.Row(3).cells, ElementsAre("3", "b", "1", "2", "c", "3"));
}

TEST_F(ContactList, DeletesOnlyAfterBothQuestions) {
  form.DeleteContacts();
  EXPECT_THAT(boxes.shown, IsEmpty()) << "there is nothing to delete";
  WriteContacts(3);
  Open();
  DeleteWithYes();
  Select({1, 3});
  boxes.answers = {BoxAnswer::Cancel, BoxAnswer::Yes, BoxAnswer::No};
  form.DeleteContacts();
  form.DeleteContacts();
  EXPECT_THAT(Sections(), SizeIs(3));
  EXPECT_THAT(boxes.shown, SizeIs(5));
  const std::string photo = MakePhoto("3");
  const std::string other = MakePhoto("2");
  DeleteWithYes();
  EXPECT_THAT(Tags(), ElementsAre("2"));
  EXPECT_FALSE(fs::exists(photo));
  EXPECT_TRUE(fs::exists(other));
  Select({1});
  DeleteWithYes();
  EXPECT_EQ(Panels(), "Ready|0 Contacts");
  EXPECT_THAT(form.lvwContacts.Rows(), IsEmpty());
  EXPECT_THAT(table.Contacts(), SizeIs(1)) << "the rows in memory stay for the lookup";
}

TEST_F(ContactList, DeletingTouchesOnlyWhatIsNamed) {
  const std::string precious = home.Path() + "precious.bmp";
  WriteBytes(precious, "");
  WriteBytes(app.ContactsFile, "[../precious]\nName=a\n[3]\nName=b\n[3]\nName=c\n; mine\n");
  Open();
  Select({1, 2});
  DeleteWithYes();
  EXPECT_TRUE(fs::exists(precious));
  EXPECT_EQ(test::BytesOf(app.ContactsFile), "[3]\nName=c\n; mine\n");
  // A file that can't be written keeps contact and photo.
  const std::string photo = MakePhoto("3");
  fs::remove(app.ContactsFile);
  fs::create_directory(app.ContactsFile);
  form.DeleteContact("3");
  EXPECT_TRUE(fs::exists(photo));
  EXPECT_THAT(troubles, SizeIs(1));
}

TEST_F(ContactList, WhatComesInWhileItFillsLeavesAWholeList) {
  constexpr int kContacts = 70;
  WriteContacts(kContacts);
  const std::function<void()> intruders[] = {
      [this] { form.lvwContacts.ColumnClick(3); },
      [this] { form.RefreshContactList(); },
      [this] {
        // Another window loads a shorter table and then brings it back.
        const std::string bytes = test::BytesOf(app.ContactsFile);
        WriteContacts(1);
        table.LoadContacts();
        WriteBytes(app.ContactsFile, bytes);
        table.LoadContacts();
      },
      [this] {
        Select({1});
        boxes.answers = {BoxAnswer::Yes, BoxAnswer::No};
        form.DeleteContacts();
      },
      [this] { form.EscapePressed(); },
  };
  for (const auto& intrude : intruders)
    for (int at = 0; at < 9; ++at) {
      int pump = 0;
      loop.on_pump = [&] {
        if (pump++ == at && form.lvwContacts.RowCount() > 0)
          intrude();
      };
      form.ReloadContactList();
      ExpectWholeList(kContacts);
    }
  // Two contacts that go while the list fills.
  int pump = 0;
  loop.on_pump = [&] {
    if (pump++ == 3) {
      Select({1, 2});
      DeleteWithYes();
    }
  };
  form.ReloadContactList();
  ExpectWholeList(kContacts - 2);
}

TEST_F(ContactList, ManyContactsGoAtOnce) {
  constexpr int kContacts = 5000;
  WriteContacts(kContacts);
  Open();
  std::vector<std::size_t> all(kContacts);
  for (std::size_t row = 0; row < all.size(); ++row)
    all[row] = row + 1;
  Select(all);
  const auto start = std::chrono::steady_clock::now();
  DeleteWithYes();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(5));
  EXPECT_EQ(test::BytesOf(app.ContactsFile), "");
}

} // namespace
} // namespace kelmio
