// The window with the log of calls.
#include <gmock/gmock.h>

#include <fstream>

#include "calls/frmCallLog.h"
#include "fakes/fake_loop.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using testing::ElementsAre;

class FakeCallLogWindows : public CallLogWindows {
public:
  void OpenContactEditor(Form& /*owner*/) override { opened.emplace_back("contact"); }
  void OpenDialer(Form& /*owner*/) override { opened.emplace_back("dialer"); }
  std::vector<std::string> opened;
};

class CallLogWindowTest : public testing::Test {
protected:
  void Write(const std::vector<std::string>& values) {
    std::ofstream file(path_);
    file << "[Calls]\r\n";
    int key = 100000;
    for (const std::string& value : values)
      file << ++key << '=' << value << "\r\n";
  }
  // The second of them has the focus.
  void Select(std::size_t row, std::size_t other) {
    const std::uint64_t current = form_.lvwCallLog.Row(other).key;
    form_.lvwCallLog.SetSelection({form_.lvwCallLog.Row(row).key, current}, current);
  }
  std::vector<std::string> Cells(std::size_t row) { return form_.lvwCallLog.Row(row).cells; }

  test::TemporaryFolder home_;
  std::string path_ = home_.Path() + "CallLog.ini";
  FakeLoop loop_;
  AppState app_;
  CallLog log_{path_, loop_};
  FakeCallLogWindows windows_;
  frmCallLog form_{{app_, log_, windows_, loop_}};
};

TEST_F(CallLogWindowTest, ShowsWhatEachLineHolds) {
  Write({"Jane Sample|5551234|15/11/26|09:07:42 AM", "no bar at all", "A|B|C|D|E|F|G"});
  form_.Load();
  EXPECT_THAT(Cells(1), ElementsAre("1", "Jane Sample", "5551234", "15/11/26", "09:07:42 AM"));
  EXPECT_THAT(Cells(2), ElementsAre("2", "no bar at all", "", "", ""));
  EXPECT_THAT(Cells(3), ElementsAre("3", "A", "B", "C", "D"));
}

TEST_F(CallLogWindowTest, DeletesTheSelectedEntriesAndNumbersTheRestAnew) {
  Write({"One|1", "Two|2", "Three|3"});
  form_.Load();
  form_.lvwCallLog.DeleteKey();
  EXPECT_EQ(form_.lvwCallLog.RowCount(), 3U) << "nothing is selected";
  Select(1, 3);
  form_.cmdDelete.Click();
  ASSERT_EQ(form_.lvwCallLog.RowCount(), 1U);
  EXPECT_THAT(Cells(1), ElementsAre("1", "Two", "2", "", ""));
  ASSERT_EQ(log_.Entries().size(), 1U);
  EXPECT_EQ(log_.Entries()[0].fields[0], "Two");
}

TEST_F(CallLogWindowTest, HandsTheFirstSelectedRowToTheDialerAndTheCurrentOneToTheEditor) {
  Write({"One|1", "Two|2", "Three|3"});
  form_.Load();
  Select(2, 3);
  form_.lvwCallLog.DblClick();
  EXPECT_EQ(app_.DialNumber, "2");
  form_.cmdAddToContact.Click();
  EXPECT_EQ(app_.NewContactName, "Three");
  EXPECT_EQ(app_.NewContactPhone, "3");
  EXPECT_TRUE(app_.ContactOpenedExternally);
  EXPECT_THAT(windows_.opened, ElementsAre("dialer", "contact"));
}

TEST_F(CallLogWindowTest, SelectsAndDeletesManyAtOnceAndTakesCallsThatComeMeanwhile) {
  constexpr std::size_t kMany = 50000;
  Write(std::vector<std::string>(kMany, "Jane|5551234|15/11/26|09:07:42 AM"));
  loop_.Post([this] { log_.LogNewCall("Late", "1"); });
  form_.Load();
  EXPECT_EQ(form_.lvwCallLog.RowCount(), kMany) << "the call that came while it loaded is for the next opening";
  EXPECT_EQ(log_.Entries().size(), kMany + 1);
  bool focused = false;
  form_.lvwCallLog.SetFocusTaker([&] { focused = true; });
  form_.cmdSelectAll.Click();
  EXPECT_TRUE(focused);
  form_.lvwCallLog.DeleteKey();
  EXPECT_EQ(form_.lvwCallLog.RowCount(), 0U);
  ASSERT_EQ(log_.Entries().size(), 1U);
  EXPECT_EQ(log_.Entries()[0].fields[0], "Late");
}

} // namespace
} // namespace kelmio
