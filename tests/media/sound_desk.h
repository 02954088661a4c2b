// One call's sound with everything around it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "fakes/fake_loop.h"
#include "media/media_sound.h"
#include "media/signals.h"
#include "media/wave_file.h"
#include "support/temporary_folder.h"

namespace kelmio::test {

/// All samples of a file, mixed to mono, and its rate.
inline Samples ReadAll(const std::string& path, int* rate = nullptr) {
  std::string error;
  const auto reader = WaveReader::Open(path, error);
  if (!reader)
    return {};
  if (rate != nullptr)
    *rate = reader->Rate();
  Samples all;
  Samples chunk(10000);
  while (const std::size_t count = reader->Read(chunk))
    all.insert(all.end(), chunk.begin(), chunk.begin() + static_cast<std::ptrdiff_t>(count));
  return all;
}

class SoundTest : public ::testing::Test, protected CallSoundEvents {
protected:
  void PlayDone() override { reports_ += "played "; }
  void RecordDone() override { reports_ += "recorded "; }
  void Silence() override { reports_ += "silence "; }
  void Voice() override { reports_ += "voice "; }
  void Tone(int) override { reports_ += "tone "; }
  void BusyTone() override { reports_ += "busy "; }
  void Digit(char digit) override { reports_ += std::string(1, digit) + " "; }
  void Block(std::span<const std::byte> samples) override { blocks_.emplace_back(samples.begin(), samples.end()); }
  void Trouble(const std::string& text) override {
    reports_ += "trouble ";
    trouble_ = text;
  }

  std::string Reports() {
    loop_.RunPending();
    return std::exchange(reports_, {});
  }

  /// One tick of a driver: a frame from the far side, and the frame that goes out meanwhile.
  Samples Tick(const Samples& received, int rate = 8000) {
    Samples sent(received.size(), 1);
    port_->Received(received, rate);
    port_->ToSend(sent, rate);
    return sent;
  }
  /// Many ticks of 20 ms; gives what was sent.
  Samples Run(const Samples& received, int rate = 8000) {
    Samples sent;
    const auto frame = static_cast<std::ptrdiff_t>(rate / 50);
    for (auto at = received.begin(); at != received.end();) {
      const auto end = at + std::min(frame, received.end() - at);
      sent = std::move(sent) + Tick(Samples(at, end), rate);
      at = end;
    }
    return sent;
  }

  /// Until the worker has done its part.
  static bool Wait(const std::function<bool()>& condition) {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!condition()) {
      if (std::chrono::steady_clock::now() > deadline)
        return false;
      std::this_thread::yield();
    }
    return true;
  }

  RecordRequest Request(long max_seconds = 0) const { return {path_, {}, false, false, 2048, max_seconds}; }

  TemporaryFolder folder_;
  const std::string path_ = folder_.Path() + "message.wav";
  FakeLoop loop_;
  MediaSoundFactory factory_{loop_};
  std::unique_ptr<CallSound> sound_ = factory_.Create(*this);
  std::shared_ptr<SoundPort> port_ = sound_->Port();
  std::string reports_;
  std::string trouble_;
  std::vector<std::vector<std::byte>> blocks_;
};

} // namespace kelmio::test
