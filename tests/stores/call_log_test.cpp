#include "calls/log/call_log.h"

#include <gmock/gmock.h>

#include "fakes/fake_loop.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using test::BytesOf;
using testing::ElementsAre;

class CallLogTest : public testing::Test {
protected:
  test::TemporaryFolder folder;
  std::string file = folder.Path() + "CallLog.ini";
  FakeLoop clock;
  std::vector<std::string> troubles;
  CallLog log{file, clock, [this](const std::string& text) { troubles.push_back(text); }};
};

TEST_F(CallLogTest, WritesOneLineACall) {
  log.LogNewCall("Jane Sample", "5551234");
  clock.SetNow({2026, 11, 15, 14, 15, 3});
  log.LogNewCall("Unknown", "Unknown");
  EXPECT_EQ(BytesOf(file), "[Calls]\r\n151126090742=Jane Sample|5551234|15/11/26|09:07:42 AM\r\n"
                           "151126141503=Unknown|Unknown|15/11/26|02:15:03 PM\r\n");
  EXPECT_THAT(log.Entry("151126141503"), ElementsAre("Unknown", "Unknown", "15/11/26", "02:15:03 PM", ""));
}

TEST_F(CallLogTest, NoCallerCanWriteASecondEntry) {
  log.LogNewCall("x\r\n010100000000=evil|1\n[Other]", "1\n2");
  EXPECT_THAT(log.Keys(), ElementsAre("151126090742"));
  EXPECT_EQ(log.Entry("151126090742")[0], "x  010100000000=evil");
  EXPECT_EQ(log.Entry("151126090742")[1], "1 [Other]"); // a bar in a name shifts the fields, and no more
}

TEST_F(CallLogTest, TellsWhenAnEntryIsLost) {
  std::filesystem::create_directory(file);
  log.LogNewCall("x", "1");
  EXPECT_EQ(troubles.size(), 1U);
}

} // namespace
} // namespace kelmio
