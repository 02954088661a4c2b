#include "drivers/sip/account_file.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <filesystem>
#include <utility>

#include "core/mIni.h"
#include "core/store_file.h"
#include "drivers/sip/sip_account.h"

namespace kelmio {

namespace {

constexpr std::string_view kSectionStart = "SIP account ";
constexpr mode_t kOwnerOnly = 0600;
// A registration for less would be refreshed all the time, one for more would outlive any network.
constexpr long kShortestExpires = 60;
constexpr long kLongestExpires = 86'400;

/// What can be chosen, and how it is written.
template <typename Choice> using Named = std::pair<Choice, std::string_view>;
constexpr std::array<Named<SipTransport>, 4> kTransports{{{SipTransport::Automatic, "automatic"},
                                                          {SipTransport::Udp, "udp"},
                                                          {SipTransport::Tcp, "tcp"},
                                                          {SipTransport::Tls, "tls"}}};
constexpr std::array<Named<SipEncryption>, 3> kEncryptions{
    {{SipEncryption::Preferred, "preferred"}, {SipEncryption::Required, "required"}, {SipEncryption::Off, "off"}}};
constexpr std::array<Named<bool>, 2> kYesOrNo{{{true, "yes"}, {false, "no"}}};

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

bool EqualNames(std::string_view a, std::string_view b) {
  return std::equal(a.begin(), a.end(), b.begin(), b.end(), [](char l, char r) { return Lower(l) == Lower(r); });
}

template <typename Choice, std::size_t count>
std::string NameIn(const std::array<Named<Choice>, count>& names, Choice choice) {
  for (const auto& [known, name] : names)
    if (known == choice)
      return std::string(name);
  return {};
}

std::optional<long> WholeNumber(std::string_view text) {
  long number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || end != text.data() + text.size())
    return std::nullopt;
  return number;
}

/// Reads one section, and notes what makes no sense in it.
class Reader {
public:
  Reader(const LinesFile& file, std::string section, std::vector<std::string>& notes)
      : file_(file), section_(std::move(section)), notes_(notes) {}

  std::string Text(std::string_view key) const { return file_.Read(section_, key); }

  /// `strict` is what a value becomes that is not understood; nobody loses protection by a slip of the pen.
  template <typename Choice, std::size_t count>
  void Choose(std::string_view key, const std::array<Named<Choice>, count>& names, Choice strict, Choice& value) const {
    const std::string text = Text(key);
    if (text.empty())
      return;
    for (const auto& [known, name] : names) {
      if (EqualNames(name, text)) {
        value = known;
        return;
      }
    }
    value = strict;
    Note(key, text, NameIn(names, strict));
  }

  template <typename Number> void Count(std::string_view key, long smallest, long largest, Number& value) const {
    const std::string text = Text(key);
    const auto number = WholeNumber(text);
    if (number && *number >= smallest && *number <= largest)
      value = Number(static_cast<typename Number::rep>(*number));
    else if (!text.empty())
      Note(key, text, std::to_string(value.count()));
  }

  void Note(std::string_view key, const std::string& text, const std::string& used) const {
    notes_.push_back(section_ + ": \"" + text + "\" makes no sense as " + std::string(key) + "; " + used + " is used");
  }

private:
  const LinesFile& file_;
  std::string section_;
  std::vector<std::string>& notes_;
};

bool WritePassword(const std::string& path, const std::string& password) {
  // One that was made readable for others, by a copy for instance, is so no longer before the new one stands in it.
  if (::chmod(path.c_str(), kOwnerOnly) != 0 && errno != ENOENT)
    return false;
  return ChangeStoreFile(
      path, [&](std::string_view) { return std::optional(password); }, NewFileMode::OwnerOnly);
}

} // namespace

std::string AccountSection(int number) {
  return std::string(kSectionStart) + std::to_string(number);
}

