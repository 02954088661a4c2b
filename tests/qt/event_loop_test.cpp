#include "qt/qt_event_loop.h"

#include <gmock/gmock.h>

#include <QCoreApplication>
#include <QEventLoop>

#include <ctime>
#include <stdexcept>
#include <thread>
#include <vector>

#include "test_form.h"

namespace kelmio {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;

TEST(QtEventLoopTest, RunsClosuresOfAllThreadsInTheOrderOfEachOne) {
  QtEventLoop loop;
  std::vector<std::pair<std::size_t, std::size_t>> ran;
  std::vector<std::thread> threads;
  constexpr std::size_t kThreads = 3;
  constexpr std::size_t kEach = 500;
  threads.reserve(kThreads);
  for (std::size_t number = 0; number < kThreads; ++number)
    threads.emplace_back([&, number] {
      for (std::size_t step = 0; step < kEach; ++step)
        loop.Post([&ran, number, step] { ran.emplace_back(number, step); });
    });
  ASSERT_TRUE(WaitFor([&] { return ran.size() == kThreads * kEach; }));
  for (std::thread& thread : threads)
    thread.join();
  std::vector<std::size_t> next(kThreads);
  for (const auto& [number, step] : ran)
    EXPECT_EQ(step, next[number]++);
}

TEST(QtEventLoopTest, GoesOnWithTheNextClosureInANestedRun) {
  QtEventLoop loop;
  std::vector<int> order;
  loop.Post([&] {
    order.push_back(1);
    loop.Post([&] { order.push_back(4); });
    loop.RunPending();
    loop.RunPending();
    order.push_back(5);
  });
  loop.Post([&] { order.push_back(2); });
  loop.Post([&] {
    order.push_back(3);
    throw std::runtime_error("not the loop's trouble");
  });
  Settle();
  EXPECT_THAT(order, ElementsAre(1, 2, 3, 4, 5));
}

TEST(QtEventLoopTest, RunsWhatComesForATimeAndSleepsInBetween) {
  QtEventLoop loop;
  QtTimerService timers;
  int ticks = 0;
  const auto timer = timers.Start(milliseconds(10), [&] { loop.Post([&] { ++ticks; }); });
  const std::clock_t worked = std::clock();
  QElapsedTimer since;
  since.start();
  loop.RunFor(milliseconds(200));
  EXPECT_GE(since.elapsed(), 199);
  EXPECT_GE(ticks, 5);
  EXPECT_LT(std::clock() - worked, CLOCKS_PER_SEC / 10);
  timers.Stop(timer);
}

TEST(QtEventLoopTest, AForeignLoopInsideAClosureSeesTheClosuresAfterIt) {
  QtEventLoop loop;
  QEventLoop inner;
  loop.Post([&] { inner.exec(); });
  loop.Post([&] { inner.quit(); });
  Settle(); // hangs when the second closure waits for the first
}

TEST(QtEventLoopTest, AClosureThatPostsItselfLetsTheRunEnd) {
  QtEventLoop loop;
  int runs = 0;
  std::function<void()> again = [&] {
    ++runs;
    loop.Post(again);
  };
  loop.Post(again);
  loop.RunPending();
  loop.RunPending();
  EXPECT_GE(runs, 1);
  EXPECT_LT(runs, 10);
}

TEST(QtEventLoopTest, QuitEndsTheLoopAlthoughAWindowRefusesToClose) {
  TestForm form;
  form.stays = true;
  QtEventLoop loop;
  loop.Post([&] { loop.Quit(); });
  EXPECT_EQ(QCoreApplication::exec(), 0);
}

TEST(QtTimerServiceTest, TicksUntilItIsStoppedFromItsOwnTick) {
  QtTimerService timers;
  int ticks = 0;
  TimerService::Token token = TimerService::kNoTimer;
  token = timers.Start(milliseconds(1), [&] {
    if (++ticks == 3)
      timers.Stop(token);
  });
  ASSERT_TRUE(WaitFor([&] { return ticks >= 3; }));
  bool later = false;
  timers.Start(milliseconds(20), [&] { later = true; });
  ASSERT_TRUE(WaitFor([&] { return later; }));
  EXPECT_EQ(ticks, 3);
}

TEST(QtTimerServiceTest, NoTickFollowsAStopEvenWhenItWasDue) {
  QtTimerService timers;
  std::vector<int> ticked;
  TimerService::Token first = 0;
  TimerService::Token second = 0;
  // Both are due at once; whichever comes first stops the other.
  first = timers.Start(milliseconds(1), [&] {
    ticked.push_back(1);
    timers.Stop(second);
  });
  second = timers.Start(milliseconds(1), [&] {
    ticked.push_back(2);
    timers.Stop(first);
  });
  std::this_thread::sleep_for(milliseconds(5)); // makes both due; nothing waits on it
  ASSERT_TRUE(WaitFor([&] { return ticked.size() >= 3; }));
  EXPECT_THAT(ticked, testing::Each(ticked.front()));
}

} // namespace
} // namespace kelmio
