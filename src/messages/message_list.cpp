#include "messages/message_list.h"

#include "core/date_time.h"
#include "core/mGeneral.h"

namespace kelmio {

MessageList::MessageList(const House& house) : house_(house) {
  lvwCalls.ColumnClick = [this](std::size_t column) { SortMessagesBy(static_cast<int>(column)); };
}

void MessageList::CreateColumns() {
  using Alignment = ListColumn::Alignment;
  lvwCalls.AddColumn({"#", 600, Alignment::Left});
  lvwCalls.AddColumn({"Caller Name", 2200, Alignment::Left});
  lvwCalls.AddColumn({"Phone Number", 2000, Alignment::Left});
  lvwCalls.AddColumn({"Time", 2600, Alignment::Left});
  lvwCalls.AddColumn({"Length", 1200, Alignment::Left});
  lvwCalls.AddColumn({"Size", 1200, Alignment::Left});
}

void MessageList::RefreshMessageList() {
  house_.messages.LoadMessageFolder();
  house_.messages.SortMessageFiles(house_.settings.MessagesSortBy);
  lvwCalls.Clear();
  house_.host.SetCallCount(house_.messages.MessageCount() + " Calls");
  if (house_.messages.MessageCount() == "0")
    return;
  house_.mmc.Command("Stop");
  house_.mmc.Command("Close");
  const auto& records = house_.messages.Messages();
  for (std::size_t i = 0; i < records.size(); ++i)
    FillRow(records[i], i);
  house_.host.PumpEvents();
  house_.host.PreviewMessage();
  house_.host.PumpEvents();
}

void MessageList::FillRow(const MessageRecord& record, std::size_t index) {
  ListRow& row = lvwCalls.AddRow(
      {std::to_string(index + 1), record.Name, record.Number,
       FormatMonthDayYear(CivilTimeOf(record.Date), '-') + "    " + FormatTimeAmPm(CivilTimeOf(record.Time)),
       FormatTime(record.Length), mGeneral::FormatByteSize(record.Size)});
  row.tag = record.FileName;
  row.bold = !record.Read;
  row.text_color = index % 2 == 0 ? house_.settings.MessagesWindowColor : house_.settings.MessagesWindowColor1;
}

const MessageRecord* MessageList::SelectedMessage() const {
  const std::size_t row = lvwCalls.SelectedRow();
  const MessageStore& messages = house_.messages;
  return row != 0 && row <= messages.Messages().size() ? &messages.Messages()[row - 1] : nullptr;
}

void MessageList::SortMessagesBy(int column) {
  int& sort_by = house_.settings.MessagesSortBy;
  sort_by = column == sort_by ? -sort_by : column;
  SaveSetting(house_.settings, house_.registry, "MessagesSortBy");
  RefreshMessageList();
}

} // namespace kelmio
