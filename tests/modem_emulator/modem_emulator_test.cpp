#include "modem_emulator/modem_emulator.h"

#include <gmock/gmock.h>

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <cerrno>
#include <tuple>
#include <utility>

namespace kelmio::emulated {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string D = "\x10";
const std::string StopPlaying = "\x80\x10\x18\x10\x03";

// A host that knows nothing but bytes.
class Host {
public:
  explicit Host(const ModemEmulator& modem, speed_t speed = B115200, bool raw = true)
      : fd_(open(modem.Port().c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {
    termios settings{};
    tcgetattr(fd_, &settings);
    if (raw) {
      cfmakeraw(&settings);
    }
    cfsetspeed(&settings, speed);
    tcsetattr(fd_, TCSANOW, &settings);
  }
  ~Host() { close(fd_); }
  Host(const Host&) = delete;
  Host& operator=(const Host&) = delete;

  // True when all bytes were taken at once.
  bool Write(const std::string& bytes) { return write(fd_, bytes.data(), bytes.size()) == ssize_t(bytes.size()); }

  // What comes until it ends with `end`, or until nothing has come for 5 seconds.
  std::string ReadTo(const std::string& end) {
    while (read_.find(end) == read_.npos) {
      pollfd entry{fd_, POLLIN, 0};
      char bytes[4096];
      const ssize_t count = poll(&entry, 1, 5000) > 0 ? read(fd_, bytes, sizeof bytes) : 0;
      if (count <= 0) {
        return std::exchange(read_, "") + " <and no " + end + ">";
      }
      read_.append(bytes, static_cast<std::size_t>(count));
    }
    const std::size_t size = read_.find(end) + end.size();
    const std::string all = read_.substr(0, size);
    read_.erase(0, size);
    return all;
  }

  std::string Ask(const std::string& command, const std::string& end = "\r\nOK\r\n") {
    Write(command + "\r");
    return ReadTo(end);
  }

  // All that is sent, however slowly it's taken.
  void WriteAll(const std::string& bytes) {
    for (std::size_t done = 0; done < bytes.size();) {
      const ssize_t count = write(fd_, bytes.data() + done, bytes.size() - done);
      done += count > 0 ? static_cast<std::size_t>(count) : 0;
      pollfd entry{fd_, POLLOUT, 0};
      poll(&entry, 1, 100);
    }
  }

  int Descriptor() const { return fd_; }

private:
  int fd_;
  std::string read_;
};

Samples Ramp(std::size_t count) {
  Samples samples;
  for (std::size_t i = 0; i < count; ++i) {
    samples.push_back(static_cast<std::int16_t>(static_cast<int>(i * 256 % 65536) - 32768));
  }
  return samples;
}

// Takes the DLE codes out of what came in a recording, up to the end of the stream.
std::string SamplesOf(const std::string& stream) {
  std::string samples;
  DleReader reader;
  for (const char byte : stream) {
    const DleReader::Item item = reader.Take(static_cast<unsigned char>(byte));
    if (item.is_code && item.code == Etx) {
      break;
    }
    samples += item.samples;
  }
  return samples;
}

TEST(ModemEmulatorTest, TellsWhatItIs) {
  ModemEmulator modem({.speed = 10});
  Host host(modem);
  EXPECT_EQ(host.Ask("ATE0V1Q0"), "ATE0V1Q0\r\r\nOK\r\n");
  EXPECT_EQ(host.Ask("ATZ"), "\r\nOK\r\n");
  EXPECT_EQ(host.Ask("ATI3"), "\r\nCX93001-EIS_V0.2002-V92\r\n\r\nOK\r\n");
  EXPECT_EQ(host.Ask("AT+FCLASS=?"), "\r\n0,1,8\r\n\r\nOK\r\n");
  EXPECT_EQ(host.Ask("AT+VSM=?", "ERROR\r\n"), "\r\nERROR\r\n");
  EXPECT_THAT(host.Ask("AT+FCLASS=8;+VSM=?"), HasSubstr("1,\"UNSIGNED PCM\",8,0,8000,0,0\r\n"));
  EXPECT_THAT(host.Ask("AT+VLS=?"), HasSubstr("\r\n1,\"T\",0B8433C1,"));
  EXPECT_EQ(host.Ask("AT+VSD=128,50;+VSD?"), "\r\n128,0\r\n\r\nOK\r\n");
  EXPECT_EQ(host.Ask("ATV0", "0\r"), "0\r");
  EXPECT_EQ(host.Ask("A/", "0\r"), "0\r");
  EXPECT_THAT(modem.ComplaintsAtEnd(), IsEmpty());
}

TEST(SoundTest, CodesEveryByteBackAndForth) {
  std::string all;
  for (int i = 0; i < 256; ++i) {
    all += static_cast<char>(i);
  }
  for (const Coding coding : {Coding::Unsigned8, Coding::Signed8, Coding::ALaw}) {
    EXPECT_EQ(Encode(coding, Decode(coding, all)), all);
  }
  // The law with two zeros gives one of them back. The ends of both scales are those of G.711.
  EXPECT_EQ(Encode(Coding::MuLaw, Decode(Coding::MuLaw, all.substr(128))), all.substr(128));
  EXPECT_EQ(Decode(Coding::MuLaw, "\x80\xFF"), (Samples{32124, 0}));
  EXPECT_EQ(Decode(Coding::ALaw, "\xAA\xD5\x2A"), (Samples{32256, 8, -32256}));
}

struct Voice {
  const char* personality;
  const char* enter;
  const char* choose; // the codec
  const char* line;   // goes off hook
  std::string set;
  const char* done;
  Coding coding;
};

class VoiceTest : public testing::TestWithParam<Voice> {};

TEST_P(VoiceTest, AnswersPlaysRecordsAndHangsUp) {
  const Voice& voice = GetParam();
  ModemEmulator modem({.personality = voice.personality, .speed = 10});
  Host host(modem);
  host.Ask("ATE0");
  host.Ask("AT" + voice.set + (voice.set == "#" ? "CID=1" : "VCID=1"));
  modem.Ring({.number = "5551234"});
  EXPECT_EQ(host.ReadTo("NAME = U.S.ROBOTICS\r\n"),
            "\r\nRING\r\n\r\nDATE = 1015\r\n\r\nTIME = 2038\r\n\r\nNMBR = 5551234\r\n\r\nNAME = U.S.ROBOTICS\r\n");
  EXPECT_EQ(host.ReadTo("RING\r\n"), "\r\nRING\r\n");
  host.Ask(voice.enter);
  EXPECT_EQ(host.ReadTo(D + "R"), D + "R");
  host.Ask(voice.choose);
  EXPECT_EQ(host.Ask(voice.line, voice.done), voice.done);
  EXPECT_TRUE(modem.OffHook());

  const std::string sound = Encode(voice.coding, Ramp(8000));
  host.Ask("AT" + voice.set + "VTX", "CONNECT\r\n");
  host.WriteAll(Shield(sound) + D + "\x03");
  EXPECT_THAT(host.ReadTo(voice.done), EndsWith(voice.done));
  EXPECT_EQ(modem.Played(), sound);

  modem.CallerSays(Ramp(8000));
  host.Ask("AT" + voice.set + "VRX", "CONNECT\r\n");
  modem.WaitFor([&] { return modem.Recorded().size() >= sound.size(); });
  modem.HangUp(HangUpSign::LoopBreak);
  std::string stream = host.ReadTo(D + "l");
  host.Write(D + "!");
  stream += host.ReadTo(voice.done);
  EXPECT_EQ(SamplesOf(stream), modem.Recorded());
  if (std::string(voice.personality) != "rockwell") { // whose samples are fewer than those of the line
    EXPECT_THAT(modem.Recorded(), HasSubstr(Encode(voice.coding, Ramp(256))));
  }
  EXPECT_EQ(host.Ask("ATH"), "\r\nOK\r\n");
  EXPECT_EQ(modem.Class(), 0);
  EXPECT_THAT(modem.ComplaintsAtEnd(), IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(
    All, VoiceTest,
    testing::Values(Voice{"conexant", "AT+FCLASS=8", "AT+VSM=1,8000,0,0", "AT+VLS=1", "+", "\r\nOK\r\n",
                          Coding::Unsigned8},
                    Voice{"softmodem", "AT+FCLASS=8", "AT+VSM=132,8000", "AT+VLS=1", "+", "\r\nOK\r\n", Coding::ALaw},
                    Voice{"usr", "AT+FCLASS=8", "AT+VGT=128", "AT+VLS=1", "+", "\r\nOK\r\n", Coding::Signed16},
                    Voice{"silabs", "AT+FCLASS=8", "AT+VSM=4,8000", "ATA", "+", "\r\nOK\r\n", Coding::MuLaw},
                    Voice{"rockwell", "AT#CLS=8", "AT#VBS=8", "ATA", "#", "\r\nVCON\r\n", Coding::Unsigned8}),
    [](const auto& voice) { return voice.param.personality; });

// Ready to play or record, in a call, with unsigned bytes.
void TakeCall(ModemEmulator& modem, Host& host, const std::string& codec = "1") {
  host.Ask("ATE0");
  host.Ask("AT+FCLASS=8;+VSM=" + codec + ",8000,0,0");
  modem.Ring();
  host.ReadTo(D + "R");
  host.Ask("AT+VLS=1");
}

TEST(ModemEmulatorTest, DropsWhatIsBufferedWhenPlaybackIsStopped) {
  ModemEmulator modem({.speed = 5});
  Host host(modem);
  TakeCall(modem, host);
  host.Ask("AT+VTX", "CONNECT\r\n");
  host.Write(std::string(2000, '\xFF'));
  modem.WaitFor([&] { return modem.Played().size() > 400; });
  modem.CallerPresses("5");
  EXPECT_THAT(host.ReadTo(D + "~"), HasSubstr(D + "/" + D + "5")); // and perhaps an underrun by now
  host.Write(std::string(1600, '\xFF') + StopPlaying + std::string(50, 'x'));
  host.ReadTo("\r\nOK\r\n");
  EXPECT_LT(modem.Played().size(), 3400U);
  EXPECT_EQ(host.Ask("AT"), "\r\nOK\r\n");
  EXPECT_THAT(modem.Complaints(), ElementsAre(HasSubstr("50 bytes")));
  EXPECT_THAT(modem.ComplaintsAtEnd(), Contains(HasSubstr("off hook")));
}

TEST(ModemEmulatorTest, PlaysAtTheSpeedOfTheLineHoweverFastItIsFed) {
  ModemEmulator modem({.speed = 5});
  Host host(modem);
  TakeCall(modem, host);
  host.Ask("AT+VTX", "CONNECT\r\n");
  const double began = modem.Now();
  host.WriteAll(std::string(40000, '\x90') + D + "\x03");
  EXPECT_EQ(host.ReadTo("OK\r\n"), "\r\nOK\r\n");
  EXPECT_NEAR(modem.Now() - began, 5, 0.5);
  host.Ask("AT+VTX", "CONNECT\r\n");
  host.Write("x");
  EXPECT_EQ(host.ReadTo(D + "u"), D + "u");
}

TEST(ModemEmulatorTest, TellsSilenceAfterSpeechFromNoSpeechAtAll) {
  for (const std::string personality : {"conexant", "usr"}) {
    ModemEmulator modem({.personality = personality, .speed = 20});
    Host host(modem);
    TakeCall(modem, host, personality == "usr" ? "128" : "1");
    host.Ask("AT+VSD=0,20");
    host.Ask("AT+VRX", "CONNECT\r\n");
    host.ReadTo(D + "s");
    modem.CallerSays(Tone{{440}, {}}.First(1));
    EXPECT_THAT(host.ReadTo(D + (personality == "usr" ? "s" : "q")), testing::Not(HasSubstr("<and no")));
  }
}

TEST(ModemEmulatorTest, DialsToEveryEnd) {
  using Kind = Callee::Kind;
  const std::pair<Callee, std::string> ends[] = {{{Kind::Answers, 1}, "\r\nOK\r\n"},
                                                 {{Kind::Busy}, "\r\nBUSY\r\n"},
                                                 {{Kind::NeverAnswers}, "\r\nNO ANSWER\r\n"},
                                                 {{Kind::NoDialTone}, "\r\nNO DIALTONE\r\n"},
                                                 {{Kind::LineInUse}, "\r\nLINE-IN-USE\r\n"}};
  for (const auto& [callee, end] : ends) {
    ModemEmulator modem({.speed = 50});
    Host host(modem);
    host.Ask("ATE0");
    host.Ask("AT+FCLASS=8;+VRA=70;+VRN=10");
    host.Ask("ATS7=20");
    modem.WhenDialled(callee);
    EXPECT_THAT(host.Ask("ATDT5551234", end), EndsWith(end));
    EXPECT_EQ(modem.Dialled(), "5551234");
    EXPECT_EQ(modem.OffHook(), end == "\r\nOK\r\n");
  }
}

TEST(ModemEmulatorTest, StopsDialingAtAnyByte) {
  ModemEmulator modem({.speed = 10});
  Host host(modem);
  host.Ask("ATE0");
  host.Ask("AT+FCLASS=8");
  host.Ask("ATDT5551234", D + "r");
  host.Write("\r");
  EXPECT_EQ(host.ReadTo("CARRIER\r\n"), "\r\nNO CARRIER\r\n");
  EXPECT_THAT(modem.ComplaintsAtEnd(), IsEmpty());
}

TEST(ModemEmulatorTest, RecordsTheHandsetWithTheLine) {
  ModemEmulator modem({.speed = 10});
  Host host(modem);
  host.Ask("ATE0");
  host.Ask("AT+FCLASS=8;+VSM=1,8000");
  modem.Handset(true);
  EXPECT_EQ(host.ReadTo(D + "H"), D + "H");
  host.Ask("AT+VLS=3");
  host.Ask("AT+VRX", "CONNECT\r\n");
  modem.HandsetSays(Tone{{1000}, {}}.First(0.5));
  modem.WaitFor([&] { return modem.Recorded().size() > 4000; });
  modem.Handset(false);
  host.ReadTo(D + "h");
  host.Write(D + "!");
  host.ReadTo("\r\nOK\r\n");
  host.Ask("ATH");
  EXPECT_THAT(modem.ComplaintsAtEnd(), IsEmpty());
}

TEST(ModemEmulatorTest, SeesWhatADriverDoesWrong) {
  ModemEmulator modem({.speed = 10});
  {
    Host cooked(modem, B9600, false);
    modem.WaitFor([&] { return modem.Transcript().find("opened") != std::string::npos; });
    modem.Ring({}, {.bursts = 1});
    EXPECT_TRUE(modem.WaitFor([&] { return !modem.Complaints().empty(); }, 2));
    EXPECT_THAT(modem.Complaints(), Contains(HasSubstr("not raw")));
  }
  Host host(modem, B19200);
  host.Ask("ATE0");
  EXPECT_THAT(modem.Complaints(), Contains(HasSubstr("speed 19200")));
  host.Write("AT+FCLASS=8\rAT\r");
  host.ReadTo("OK\r\n");
  EXPECT_THAT(modem.Complaints(), Contains(HasSubstr("before the last command")));
  host.Ask("AT+VLS=1");
  host.Ask("AT+VTX", "CONNECT\r\n");
  host.Write(D + "Q");
  EXPECT_TRUE(modem.WaitFor([&] { return modem.Complaints().back().find("not doubled") != std::string::npos; }, 2));
}

TEST(ModemEmulatorTest, GoesAwayAndComesBackUnderItsLink) {
  const std::filesystem::path link = testing::TempDir() + "modem" + std::to_string(getpid());
  ModemEmulator modem({.link = link, .speed = 10});
  Host host(modem);
  TakeCall(modem, host);
  modem.SetFault(28, "play");
  host.Ask("AT+VTX", "CONNECT\r\n");
  EXPECT_TRUE(modem.WaitFor([&] { return !std::filesystem::is_symlink(link); }));
  pollfd entry{host.Descriptor(), POLLIN, 0};
  EXPECT_EQ(poll(&entry, 1, 2000), 1);
  EXPECT_TRUE((entry.revents & POLLHUP) != 0);
  char byte = 0;
  EXPECT_EQ(read(host.Descriptor(), &byte, 1), 0);
  modem.Replug();
  Host again(modem);
  EXPECT_EQ(again.Ask("ATE0"), "ATE0\r\r\nOK\r\n");
  EXPECT_FALSE(modem.OffHook());
}

TEST(ModemEmulatorTest, EndsDialingByItsFaults) {
  for (const auto& [fault, detail, answer] :
       {std::tuple(23, "NO ANSWER", "\r\nNO ANSWER\r\n"), std::tuple(23, "DELAYED 00:30", "\r\nDELAYED 00:30\r\n"),
        std::tuple(23, "late", "\r\nOK\r\n"), std::tuple(24, "", "\r\nNO CARRIER\r\n")}) {
    ModemEmulator modem({.speed = 20});
    Host host(modem);
    host.Ask("ATE0");
    host.Ask("AT+FCLASS=8");
    modem.WhenDialled({Callee::Kind::Answers, 1});
    modem.SetFault(fault, detail);
    const double dialled = modem.Now();
    EXPECT_THAT(host.Ask("ATDT123", answer), EndsWith(answer)) << fault << detail;
    EXPECT_GT(modem.Now() - dialled, std::string(detail) == "late" ? 5 : 0.9) << fault << detail;
  }
  // Only who breaks it off himself hears of it.
  ModemEmulator modem({.speed = 20});
  Host host(modem);
  host.Ask("ATE0");
  host.Ask("AT+FCLASS=8");
  modem.SetFault(24, "ok");
  modem.WhenDialled({Callee::Kind::NeverAnswers, 0});
  host.Write("ATDT123\r");
  modem.WaitFor([&] { return modem.OffHook(); });
  EXPECT_THAT(host.Ask("", "OK\r\n"), EndsWith("\r\nOK\r\n"));
}

TEST(ModemEmulatorTest, ComesBackWithoutRightsOrAsBusy) {
  ModemEmulator modem({});
  modem.Replug(ModemEmulator::Node::NoRights);
  struct stat node {};
  EXPECT_EQ(stat(modem.Port().c_str(), &node), 0);
  EXPECT_EQ(node.st_mode & 0777, 0U);
  // Who has the right to everything is told apart by nothing; so another process asks, as nobody.
  const auto as_nobody = [&modem] {
    const std::string port = modem.Port();
    const pid_t child = fork();
    if (child == 0) {
      constexpr uid_t kNobody = 65534;
      const bool dropped = geteuid() != 0 || (setgid(kNobody) == 0 && setuid(kNobody) == 0);
      const int fd = open(port.c_str(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC);
      _exit(!dropped ? 255 : fd >= 0 ? 0 : errno);
    }
    int status = 0;
    waitpid(child, &status, 0);
    return WEXITSTATUS(status);
  };
  EXPECT_EQ(as_nobody(), EACCES);
  modem.Replug(ModemEmulator::Node::Busy);
  chmod(modem.Port().c_str(), 0666);
  EXPECT_EQ(as_nobody(), EBUSY);
  modem.Replug();
  Host host(modem);
  EXPECT_EQ(host.Ask("ATE0"), "ATE0\r\r\nOK\r\n");
}

TEST(ModemEmulatorTest, LosesTheCallWhenThePortIsClosed) {
  ModemEmulator modem({.speed = 10});
  {
    Host host(modem);
    TakeCall(modem, host);
    EXPECT_TRUE(modem.OffHook());
  }
  EXPECT_TRUE(modem.WaitFor([&] { return !modem.OffHook(); }, 2));
  EXPECT_EQ(modem.Class(), 0);
}

TEST(ModemEmulatorTest, GivesTheCallerInEveryForm) {
  // Known to be right: the checksum is over all bytes before it.
  EXPECT_EQ(CallerIdHex({}), "802401083130313532303338020A38343735353530303031070C552E532E524F424F5449435334");
  EXPECT_EQ(CallerIdHex({.number = "", .date = "1015", .time = "2038", .form = "withheld"}),
            "800D0108313031353230333804015081");
  for (const std::string& form : CallerIdForms()) {
    ModemEmulator modem({.personality = "silabs", .speed = 50});
    Host host(modem);
    host.Ask("ATE0");
    host.Ask("AT+VCID=1;+FCLASS=8");
    modem.SetFault(11, form);
    modem.Ring();
    host.ReadTo(D + "R");
    const std::string report = host.ReadTo(D + "R");
    EXPECT_EQ(report == D + "R", form == "none" || form == "checksum") << form;
    if (form == "spaced") {
      EXPECT_EQ(report, D + "X\r\nCIDM\r\nDATE = 1015\r\nTIME = 2038\r\nNMBR = 8475550001\r\nNAME = U.S.ROBOTICS\r\n" +
                            D + "." + D + "R");
    }
  }
}

TEST(ModemEmulatorTest, HasItsFaults) {
  struct Case {
    int fault;
    const char* detail;
    const char* command;
    std::string answer;
  };
  const Case cases[] = {{2, "", "AT", "AT\r\r\nOK\r\n"},
                        {3, "", "AT", "\r\n\r\nOK\r\n\r\n"},
                        {4, "bytes", "AT", "\r\nOK\r\n"},
                        {4, "merged", "ATI0", "\r\n56000\r\n\r\nOK\r\n"},
                        {5, "", "AT", "\r\nRING\r\n\r\nOK\r\n"},
                        {6, "+VCID", "AT+VCID=1", "\r\nERROR\r\n"},
                        {7, "once", "AT+FCLASS=8", "\r\nERROR\r\n"}};
  for (const Case& one : cases) {
    ModemEmulator modem({.speed = 10});
    Host host(modem);
    host.Ask("ATE0");
    modem.SetFault(one.fault, one.detail);
    const std::string last = one.answer.substr(one.answer.find_last_not_of("\r\n") - 1);
    EXPECT_EQ(host.Ask(one.command, last), one.answer) << one.fault;
  }
  ModemEmulator modem({.speed = 10});
  Host host(modem);
  TakeCall(modem, host);
  modem.SetFault(13);
  modem.SetFault(14);
  modem.SetFault(18, "esc");
  host.Ask("AT+VRX", "CONNECT\r\n");
  modem.WaitFor([&] { return modem.Recorded().size() > 500; });
  host.Write(D + "!");
  host.Write(D + "\x1B");
  const std::string stream = host.ReadTo(D + "\x03\r\nOK\r\n");
  EXPECT_EQ(SamplesOf(stream), modem.Recorded());
}

} // namespace
} // namespace kelmio::emulated
