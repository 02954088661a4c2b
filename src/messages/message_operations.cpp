#include "messages/message_operations.h"

#include <filesystem>

#include "controls/form.h"
#include "core/ini_document.h"
#include "core/ini_text.h"
#include "core/mGeneral.h"
#include "core/mIni.h"
#include "core/program_paths.h"
#include "core/store_file.h"
#include "core/text.h"
#include "messages/folder_tree.h"
#include "messages/frmFolderPicker.h"
#include "messages/message_list.h"

namespace kelmio {
namespace {

std::string NotCopied(const std::string& file) {
  return "Could not copy \"" + file + "\".";
}

} // namespace

MessageOperations::MessageOperations(House house) : house_(std::move(house)) {
  house_.list.lvwCalls.DeleteKey = [this] { DeleteMessages(); };
}

void MessageOperations::CopyMessage(const std::string& file_name, const std::string& source,
                                    const std::string& target) {
  CopyRecord(file_name, source, target, FileWay::Copy);
}

bool MessageOperations::CopyRecord(const std::string& file_name, const std::string& source, const std::string& target,
                                   FileWay way) {
  const std::string from = WithClosingSeparator(source);
  const std::string to = WithClosingSeparator(target);
  if (file_name.empty() || from.empty() || to.empty() || from == to)
    return true;
  const bool copied = way == FileWay::Link ? LinkOrCopyFile(from + file_name, to + file_name)
                                           : mGeneral::CopyFileTo(from + file_name, to + file_name, false);
  if (!copied)
    house_.trouble(NotCopied(from + file_name));

  const std::string index_name(kMessageIndexName);
  const IniDocument index = IniDocument::Load(from + index_name);
  std::vector<std::pair<std::string, std::string>> record;
  record.reserve(kMessageKeys.size());
  for (const std::string_view key : kMessageKeys)
    record.emplace_back(key, index.Read(file_name, key));
  const bool written = mIni::IniWriteSection(file_name, record, to + index_name);
  if (!written)
    house_.trouble(NotWritten(to + index_name));
  return written;
}

void MessageOperations::CopyMessages() {
  if (NothingSelected())
    return;
  CopyTargetFolder.clear();
  frmCopy window(house_.messages.MessagesFolder(), CopyTargetFolder, house_.trouble);
  house_.windows.ShowModal(window, &house_.host.MainWindow());
  if (CopyTargetFolder.empty())
    return;
  ForEachSelectedBackwards([this](std::size_t row) {
    CopyMessage(house_.list.lvwCalls.Row(row).tag, house_.messages.CurrentFolder(), CopyTargetFolder);
  });
  house_.list.RefreshMessageList();
}

void MessageOperations::MoveMessages() {
  if (NothingSelected())
    return;
  MoveTargetFolder.clear();
  frmMove window(house_.messages.MessagesFolder(), MoveTargetFolder, house_.trouble);
  house_.windows.ShowModal(window, &house_.host.MainWindow());
  if (!MoveTargetFolder.empty())
    MoveSelectedMessages(MoveTargetFolder);
}

void MessageOperations::MoveDragedMessages(const std::string& target) {
  if (!NothingSelected() && !target.empty())
    MoveSelectedMessages(target);
}

void MessageOperations::MoveSelectedMessages(const std::string& target) {
  ForEachSelectedBackwards([&](std::size_t row) {
    const std::string file_name = house_.list.lvwCalls.Row(row).tag;
    if (IsBeingRecorded(file_name))
      return;
    // A message that no index names is never found again: it stays where it has its record.
    if (CopyRecord(file_name, house_.messages.CurrentFolder(), target, FileWay::Link))
      DeleteMessage(row);
  });
  house_.list.RefreshMessageList();
}

void MessageOperations::DeleteMessage(std::size_t row) {
  ListView& list = house_.list.lvwCalls;
  if (row < 1 || row > list.RowCount())
    return;
  const std::string file_name = list.Row(row).tag;
  if (IsBeingRecorded(file_name))
    return;
  list.RemoveRow(row);
  if (file_name.empty())
    return;
  const std::string index = house_.messages.IndexPath();
  // On a full disk the record may stay for the next load to heal; the file goes all the same and makes room.
  if (!mIni::IniDeleteSection(file_name, index))
    house_.trouble(NotWritten(index));
  const std::string path = Folder() + file_name;
  if (!mGeneral::FileExists(path))
    return;
  std::error_code error;
  std::filesystem::remove(path, error);
  if (error)
    house_.boxes.Show("Error: " + mGeneral::SystemErrorText(error.value()), "", BoxButtons::Ok, BoxIcon::None, 1);
}

void MessageOperations::DeleteMessages() {
  if (NothingSelected())
    return;
  if (!IsDeletedFolderSelected()) {
    MoveTargetFolder = DeletedKey(house_.messages.MessagesFolder());
    return MoveSelectedMessages(MoveTargetFolder);
  }
  constexpr int kNo = 2;
  if (house_.boxes.Show("Are you sure you want to permanently delete these message(s)?",
                        house_.host.MainWindow().Caption, BoxButtons::YesNo, BoxIcon::Warning, kNo) == BoxAnswer::Yes)
    RemoveMessages();
}

bool MessageOperations::IsDeletedFolderSelected() const {
  if (const auto tag = house_.host.SelectedFolderTag())
    return *tag == kDeletedTag;
  // A tree that was built anew has no selection. To move from the deleted messages to themselves would remove them
  // with no question.
  return Folder() == WithClosingSeparator(DeletedKey(house_.messages.MessagesFolder()));
}

void MessageOperations::RemoveMessages() {
  std::size_t count = 0;
  ForEachSelectedBackwards([&](std::size_t row) {
    DeleteMessage(row);
    ++count;
  });
  if (count > 0)
    house_.list.RefreshMessageList();
}

void MessageOperations::MarkMessages(bool read) {
  const std::vector<std::string> files = SelectedFiles();
  if (files.empty())
    return;
  const std::string index = house_.messages.IndexPath();
  const bool written = mIni::IniChange(index, [&](IniText& text) {
    for (const std::string& file_name : files)
      text.Write(file_name, "Read", TextOfBoolean(read));
  });
  if (!written)
    house_.trouble(NotWritten(index));
  ListView& list = house_.list.lvwCalls;
  for (std::size_t row = 1; row <= list.RowCount(); ++row)
    if (IsSelected(row) && !list.Row(row).tag.empty())
      list.Row(row).bold = !read;
  list.Changed();
}

void MessageOperations::SaveMessages() {
  if (NothingSelected())
    return;
  const std::string target = WithClosingSeparator(house_.picker.BrowseForFolder("Select folder"));
  if (target.empty())
    return;
  for (const std::string& file_name : SelectedFiles())
    if (!mGeneral::CopyFileTo(Folder() + file_name, target + file_name, false))
      house_.trouble(NotCopied(Folder() + file_name));
}

void MessageOperations::SelectAllMessages() {
  ListView& list = house_.list.lvwCalls;
  for (std::size_t row = 1; row <= list.RowCount(); ++row)
    list.Row(row).selected = true;
  list.Changed();
}

void MessageOperations::CopyMessagesToClipboard() {
  std::vector<std::string> paths;
  for (const std::string& file_name : SelectedFiles())
    paths.push_back(Folder() + file_name);
  if (!paths.empty())
    house_.clipboard.CopyFiles(paths);
}

bool MessageOperations::NothingSelected() const {
  for (const ListRow& row : house_.list.lvwCalls.Rows())
    if (row.selected)
      return false;
  return true;
}

bool MessageOperations::IsSelected(std::size_t row) const {
  const ListView& list = house_.list.lvwCalls;
  return row <= list.RowCount() && list.Row(row).selected;
}

std::vector<std::string> MessageOperations::SelectedFiles() const {
  std::vector<std::string> names;
  for (const ListRow& row : house_.list.lvwCalls.Rows())
    if (row.selected && !row.tag.empty())
      names.push_back(row.tag);
  return names;
}

void MessageOperations::ForEachSelectedBackwards(const std::function<void(std::size_t row)>& act) {
  // Looked at anew each time: a box that `act` opens lets events run, and a call that ends fills the list anew.
  for (std::size_t row = house_.list.lvwCalls.RowCount(); row > 0; --row)
    if (IsSelected(row))
      act(row);
}

bool MessageOperations::IsBeingRecorded(const std::string& file_name) const {
  const std::string path = Folder() + file_name;
  if (file_name.empty() || (!house_.messages.IsRecording(path) && !IsBeingWritten(path)))
    return false;
  house_.trouble("\"" + file_name + "\" is still being recorded and stays where it is.");
  return true;
}

std::string MessageOperations::Folder() const {
  return WithClosingSeparator(house_.messages.CurrentFolder());
}

} // namespace kelmio
