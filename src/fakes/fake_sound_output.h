// A sound output that a test lets hear what it likes.
#pragma once

#include <memory>

#include "media/sound_output.h"

namespace kelmio {

class FakeSoundOutput : public SoundOutput {
public:
  bool Start(std::unique_ptr<WaveReader> new_sound) override {
    sound = std::move(new_sound);
    heard = 0;
    ++starts;
    return present;
  }
  void Stop() override { sound.reset(); }
  long Heard() const override { return heard; }

  bool present = true;
  std::unique_ptr<WaveReader> sound; // what plays
  long heard = 0;
  int starts = 0;
};

} // namespace kelmio
