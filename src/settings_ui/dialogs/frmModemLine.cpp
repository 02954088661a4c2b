#include "settings_ui/dialogs/frmModemLine.h"

#include <algorithm>
#include <array>
#include <string_view>
#include <utility>

#include "core/text.h"
#include "settings_ui/dialogs/entries.h"

namespace kelmio {

namespace {

enum Page : int { kModemPage, kMorePage };

// In the order of the choice.
constexpr std::array kRings{RingKind::Every, RingKind::A, RingKind::B, RingKind::C, RingKind::D, RingKind::E};

/// The live view is cut to the fewer lines once it has more than the most, so that not each new line moves all others.
constexpr std::size_t kMostLiveLines = 400;
constexpr std::size_t kLiveLinesKept = 300;
constexpr std::string_view kLineEnd = "\r\n";

constexpr std::string_view kCommandStart = "AT";

/// The place of a value of which the choice holds them all.
template <class Values, class Value> int PlaceOf(const Values& values, const Value& value) {
  return static_cast<int>(std::find(values.begin(), values.end(), value) - values.begin());
}

std::string GainInWords(const TextBox& box) {
  const auto gain = NumberIn(box.Text.Get(), 0, kMostGain);
  if (!gain)
    return RangeInWords(0, kMostGain);
  if (*gain == 0)
    return "As the modem has it";
  if (*gain == kNominalGain)
    return "Normal";
  return *gain < kNominalGain ? "Softer than normal" : "Louder than normal";
}

bool IsPrintable(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c >= ' ' && c <= '~'; });
}

/// Where the last `kept` of `count` lines begin.
std::size_t StartOfLast(std::string_view text, std::size_t kept, std::size_t count) {
  std::size_t start = 0;
  for (; count > kept; --count)
    start = text.find(kLineEnd, start) + kLineEnd.size();
  return start;
}

} // namespace

frmModemLine::frmModemLine(ModemConfiguration& line) : line_(line) {
  SetCaptions();
  for (const ModemCountry& country : ModemCountries())
    countries_.push_back(&country);
  std::sort(countries_.begin(), countries_.end(), [](const ModemCountry* a, const ModemCountry* b) {
    return std::string_view(a->name) < std::string_view(b->name);
  });
  std::vector<std::string> names{"Another one: as the modem has it"};
  for (const ModemCountry* country : countries_)
    names.emplace_back(country->name);
  cboCountry.Items = std::move(names);

  txtLive.Locked = true;
  cboPort.Click = [this] { ShowModel(); };
  txtPlayGain.Change = [this] { lblPlayGain.Caption = GainInWords(txtPlayGain); };
  txtRecordGain.Change = [this] { lblRecordGain.Caption = GainInWords(txtRecordGain); };
  cmdOK.Click = [this] { cmdOK_Click(); };
  cmdCancel.Click = [this] { Visible = false; };
  line_.Watch([this] { LineChanged(); });
}

frmModemLine::~frmModemLine() {
  line_.Listen({});
  line_.Watch({});
}

void frmModemLine::SetCaptions() {
  Caption = "Voice Modem";
  cboRing.Items = {"Every ring", "Ring A alone", "Ring B alone", "Ring C alone", "Ring D alone", "Ring E alone"};
  chkDialTone.Caption = "Wait for the dial tone before dialing";
  cmdOK.Caption = "OK";
  cmdCancel.Caption = "Cancel";
}

void frmModemLine::Load() {
  const ModemSettings settings = line_.Settings();
  ShowPorts(settings.port);
  const auto country = std::find_if(countries_.begin(), countries_.end(),
                                    [&](const ModemCountry* each) { return settings.country == each->code; });
  cboCountry.ListIndex = country != countries_.end() ? static_cast<int>(country - countries_.begin()) + 1 : 0;
  txtPlayGain.Text = std::to_string(settings.play_gain);
  txtPlayGain.Change();
  txtRecordGain.Text = std::to_string(settings.record_gain);
  txtRecordGain.Change();
  cboRing.ListIndex = PlaceOf(kRings, settings.ring);
  chkDialTone.Value = settings.wait_for_dial_tone;
  txtInit.Text = settings.init;
  lblState.Caption = line_.StateInWords();
  lblResult.Caption = "";
  line_.Listen([this](const std::string& line) { AddLive(line); });
  cboPort.SetFocus();
}

