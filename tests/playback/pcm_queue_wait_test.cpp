// The waits on a PcmQueue that other threads end: a wait for samples and a
// wait for the drain. Each must end as soon as its condition holds, woken by
// the side that made it hold; the time limits here are generous hang guards,
// far beyond any wake, so that a lost wake shows as a wait that ran to its
// limit.
#include <gtest/gtest.h>

#include <chrono>
#include <cstdint>
#include <thread>
#include <vector>

#include "playback/pcm_queue.h"

namespace {

using playback::PcmQueue;
using Clock = std::chrono::steady_clock;

constexpr int kLongWaitMs = 20000;
// A wake comes within this, even on a loaded machine; a lost one only at kLongWaitMs.
constexpr auto kWokenWithin = std::chrono::seconds(5);

void Put(PcmQueue& queue, std::uint32_t count, std::int16_t value = 1000) {
  const std::vector<std::int16_t> samples(count, value);
  std::uint32_t written = 0;
  ASSERT_EQ(queue.Write(samples.data(), count, written), 1);
}

std::uint32_t Take(PcmQueue& queue, std::uint32_t count) {
  std::vector<std::int16_t> out(count);
  std::uint32_t got = 0;
  queue.Read(out.data(), count, got);
  return got;
}

TEST(PcmQueueWaitTest, WaitForSamplesAnswersAtOnceOrRunsToItsLimit) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(1000), 1);
  Put(queue, 300);
  EXPECT_TRUE(queue.WaitForSamples(300, kLongWaitMs));
  EXPECT_FALSE(queue.WaitForSamples(301, 20));  // nobody writes: the limit ends it

  // The end of the stream: a read of any size would not wait any more.
  std::uint32_t written = 0;
  queue.Write(nullptr, 0, written);
  EXPECT_TRUE(queue.WaitForSamples(1000, kLongWaitMs));

  PcmQueue aborted;
  ASSERT_EQ(aborted.Allocate(1000), 1);
  aborted.Abort();
  EXPECT_TRUE(aborted.WaitForSamples(10, kLongWaitMs));
}

// Writes smaller than the wanted count don't end the wait; the one that
// completes it does, and so does the end mark of a stream that stops short.
TEST(PcmQueueWaitTest, AWaitForSamplesIsWokenByTheWriteThatCompletesIt) {
  for (const bool endShort : {false, true}) {
    PcmQueue queue;
    ASSERT_EQ(queue.Allocate(20000), 1);
    bool came = false;
    Clock::duration waited{};
    std::thread waiter([&] {
      const Clock::time_point start = Clock::now();
      came = queue.WaitForSamples(8192, kLongWaitMs);
      waited = Clock::now() - start;
    });
    for (int i = 0; i < 3; ++i) {
      Put(queue, 2000);
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    if (endShort) {
      std::uint32_t written = 0;
      queue.Write(nullptr, 0, written);
    } else {
      Put(queue, 2192);
    }
    waiter.join();
    EXPECT_TRUE(came) << "end short: " << endShort;
    EXPECT_LT(waited, kWokenWithin) << "end short: " << endShort;
  }
}

// Two waits for different counts at once: each is woken when its own count
// is there, whichever of them came first.
TEST(PcmQueueWaitTest, WaitsForDifferentCountsAreEachWokenByTheirOwnCount) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(20000), 1);
  bool smallCame = false;
  bool largeCame = false;
  std::thread large([&] { largeCame = queue.WaitForSamples(8000, kLongWaitMs); });
  std::thread small([&] { smallCame = queue.WaitForSamples(100, kLongWaitMs); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  const Clock::time_point start = Clock::now();
  Put(queue, 200);
  small.join();
  EXPECT_TRUE(smallCame);
  Put(queue, 7800);
  large.join();
  EXPECT_TRUE(largeCame);
  EXPECT_LT(Clock::now() - start, kWokenWithin);
}

// A waiting Read is woken only once two blocks are queued; when just its one
// block comes it still takes it at its next look, long before any underrun
// strike, and a Read beside a wait for samples leaves that wait its own wake.
TEST(PcmQueueWaitTest, AWaitingReadTakesItsOneBlockAtItsNextLook) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(176400), 1);
  std::uint32_t got = 0;
  Clock::duration waited{};
  bool sawSamples = false;
  std::thread reader([&] {
    const Clock::time_point start = Clock::now();
    got = Take(queue, 8192);
    waited = Clock::now() - start;
  });
  std::thread waiter([&] { sawSamples = queue.WaitForSamples(100, kLongWaitMs); });
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  Put(queue, 100);
  waiter.join();
  EXPECT_TRUE(sawSamples);
  Put(queue, 8092);
  reader.join();
  EXPECT_EQ(got, 8192u);
  EXPECT_LT(waited, std::chrono::milliseconds(900)) << "a look must find the block before a strike";
  EXPECT_EQ(queue.UnderrunStrikes(), 0u);
}

TEST(PcmQueueWaitTest, WaitUntilEmptyEndsWhenAReaderTakesTheLastSamples) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(20000), 1);
  EXPECT_TRUE(queue.WaitUntilEmpty(kLongWaitMs));  // empty already
  Put(queue, 10000);
  EXPECT_FALSE(queue.WaitUntilEmpty(20));

  bool drained = false;
  Clock::duration waited{};
  std::thread waiter([&] {
    const Clock::time_point start = Clock::now();
    drained = queue.WaitUntilEmpty(kLongWaitMs);
    waited = Clock::now() - start;
  });
  EXPECT_EQ(Take(queue, 8192), 8192u);  // not the last: the wait goes on
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  EXPECT_EQ(queue.Fill(), 10000u - 8192u);
  EXPECT_EQ(Take(queue, 10000 - 8192), 10000u - 8192u);
  waiter.join();
  EXPECT_TRUE(drained);
  EXPECT_LT(waited, kWokenWithin);
}

TEST(PcmQueueWaitTest, WaitUntilEmptyEndsOnClearAndOnAbort) {
  for (const bool abort : {false, true}) {
    PcmQueue queue;
    ASSERT_EQ(queue.Allocate(1000), 1);
    Put(queue, 500);
    bool ended = false;
    Clock::duration waited{};
    std::thread waiter([&] {
      const Clock::time_point start = Clock::now();
      ended = queue.WaitUntilEmpty(kLongWaitMs);
      waited = Clock::now() - start;
    });
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    abort ? queue.Abort() : queue.Clear();
    waiter.join();
    EXPECT_TRUE(ended) << "abort: " << abort;
    EXPECT_LT(waited, kWokenWithin) << "abort: " << abort;
  }
}

}  // namespace
