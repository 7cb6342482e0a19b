// DecodeThread: Play's handshake with its worker.
#include "playback/decode_thread.h"

#include <gtest/gtest.h>

#include <atomic>

#include "platform/event.h"

namespace {

using playback::DecodeThread;

TEST(DecodeThreadTest, StartSucceedsOnlyWhenTheWorkerSaysPlaybackHasBegun) {
  DecodeThread thread;
  // A worker that gives up before its stream opens: Start fails and the
  // worker is already joined.
  std::atomic<int> runs{0};
  EXPECT_FALSE(thread.Start([&] { ++runs; }, 3));
  EXPECT_EQ(runs.load(), 1);
  EXPECT_FALSE(thread.Joinable());
  EXPECT_FALSE(thread.Running());
  EXPECT_FALSE(thread.SetPriority(3));

  // A worker that has begun: Start returns while it still runs.
  platform::Event release;
  EXPECT_TRUE(thread.Start(
      [&] {
        thread.Begun();
        release.Wait(platform::kInfinite);
        ++runs;
      },
      3));
  EXPECT_TRUE(thread.Running());
  EXPECT_EQ(runs.load(), 1);
  release.Set();
  thread.Join();
  EXPECT_FALSE(thread.Running());
  EXPECT_EQ(runs.load(), 2);
}

// A Begun left over from the worker before doesn't count for the next one,
// and Start joins a worker that is still finishing.
TEST(DecodeThreadTest, EachStartWaitsForItsOwnWorker) {
  DecodeThread thread;
  ASSERT_TRUE(thread.Start([&] { thread.Begun(); }, 3));
  EXPECT_FALSE(thread.Start([] {}, 3));
  std::atomic<bool> secondBegun{false};
  ASSERT_TRUE(thread.Start(
      [&] {
        secondBegun = true;
        thread.Begun();
      },
      3));
  EXPECT_TRUE(secondBegun.load());
}

}  // namespace
