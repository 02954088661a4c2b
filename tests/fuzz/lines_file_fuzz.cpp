// `Lines.ini` as anyone may have left it.
#include <filesystem>

#include "drivers/lines_file.h"
#include "drivers/sip/account_file.h"
#include "drivers/sip/sip_settings.h"
#include "drivers/voice_modem/modem_settings.h"
#include "fuzz/fuzz_target.h"
#include "support/file_text.h"
#include "support/temporary_folder.h"

namespace kelmio::fuzz {
namespace {

void CheckSettings(const SipSettings& settings) {
  Check(!settings.codings.empty() && settings.codings.size() <= kAllCodings.size(), "there is a coding, and each once");
  Check(settings.ring_period >= kShortestRingPeriod && settings.ring_period <= kLongestRingPeriod, "rings have a pace");
  Check(settings.device_id >= 0, "a line has a number");
  Check(ParseListenAddress(ToText(settings.listen)) == settings.listen, "the address can be written");
}

void CheckAccount(LinesFile& file, int number) {
  SipSettings settings = ReadAccount(file, number);
  CheckSettings(settings);
  const std::string password = "so secret that it stands nowhere else";
  settings.account->password = password;
  Check(WriteAccount(file, number, settings), "an account can be written");
  SipSettings again = ReadAccount(file, number);
  for (const std::string& note : again.notes)
    Check(note.find(password) == std::string::npos, "a password is not told");
  again.notes = settings.notes;
  Check(again == settings, "an account that was written reads the same");
}

void CheckModem(LinesFile& file, const std::string& section) {
  ModemSettings settings = ReadModemSettings(file, section);
  Check(settings.play_gain >= 0 && settings.play_gain <= kMostGain && settings.record_gain >= 0 &&
            settings.record_gain <= kMostGain,
        "a gain is one");
  Check(settings.init.find_first_of("\r\n\x10") == std::string::npos, "a command is one line");
  Check(WriteModemSettings(file, section, settings), "a modem can be written");
  ModemSettings again = ReadModemSettings(file, section);
  again.notes = settings.notes;
  Check(again == settings, "a modem that was written reads the same");
}

} // namespace

std::vector<std::string> Seeds() {
  return {
      "\xEF\xBB\xBF[sip]\r\nListen=[2001:db8::1]:5060\r\nAllow=network\r\nRingPeriod=6000\r\nCodecs=G722, pcma\r\n",
      "; a note\n[SIP]\nListen=127.0.0.1:99999\nAllow = nobody\nRingPeriod=-1\nCodecs=MP3\n[Devices]\nSIP=3\nOther=3\n",
      "[Devices]\r\nSIP=9223372036854775807\r\n[SIP]\r\n[SIP]\r\nListen=0.0.0.0:0\r\nCodecs=\"PCMU,PCMU\"\r\n",
      "[SIP account 1]\r\nServer=sip.example.org\r\nUser=4711\r\nTransport=tls\r\nEncryption=required\r\nIce=no\r\n"
      "Expires=3600\r\nPort=0\r\nDisplayName=\"J \\ D\"\r\n[SIP account 2]\r\nServer=x\r\nTransport=pigeon\r\n",
      "[Modem 1]\r\nPort=/dev/serial/by-id/usb-0\r\nCountry=DE\r\nPlayGain=130\r\nRecordGain=999\r\nRing=B\r\n"
      "WaitForDialTone=no\r\nInit=AT+GCI=42\r\nKind=data\r\nModel=X\r\n[Modem 2]\r\nInit=rm\r\n",
  };
}

} // namespace kelmio::fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  using namespace kelmio;
  using namespace kelmio::fuzz;
  // In memory where there is such a place: the fuzzer writes the file some thousand times a second.
  static const test::TemporaryFolder folder(std::filesystem::exists("/dev/shm") ? "/dev/shm" : "/tmp");
  const std::string path = folder.Path() + "Lines.ini";
  test::WriteBytes(path, ViewOf(data, size));
  LinesFile file(path);
  SipSettings settings = ReadSipSettings(file);
  CheckSettings(settings);
  Check(WriteSipSettings(file, settings), "the file can be written");
  SipSettings again = ReadSipSettings(file);
  settings.notes.clear();
  again.notes.clear();
  Check(again == settings, "what was written reads the same");
  if (const auto accounts = AccountNumbers(file); !accounts.empty())
    CheckAccount(file, accounts.front());
  if (const auto modems = file.Sections("Modem"); !modems.empty())
    CheckModem(file, modems.front());
  return 0;
}
