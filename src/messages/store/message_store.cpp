#include "messages/store/message_store.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <limits>

#include "core/app_state.h"
#include "core/ini_document.h"
#include "core/ini_text.h"
#include "core/mGeneral.h"
#include "core/mIni.h"
#include "core/program_paths.h"
#include "core/store_file.h"

namespace kelmio {
namespace {

namespace fs = std::filesystem;

constexpr const char* kUnknown = "-1"; // a size or length that the next load is to measure

std::int32_t FileLength(const std::string& path) {
  constexpr std::uintmax_t kLargest = std::numeric_limits<std::int32_t>::max();
  std::error_code error;
  const std::uintmax_t size = fs::file_size(path, error);
  return error ? 0 : static_cast<std::int32_t>(std::min(size, kLargest));
}

// Sorts by one member, stable and strict in both directions, so that ties keep the order of the index.
template <class Member> void SortBy(std::vector<MessageRecord>& messages, Member member, bool descending) {
  std::stable_sort(messages.begin(), messages.end(), [&](const MessageRecord& left, const MessageRecord& right) {
    return descending ? right.*member < left.*member : left.*member < right.*member;
  });
}

} // namespace

MessageStore::MessageStore(const std::string& app_path, const Clock& clock, MultimediaDevice& device,
                           TroubleSink trouble)
    : clock_(clock), device_(device), trouble_(std::move(trouble)) {
  AppState paths;
  SetPaths(paths, app_path);
  messages_folder_ = paths.MessagesFolder;
  inbox_name_ = paths.InboxName;
  inbox_folder_ = paths.InboxFolder;
  current_folder_ = inbox_folder_;
}

std::string MessageStore::IndexPath() const {
  return WithClosingSeparator(current_folder_) + std::string(kMessageIndexName);
}

NewMessageInfo MessageStore::GetNewMessageInfo(std::optional<long> device_id) const {
  NewMessageInfo info;
  const std::string stamp = FormatDdmmyyhhnnss(clock_.Now());
  if (device_id)
    info.Device = std::to_string(*device_id);
  info.FileName = "Msg" + stamp + info.Device + ".wav";
  info.FolderName = GetNewMessageFolder();
  info.FolderPath = WithClosingSeparator(messages_folder_ + "/" + info.FolderName);
  mGeneral::EnsureFolder(info.FolderPath);
  return info;
}

bool MessageStore::WriteRecord(const NewMessageInfo& info, const std::string& name, const std::string& number,
                               const std::string& mode) {
  const LocalDateTime now = clock_.Now();
  const std::string index = info.FolderPath + std::string(kMessageIndexName);
  const bool written = mIni::IniWriteSection(info.FileName,
                                             {{"Name", name},
                                              {"Number", number},
                                              {"Date", FormatMonthDayYear(now)},
                                              {"Time", FormatTime24(now)},
                                              {"Read", "False"},
                                              {"Mode", mode},
                                              {"Device", info.Device},
                                              {"Size", kUnknown},
                                              {"Length", kUnknown}},
                                             index);
  if (!written)
    trouble_(NotWritten(index));
  return written;
}

void MessageStore::LoadMessageFolder() {
  device_.Command("Stop");
  device_.Command("Close");
  const std::string folder = WithClosingSeparator(current_folder_);
  const std::string index_path = IndexPath();
  const IniDocument index = IniDocument::Load(index_path);
  const std::vector<std::string> names = mIni::CutList(index.SectionNames());
  message_count_ = "0";
  if (names.empty())
    return;

  messages_.assign(names.size(), MessageRecord{});
  std::size_t count = 0;
  Edits healing;
  for (std::size_t i = 0; i < names.size(); ++i) {
    const std::string path = folder + names[i];
    if (mGeneral::FileExists(path)) {
      messages_[i] = ReadMessageRecord(index, names[i]);
      if (!IsRecording(path))
        Measure(messages_[i], path, healing);
      ++count;
    } else if (!IsRecording(path)) {
      healing.push_back([section = names[i]](IniText& text) { text.DeleteSection(section); });
    }
  }
  message_count_ = std::to_string(count);
  if (healing.empty())
    return;
  const bool written = mIni::IniChange(index_path, [&](IniText& text) {
    for (const auto& edit : healing)
      edit(text);
  });
  if (!written)
    trouble_(NotWritten(index_path));
}

void MessageStore::SortMessageFiles(int sort_by) {
  if (message_count_ == "0")
    return;
  const bool descending = sort_by < 0;
  switch (std::abs(std::int64_t{sort_by})) {
  case 2:
    return SortBy(messages_, &MessageRecord::Name, descending);
  case 3:
    return SortBy(messages_, &MessageRecord::Number, descending);
  case 4:
    return SortBy(messages_, &MessageRecord::DateTime, descending);
  case 5:
    return SortBy(messages_, &MessageRecord::Length, descending);
  case 6:
    return SortBy(messages_, &MessageRecord::Size, descending);
  default:
    return;
  }
}

bool MessageStore::IsRecording(const std::string& path) const {
  return !recording_.empty() && fs::path(path).lexically_normal() == fs::path(recording_).lexically_normal();
}

void MessageStore::Measure(MessageRecord& record, const std::string& path, Edits& healing) {
  // What another copy of the program records has its true size only at its end.
  const bool unknown = record.Size < 0 || record.Length < 0;
  if (!unknown || IsBeingWritten(path))
    return;
  const auto keep = [&](std::string_view key, std::int32_t number) {
    healing.push_back(
        [section = record.FileName, key, number](IniText& text) { text.Write(section, key, std::to_string(number)); });
  };
  if (record.Size < 0) {
    record.Size = FileLength(path);
    keep("Size", record.Size);
  }
  if (record.Length < 0) {
    device_.SetFileName(path);
    device_.Command("Open");
    constexpr long kLongest = std::numeric_limits<std::int32_t>::max();
    record.Length = static_cast<std::int32_t>(std::min(device_.Length(), kLongest));
    device_.Command("Close");
    keep("Length", record.Length);
  }
}

} // namespace kelmio
