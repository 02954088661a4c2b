#include "settings_ui/dialogs/frmSipAccount.h"

#include <algorithm>
#include <array>

#include "core/text.h"
#include "settings_ui/dialogs/entries.h"

namespace kelmio {

namespace {

enum Page : int { kAccountPage, kMorePage, kSoundPage };

// In the order of the choices.
constexpr std::array kTransports{SipTransport::Automatic, SipTransport::Udp, SipTransport::Tcp, SipTransport::Tls};
constexpr std::array kEncryptions{SipEncryption::Preferred, SipEncryption::Required, SipEncryption::Off};

constexpr const char* kCertificateFilter = "Certificates (*.pem, *.crt)|*.pem;*.crt|All Files (*.*)|*.*";
constexpr const char* kRemove = "Remove Account";
constexpr const char* kRemoveReally = "Remove, really?";
constexpr char kPasswordChar = '*';

template <class Values, class Value> int PlaceOf(const Values& values, Value value) {
  return static_cast<int>(std::find(values.begin(), values.end(), value) - values.begin());
}

template <class Values> auto ChosenOf(const Values& values, const ComboBox& box) {
  return values.at(static_cast<std::size_t>(std::max(0, box.ListIndex.Get())));
}

std::string TextOf(const TextBox& box) {
  return std::string(Trimmed(box.Text.Get()));
}

} // namespace

frmSipAccount::frmSipAccount(SipConfiguration& line, FilePicker& files) : line_(line), files_(files) {
  SetCaptions();
  txtPassword.PasswordChar = kPasswordChar;
  chkShowPassword.Click = [this] { txtPassword.PasswordChar = chkShowPassword.Value ? '\0' : kPasswordChar; };
  cmdBrowseAuthority.Click = [this] { cmdBrowseAuthority_Click(); };
  cmdTry.Click = [this] { cmdTry_Click(); };
  cmdRemove.Click = [this] { cmdRemove_Click(); };
  cmdOK.Click = [this] { cmdOK_Click(); };
  cmdCancel.Click = [this] { Visible = false; };
  line_.Watch([this] { LineChanged(); });
}

frmSipAccount::~frmSipAccount() {
  EndTrial();
  line_.Watch({});
}

void frmSipAccount::SetCaptions() {
  Caption = "SIP Account";
  chkShowPassword.Caption = "Show";
  cboTransport.Items = {"Automatic", "UDP", "TCP", "TLS, encrypted"};
  cmdBrowseAuthority.Caption = "Browse";
  chkIce.Caption = "Look for a direct way through routers (ICE)";
  cboEncryption.Items = {"Preferred: where the other side can", "Required: other calls are refused", "Off"};
  cmdTry.Caption = "Try";
  cmdRemove.Caption = kRemove;
  cmdOK.Caption = "OK";
  cmdCancel.Caption = "Cancel";
}

void frmSipAccount::Load() {
  const SipSettings settings = line_.Settings();
  const SipAccount account = settings.account.value_or(SipAccount{});
  txtServer.Text = account.server;
  txtUser.Text = account.user;
  txtPassword.Text = account.password;
  txtDisplayName.Text = account.display_name;
  txtAuthUser.Text = account.auth_user;
  cboTransport.ListIndex = PlaceOf(kTransports, account.transport);
  txtProxy.Text = account.proxy;
  txtAuthority.Text = account.authority;
  txtStunServer.Text = account.stun_server;
  chkIce.Value = account.ice;
  cboEncryption.ListIndex = PlaceOf(kEncryptions, account.encryption);
  txtRingPeriod.Text = std::to_string(settings.ring_period.count());
  codecs_.Show(settings.codings);
  cmdRemove.Visible = !account.server.empty();
  lblState.Caption = line_.StateInWords();
  lblResult.Caption = "";
  txtServer.SetFocus();
}

void frmSipAccount::VisitControls(ControlVisitor& visitor) {
  visitor.Visit("tabPages", tabPages);
  visitor.Visit("txtServer", txtServer);
  visitor.Visit("txtUser", txtUser);
  visitor.Visit("txtPassword", txtPassword);
  visitor.Visit("chkShowPassword", chkShowPassword);
  visitor.Visit("txtDisplayName", txtDisplayName);
  visitor.Visit("txtAuthUser", txtAuthUser);
  visitor.Visit("cboTransport", cboTransport);
  visitor.Visit("txtProxy", txtProxy);
  visitor.Visit("txtAuthority", txtAuthority);
  visitor.Visit("cmdBrowseAuthority", cmdBrowseAuthority);
  visitor.Visit("txtStunServer", txtStunServer);
  visitor.Visit("chkIce", chkIce);
  visitor.Visit("cboEncryption", cboEncryption);
  visitor.Visit("lvwCodecs", lvwCodecs);
  visitor.Visit("cmdCodecUp", cmdCodecUp);
  visitor.Visit("cmdCodecDown", cmdCodecDown);
  visitor.Visit("cmdCodecUse", cmdCodecUse);
  visitor.Visit("txtRingPeriod", txtRingPeriod);
  visitor.Visit("lblState", lblState);
  visitor.Visit("lblResult", lblResult);
  visitor.Visit("cmdTry", cmdTry);
  visitor.Visit("cmdRemove", cmdRemove);
  visitor.Visit("cmdOK", cmdOK);
  visitor.Visit("cmdCancel", cmdCancel);
}

void frmSipAccount::LineChanged() {
  lblState.Caption = line_.StateInWords();
  // What was told of settings that wait is over; what is told of a trial or an entry stays.
  if (waiting_)
    lblResult.Caption = "";
  waiting_ = false;
}

void frmSipAccount::cmdBrowseAuthority_Click() {
  const std::string path = files_.OpenFile("Open Certificate", kCertificateFilter);
  if (!path.empty())
    txtAuthority.Text = path;
}

// --- what was entered

void frmSipAccount::Complain(const TextBox& box, int page, const std::string& complaint) {
  lblResult.Caption = complaint;
  tabPages.Selected = page;
  box.SetFocus();
}

bool frmSipAccount::TakeHost(const TextBox& box, int page, const std::string& what, std::string& host) {
  Entry entry = HostEntry(box.Text.Get(), what);
  if (!entry.complaint.empty()) {
    Complain(box, page, entry.complaint);
    return false;
  }
  host = std::move(entry.text);
  return true;
}

bool frmSipAccount::TakeNames(SipAccount& account) {
  account.user = TextOf(txtUser);
  std::string server = TextOf(txtServer);
  // A whole address, as some providers give it, brings its server with it.
  if (const std::size_t at = account.user.rfind('@'); at != std::string::npos) {
    const std::string behind = account.user.substr(at + 1);
    if (server.empty())
      txtServer.Text = server = behind;
    if (!EqualsIgnoringAsciiCase(behind, server)) {
      Complain(txtUser, kAccountPage, "The user name is what stands before the @; what follows it is the server.");
      return false;
    }
    account.user.erase(at);
    constexpr std::string_view kScheme = "sip:";
    if (EqualsIgnoringAsciiCase(account.user.substr(0, kScheme.size()), kScheme))
      account.user.erase(0, kScheme.size());
  }
  if (!TakeHost(txtServer, kAccountPage, "The server", account.server))
    return false;
  if (account.server.empty()) {
    Complain(txtServer, kAccountPage, "The server is missing: your provider names it, and at home it is the router.");
    return false;
  }
  if (account.user.empty()) {
    Complain(txtUser, kAccountPage, "The user name is missing: the name or the number of the account.");
    return false;
  }
  if (account.user.find_first_of(" \t") != std::string::npos) {
    Complain(txtUser, kAccountPage, "The user name has no blanks in it.");
    return false;
  }
  return true;
}

std::optional<SipSettings> frmSipAccount::Entered() {
  SipSettings settings = line_.Settings();
  SipAccount account = settings.account.value_or(SipAccount{});
  if (!TakeNames(account) || !TakeHost(txtProxy, kMorePage, "The proxy", account.proxy) ||
      !TakeHost(txtStunServer, kMorePage, "The STUN server", account.stun_server))
    return std::nullopt;
  account.password = txtPassword.Text;
  account.display_name = TextOf(txtDisplayName);
  account.auth_user = TextOf(txtAuthUser);
  account.transport = ChosenOf(kTransports, cboTransport);
  account.authority = TextOf(txtAuthority);
  account.ice = chkIce.Value;
  account.encryption = ChosenOf(kEncryptions, cboEncryption);

  const auto period = RingPeriodIn(txtRingPeriod.Text.Get());
  if (!period) {
    Complain(txtRingPeriod, kSoundPage, NoRingPeriod());
    return std::nullopt;
  }
  settings.ring_period = *period;
  settings.codings = codecs_.Used();
  settings.account = std::move(account);
  return settings;
}

// --- the buttons

void frmSipAccount::cmdTry_Click() {
  const auto settings = Entered();
  if (!settings)
    return;
  EndTrial();
  trial_ = true;
  cmdTry.Enabled = false;
  lblResult.Caption = "Asking " + settings->account->server + "...";
  line_.TryAccount(*settings, [this](const std::string& words) {
    trial_ = false;
    cmdTry.Enabled = true;
    lblResult.Caption = words;
  });
}

void frmSipAccount::EndTrial() {
  if (!trial_)
    return;
  line_.TryAccount(line_.Settings(), {});
  trial_ = false;
  cmdTry.Enabled = true;
}

void frmSipAccount::cmdRemove_Click() {
  if (!remove_asked_) {
    remove_asked_ = true;
    cmdRemove.Caption = kRemoveReally;
    lblResult.Caption = "Forgets the account and its password. Messages, calls and contacts stay.";
    return;
  }
  EndTrial();
  TellOf(line_.RemoveAccount());
}

void frmSipAccount::cmdOK_Click() {
  const auto settings = Entered();
  if (!settings)
    return;
  EndTrial();
  TellOf(line_.TakeOver(*settings));
}

void frmSipAccount::TellOf(const SipTakeOver& result) {
  const std::string told = lblResult.Caption;
  remove_asked_ = false;
  cmdRemove.Caption = kRemove;
  lblState.Caption = line_.StateInWords();
  lblResult.Caption = result.words;
  if (result.state == SipTakeOver::State::Refused)
    return;
  waiting_ = result.state == SipTakeOver::State::Waiting;
  // What else the user should know keeps the window open until he has had the time to read it.
  cmdCancel.Caption = "Close";
  if (result.words.empty() || result.words == told)
    Visible = false;
}

} // namespace kelmio
