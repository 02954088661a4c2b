// A microphone that hears what a test lets it hear.
#pragma once

#include <utility>
#include <vector>

#include "media/sound_input.h"

namespace kelmio {

class FakeSoundInput : public SoundInput {
public:
  void Start() override {
    heard.clear();
    running = true;
  }
  void Stop() override { running = false; }
  bool Lost() const override { return lost; }
  std::vector<std::int16_t> Take() override { return std::exchange(heard, {}); }

  bool running = false;
  bool lost = false;
  std::vector<std::int16_t> heard; // and not fetched yet
};

} // namespace kelmio
