// A multimedia device whose mode follows its commands.
#pragma once

#include "fakes/fake_desktop.h"

namespace kelmio::test {

class MovingDevice : public FakeMultimediaDevice {
public:
  void Command(std::string_view word) override {
    FakeMultimediaDevice::Command(word);
    if (word == "Open" || word == "Stop")
      mode = MultimediaMode::Stopped;
    if (word == "Play" && readable)
      mode = MultimediaMode::Playing;
    if (word == "Record")
      mode = MultimediaMode::Recording;
    if (word == "Close")
      mode = MultimediaMode::NotReady;
  }
  bool readable = true;
};

} // namespace kelmio::test
