#include "platform/event.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>

namespace {

using platform::Event;
using platform::WaitForAny;

TEST(EventTest, ManualResetStaysSetAutoResetLetsOneWaiterThrough) {
  Event manual(true, false);
  EXPECT_FALSE(manual.Wait(0));
  manual.Set();
  EXPECT_TRUE(manual.Wait(0));
  EXPECT_TRUE(manual.Wait(0));
  manual.Reset();
  EXPECT_FALSE(manual.IsSet());

  Event automatic(false, true);
  EXPECT_TRUE(automatic.Wait(0));
  EXPECT_FALSE(automatic.Wait(0));
}

TEST(EventTest, WaitForAnyReportsTheFirstSetEventAndTimesOut) {
  Event quit, buffer, run;
  const auto start = std::chrono::steady_clock::now();
  EXPECT_EQ(WaitForAny({&quit, &buffer}, 30), -1);
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(30));

  buffer.Set();
  run.Set();
  EXPECT_EQ(WaitForAny({&quit, &buffer, &run}, 0), 1);
  quit.Set();
  EXPECT_EQ(WaitForAny({&quit, &buffer, &run}, 0), 0);
}

TEST(EventTest, ASetFromAnotherThreadWakesAWaiter) {
  Event first, second(false);
  std::atomic<int> woken{-2};
  std::thread waiter([&] { woken = WaitForAny({&first, &second}, platform::kInfinite); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(woken.load(), -2);
  second.Set();
  waiter.join();
  EXPECT_EQ(woken.load(), 1);
  EXPECT_FALSE(second.IsSet()) << "the auto-reset event was taken";
}

}  // namespace
