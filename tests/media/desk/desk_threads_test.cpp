#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "fakes/fake_desk_stream.h"
#include "media/sound_desk.h"

namespace kelmio {
namespace {

using namespace test;

class DeskSound : public SoundTest {
protected:
  FakeDeskStream stream_;
  MediaSoundFactory with_desk_{loop_, &stream_};
};

TEST_F(DeskSound, LineStreamAndUserMayMeetInAnyWay) {
  auto sound = with_desk_.Create(*this);
  const auto port = sound->Port();
  std::atomic<bool> stop{false};
  std::thread line([&] {
    const Samples far = Speech(-20, 0.02);
    Samples near(far.size());
    while (!stop) {
      port->Received(far, 8000);
      port->ToSend(near, 8000);
      std::this_thread::yield();
    }
  });
  for (int i = 0; i < 10; ++i) {
    sound->UseDesk();
    std::thread stream([client = stream_.client] {
      Samples frame(kDeskFrame);
      for (int count = 0; count < 100; ++count) {
        client->ToPlay(frame);
        client->Captured(frame, 60);
      }
    });
    if (i % 2 == 0)
      sound->ReleaseDesk();
    stream.join();
    if (i % 2 != 0)
      sound->ReleaseDesk();
    EXPECT_EQ(stream_.client, nullptr);
  }
  EXPECT_EQ(stream_.starts, 10);
  sound.reset();
  stop = true;
  line.join();
}

TEST_F(DeskSound, ASecondCallTakesTheDeskFromTheFirst) {
  const auto first = with_desk_.Create(*this);
  auto second = with_desk_.Create(*this);
  const Samples voice = Sines({500}, -20, 0.4, kDeskRate);
  const auto is_heard_on = [&](CallSound& sound) {
    double loudest = -120;
    Samples frame(160);
    for (std::size_t at = 0; at < voice.size(); at += kDeskFrame) {
      stream_.client->Captured(std::span(voice).subspan(at, kDeskFrame), 60);
      sound.Port()->ToSend(frame, 8000);
      loudest = std::max(loudest, LevelOf(frame));
    }
    return loudest > -40;
  };
  first->UseDesk();
  first->UseDesk();
  EXPECT_EQ(stream_.starts, 1);
  EXPECT_TRUE(is_heard_on(*first));
  stream_.trouble("There is no microphone");
  EXPECT_EQ(trouble_, "There is no microphone");
  second->UseDesk();
  EXPECT_EQ(stream_.starts, 2);
  EXPECT_FALSE(is_heard_on(*first));
  EXPECT_TRUE(is_heard_on(*second));
  first->ReleaseDesk();
  EXPECT_NE(stream_.client, nullptr) << "it isn't the first call's any more";
  second.reset();
  EXPECT_EQ(stream_.client, nullptr);
  auto factory = std::make_unique<MediaSoundFactory>(loop_, &stream_);
  const auto left_over = factory->Create(*this);
  left_over->UseDesk();
  factory.reset();
  EXPECT_EQ(stream_.client, nullptr) << "nobody has the microphone when the program ends";
  sound_->UseDesk(); // made with no desk
  EXPECT_EQ(stream_.starts, 3);
}

} // namespace
} // namespace kelmio
