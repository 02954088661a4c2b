// Playing a message through the computer's sound card, with a slider that follows and seeks.
#pragma once

#include <functional>

#include "controls/basic_controls.h"
#include "controls/ucSlider.h"
#include "core/app_state.h"
#include "core/trouble.h"
#include "messages/message_list.h"
#include "platform/multimedia_device.h"

namespace kelmio {

/// User interface thread only. No failure of the device is shown here.
class MessagePlayback {
public:
  struct House {
    AppState& app;
    MessageStore& messages;
    MessageList& list;
    MultimediaDevice& mmc;
    std::function<void()> pump_events;
    TroubleSink trouble; // told when a message can't be marked read
  };
  /// The device's status event is taken.
  explicit MessagePlayback(House house);

  Button cmdPlayFile;
  Button cmdStopPlay;
  ucSlider sldSlider;

  /// Plays the selected message and marks it read. A message that was stopped goes on where the slider stands,
  /// another one starts at its beginning.
  void PlaySelectedMessage();

  /// The 1-based row of the message last started; -1 after a stop.
  long PlayingRow() const { return playing_row_; }

private:
  void cmdStopPlay_Click();
  void Seek();
  void MarkRead(std::size_t row, const MessageRecord& record);

  House house_;
  long playing_row_ = -1;
};

} // namespace kelmio
