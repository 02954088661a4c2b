#include "settings_ui/dialogs/frmSipLine.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <utility>

namespace kelmio {

namespace {

// In the order of the choice.
constexpr std::array kCallers{SipCallers::Computer, SipCallers::Network, SipCallers::Everyone};

std::string SoundOf(AudioCoding coding) {
  switch (coding) {
  case AudioCoding::G722:
    return "16 kHz, wideband";
  case AudioCoding::Pcma:
    return "8 kHz, A-law";
  case AudioCoding::Pcmu:
    return "8 kHz, u-law";
  }
  return {};
}

/// Nothing when the text is no whole number from `least` to `most`, blanks around it left aside.
std::optional<long> NumberIn(std::string_view text, long least, long most) {
  const std::size_t start = std::min(text.find_first_not_of(' '), text.size());
  text = text.substr(start, text.find_last_not_of(' ') + 1 - start);
  long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size() || number < least || number > most)
    return std::nullopt;
  return number;
}

std::string RangeInWords(long least, long most) {
  return " from " + std::to_string(least) + " to " + std::to_string(most) + ".";
}

} // namespace

frmSipLine::frmSipLine(SipConfiguration& line) : line_(line) {
  Caption = "SIP Line";
  cboCallers.Items = {"Programs on this computer", "The local network", "Everyone"};
  using Alignment = ListColumn::Alignment;
  lvwCodecs.AddColumn({"Codec", 1100, Alignment::Left});
  lvwCodecs.AddColumn({"Sound", 2200, Alignment::Left});
  lvwCodecs.AddColumn({"Used", 800, Alignment::Center});
  cmdCodecUp.Caption = "Up";
  cmdCodecDown.Caption = "Down";
  cmdTest.Caption = "Test";
  cmdOK.Caption = "OK";
  cmdCancel.Caption = "Cancel";
  lvwCodecs.ItemClick = [this] { EnableCodecButtons(); };
  lvwCodecs.DblClick = [this] { cmdCodecUse_Click(); };
  cmdCodecUp.Click = [this] { MoveCodec(-1); };
  cmdCodecDown.Click = [this] { MoveCodec(1); };
  cmdCodecUse.Click = [this] { cmdCodecUse_Click(); };
  cmdTest.Click = [this] { cmdTest_Click(); };
  cmdOK.Click = [this] { cmdOK_Click(); };
  cmdCancel.Click = [this] { Visible = false; };
  line_.Watch([this] {
    lblResult.Caption = "";
    lblState.Caption = line_.StateInWords();
  });
}

frmSipLine::~frmSipLine() {
  line_.Watch({});
}

void frmSipLine::Load() {
  const SipSettings settings = line_.Settings();
  const auto* const callers = std::find(kCallers.begin(), kCallers.end(), CallersOf(settings));
  cboCallers.ListIndex = static_cast<int>(callers - kCallers.begin());
  txtPort.Text = std::to_string(settings.listen.port);
  txtRingPeriod.Text = std::to_string(settings.ring_period.count());
  lblState.Caption = line_.StateInWords();
  lblResult.Caption = "";

  codecs_.clear();
  for (const AudioCoding coding : settings.codings)
    codecs_.push_back({coding, true});
  for (const AudioCoding coding : kAllCodings)
    if (std::find(settings.codings.begin(), settings.codings.end(), coding) == settings.codings.end())
      codecs_.push_back({coding, false});
  ShowCodecs(0);
}

void frmSipLine::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("cboCallers", cboCallers);
  visitor.Visit("txtPort", txtPort);
  visitor.Visit("txtRingPeriod", txtRingPeriod);
  visitor.Visit("lvwCodecs", lvwCodecs);
  visitor.Visit("cmdCodecUp", cmdCodecUp);
  visitor.Visit("cmdCodecDown", cmdCodecDown);
  visitor.Visit("cmdCodecUse", cmdCodecUse);
  visitor.Visit("lblState", lblState);
  visitor.Visit("lblResult", lblResult);
  visitor.Visit("cmdTest", cmdTest);
  visitor.Visit("cmdOK", cmdOK);
  visitor.Visit("cmdCancel", cmdCancel);
}

