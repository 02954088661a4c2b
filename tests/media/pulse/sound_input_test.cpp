#include "media/pulse/pulse_sound_input.h"

#include <algorithm>
#include <iterator>
#include <span>

#include "sound_server.h"

namespace kelmio::test {
namespace {

using namespace std::chrono_literals;

constexpr std::size_t kRate = kMicrophoneRate;

class SoundInputTest : public SoundServerTest {
protected:
  void StartServer() {
    ASSERT_TRUE(server_.Start({SoundServer::Microphone(server_.Pipe("said"), kMicrophoneRate)}));
    mouth_ = ::open(server_.Pipe("said").c_str(), O_WRONLY | O_CLOEXEC);
  }
  ~SoundInputTest() override {
    if (mouth_ >= 0)
      ::close(mouth_);
  }
  // As fast as it is heard; false when the pipe doesn't take it.
  bool Say(std::span<const std::int16_t> sound) {
    constexpr std::size_t kPiece = kRate / 50;
    for (std::size_t place = 0; place < sound.size(); place += kPiece) {
      const auto piece = sound.subspan(place, std::min(kPiece, sound.size() - place));
      if (::write(mouth_, piece.data(), piece.size_bytes()) != static_cast<ssize_t>(piece.size_bytes()))
        return false;
      server_.loop.RunFor(20ms);
    }
    return true;
  }
  // The microphone is silent where nobody says anything.
  const Samples& Heard() {
    std::ranges::remove_copy(input_.Take(), std::back_inserter(heard_), std::int16_t{0});
    return heard_;
  }
  // Something has been heard since the start.
  bool Listens() {
    return RunUntil([this] {
      const std::int16_t sound = 1;
      return ::write(mouth_, &sound, sizeof sound) == sizeof sound && !Heard().empty();
    });
  }

  int mouth_ = -1;
  Samples heard_;
  PulseSoundInput input_;
};

TEST_F(SoundInputTest, HearsAllUnchangedFromStartToStop) {
  StartServer();
  for (const std::uint32_t seed : {1U, 2U}) {
    EXPECT_LT(TimeOf([this] { input_.Start(); }), 500ms);
    heard_.clear();
    ASSERT_TRUE(Listens());
    const Samples speech = NoiseWithoutZeros(kRate * 3 / 2, seed);
    ASSERT_TRUE(Say(speech));
    const auto whole = [&] {
      const auto place = std::search(heard_.begin(), heard_.end(), speech.begin(), speech.begin() + 100);
      return std::equal(place, heard_.end(), speech.begin(), speech.end());
    };
    EXPECT_TRUE(RunUntil([&] { return Heard().size() >= speech.size() && whole(); })) << heard_.size();
    ASSERT_TRUE(Say(std::span(speech).first(kRate / 2)));
    input_.Stop(); // without a fetch meanwhile
    const std::size_t before = heard_.size();
    Heard();
    EXPECT_GT(heard_.size() - before, kRate / 4);
    EXPECT_TRUE(std::equal(heard_.begin() + static_cast<std::ptrdiff_t>(before), heard_.end(), speech.begin()));
    server_.loop.RunFor(100ms);
    EXPECT_TRUE(input_.Take().empty());
    EXPECT_FALSE(input_.Lost());
  }
}

TEST_F(SoundInputTest, TellsThatTheMicrophoneIsMissingOrGone) {
  const auto lost = [this] { return RunUntil([this] { return input_.Lost(); }); };
  input_.Start();
  EXPECT_TRUE(lost()) << "no server";
  ASSERT_TRUE(server_.Start({}));
  input_.Start();
  EXPECT_FALSE(input_.Lost());
  EXPECT_TRUE(lost()) << "no device";
  server_.Kill();

  StartServer();
  input_.Start();
  ASSERT_TRUE(Listens());
  ASSERT_TRUE(Say(NoiseWithoutZeros(kRate / 2)));
  ASSERT_TRUE(server_.Tell("unload-module module-pipe-source"));
  EXPECT_TRUE(lost());
  EXPECT_GT(Heard().size(), kRate / 4) << "what was heard is kept";
}

TEST_F(SoundInputTest, WaitsForNoServerThatHangs) {
  ASSERT_NO_FATAL_FAILURE(server_.Hang());
  EXPECT_LT(TimeOf([this] { input_.Start(); }), 500ms);
  EXPECT_TRUE(server_.loop.RunUntil([this] { return input_.Lost(); }, 10s));
  server_.StopHanging();
  StartServer();
  input_.Start();
  ASSERT_TRUE(Listens());
  server_.Signal(SIGSTOP); // in the middle of a recording
  server_.loop.RunFor(300ms);
  EXPECT_LT(TimeOf([this] { input_.Stop(); }), 2s);
}

} // namespace
} // namespace kelmio::test
