#include "messages/store/message_store.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <unistd.h>

#include "core/mIni.h"
#include "fakes/fake_desktop.h"
#include "fakes/fake_loop.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio {
namespace {

using test::BytesOf;
using test::WriteBytes;
using testing::ElementsAre;
using testing::SizeIs;

const std::string kWave = "a wave of 20 bytes..";

class MessageStoreTest : public testing::Test {
protected:
  MessageStoreTest() { std::filesystem::create_directories(inbox); }

  std::string Index() const { return inbox + "Messages.ini"; }
  void AddWave(const std::string& name) { WriteBytes(inbox + name, kWave); }
  // A message with its file.
  void Add(const std::string& file_name, const std::string& keys) {
    AddWave(file_name);
    WriteBytes(Index(), BytesOf(Index()) + "[" + file_name + "]\n" + keys);
  }
  std::vector<std::string> SortedBy(int column) {
    store.LoadMessageFolder();
    store.SortMessageFiles(column);
    std::vector<std::string> names;
    for (const MessageRecord& message : store.Messages())
      names.push_back(message.FileName);
    return names;
  }
  LocalDateTime DateTimeOf(std::size_t row) { return CivilTimeOf(store.Messages()[row].DateTime); }

  test::TemporaryFolder folder;
  std::string inbox = folder.Path() + "Messages/Inbox/";
  FakeLoop clock;
  FakeMultimediaDevice device;
  std::vector<std::string> troubles;
  MessageStore store{folder.Path(), clock, device, [this](const std::string& text) { troubles.push_back(text); }};
};

TEST_F(MessageStoreTest, LeavesWhatAnotherCopyRecordsUnmeasured) {
  Add("a.wav", "Size=-1\nLength=-1\n");
  const int writer = ::open((inbox + "a.wav").c_str(), O_RDWR | O_CLOEXEC);
  ASSERT_EQ(::flock(writer, LOCK_SH), 0);
  store.LoadMessageFolder();
  EXPECT_EQ(store.MessageCount(), "1");
  EXPECT_EQ(mIni::IniRead("a.wav", "Size", Index()), "-1");
  ::close(writer);
  store.LoadMessageFolder();
  EXPECT_EQ(mIni::IniRead("a.wav", "Size", Index()), "20");
}

TEST_F(MessageStoreTest, ANewRecordingIsNamedAndRecordedBeforeItsFile) {
  std::filesystem::remove_all(folder.Path() + "Messages");
  const NewMessageInfo info = store.GetNewMessageInfo(3);
  EXPECT_EQ(info.FilePath(), inbox + "Msg1511260907423.wav");
  EXPECT_EQ(info.FolderName, "Inbox");
  EXPECT_TRUE(store.WriteRecord(info, "Jane\r\n[x]", "555", "Auto"));
  EXPECT_EQ(BytesOf(Index()), "[Msg1511260907423.wav]\r\nName=Jane  [x]\r\nNumber=555\r\nDate=11/15/2026\r\n"
                              "Time=09:07:42\r\nRead=False\r\nMode=Auto\r\nDevice=3\r\nSize=-1\r\nLength=-1\r\n");
  EXPECT_EQ(store.GetNewMessageInfo(std::nullopt).FileName, "Msg151126090742.wav");
}

TEST_F(MessageStoreTest, AFreshRecordIsMeasuredOnceAndWrittenBack) {
  const NewMessageInfo info = store.GetNewMessageInfo(std::nullopt);
  store.WriteRecord(info, "Jane", "555", "Manual");
  WriteBytes(info.FilePath(), kWave);
  device.length_ms = 23040;
  store.LoadMessageFolder();
  ASSERT_THAT(store.Messages(), SizeIs(1));
  const MessageRecord& message = store.Messages()[0];
  EXPECT_EQ(message.Size, 20);
  EXPECT_EQ(message.Length, 23040);
  EXPECT_FALSE(message.Read);
  EXPECT_EQ(message.Mode, "Manual");
  EXPECT_EQ(FormatMonthDayYear(DateTimeOf(0)) + FormatTime24(DateTimeOf(0)), "11/15/202609:07:42");
  EXPECT_EQ(store.MessageCount(), "1");
  EXPECT_EQ(mIni::IniRead(info.FileName, "Size", Index()), "20");
  EXPECT_EQ(mIni::IniRead(info.FileName, "Length", Index()), "23040");
  EXPECT_THAT(device.commands, ElementsAre("Stop", "Close", "Open", "Close"));
  EXPECT_EQ(device.file_name, info.FilePath());

  device.length_ms = 1;
  AddWave(info.FileName + "x");
  store.LoadMessageFolder();
  EXPECT_EQ(store.Messages()[0].Length, 23040);
}

TEST_F(MessageStoreTest, ADeletedFileShowsOneBlankRowOnce) {
  Add("a.wav", "Name=A\nSize=1\nLength=1\n");
  Add("b.wav", "Name=B\nSize=1\nLength=1\n");
  std::filesystem::remove(inbox + "a.wav");
  store.LoadMessageFolder();
  ASSERT_THAT(store.Messages(), SizeIs(2));
  EXPECT_EQ(store.Messages()[0].FileName, "");
  EXPECT_EQ(store.Messages()[1].Name, "B");
  EXPECT_EQ(store.MessageCount(), "1");
  store.LoadMessageFolder();
  EXPECT_THAT(store.Messages(), SizeIs(1));
  EXPECT_THAT(mIni::IniSectionNames(Index()), ElementsAre("b.wav"));
}

TEST_F(MessageStoreTest, WhatIsBeingRecordedIsLeftAloneUntilItEnds) {
  const NewMessageInfo info = store.GetNewMessageInfo(1);
  store.WriteRecord(info, "Jane", "555", "Auto");
  const std::string index = BytesOf(Index());
  store.SetRecording(info.FilePath());
  store.LoadMessageFolder(); // the file isn't there yet
  EXPECT_EQ(BytesOf(Index()), index);
  EXPECT_EQ(store.MessageCount(), "0");
  WriteBytes(info.FilePath(), kWave);
  store.LoadMessageFolder();
  EXPECT_EQ(BytesOf(Index()), index);
  EXPECT_EQ(store.Messages()[0].Size, -1);
  EXPECT_EQ(store.MessageCount(), "1");
  store.ClearRecording();
  store.LoadMessageFolder();
  EXPECT_EQ(store.Messages()[0].Size, 20);
}

TEST_F(MessageStoreTest, HandMadeRecordsReadAsFarAsTheyGo) {
  Add("a.wav", "Date=2026-11-15\nTime=9 o'clock\nRead=TRUE\nSize=007x\n");
  store.LoadMessageFolder();
  const MessageRecord& message = store.Messages()[0];
  EXPECT_EQ(message.Date, DateValue{});
  EXPECT_EQ(message.DateTime, DateValue{});
  EXPECT_TRUE(message.Read);
  EXPECT_EQ(message.Size, 7);
  EXPECT_EQ(message.Length, 0); // missing is not unknown
  EXPECT_EQ(mIni::IniRead("a.wav", "Length", Index()), "");
}

TEST_F(MessageStoreTest, SortsByEachColumnAndKeepsTiesInOrder) {
  const std::string same_second = "Date=11/15/2026\nTime=09:00:00\n";
  Add("1", "Name=b\nNumber=9\nLength=30\nSize=5\n" + same_second);
  Add("2", "Name=B\nNumber=10\nLength=200\nSize=5\n" + same_second);
  Add("3", "Name=a\nNumber=\nLength=4\nSize=6\nDate=01/02/2026\nTime=23:59:59\n");
  EXPECT_THAT(SortedBy(2), ElementsAre("2", "3", "1"));
  EXPECT_THAT(SortedBy(3), ElementsAre("3", "2", "1"));
  EXPECT_THAT(SortedBy(-4), ElementsAre("1", "2", "3"));
  EXPECT_THAT(SortedBy(5), ElementsAre("3", "1", "2"));
  EXPECT_THAT(SortedBy(-6), ElementsAre("3", "1", "2"));
  for (const int none : {0, 1, -1, 7, -7})
    EXPECT_THAT(SortedBy(none), ElementsAre("1", "2", "3"));
}

TEST_F(MessageStoreTest, ALongIndexShowsWhatFitsAndLosesNothing) {
  std::string bytes;
  for (int i = 1000; i < 1600; ++i) {
    const std::string name = "Msg15112609" + std::to_string(i) + "1.wav"; // 20 characters and a zero
    AddWave(name);
    bytes += "[" + name + "]\nName=x\n";
  }
  WriteBytes(Index(), bytes);
  store.LoadMessageFolder();
  EXPECT_THAT(store.Messages(), SizeIs(477)); // 476 whole names and 2 characters of the next
  EXPECT_EQ(store.MessageCount(), "476");
  EXPECT_EQ(BytesOf(Index()), bytes);
}

TEST_F(MessageStoreTest, TellsWhenTheIndexCannotBeWritten) {
  AddWave("a.wav");
  std::filesystem::create_directory(Index());
  EXPECT_FALSE(store.WriteRecord(store.GetNewMessageInfo(1), "n", "1", "Auto"));
  EXPECT_THAT(troubles, ElementsAre("Could not write \"" + Index() + "\"."));
}

TEST(MessageDateTime, JoinsTheTextsWithoutALocale) {
  const auto text = [](const char* date, const char* time) -> std::string {
    const auto value = MakeDateTime(date, time);
    return value ? FormatMonthDayYear(CivilTimeOf(*value)) + " " + FormatTime24(CivilTimeOf(*value)) : "none";
  };
  EXPECT_EQ(text("12/31/2026", "23:59:59"), "12/31/2026 23:59:59");
  EXPECT_EQ(text(" 1x/02y/2026z", "9:5:7 AM"), "01/02/2026 09:05:07");
  EXPECT_EQ(text("13/32/2026", "24:60:60"), "02/02/2027 01:01:00");
  EXPECT_EQ(text("11/15/2026", "09:00"), "none");
  EXPECT_EQ(text("11/15/99999999999", "09:00:00"), "none");
}

TEST(MessageLength, EveryDivisionRoundsToTheNearest) {
  const std::vector<std::pair<int, std::string>> lengths = {{500, "00:00:00"},     {1500, "00:00:02"},
                                                            {60000, "00:00:60"},   {90000, "00:02:-30"},
                                                            {119000, "00:02:-01"}, {5400000, "02:-30:00"}};
  for (const auto& [milliseconds, text] : lengths)
    EXPECT_EQ(FormatTime(milliseconds), text) << milliseconds;
}

} // namespace
} // namespace kelmio
