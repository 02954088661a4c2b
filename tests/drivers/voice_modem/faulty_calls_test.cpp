// Calls on an emulated modem: usual ones, and one after the other with something wrong each.
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdlib>
#include <random>

#include "drivers/port_of_test.h"
#include "drivers/sip/loop_of_test.h"
#include "drivers/voice_modem/voice_modem_driver.h"
#include "modem_emulator/modem_emulator.h"
#include "support/temporary_folder.h"

namespace kelmio::test {
namespace {

using emulated::HangUpSign;
using emulated::ModemEmulator;
using emulated::Samples;

constexpr double kSpeed = 4; // more, and a busy machine is late for the modem

/// An answering machine on a modem line, and its ledger.
class Household : public LineEvents {
public:
  explicit Household(const std::string& personality) : modem({personality, folder.Path() + "ttyACM0", kSpeed}) {
    driver = std::make_unique<VoiceModemDriver>(
        loop, LinesFile(folder.Path() + "Lines.ini"), nullptr,
        VoiceModemDriver::Options{.folder = folder.Path(), .lock_folder = folder.Path(), .speed = kSpeed});
    line = driver->Lines().at(0);
    EXPECT_TRUE(line->Open(*this)) << ::testing::PrintToString(log);
    EXPECT_TRUE(Within(60, [this] { return Ready(); })) << ::testing::PrintToString(log);
  }
  ~Household() override { line->Close(); }

  void NewCall(std::shared_ptr<DeviceCall> new_call) override {
    EXPECT_EQ(call, nullptr) << "a call before the last one was over";
    call = std::move(new_call);
    voice = std::make_shared<PortOfTest>();
    voice->Say(greeting);
    connected = false;
    ++begun;
  }
  void Ring(DeviceCall& ringing, int count) override {
    if (count == answer_on) {
      ringing.SetSoundPort(voice);
      ringing.Answer();
    }
  }
  void CallerID(DeviceCall&, const std::string& name, const std::string& number) override {
    callers.push_back(name + "/" + number);
  }
  void StateChanged(DeviceCall&, CallState state) override { states.push_back(state); }
  void Connected(DeviceCall&) override {
    EXPECT_FALSE(connected);
    connected = true;
  }
  void Busy(DeviceCall&) override { states.push_back(CallState::Busy); }
  void Digit(DeviceCall&, char digit) override { digits += digit; }
  void Disconnected(DeviceCall&) override {
    call = nullptr;
    ++ended;
  }
  void Log(const std::string& text) override { log.push_back(text); }

  bool Ready() const { return line->Status().health == LineStatus::Health::Ready && call == nullptr; }
  /// Seconds of the modem, and one of this computer's for a slow moment.
  bool Within(double seconds, const std::function<bool()>& done) {
    return loop.RunUntil(done, std::chrono::milliseconds(static_cast<long>(seconds * 1000 / kSpeed) + 1000));
  }
  void Pass(double seconds) { loop.RunFor(std::chrono::milliseconds(static_cast<long>(seconds * 1000 / kSpeed))); }
  bool Listening() const { return modem.Streaming() == emulated::Modem::Stream::Record; }

