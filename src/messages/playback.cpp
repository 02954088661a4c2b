#include "messages/playback.h"

#include "core/mGeneral.h"
#include "core/mIni.h"
#include "core/program_paths.h"

namespace kelmio {

namespace {

constexpr int kStatusIntervalMs = 20;

} // namespace

MessagePlayback::MessagePlayback(House house) : house_(std::move(house)) {
  cmdPlayFile.Caption = "Play Message";
  cmdStopPlay.Caption = "Stop Playing";
  cmdPlayFile.Click = [this] { PlaySelectedMessage(); };
  cmdStopPlay.Click = [this] { cmdStopPlay_Click(); };
  sldSlider.Orientation = ucSlider::Orientations::Horizontal;
  sldSlider.Click = [this] { Seek(); };
  sldSlider.ThumbGrabbed = [this](int) { Seek(); };
  sldSlider.ThumbReleased = [this](int) { Seek(); };
  house_.mmc.StatusUpdate = [this] {
    // During a drag the value is the user's: the end of the drag seeks to it. A place beyond the slider's end, as of
    // a file that grows, is refused by it and passed over.
    if (!sldSlider.Dragging())
      sldSlider.SetValue(house_.mmc.Position());
  };
}

void MessagePlayback::PlaySelectedMessage() {
  const std::size_t row = house_.list.lvwCalls.SelectedRow();
  const MessageRecord* record = house_.list.SelectedMessage();
  if (record == nullptr || record->FileName.empty())
    return;
  playing_row_ = static_cast<long>(row);
  const std::string path = WithClosingSeparator(house_.messages.CurrentFolder()) + record->FileName;
  if (!mGeneral::FileExists(path))
    return;
  MultimediaDevice& mmc = house_.mmc;
  if (mmc.Tag != path)
    sldSlider.SetValue(0);
  if (!record->Read)
    MarkRead(row, *record);
  house_.app.StopPlaybackFlag = false;
  cmdStopPlay.Enabled = true;
  mmc.Command("Stop");
  mmc.Command("Close");
  mmc.SetDeviceType("WaveAudio");
  mmc.SetFileName(path);
  mmc.Tag = path;
  mmc.Command("Open");
  const long length = mmc.Length();
  if (sldSlider.Value() >= length)
    sldSlider.SetValue(0);
  mmc.SetFrom(sldSlider.Value());
  mmc.Command("Play");
  mmc.SetUpdateInterval(kStatusIntervalMs);
  if (length < 1)
    cmdStopPlay_Click();
  else
    sldSlider.SetMax(length);
}

void MessagePlayback::MarkRead(std::size_t row, const MessageRecord& record) {
  // The record in memory keeps its mark until the next load.
  const std::string index = house_.messages.IndexPath();
  if (!mIni::IniWrite(record.FileName, "Read", "True", index))
    house_.trouble(NotWritten(index));
  house_.list.lvwCalls.Row(row).bold = false;
  house_.list.lvwCalls.Changed();
}

void MessagePlayback::cmdStopPlay_Click() {
  house_.app.StopPlaybackFlag = true;
  house_.mmc.Command("Stop");
  house_.mmc.Command("Close");
  playing_row_ = -1;
  house_.pump_events();
}

void MessagePlayback::Seek() {
  cmdStopPlay.Enabled = true;
  house_.mmc.SetFrom(sldSlider.Value());
  house_.mmc.Command("play");
}

} // namespace kelmio
