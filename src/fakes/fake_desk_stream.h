// A desk that a test speaks and listens at.
#pragma once

#include <memory>
#include <utility>

#include "media/desk_stream.h"

namespace kelmio {

class FakeDeskStream : public DeskStream {
public:
  void Start(std::shared_ptr<DeskClient> new_client, std::function<void(const std::string&)> new_trouble) override {
    client = std::move(new_client);
    trouble = std::move(new_trouble);
    ++starts;
  }
  void Stop() override { client.reset(); }

  std::shared_ptr<DeskClient> client; // nothing while microphone and loudspeaker are closed
  std::function<void(const std::string&)> trouble;
  int starts = 0;
};

} // namespace kelmio