  LoopOfTest loop;
  TemporaryFolder folder;
  ModemEmulator modem;
  std::unique_ptr<VoiceModemDriver> driver;
  std::shared_ptr<LineDevice> line;
  std::vector<std::int16_t> greeting;
  std::shared_ptr<DeviceCall> call;
  std::shared_ptr<PortOfTest> voice;
  int answer_on = 2;
  bool connected = false;
  int begun = 0;
  int ended = 0;
  std::vector<std::string> callers;
  std::vector<CallState> states;
  std::string digits;
  std::vector<std::string> log;
};

/// A sound of which no two pieces are alike, in steps that eight bits hold.
std::vector<std::int16_t> Speech(std::size_t samples, unsigned seed) {
  std::mt19937 random(seed);
  std::uniform_int_distribution<int> step(-100, 100);
  std::vector<std::int16_t> speech(samples);
  std::generate(speech.begin(), speech.end(), [&] { return static_cast<std::int16_t>(step(random) * 256); });
  return speech;
}

bool Holds(const std::vector<std::int16_t>& whole, const std::vector<std::int16_t>& part) {
  return std::search(whole.begin(), whole.end(), part.begin(), part.end()) != whole.end();
}

/// Whether the last quarter of a second of `bytes`, of eight bits each, is in `whole`.
bool HoldsEnd(const std::vector<std::int16_t>& whole, const std::string& bytes) {
  std::vector<std::int16_t> end;
  for (std::size_t i = bytes.size() - std::min<std::size_t>(bytes.size(), kModemRate / 4); i < bytes.size(); ++i)
    end.push_back(static_cast<std::int16_t>((static_cast<unsigned char>(bytes[i]) - 128) * 256));
  return end.empty() || Holds(whole, end);
}

/// The family whose samples don't hold each of those steps.
constexpr const char* kCompanded = "silabs";

class UsualCall : public ::testing::TestWithParam<std::string> {};

TEST_P(UsualCall, IsAnsweredGreetedAndRecordedSampleBySample) {
  Household house(GetParam());
  house.greeting = Speech(8000, 1);
  house.modem.Ring({.number = "5551234", .name = "SAMPLE"});
  ASSERT_TRUE(house.Within(60, [&] { return house.Listening() && !house.voice->Speaks(); }))
      << house.modem.Transcript();
  EXPECT_THAT(house.callers, ::testing::ElementsAre("SAMPLE/5551234"));
  const auto said = Speech(12000, 2);
  house.modem.CallerSays(Samples(said.begin(), said.end()));
  EXPECT_TRUE(house.Within(10, [&] { return Holds(house.voice->Received(), said) || GetParam() == kCompanded; }));
  house.modem.CallerPresses("5#");
  EXPECT_TRUE(house.Within(10, [&] { return house.digits == "5#"; })) << house.digits;
  house.modem.HangUp(HangUpSign::LoopBreak);
  ASSERT_TRUE(house.Within(20, [&] { return house.Ready() && house.ended == 1; })) << house.modem.Transcript();
  EXPECT_TRUE(house.Within(5, [&] { return !house.modem.OffHook(); }));
  EXPECT_THAT(house.modem.ComplaintsAtEnd(), ::testing::IsEmpty());
  const Samples heard = house.modem.Heard();
  EXPECT_GT(std::count_if(heard.begin(), heard.end(), [](auto sample) { return sample != 0; }), 7500);
  EXPECT_TRUE(Holds({heard.begin(), heard.end()}, house.greeting) || GetParam() == kCompanded);
}

TEST_P(UsualCall, IsRecordedWhileItIsHeldAtTheTelephone) {
  Household house(GetParam());
  house.answer_on = 99;
  house.modem.Ring({});
  ASSERT_TRUE(house.Within(20, [&] { return house.begun == 1; }));
  house.modem.Handset(true);
  ASSERT_TRUE(house.Within(20, [&] { return house.ended == 1; }));
  house.call = house.line->MakeCall("");
  ASSERT_NE(house.call, nullptr);
  house.voice = std::make_shared<PortOfTest>();
  house.call->SetSoundPort(house.voice);
  EXPECT_TRUE(house.call->Answer());
  ASSERT_TRUE(house.Within(20, [&] { return house.connected && house.Listening(); })) << house.modem.Transcript();
  const auto said = Speech(8000, 3);
  house.modem.CallerSays(Samples(said.begin(), said.end()));
  EXPECT_TRUE(house.Within(10, [&] { return Holds(house.voice->Received(), said) || GetParam() == kCompanded; }));
  house.modem.Handset(false);
  ASSERT_TRUE(house.Within(20, [&] { return house.ended == 2 && house.Ready(); })) << house.modem.Transcript();
  EXPECT_TRUE(house.Within(5, [&] { return !house.modem.OffHook(); }));
  EXPECT_THAT(house.modem.ComplaintsAtEnd(), ::testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Families, UsualCall, ::testing::Values("conexant", "softmodem", "usr", "silabs"),
                         [](const auto& name) { return name.param; });

TEST(ModemCalls, GreetingThatIsStoppedFallsSilentAtOnce) {
  Household house("conexant");
  house.greeting = Speech(80000, 1);
  house.modem.Ring({});
  ASSERT_TRUE(house.Within(60, [&] { return house.modem.Played().size() > 8000; })) << house.modem.Transcript();
  const std::size_t before = house.modem.Played().size();
  house.voice->Say({});
  ASSERT_TRUE(house.Within(10, [&] { return house.Listening(); })) << house.modem.Transcript();
  EXPECT_LT(house.modem.Played().size() - before, kModemRate / 5);
}

TEST(ModemCalls, DialsAndTellsWhatBecameOfIt) {
  Household house("conexant");
  using Kind = emulated::Callee::Kind;
  house.modem.WhenDialled({Kind::Answers, 2});
  house.call = house.line->MakeCall("+49 (30) 555-1234");
  ASSERT_TRUE(house.Within(60, [&] { return house.connected; })) << house.modem.Transcript();
  EXPECT_EQ(house.modem.Dialled(), "49305551234");
  house.call->Hangup();
  ASSERT_TRUE(house.Within(60, [&] { return house.Ready(); })) << house.modem.Transcript();

  house.modem.WhenDialled({Kind::Busy, 0});
  house.call = house.line->MakeCall("5551234");
  ASSERT_TRUE(house.Within(60, [&] { return house.ended == 2 && house.Ready(); })) << house.modem.Transcript();
  EXPECT_THAT(house.states, ::testing::Contains(CallState::Busy));

  house.modem.WhenDialled({Kind::NeverAnswers, 0});
  house.call = house.line->MakeCall("5551234");
  house.Pass(8);
  house.call->Hangup();
  ASSERT_TRUE(house.Within(20, [&] { return house.ended == 3 && house.Ready(); })) << house.modem.Transcript();
  EXPECT_FALSE(house.modem.OffHook());

  int ended = 3;
  for (const char* const end : {"BUSY", "NO ANSWER", "NO CARRIER", "NO DIALTONE", "LINE-IN-USE", "ERROR", "OK"}) {
    SCOPED_TRACE(end);
    house.connected = false;
    house.modem.SetFault(23, end);
    house.call = house.line->MakeCall("5551234");
    ASSERT_TRUE(house.Within(60, [&] { return house.connected || house.ended == ended + 1; }));
    EXPECT_EQ(house.connected, std::string(end) == "OK");
    if (house.call)
      house.call->Hangup();
    ASSERT_TRUE(house.Within(30, [&] { return house.ended == ended + 1 && house.Ready(); }))
        << house.modem.Transcript();
    ++ended;
  }
  EXPECT_FALSE(house.modem.OffHook());
  EXPECT_NE(house.line->MakeCall("5551234"), nullptr);
  house.line->Close();
  EXPECT_TRUE(house.Within(5, [&] { return !house.modem.OffHook(); }));
}

TEST(ModemCalls, ACallThatComesWhileOneIsDialledIsNoOther) {
  Household house("conexant");
  house.modem.WhenDialled({emulated::Callee::Kind::Answers, 2});
  for (int ended = 1; ended <= 3; ++ended) {
    ASSERT_TRUE(house.Within(60, [&] { return house.Ready(); })) << house.modem.Transcript();
    house.connected = false;
    house.call = house.line->MakeCall("5551234");
    house.Pass(0.4 * ended);
    house.modem.Ring({});
    ASSERT_TRUE(house.Within(60, [&] { return house.connected || house.ended == ended; }));
    if (house.call)
      house.call->Hangup();
    house.modem.HangUp();
    ASSERT_TRUE(house.Within(60, [&] { return house.ended == ended; })) << house.modem.Transcript();
    house.Pass(10);
  }
}

TEST(ModemCalls, SaysWhatIsWrongWithAModemOnceAndIsClosedAtOnce) {
  Household house("conexant");
  house.line->Close();
  house.modem.SetFault(1);
  house.log.clear();
  ASSERT_TRUE(house.line->Open(house));
  ASSERT_TRUE(house.Within(60, [&] { return house.line->Status().health == LineStatus::Health::Trouble; }));
  EXPECT_THAT(house.line->Status().words, ::testing::HasSubstr("doesn't answer"));
  const auto told = house.log.size();
  house.Pass(70);
  EXPECT_EQ(house.log.size(), told) << ::testing::PrintToString(house.log);
  house.modem.Unplug();
  house.modem.Replug();
  ASSERT_TRUE(house.Within(10, [&] { return house.line->Status().health == LineStatus::Health::Trying; }));
  const auto closing = std::chrono::steady_clock::now();
  house.line->Close();
  EXPECT_LT(std::chrono::steady_clock::now() - closing, std::chrono::milliseconds(300));
  house.modem.ClearFault(1);

  // Another program has it for a while.
  bool told_free = false;
  house.driver->Watch([&] { told_free = true; });
  auto other = OpenSerialPort(house.modem.Port().string(), house.folder.Path());
  EXPECT_FALSE(house.line->Open(house));
  house.Pass(7);
  told_free = false;
  other.port.reset();
  EXPECT_TRUE(house.Within(10, [&] { return told_free; }));
  EXPECT_TRUE(house.line->Open(house));
  EXPECT_TRUE(house.Within(60, [&] { return house.Ready(); })) << ::testing::PrintToString(house.log);
}

TEST(ModemCalls, ModemThatDiesInACallHoldsUpTheEndForSecondsOnly) {
  Household house("conexant");
  house.answer_on = 99;
  house.modem.Ring({});
  ASSERT_TRUE(house.Within(20, [&] { return house.begun == 1; }));
  house.modem.SetFault(1);
  house.call->SetSoundPort(house.voice);
  house.call->Answer();
  house.Pass(0.5);
  const double closing = house.modem.Now();
  house.line->Close();
  EXPECT_LT(house.modem.Now() - closing, 6);
}

/// What the driver finds, without a line that is open.
class ModemSearch : public ::testing::Test {
protected:
  void Search() {
    driver_ = std::make_unique<VoiceModemDriver>(
        loop_, LinesFile(folder_.Path() + "Lines.ini"), nullptr,
        VoiceModemDriver::Options{.folder = folder_.Path(), .lock_folder = folder_.Path(), .speed = kSpeed});
    driver_->TellTrouble([this](const std::string& words) { told_.push_back(words); });
  }
  bool FindsVoice() {
    return loop_.RunUntil(
        [this] {
          const auto lines = driver_->Lines();
          return lines.size() == 1 && (lines[0]->Caps().media_modes & media_mode::kAutomatedVoice) != 0;
        },
        std::chrono::seconds(10));
  }

  LoopOfTest loop_;
  TemporaryFolder folder_;
  ModemEmulator modem_{{"conexant", folder_.Path() + "ttyACM0", kSpeed}};
  std::unique_ptr<VoiceModemDriver> driver_;
  std::vector<std::string> told_;
};

TEST_F(ModemSearch, TellsOnceWhyAModemCannotBeAskedAndAsksItWhenItIsFree) {
  auto other = OpenSerialPort(modem_.Port().string(), folder_.Path());
  Search();
  driver_->Lines();
  ASSERT_TRUE(loop_.RunUntil([this] { return !told_.empty(); }, std::chrono::seconds(10)));
  EXPECT_THAT(told_[0], ::testing::HasSubstr("ttyACM0: "));
  loop_.RunFor(std::chrono::seconds(2));
  other.port.reset();
  EXPECT_TRUE(FindsVoice());
  EXPECT_EQ(told_.size(), 1U) << ::testing::PrintToString(told_);
}

TEST_F(ModemSearch, AsksASilentModemAgainWhenItIsPluggedInAnew) {
  modem_.SetFault(1);
  Search();
  ASSERT_EQ(driver_->Lines().size(), 1U);
  EXPECT_EQ(driver_->Lines()[0]->Caps().media_modes, 0U);
  driver_.reset();
  Search();
  modem_.ClearFault(1);
  modem_.Unplug();
  loop_.RunFor(std::chrono::milliseconds(500)); // a device that comes back at once hasn't been away
  modem_.Replug();
  EXPECT_TRUE(FindsVoice());
}

TEST(ModemCalls, ComesBackWhereverItIsPulledOut) {
  Household house("conexant");
  house.greeting = Speech(24000, 1);
  for (const char* const phase : {"idle", "ring", "call", "play", "record"}) {
    SCOPED_TRACE(phase);
    ASSERT_TRUE(house.Within(60, [&] { return house.Ready(); })) << ::testing::PrintToString(house.log);
    if (std::string(phase) == "idle") {
      house.modem.Unplug();
    } else {
      house.modem.SetFault(28, phase);
      house.modem.Ring({});
    }
    ASSERT_TRUE(house.Within(60, [&] { return house.line->Status().health == LineStatus::Health::Trouble; }));
    EXPECT_EQ(house.begun, house.ended);
    house.modem.HangUp();
    house.modem.Replug();
  }
  EXPECT_TRUE(house.Within(60, [&] { return house.Ready(); })) << ::testing::PrintToString(house.log);
}

/// The short form; KELMIO_CALLS=500 is the long one, KELMIO_SEED=n another one.
TEST(ModemCalls, NoFaultLosesAMessageOrLeavesTheLineStuck) {
  const char* const wanted = std::getenv("KELMIO_CALLS");
  const int calls = wanted ? std::atoi(wanted) : 10;
  struct Fault {
    int number;
    const char* detail;
    // No more than one ring, somebody at the telephone, a modem that is pulled out or dead: nothing to record.
    bool Takeable() const { return std::string_view(detail) != "one" && number != 25 && number != 28 && number != 30; }
  };
  const std::vector<Fault> faults{
      {2, ""},     {3, ""},         {4, "bytes"},     {4, "merged"},     {5, "dle"},   {5, "ring"},  {5, "cid"},
      {6, ""},     {7, "once"},     {7, "deaf"},      {8, ""},           {9, "both"},  {9, "text"},  {10, "fast"},
      {10, "one"}, {11, "before"},  {11, "after-3"},  {12, ""},          {13, ""},     {14, ""},     {15, ""},
      {16, ""},    {17, "silence"}, {17, "busy"},     {17, "dial-tone"}, {18, ""},     {18, "esc"},  {18, "mute"},
      {19, ""},    {20, ""},        {21, "underrun"}, {21, "stall"},     {21, "fast"}, {21, "slow"}, {22, "7f"},
      {25, "H"},   {25, "P"},       {26, ""},         {27, ""},          {28, "ring"}, {28, "play"}, {28, "record"},
      {29, ""},    {30, "reopen"},  {30, "replug"}};
  const char* const seed = std::getenv("KELMIO_SEED");
  std::mt19937 random(seed ? static_cast<unsigned>(std::atoi(seed)) : 20261123U);
  Household house("conexant");
  house.greeting = Speech(4000, 1);
  int taken = 0;
  for (int i = 0; i < calls; ++i) {
    const Fault& fault = faults[static_cast<std::size_t>(random()) % faults.size()];
    SCOPED_TRACE("call " + std::to_string(i) + ", fault " + std::to_string(fault.number) + " " + fault.detail);
    ASSERT_TRUE(house.Within(90, [&] { return house.Ready(); })) << ::testing::PrintToString(house.log);
    const int begun = house.begun;
    const std::size_t recorded = house.modem.Recorded().size();
    house.modem.SetFault(fault.number, fault.detail);
    house.modem.Ring({.number = std::to_string(5550000 + i)});
    // What a modem said in the moment in which it was pulled out may be lost with it.
    ASSERT_TRUE(house.Within(15, [&] { return house.begun > begun || !(fault.Takeable() || house.Ready()); }))
        << house.modem.Transcript();
    house.Within(30, [&] { return house.call == nullptr || (house.connected && house.Listening()); });
    const auto voice = house.voice; // of this call, whatever rings falsely behind it
    house.Pass(2 + static_cast<double>(random() % 3));
    if (random() % 2 == 0 || house.call == nullptr)
      house.modem.HangUp();
    // What a caller leaves without a sign is ended from this side, as the program does on silence.
    house.Pass(1);
    if (house.call)
      house.call->Hangup();
    house.modem.HangUp();
    const bool settled = house.Within(15, [&] {
      return house.call == nullptr && !house.modem.OffHook() &&
             house.line->Status().health != LineStatus::Health::Trying;
    });
    EXPECT_TRUE(settled) << house.modem.Transcript();
    const std::size_t given = house.modem.Recorded().size() - recorded;
    EXPECT_TRUE(!fault.Takeable() || (given > 0 && !voice->Received().empty())) << house.modem.Transcript();
    taken += given > 0 ? 1 : 0;
    // What the modem gave of the end of the call was heard whole, but for what it had not handed on when it broke.
    const bool broke = fault.number == 28 || fault.number == 30 || fault.number == 18 || fault.number == 27;
    if (!broke && house.connected && house.begun == begun + 1) {
      EXPECT_TRUE(HoldsEnd(house.voice->Received(), house.modem.Recorded().substr(recorded)))
          << house.modem.Transcript();
    }
    house.modem.ClearFault(fault.number);
    if (fault.number == 28 || fault.number == 30) {
      house.modem.Unplug();
      house.modem.Replug();
    }
    if (::testing::Test::HasFailure())
      break;
    // An exchange doesn't ring in the moment in which the line is put down, and a call that rang falsely and was
    // refused is over when it has been quiet for as long as rings are apart.
    house.Pass(fault.number == 5 || !house.connected ? 9 : 1);
  }
  EXPECT_TRUE(house.Within(90, [&] { return house.Ready(); })) << ::testing::PrintToString(house.log);
  EXPECT_EQ(house.begun, house.ended);
  RecordProperty("taken", taken);
}

} // namespace
} // namespace kelmio::test
