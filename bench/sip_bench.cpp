// How quickly the SIP line reacts, as a caller over loopback sees it.
#include <benchmark/benchmark.h>

#include <chrono>
#include <memory>

#include "drivers/sip/line_fixture.h"

namespace kelmio {
namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

/// An open line and a caller, without the wave files behind it.
struct Line {
  Line() {
    SipSettings settings;
    settings.listen.port = 0;
    driver = std::make_unique<SipDriver>(loop, settings);
    open = driver->Line().Open(reports);
    peer = std::make_unique<SipPeer>(driver->Line().Port());
  }
  ~Line() { driver->Line().Close(); }

  /// Calls anew; the call is known to this side when this returns. Seconds from the INVITE to its 180.
  double Ring() {
    reports.words.clear();
    const auto start = Clock::now();
    peer->Invite(peer->Sdp());
    peer->Await(180);
    const double seconds = SecondsSince(start);
    loop.RunUntil([this] { return reports.Has("new"); });
    return seconds;
  }
  /// Returns once the caller knows, so that the line is free for the next call.
  void HangUp(bool answered) {
    constexpr int kTemporarilyUnavailable = 480; // RFC 3261 21.4.18
    reports.call->Hangup();
    if (answered)
      peer->AwaitRequest("BYE");
    else
      peer->Await(kTemporarilyUnavailable);
    loop.RunPending();
  }

  LoopOfTest loop;
  ReportsOfTest reports;
  std::unique_ptr<SipDriver> driver;
  std::unique_ptr<SipPeer> peer;
  bool open = false;
};

void FromInviteTo180(benchmark::State& state) {
  Line line;
  for (auto _ : state) {
    state.SetIterationTime(line.Ring());
    line.HangUp(false);
  }
}
BENCHMARK(FromInviteTo180)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);

void FromAnswerTo200(benchmark::State& state) {
  Line line;
  for (auto _ : state) {
    line.Ring();
    const auto start = Clock::now();
    line.reports.call->Answer();
    line.peer->Await(200);
    state.SetIterationTime(SecondsSince(start));
    line.peer->Ack();
    line.HangUp(true);
  }
}
BENCHMARK(FromAnswerTo200)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);

void From200ToTheFirstSound(benchmark::State& state) {
  Line line;
  for (auto _ : state) {
    line.Ring();
    line.reports.call->Answer();
    line.peer->Await(200);
    const auto start = Clock::now();
    line.peer->Ack();
    line.peer->NextRtp();
    state.SetIterationTime(SecondsSince(start));
    line.HangUp(true);
  }
}
BENCHMARK(From200ToTheFirstSound)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(100);

} // namespace
} // namespace kelmio
