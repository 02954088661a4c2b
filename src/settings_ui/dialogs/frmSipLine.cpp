#include "settings_ui/dialogs/frmSipLine.h"

#include <algorithm>
#include <array>
#include <limits>

#include "settings_ui/dialogs/entries.h"

namespace kelmio {

namespace {

// In the order of the choice.
constexpr std::array kCallers{SipCallers::Computer, SipCallers::Network, SipCallers::Everyone};

} // namespace

frmSipLine::frmSipLine(SipConfiguration& line) : line_(line) {
  Caption = "SIP Line";
  cboCallers.Items = {"Programs on this computer", "The local network", "Everyone"};
  cmdTest.Caption = "Test";
  cmdOK.Caption = "OK";
  cmdCancel.Caption = "Cancel";
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
  codecs_.Show(settings.codings);
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

std::optional<SipSettings> frmSipLine::Entered() {
  SipSettings settings = line_.Settings();
  if (cboCallers.ListIndex != ComboBox::kNone)
    SetCallers(settings, kCallers.at(static_cast<std::size_t>(cboCallers.ListIndex.Get())));

  // A port left to the system is none that callers could know, but may stay if it was chosen on purpose.
  constexpr long kMostPort = std::numeric_limits<std::uint16_t>::max();
  const long least_port = settings.listen.port == 0 ? 0 : 1;
  const auto port = NumberIn(txtPort.Text.Get(), least_port, kMostPort);
  if (!port) {
    lblResult.Caption = NotInRange("The port", least_port, kMostPort);
    return std::nullopt;
  }
  settings.listen.port = static_cast<std::uint16_t>(*port);

  const auto period = RingPeriodIn(txtRingPeriod.Text.Get());
  if (!period) {
    lblResult.Caption = NoRingPeriod();
    return std::nullopt;
  }
  settings.ring_period = *period;
  settings.codings = codecs_.Used();
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