// --- codecs

void frmSipLine::ShowCodecs(std::size_t selected) {
  lvwCodecs.Clear();
  for (const Codec& codec : codecs_)
    lvwCodecs.AddRow({NameOf(codec.coding), SoundOf(codec.coding), codec.used ? "Yes" : "No"});
  const std::uint64_t key = std::as_const(lvwCodecs).Row(selected + 1).key;
  lvwCodecs.SetSelection({key}, key);
  EnableCodecButtons();
}

frmSipLine::Codec* frmSipLine::SelectedCodec() {
  const std::size_t row = lvwCodecs.SelectedRow();
  return row != 0 ? &codecs_[row - 1] : nullptr;
}

void frmSipLine::EnableCodecButtons() {
  const Codec* codec = SelectedCodec();
  const auto used = std::count_if(codecs_.begin(), codecs_.end(), [](const Codec& each) { return each.used; });
  cmdCodecUp.Enabled = codec != nullptr && codec != &codecs_.front();
  cmdCodecDown.Enabled = codec != nullptr && codec != &codecs_.back();
  // A line without any codec could take no call.
  cmdCodecUse.Enabled = codec != nullptr && !(codec->used && used == 1);
  cmdCodecUse.Caption = codec != nullptr && codec->used ? "Don't Use" : "Use";
}

void frmSipLine::cmdCodecUse_Click() {
  EnableCodecButtons();
  Codec* codec = SelectedCodec();
  if (codec == nullptr || !cmdCodecUse.Enabled)
    return;
  codec->used = !codec->used;
  ShowCodecs(static_cast<std::size_t>(codec - codecs_.data()));
}

void frmSipLine::MoveCodec(int by) {
  Codec* codec = SelectedCodec();
  if (codec == nullptr)
    return;
  const std::ptrdiff_t place = codec - codecs_.data() + by;
  if (place < 0 || place >= std::ssize(codecs_))
    return;
  std::swap(*codec, *(codec + by));
  ShowCodecs(static_cast<std::size_t>(place));
}

// --- taking it over

std::optional<SipSettings> frmSipLine::Entered() {
  SipSettings settings = line_.Settings();
  if (cboCallers.ListIndex != ComboBox::kNone)
    SetCallers(settings, kCallers.at(static_cast<std::size_t>(cboCallers.ListIndex.Get())));

  // A port left to the system is none that callers could know, but may stay if it was chosen on purpose.
  constexpr long kMostPort = std::numeric_limits<std::uint16_t>::max();
  const long least_port = settings.listen.port == 0 ? 0 : 1;
  const auto port = NumberIn(txtPort.Text.Get(), least_port, kMostPort);
  if (!port) {
    lblResult.Caption = "The port is a number" + RangeInWords(least_port, kMostPort);
    return std::nullopt;
  }
  settings.listen.port = static_cast<std::uint16_t>(*port);

  const auto period = NumberIn(txtRingPeriod.Text.Get(), kShortestRingPeriod.count(), kLongestRingPeriod.count());
  if (!period) {
    lblResult.Caption = "The ring period is a number of milliseconds" +
                        RangeInWords(kShortestRingPeriod.count(), kLongestRingPeriod.count());
    return std::nullopt;
  }
  settings.ring_period = std::chrono::milliseconds(*period);

  settings.codings.clear();
  for (const Codec& codec : codecs_)
    if (codec.used)
      settings.codings.push_back(codec.coding);
  return settings;
}

void frmSipLine::cmdTest_Click() {
  if (const auto settings = Entered())
    lblResult.Caption = line_.Test(*settings);
}

void frmSipLine::cmdOK_Click() {
  const auto settings = Entered();
  if (!settings)
    return;
  const std::string told = lblResult.Caption;
  const SipTakeOver result = line_.TakeOver(*settings);
  lblState.Caption = line_.StateInWords();
  lblResult.Caption = result.words;
  if (result.state == SipTakeOver::State::Refused)
    return;
  // What else the user should know keeps the window open until he has had the time to read it.
  cmdCancel.Caption = "Close";
  if (result.words.empty() || result.words == told)
    Visible = false;
}

} // namespace kelmio
