#include "media/pulse/pulse_sound_output.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "media/pulse/pulse_mailbox.h"
#include "media/pulse/pulse_playback.h"
#include "media/pulse/pulse_thread.h"
#include "media/wave_file.h"

namespace kelmio {
namespace {

using namespace std::chrono_literals;

/// How long a start waits for the server: long for one that works, short for who has clicked.
constexpr std::chrono::milliseconds kStartPatience = 300ms;
/// A server that hung is not waited for again so soon.
constexpr std::chrono::seconds kHungFor = 10s;
/// A server may be started by the first who asks for it, and a wireless device may take some seconds to begin.
constexpr PulsePatience kPatience{10s, 5s};

class WaveSource : public PulseSource {
public:
  explicit WaveSource(std::unique_ptr<WaveReader> sound) : sound_(std::move(sound)) {}
  pa_sample_spec Format() const override { return {PA_SAMPLE_S16NE, static_cast<std::uint32_t>(sound_->Rate()), 1}; }
  std::size_t Read(std::span<std::byte> out) override {
    samples_.resize(out.size() / sizeof(std::int16_t));
    const std::size_t count = sound_->Read(samples_);
    std::ranges::copy(std::as_bytes(std::span(samples_).first(count)), out.begin());
    return count * sizeof(std::int16_t);
  }

private:
  const std::unique_ptr<WaveReader> sound_;
  std::vector<std::int16_t> samples_;
};

} // namespace

PulseSoundOutput::PulseSoundOutput(EventLoop& loop) : loop_(loop) {}

PulseSoundOutput::~PulseSoundOutput() {
  Stop();
}

bool PulseSoundOutput::Start(std::unique_ptr<WaveReader> sound) {
  Stop();
  const auto start = PulseClock::now();
  progress_ = std::make_shared<PulseProgress>();
  mailbox_ = std::make_shared<PulseMailbox>(loop_);
  // The box is closed before this object goes.
  const auto lost = [this, box = mailbox_] { box->Post([this] { Lost(); }); };
  thread_ = std::make_unique<PulseThread>(std::make_unique<PulsePlayback>(
      std::make_unique<WaveSource>(std::move(sound)), "Message", progress_, kPatience, lost));
  const bool hung = hung_until_ && start < *hung_until_;
  const auto begin = progress_->WaitForBegin(hung ? 0ms : kStartPatience);
  if (begin == PulseProgress::State::Opening && !hung)
    hung_until_ = start + kHungFor;
  else if (begin != PulseProgress::State::Opening)
    hung_until_.reset();
  if (begin != PulseProgress::State::Opening && begin != PulseProgress::State::Refused)
    return true;
  progress_->RunOnClock(start);
  return false;
}

void PulseSoundOutput::Stop() {
  if (mailbox_)
    mailbox_->Close();
  mailbox_.reset();
  thread_.reset();
  progress_.reset();
}

long PulseSoundOutput::Heard() const {
  if (!progress_)
    return 0;
  return static_cast<long>(std::chrono::floor<std::chrono::milliseconds>(progress_->Heard(PulseClock::now())).count());
}

} // namespace kelmio