std::vector<int> AccountNumbers(const LinesFile& file) {
  std::vector<int> numbers;
  for (const std::string& name : mIni::IniSectionNames(file.Path())) {
    const std::string_view view = name;
    if (!EqualNames(view.substr(0, kSectionStart.size()), kSectionStart))
      continue;
    const auto number = WholeNumber(view.substr(kSectionStart.size()));
    constexpr long kMostAccounts = 1000;
    if (number && *number > 0 && *number <= kMostAccounts && !file.Read(name, "Server").empty())
      numbers.push_back(static_cast<int>(*number));
  }
  std::sort(numbers.begin(), numbers.end());
  numbers.erase(std::unique(numbers.begin(), numbers.end()), numbers.end());
  return numbers;
}

std::string PasswordPath(const LinesFile& file, int number) {
  return (std::filesystem::path(file.Path()).parent_path() / (AccountSection(number) + ".password")).string();
}

SipSettings ReadAccount(LinesFile& file, int number) {
  SipSettings settings;
  const std::string section = AccountSection(number);
  const Reader reader(file, section, settings.notes);
  SipAccount account;
  account.server = reader.Text("Server");
  account.user = reader.Text("User");
  account.auth_user = reader.Text("AuthUser");
  account.proxy = reader.Text("Proxy");
  account.display_name = reader.Text("DisplayName");
  account.authority = reader.Text("Authority");
  account.stun_server = reader.Text("StunServer");
  reader.Choose("Transport", kTransports, SipTransport::Tls, account.transport);
  reader.Choose("Encryption", kEncryptions, SipEncryption::Required, account.encryption);
  reader.Choose("Ice", kYesOrNo, account.ice, account.ice);
  reader.Count("Expires", kShortestExpires, kLongestExpires, account.expires);
  reader.Count("RingPeriod", kShortestRingPeriod.count(), kLongestRingPeriod.count(), settings.ring_period);

  account.password = ReadStoreFile(PasswordPath(file, number)).value_or("");
  // Who writes it by hand ends the line.
  while (!account.password.empty() && (account.password.back() == '\n' || account.password.back() == '\r'))
    account.password.pop_back();

  settings.listen = {"0.0.0.0", 0};
  const std::string port = reader.Text("Port");
  if (const auto wanted = WholeNumber(port); wanted && *wanted >= 0 && *wanted <= UINT16_MAX)
    settings.listen.port = static_cast<std::uint16_t>(*wanted);
  else if (!port.empty())
    reader.Note("Port", port, "0");

  const std::string codecs = reader.Text("Codecs");
  if (const auto codings = ParseCodings(codecs))
    settings.codings = *codings;
  else if (!codecs.empty())
    reader.Note("Codecs", codecs, ToText(settings.codings));

  settings.account = std::move(account);
  settings.device_id = file.DeviceNumber(section);
  return settings;
}

bool WriteAccount(const LinesFile& file, int number, const SipSettings& settings) {
  const SipAccount account = settings.account.value_or(SipAccount{});
  // The password first: a section without one would be tried with none.
  if (!WritePassword(PasswordPath(file, number), account.password))
    return false;
  return file.Write(AccountSection(number), {{"Server", account.server},
                                             {"User", account.user},
                                             {"AuthUser", account.auth_user},
                                             {"Proxy", account.proxy},
                                             {"DisplayName", account.display_name},
                                             {"Transport", NameIn(kTransports, account.transport)},
                                             {"Authority", account.authority},
                                             {"Encryption", NameIn(kEncryptions, account.encryption)},
                                             {"StunServer", account.stun_server},
                                             {"Ice", NameIn(kYesOrNo, account.ice)},
                                             {"Expires", std::to_string(account.expires.count())},
                                             {"Port", std::to_string(settings.listen.port)},
                                             {"RingPeriod", std::to_string(settings.ring_period.count())},
                                             {"Codecs", ToText(settings.codings)}});
}

bool RemoveAccountFiles(const LinesFile& file, int number) {
  const bool section_gone = mIni::IniDeleteSection(AccountSection(number), file.Path());
  const bool password_gone = ::unlink(PasswordPath(file, number).c_str()) == 0 || errno == ENOENT;
  return section_gone && password_gone;
}

} // namespace kelmio
