#include "settings_ui/dialogs/frmWaveFormat.h"

#include <algorithm>

#include "core/mGeneral.h"
#include "media/recording_format.h"

namespace kelmio {

namespace {

constexpr double kSecondsPerMinute = 60;

// The number of another program's coding, for which there is no name here, tells more than a blank.
std::string CodingOf(const WaveFormatRecord& format) {
  const std::string name = CodeNameOf(format);
  return name.empty() ? "Format " + std::to_string(format.format_tag) : name;
}

} // namespace

frmWaveFormat::frmWaveFormat(const std::string& title, const WaveFormatRecord& current)
    : current_(current), formats_(RecordableFormats()) {
  Caption = title;
  if (std::find(formats_.begin(), formats_.end(), current_) == formats_.end())
    formats_.insert(formats_.begin(), current_);
  using Alignment = ListColumn::Alignment;
  lvwFormats.AddColumn({"Coding", 1900, Alignment::Left});
  lvwFormats.AddColumn({"Format", 3000, Alignment::Left});
  lvwFormats.AddColumn({"Size per Minute", 1700, Alignment::Right});
  cmdOK.Caption = "OK";
  cmdCancel.Caption = "Cancel";
  lvwFormats.DblClick = [this] { cmdOK_Click(); };
  cmdOK.Click = [this] { cmdOK_Click(); };
  cmdCancel.Click = [this] { Visible = false; };
}

void frmWaveFormat::Load() {
  chosen_.reset();
  lvwFormats.Clear();
  std::uint64_t current = 0;
  for (const WaveFormatRecord& format : formats_) {
    const std::uint64_t key =
        lvwFormats
            .AddRow({CodingOf(format), DetailOf(format),
                     mGeneral::FormatByteSize(format.average_bytes_per_second * kSecondsPerMinute)})
            .key;
    if (format == current_)
      current = key;
  }
  lvwFormats.SetSelection({current}, current);
}

void frmWaveFormat::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("lvwFormats", lvwFormats);
  visitor.Visit("cmdOK", cmdOK);
  visitor.Visit("cmdCancel", cmdCancel);
}

void frmWaveFormat::cmdOK_Click() {
  const std::size_t row = lvwFormats.SelectedRow();
  if (row == 0)
    return;
  chosen_ = formats_.at(row - 1);
  Visible = false;
}

} // namespace kelmio
