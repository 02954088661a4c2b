#include "media/pulse/pulse_desk_stream.h"

#include <algorithm>
#include <atomic>
#include <iostream>
#include <memory>
#include <mutex>

#include <gmock/gmock.h>

#include "sound_server.h"

namespace kelmio::test {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr char kNullSink[] = "module-null-sink sink_name=desk rate=16000 channels=1";

/// Says noise without an end, and counts.
class NoisyClient : public DeskClient {
public:
  void ToPlay(std::span<std::int16_t> frame) noexcept override {
    std::ranges::copy(noise_, frame.begin());
    said_ += frame.size();
  }
  void Captured(std::span<const std::int16_t> frame, int) noexcept override { captured_ += frame.size(); }
  std::size_t Said() const { return said_; }
  std::size_t HeardSamples() const { return captured_; }

private:
  const Samples noise_ = NoiseWithoutZeros(kDeskFrame);
  std::atomic<std::size_t> said_ = 0;
  std::atomic<std::size_t> captured_ = 0;
};

/// Says a frame of noise every third of a second, and measures how long it is until it comes back.
class EchoClient : public DeskClient {
public:
  struct Trip {
    double measured_ms;
    int told_ms;
  };
  void ToPlay(std::span<std::int16_t> frame) noexcept override {
    if (++frames_ % 16 != 0)
      return;
    std::ranges::copy(noise_, frame.begin());
    said_ = Clock::now();
    quiet_ = false;
  }
  void Captured(std::span<const std::int16_t> frame, int echo_delay_ms) noexcept override {
    const auto first = std::ranges::find_if(frame, [](std::int16_t sample) { return sample != 0; });
    if (quiet_ || first == frame.end())
      return;
    quiet_ = true;
    // It is back as a whole once as much of a frame more has been captured as it is late within this one.
    const double rest = 1000.0 * static_cast<double>(first - frame.begin()) / kDeskRate;
    const std::lock_guard lock(mutex_);
    trips_.push_back({std::chrono::duration<double, std::milli>(Clock::now() - said_).count() + rest, echo_delay_ms});
  }
  std::vector<Trip> Trips() {
    const std::lock_guard lock(mutex_);
    return trips_;
  }

private:
  const Samples noise_ = NoiseWithoutZeros(kDeskFrame);
  int frames_ = 0;
  Clock::time_point said_;
  bool quiet_ = true;
  std::mutex mutex_;
  std::vector<Trip> trips_;
};

class DeskStreamTest : public SoundServerTest {
protected:
  void Start(const std::shared_ptr<DeskClient>& client) {
    EXPECT_LT(TimeOf([&] { desk_.Start(client, [this](const std::string& words) { troubles_.push_back(words); }); }),
              1s);
    EXPECT_THAT(troubles_, testing::IsEmpty());
  }
  bool Told(const std::string& word) {
    return RunUntil([&] { return !troubles_.empty() && troubles_.back().find(word) != std::string::npos; });
  }
  // Says and hears something more from now on.
  bool GoesOn() {
    const std::size_t said = client_->Said();
    return RunUntil([&] { return client_->Said() > said + kDeskRate / 2; });
  }

  std::vector<std::string> troubles_;
  std::shared_ptr<NoisyClient> client_ = std::make_shared<NoisyClient>();
  PulseDeskStream desk_{server_.loop};
};

TEST_F(DeskStreamTest, TellsHowLongAnEchoTakes) {
  ASSERT_TRUE(server_.Start({kNullSink}));
  const auto client = std::make_shared<EchoClient>();
  Start(client);
  ASSERT_TRUE(RunUntil([&] { return client->Trips().size() >= 10; }));
  desk_.Stop();
  auto trips = client->Trips();
  trips.erase(trips.begin(), trips.begin() + 2); // while the server settles
  std::vector<double> measured;
  std::vector<double> wrong;
  for (const auto& trip : trips) {
    std::cout << "round trip " << trip.measured_ms << " ms, told " << trip.told_ms << " ms\n";
    measured.push_back(trip.measured_ms);
    wrong.push_back(std::abs(trip.measured_ms - trip.told_ms));
  }
  std::ranges::sort(measured);
  std::ranges::sort(wrong);
  EXPECT_LT(measured[measured.size() / 2], 300);
  EXPECT_LT(wrong[wrong.size() / 2], 60);
}

TEST_F(DeskStreamTest, OutlivesTheServerAndEachDevice) {
  Start(client_);
  ASSERT_TRUE(Told("can't be reached"));
  server_.loop.RunFor(1500ms); // tries again meanwhile
  EXPECT_THAT(troubles_, testing::SizeIs(1));
  ASSERT_TRUE(server_.Start({kNullSink}));
  ASSERT_TRUE(Told("are back"));
  EXPECT_TRUE(GoesOn());

  server_.Kill();
  ASSERT_TRUE(Told("can't be reached"));
  ASSERT_TRUE(server_.Start({}));
  ASSERT_TRUE(Told("no sound device"));
  ASSERT_TRUE(server_.Tell("load-module module-pipe-source file=" + server_.Pipe("said")));
  ASSERT_TRUE(Told("no loudspeaker"));
  ASSERT_TRUE(server_.Tell(std::string("load-module ") + kNullSink));
  ASSERT_TRUE(Told("are back"));
  EXPECT_TRUE(GoesOn());
  ASSERT_TRUE(server_.Tell("unload-module module-pipe-source"));
  ASSERT_TRUE(server_.Tell("unload-module module-null-sink"));
  ASSERT_TRUE(Told("no sound device"));
}

TEST_F(DeskStreamTest, PlaysWithoutAMicrophone) {
  // Every loudspeaker of this server lends itself as a microphone, so one is asked for that isn't there.
  ASSERT_TRUE(server_.Start({kNullSink}));
  ::setenv("PULSE_SOURCE", "none", 1);
  Start(client_);
  EXPECT_TRUE(Told("no microphone"));
  EXPECT_TRUE(GoesOn());
  desk_.Stop();
  ::unsetenv("PULSE_SOURCE");
  EXPECT_THAT(troubles_, ElementsAre(HasSubstr("no microphone")));
  EXPECT_EQ(client_->HeardSamples(), 0U);
}

TEST_F(DeskStreamTest, WaitsForNoServerThatHangs) {
  ASSERT_NO_FATAL_FAILURE(server_.Hang());
  Start(client_);
  EXPECT_TRUE(Told("can't be reached"));
  server_.StopHanging();
  ASSERT_TRUE(server_.Start({kNullSink}));
  ASSERT_TRUE(Told("are back"));
  server_.Signal(SIGSTOP); // in the middle of a call
  EXPECT_TRUE(Told("can't be reached"));
  EXPECT_LT(TimeOf([this] { desk_.Stop(); }), 2s);
  const auto told = troubles_.size();
  const std::size_t said = client_->Said();
  server_.Signal(SIGCONT);
  server_.loop.RunFor(300ms);
  EXPECT_EQ(client_->Said(), said);
  EXPECT_EQ(troubles_.size(), told);
}

} // namespace
} // namespace kelmio::test
