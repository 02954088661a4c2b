// What the user does with the messages selected in the list: copy, move, delete, mark, save.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/trouble.h"
#include "messages/store/message_store.h"
#include "platform/dialogs.h"

namespace kelmio {

class MessageList;

/// What the operations ask of the window around them. User interface thread only.
class MessageOperationsHost {
public:
  virtual ~MessageOperationsHost() = default;
  /// Tag of the folder selected in the tree; nothing when none is.
  virtual std::optional<std::string> SelectedFolderTag() const = 0;
  /// Owner of the modal windows; its caption titles the question before messages go for good.
  virtual Form& MainWindow() = 0;
};

/// User interface thread only. Rows count from 1.
/// Nothing is undone: the order of the steps is the protection. A message is in its new folder before it leaves the
/// old one, so that a crash between the two leaves a copy behind and no gap. What could not be done is told to the
/// sink. A blank row, whose file is gone, is passed over, and so is a message that is being recorded: its file would
/// vanish under the recorder and the rest of the call with it.
class MessageOperations {
public:
  struct House {
    MessageStore& messages;
    MessageList& list;
    MessageBoxes& boxes;
    FolderPicker& picker;
    FileClipboard& clipboard;
    Windows& windows;
    MessageOperationsHost& host;
    TroubleSink trouble;
  };
  /// The Delete key of the list is taken.
  explicit MessageOperations(House house);

  /// Full path that the window to copy to or move to a folder has left; empty when the user gave up.
  std::string CopyTargetFolder;
  std::string MoveTargetFolder;

  /// Copies one message with its record from folder to folder, over what is there of that name; nothing within one
  /// folder. The record is written even when the file could not be copied: the next load of the target heals it.
  void CopyMessage(const std::string& file_name, const std::string& source, const std::string& target);
  void CopyMessages();
  /// Moving to the folder that the messages are in removes them: that is how it has always been.
  void MoveMessages();
  void MoveDragedMessages(const std::string& target);
  /// Takes one row out of the list, its record out of the index and its file off the disk, in that order.
  void DeleteMessage(std::size_t row);
  /// Moves to the deleted messages; those already there are removed after a question.
  void DeleteMessages();
  void RemoveMessages();
  /// The records in memory keep their mark until the next load.
  void MarkMessages(bool read);
  /// Copies the files only, to a folder of the user's choice.
  void SaveMessages();
  void SelectAllMessages();
  void CopyMessagesToClipboard();

private:
  enum class FileWay { Copy, Link };

  bool NothingSelected() const;
  bool IsSelected(std::size_t row) const;
  /// File names of the selected rows, from first to last, without the blank ones.
  std::vector<std::string> SelectedFiles() const;
  /// Runs `act` for each selected row from the last to the first, which may take that row out.
  void ForEachSelectedBackwards(const std::function<void(std::size_t row)>& act);
  /// False when the record could not be written.
  bool CopyRecord(const std::string& file_name, const std::string& source, const std::string& target, FileWay way);
  void MoveSelectedMessages(const std::string& target);
  bool IsDeletedFolderSelected() const;
  /// Says so as well.
  bool IsBeingRecorded(const std::string& file_name) const;
  /// The folder on show, with its closing separator.
  std::string Folder() const;

  House house_;
};

} // namespace kelmio
