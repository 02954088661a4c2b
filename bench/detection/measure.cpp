#include "detection/measure.h"

#include <algorithm>
#include <limits>
#include <span>

#include "media/signal_watch.h"
#include "support/desk.h"

namespace kelmio::bench {
namespace {

/// The whole program on a scripted line, with the present signal watch in front of it.
class Machine : private SignalSink {
public:
  Machine() { desk_.Start(); }

  double TakeMessage(const Message& message) {
    Listen(message.before);
    call_ = desk_.AnsweredCall();
    watch_.StartWatching();
    return Listen(message.sound) - message.hang_up;
  }

private:
  /// Gives back when the call ended.
  double Listen(const Samples& sound) {
    constexpr std::size_t kFrame = 160;
    constexpr int kFrameMs = 20;
    const std::span<const std::int16_t> samples(sound);
    for (std::size_t at = 0; at + kFrame <= samples.size(); at += kFrame) {
      watch_.Process(samples.subspan(at, kFrame));
      desk_.Wait(kFrameMs);
      if (call_ && call_->NowIn() == ScriptedCall::Phase::Over)
        return static_cast<double>(at + kFrame) / SignalWatch::kRate;
    }
    return std::numeric_limits<double>::infinity();
  }

  // As in the port of a real call, only busy tone and digits are told before the recording.
  void HeardSilence() override { desk_.sounds.Current()->Silence(); }
  void HeardVoice() override { desk_.sounds.Current()->Voice(); }
  void HeardTone(int hertz) override { desk_.sounds.Current()->Tone(hertz); }
  void HeardBusyTone() override {
    if (call_)
      desk_.sounds.Current()->BusyTone();
  }
  void HeardDigit(char) override {}

  test::Desk desk_;
  std::shared_ptr<ScriptedCall> call_;
  SignalWatch watch_{*this};
};

} // namespace

double EndOf(const Message& message) {
  return Machine().TakeMessage(message);
}

void Figures::Row::Add(double end) {
  ++messages;
  false_stops += end < 0;
  late += end > kInTime;
  slowest = std::max(slowest, end);
}

void Figures::Add(unsigned number, const Message& message, double end) {
  all.Add(end);
  contents[static_cast<std::size_t>(message.content)].Add(end);
  endings[static_cast<std::size_t>(message.ending)].Add(end);
  codings[static_cast<std::size_t>(message.coding)].Add(end);
  if (message.lossy)
    lossy.Add(end);
  if (end < 0 || end > kInTime)
    faults += "#" + std::to_string(number) + (end < 0 ? " stopped " : " ended late ") + std::to_string(end) + " of " +
              std::to_string(message.hang_up) + ": " + NameOf(message.content) + ", " + NameOf(message.ending) + ", " +
              NameOf(message.coding) + (message.lossy ? ", lossy," : ",") + message.details + "\n";
}

Figures Measure(unsigned first, unsigned last) {
  Figures figures;
  for (unsigned number = first; number < last; ++number) {
    const Message message = MakeMessage(number);
    figures.Add(number, message, EndOf(message));
  }
  return figures;
}

} // namespace kelmio::bench
