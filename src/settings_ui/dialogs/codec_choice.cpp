#include "settings_ui/dialogs/codec_choice.h"

#include <algorithm>
#include <string>
#include <utility>

namespace kelmio {

namespace {

std::string ShownName(AudioCoding coding) {
  return coding == AudioCoding::Opus ? "Opus" : NameOf(coding);
}

std::string SoundOf(AudioCoding coding) {
  switch (coding) {
  case AudioCoding::Opus:
    return "16 kHz, compressed";
  case AudioCoding::G722:
    return "16 kHz, wideband";
  case AudioCoding::Pcma:
    return "8 kHz, A-law";
  case AudioCoding::Pcmu:
    return "8 kHz, u-law";
  }
  return {};
}

} // namespace

CodecChoice::CodecChoice(Controls controls) : controls_(controls) {
  using Alignment = ListColumn::Alignment;
  controls_.list.AddColumn({"Codec", 1100, Alignment::Left});
  controls_.list.AddColumn({"Sound", 2200, Alignment::Left});
  controls_.list.AddColumn({"Used", 800, Alignment::Center});
  controls_.up.Caption = "Up";
  controls_.down.Caption = "Down";
  controls_.list.ItemClick = [this] { EnableButtons(); };
  controls_.list.DblClick = [this] { ToggleUse(); };
  controls_.up.Click = [this] { Move(-1); };
  controls_.down.Click = [this] { Move(1); };
  controls_.use.Click = [this] { ToggleUse(); };
}

void CodecChoice::Show(const std::vector<AudioCoding>& used) {
  codecs_.clear();
  for (const AudioCoding coding : used)
    codecs_.push_back({coding, true});
  for (const AudioCoding coding : kAllCodings)
    if (std::find(used.begin(), used.end(), coding) == used.end())
      codecs_.push_back({coding, false});
  Fill(0);
}

std::vector<AudioCoding> CodecChoice::Used() const {
  std::vector<AudioCoding> used;
  for (const Codec& codec : codecs_)
    if (codec.used)
      used.push_back(codec.coding);
  return used;
}

void CodecChoice::Fill(std::size_t selected) {
  controls_.list.Clear();
  for (const Codec& codec : codecs_)
    controls_.list.AddRow({ShownName(codec.coding), SoundOf(codec.coding), codec.used ? "Yes" : "No"});
  const std::uint64_t key = std::as_const(controls_.list).Row(selected + 1).key;
  controls_.list.SetSelection({key}, key);
  EnableButtons();
}

CodecChoice::Codec* CodecChoice::Selected() {
  const std::size_t row = controls_.list.SelectedRow();
  return row != 0 ? &codecs_[row - 1] : nullptr;
}

void CodecChoice::EnableButtons() {
  const Codec* codec = Selected();
  const auto used = std::count_if(codecs_.begin(), codecs_.end(), [](const Codec& each) { return each.used; });
  controls_.up.Enabled = codec != nullptr && codec != &codecs_.front();
  controls_.down.Enabled = codec != nullptr && codec != &codecs_.back();
  controls_.use.Enabled = codec != nullptr && !(codec->used && used == 1);
  controls_.use.Caption = codec != nullptr && codec->used ? "Don't Use" : "Use";
}

void CodecChoice::ToggleUse() {
  EnableButtons();
  Codec* codec = Selected();
  if (codec == nullptr || !controls_.use.Enabled)
    return;
  codec->used = !codec->used;
  Fill(static_cast<std::size_t>(codec - codecs_.data()));
}

void CodecChoice::Move(int by) {
  Codec* codec = Selected();
  if (codec == nullptr)
    return;
  const std::ptrdiff_t place = codec - codecs_.data() + by;
  if (place < 0 || place >= std::ssize(codecs_))
    return;
  std::swap(*codec, *(codec + by));
  Fill(static_cast<std::size_t>(place));
}

} // namespace kelmio
