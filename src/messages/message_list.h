// The main window's message list: the current folder's records as rows.
#pragma once

#include <string>

#include "controls/list_view.h"
#include "core/settings.h"
#include "messages/store/message_store.h"
#include "platform/multimedia_device.h"
#include "platform/registry_store.h"

namespace kelmio {

/// What the list asks of the window around it. User interface thread only.
class MessageListHost {
public:
  virtual ~MessageListHost() = default;
  virtual void SetCallCount(const std::string& text) = 0;
  virtual void PreviewMessage() = 0;
  virtual void PumpEvents() = 0;
};

/// Row n always stands for record n - 1, so that the list is never sorted by itself. User interface thread only.
class MessageList {
public:
  struct House {
    Settings& settings;
    RegistryStore& registry;
    MessageStore& messages;
    MultimediaDevice& mmc;
    MessageListHost& host;
  };
  explicit MessageList(const House& house);

  ListView lvwCalls;

  void CreateColumns();
  /// The one call after any change to the store. Lets pending events run at its end, and keeps nothing across
  /// them.
  void RefreshMessageList();
  /// A click on a column: the same column again turns the order round.
  void SortMessagesBy(int column);
  /// The record of the selected row; nothing when no row is selected.
  const MessageRecord* SelectedMessage() const;

private:
  void FillRow(const MessageRecord& record, std::size_t index);

  House house_;
};

} // namespace kelmio
