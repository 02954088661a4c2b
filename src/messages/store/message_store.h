// The message folders on disk, and the records of the folder on show.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "core/trouble.h"
#include "messages/store/message_record.h"
#include "platform/clock.h"
#include "platform/multimedia_device.h"

namespace kelmio {

class IniText;

/// What a recording that is about to start is called and where it goes.
struct NewMessageInfo {
  std::string FileName;
  std::string FolderName;
  std::string FolderPath; // with a closing separator
  std::string Device;     // decimal, empty without a line

  std::string FilePath() const { return FolderPath + FileName; }
};

/// User interface thread only. Clock, device and sink must live as long. What could not be written is told to
/// the sink and otherwise lost.
class MessageStore {
public:
  /// `app_path` is the program's folder with its closing separator.
  MessageStore(const std::string& app_path, const Clock& clock, MultimediaDevice& device,
               TroubleSink trouble = NoTroubleSink());

  const std::string& MessagesFolder() const { return messages_folder_; }
  const std::string& InboxName() const { return inbox_name_; }
  const std::string& InboxFolder() const { return inbox_folder_; }

  /// The folder on show, at first the inbox.
  const std::string& CurrentFolder() const { return current_folder_; }
  void SetCurrentFolder(std::string path) { current_folder_ = std::move(path); }
  /// The index of the folder on show.
  std::string IndexPath() const;

  /// Name of the folder that new recordings go to.
  std::string GetNewMessageFolder() const { return inbox_name_; }
  /// Names a recording that starts now and makes its folder. Two within one second on one device have the same
  /// name, and the later overwrites the earlier.
  NewMessageInfo GetNewMessageInfo(std::optional<long> device_id) const;
  /// Writes the record of a recording that starts now, unread and of unknown size and length, before there is a
  /// file: a crash leaves a row that heals, never a file no one finds. False when it could not be written.
  bool WriteRecord(const NewMessageInfo& info, const std::string& name, const std::string& number,
                   const std::string& mode);

  /// The file at `path` is being recorded: until it is cleared, a load neither measures it nor removes its
  /// record, even where the file isn't there yet.
  void SetRecording(std::string path) { recording_ = std::move(path); }
  void ClearRecording() { recording_.clear(); }
  bool IsRecording(const std::string& path) const;

  /// Stops the device and reads the folder on show, healing its index as one change: a record without a file
  /// leaves the index and stays as an empty row this once, an unknown size or length is measured. An index
  /// without records leaves the old rows and sets the count to 0.
  void LoadMessageFolder();
  /// Sorts by the column of the message list that `sort_by` names, greatest first when it is negative; ties and
  /// other columns keep the order. Binary comparison.
  void SortMessageFiles(int sort_by);

  const std::vector<MessageRecord>& Messages() const { return messages_; }
  /// Records with a file that the last load has found, in decimal.
  const std::string& MessageCount() const { return message_count_; }

private:
  // What a load mends in the index, in the order of the index.
  using Edits = std::vector<std::function<void(IniText&)>>;

  void Measure(MessageRecord& record, const std::string& path, Edits& healing);

  const Clock& clock_;
  MultimediaDevice& device_;
  TroubleSink trouble_;
  std::string messages_folder_;
  std::string inbox_name_;
  std::string inbox_folder_;
  std::string current_folder_;
  std::string recording_;
  std::vector<MessageRecord> messages_;
  std::string message_count_ = "0";
};

} // namespace kelmio