void frmModemLine::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("tabPages", tabPages);
  visitor.Visit("cboPort", cboPort);
  visitor.Visit("lblModel", lblModel);
  visitor.Visit("cboCountry", cboCountry);
  visitor.Visit("txtPlayGain", txtPlayGain);
  visitor.Visit("lblPlayGain", lblPlayGain);
  visitor.Visit("txtRecordGain", txtRecordGain);
  visitor.Visit("lblRecordGain", lblRecordGain);
  visitor.Visit("cboRing", cboRing);
  visitor.Visit("chkDialTone", chkDialTone);
  visitor.Visit("txtInit", txtInit);
  visitor.Visit("txtLive", txtLive);
  visitor.Visit("lblState", lblState);
  visitor.Visit("lblResult", lblResult);
  visitor.Visit("cmdOK", cmdOK);
  visitor.Visit("cmdCancel", cmdCancel);
}

// --- what the line tells

void frmModemLine::LineChanged() {
  ShowPorts(ChosenPort());
  lblState.Caption = line_.StateInWords();
  // What was told of settings that wait is over; what is told of an entry stays.
  if (waiting_)
    lblResult.Caption = "";
  waiting_ = false;
}

void frmModemLine::ShowPorts(const std::string& chosen) {
  ports_ = line_.Ports();
  std::vector<std::string> words;
  int place = ComboBox::kNone;
  for (const ModemChoice& choice : ports_) {
    if (choice.port == chosen)
      place = static_cast<int>(words.size());
    words.push_back(choice.words);
  }
  cboPort.Items = std::move(words);
  cboPort.ListIndex = place;
  ShowModel();
}

std::string frmModemLine::ChosenPort() const {
  const auto place = static_cast<std::size_t>(cboPort.ListIndex.Get());
  return place < ports_.size() ? ports_[place].port : std::string();
}

void frmModemLine::ShowModel() {
  const std::string model = line_.ModelInWords();
  if (ports_.empty())
    lblModel.Caption = "No serial port is there. Plug the modem in, and it appears by itself.";
  else if (ChosenPort() != line_.Settings().port)
    lblModel.Caption = "It is asked what it is after OK.";
  else
    lblModel.Caption = model.empty() ? "It hasn't said what it is yet." : model;
}

void frmModemLine::AddLive(const std::string& line) {
  std::string text = txtLive.Text;
  text.append(line).append(kLineEnd);
  if (++live_lines_ > kMostLiveLines) {
    text.erase(0, StartOfLast(text, kLiveLinesKept, live_lines_));
    live_lines_ = kLiveLinesKept;
  }
  txtLive.Text = std::move(text);
}

// --- what was entered

void frmModemLine::Complain(const Control& control, int page, const std::string& complaint) {
  lblResult.Caption = complaint;
  tabPages.Selected = page;
  control.SetFocus();
}

std::optional<ModemSettings> frmModemLine::Entered() {
  ModemSettings settings = line_.Settings();
  settings.port = ChosenPort();
  if (settings.port.empty()) {
    Complain(cboPort, kModemPage, "Choose the port that the modem is plugged into.");
    return std::nullopt;
  }
  const int country = cboCountry.ListIndex;
  settings.country = country > 0 ? countries_.at(static_cast<std::size_t>(country) - 1)->code : "";

  const std::array<std::pair<const TextBox*, int*>, 2> gains{
      {{&txtPlayGain, &settings.play_gain}, {&txtRecordGain, &settings.record_gain}}};
  for (const auto& [box, gain] : gains) {
    const auto number = NumberIn(box->Text.Get(), 0, kMostGain);
    if (!number) {
      Complain(*box, kMorePage, NotInRange("A gain", 0, kMostGain));
      return std::nullopt;
    }
    *gain = static_cast<int>(*number);
  }
  settings.ring = kRings.at(static_cast<std::size_t>(std::max(0, cboRing.ListIndex.Get())));
  settings.wait_for_dial_tone = chkDialTone.Value;

  settings.init = Trimmed(txtInit.Text.Get());
  const bool command = EqualsIgnoringAsciiCase(settings.init.substr(0, kCommandStart.size()), kCommandStart);
  if (!settings.init.empty() && !(command && IsPrintable(settings.init))) {
    Complain(txtInit, kMorePage, "The init command begins with AT, such as AT+GCI=B5.");
    return std::nullopt;
  }
  if (command)
    settings.init.replace(0, kCommandStart.size(), kCommandStart);
  return settings;
}

void frmModemLine::cmdOK_Click() {
  const auto settings = Entered();
  if (!settings)
    return;
  const std::string told = lblResult.Caption;
  const ModemTakeOver result = line_.TakeOver(*settings);
  lblState.Caption = line_.StateInWords();
  lblResult.Caption = result.words;
  ShowModel();
  if (result.state == ModemTakeOver::State::Refused)
    return;
  waiting_ = result.state == ModemTakeOver::State::Waiting;
  // What else the user should know keeps the window open until he has had the time to read it.
  cmdCancel.Caption = "Close";
  if (result.words.empty() || result.words == told)
    Visible = false;
}

} // namespace kelmio
