#include "playback/pcm_queue.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <random>
#include <thread>
#include <vector>

namespace {

using playback::PcmQueue;

std::vector<std::int16_t> Constant(std::size_t count, std::int16_t value) {
  return std::vector<std::int16_t>(count, value);
}

std::vector<std::int16_t> Counting(std::size_t count, int first = 1) {
  std::vector<std::int16_t> samples(count);
  for (std::size_t i = 0; i < count; ++i) samples[i] = static_cast<std::int16_t>(first + static_cast<int>(i));
  return samples;
}

std::vector<std::int16_t> ReadAll(PcmQueue& queue) {
  std::vector<std::int16_t> out(queue.Fill());
  std::uint32_t got = 0;
  if (!out.empty()) queue.Read(out.data(), static_cast<std::uint32_t>(out.size()), got);
  out.resize(got);
  return out;
}

std::uint32_t Write(PcmQueue& queue, const std::vector<std::int16_t>& samples, int* result = nullptr) {
  std::uint32_t written = 0;
  const int status = queue.Write(samples.data(), static_cast<std::uint32_t>(samples.size()), written);
  if (result) *result = status;
  return written;
}

TEST(PcmQueueTest, ReadsTakeTheOldestSamplesAndWritesStopAtCapacity) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(100), 1);
  EXPECT_EQ(queue.Capacity(), 100u);
  Write(queue, Counting(10));
  Write(queue, Counting(5, 11));
  EXPECT_EQ(queue.Fill(), 15u);

  std::vector<std::int16_t> out(4);
  std::uint32_t got = 0;
  ASSERT_EQ(queue.Read(out.data(), 4, got), 1);
  EXPECT_EQ(got, 4u);
  EXPECT_EQ(out, Counting(4));
  EXPECT_EQ(ReadAll(queue), Counting(11, 5));
  EXPECT_EQ(queue.Fill(), 0u);

  int result = 0;
  EXPECT_EQ(Write(queue, Counting(150), &result), 100u) << "no more than the capacity at once";
  EXPECT_EQ(result, 1);
  EXPECT_EQ(ReadAll(queue), Counting(100));
}

TEST(PcmQueueTest, WithoutABlockEverythingFails) {
  PcmQueue never;
  std::int16_t sample = 0;
  std::uint32_t count = 7;
  EXPECT_EQ(never.Write(&sample, 1, count), 0);
  EXPECT_EQ(never.Read(&sample, 1, count), 0);
  never.TrimTail();
  never.FadeOutTail(0);

  PcmQueue tooLarge;
  EXPECT_EQ(tooLarge.Allocate(PcmQueue::kMaxCapacity + 1), 0);
  EXPECT_EQ(tooLarge.Capacity(), 0u);
  EXPECT_EQ(tooLarge.Write(&sample, 1, count), 0);
}

TEST(PcmQueueTest, LeadingSilenceIsDroppedInStereoPairsButCountsAsWritten) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(1000), 1);
  queue.SetParam(PcmQueue::kSilenceThreshold, 500);

  // A chunk of only silence goes whole, yet the writer is told all was taken.
  int result = 0;
  EXPECT_EQ(Write(queue, Constant(64, 499), &result), 64u);
  EXPECT_EQ(result, 1);
  EXPECT_EQ(queue.Fill(), 0u);
  EXPECT_EQ(queue.TrimmedSamples(), 64u);

  // First sound at offset 3: the offset rounds up to 4, dropping the loud
  // sample's left partner too, so that pairs stay pairs.
  std::vector<std::int16_t> chunk = {10, -20, 30, -500, 600, 700, 800, 900};
  EXPECT_EQ(Write(queue, chunk), 8u);
  EXPECT_EQ(ReadAll(queue), (std::vector<std::int16_t>{600, 700, 800, 900}));

  // Once sound was found, quiet samples stay.
  Write(queue, Constant(6, 3));
  EXPECT_EQ(ReadAll(queue), Constant(6, 3));

  // Arming the threshold again starts a new search; offset 2 drops 2.
  queue.SetParam(PcmQueue::kSilenceThreshold, 500);
  Write(queue, std::vector<std::int16_t>{1, 2, 500, 4});
  EXPECT_EQ(ReadAll(queue), (std::vector<std::int16_t>{500, 4}));

  // Sound only in the last, odd place: the rounding takes the whole chunk,
  // but the sound was found, so what follows stays.
  queue.SetParam(PcmQueue::kSilenceThreshold, 500);
  Write(queue, std::vector<std::int16_t>{0, 0, 0, -32768});
  EXPECT_EQ(queue.Fill(), 0u);
  Write(queue, std::vector<std::int16_t>{1, 2});
  EXPECT_EQ(ReadAll(queue), (std::vector<std::int16_t>{1, 2}));
}

TEST(PcmQueueTest, TrimTailCutsTrailingQuietAndTheLastLoudSampleButNotAllSilence) {
  PcmQueue silent;
  ASSERT_EQ(silent.Allocate(100), 1);
  Write(silent, Constant(40, 100));
  silent.SetParam(PcmQueue::kSilenceThreshold, 500);
  silent.TrimTail();
  EXPECT_EQ(silent.Fill(), 40u);

  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(100), 1);
  Write(queue, std::vector<std::int16_t>{700, 800, -900, 499, 10, -499});
  queue.TrimTail();  // trimming off: nothing happens
  EXPECT_EQ(queue.Fill(), 6u);
  queue.SetParam(PcmQueue::kSilenceThreshold, 500);
  queue.TrimTail();
  EXPECT_EQ(ReadAll(queue), (std::vector<std::int16_t>{700, 800}));
}

TEST(PcmQueueTest, TheEndMarkTrimsTheTailAndLetsReadsReturnShortAtOnce) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(100), 1);
  Write(queue, std::vector<std::int16_t>{1000, 1000, 1000, 20, 30});
  queue.SetParam(PcmQueue::kSilenceThreshold, 500);
  std::uint32_t written = 99;
  EXPECT_EQ(queue.Write(nullptr, 0, written), 0);
  EXPECT_TRUE(queue.IsEnded());
  EXPECT_EQ(queue.Fill(), 2u);

  std::vector<std::int16_t> out(8192, -1);
  std::uint32_t got = 0;
  EXPECT_EQ(queue.Read(out.data(), 8192, got), 1);
  EXPECT_EQ(got, 2u);
  EXPECT_EQ(queue.UnderrunStrikes(), 0u) << "an ended queue is not waited for";
  EXPECT_EQ(queue.Read(out.data(), 8192, got), 0);
  EXPECT_EQ(got, 0u);
  EXPECT_EQ(Write(queue, Constant(4, 1000)), 0u);
}

// A fade over a constant `value`: the gain (of 256) rises or falls by one
// every `step` samples; a rising one stays at unity once there.
void ExpectFade(const std::vector<std::int16_t>& out, std::size_t step, bool rising, int value) {
  for (std::size_t i = 0; i < out.size(); ++i) {
    const int steps = static_cast<int>(i / step);
    const int gain = rising ? std::min(steps, 256) : 256 - steps;
    ASSERT_EQ(out[i], static_cast<std::int16_t>((gain * value) >> 8)) << "at " << i;
  }
}

TEST(PcmQueueTest, FadesStepTheGainByTheirLength) {
  PcmQueue rising;
  ASSERT_EQ(rising.Allocate(4000), 1);
  rising.SetParam(PcmQueue::kFadeIn, 1030);  // steps of 1030 >> 8 = 4 samples
  // Written in uneven pieces: the fade carries its state from write to write.
  Write(rising, Constant(333, 1000));
  Write(rising, Constant(1000, 1000));
  std::vector<std::int16_t> out = ReadAll(rising);
  ASSERT_EQ(out.size(), 1333u);
  ExpectFade(out, 4, true, 1000);

  // A fade-out that runs to its end ends the queue where the gain ran out.
  PcmQueue falling;
  ASSERT_EQ(falling.Allocate(4000), 1);
  falling.SetParam(PcmQueue::kFadeOut, 1000);  // steps of 3 samples
  int result = 0;
  EXPECT_EQ(Write(falling, Constant(2000, -1000), &result), 2000u);
  EXPECT_EQ(result, 1);
  EXPECT_TRUE(falling.IsEnded());
  out = ReadAll(falling);
  ASSERT_EQ(out.size(), 768u);
  ExpectFade(out, 3, false, -1000);
  EXPECT_EQ(Write(falling, Constant(10, 1000), &result), 0u);
  EXPECT_EQ(result, 0);

  // A new fade cancels the other kind.
  PcmQueue changed;
  ASSERT_EQ(changed.Allocate(4000), 1);
  changed.SetParam(PcmQueue::kFadeOut, 1000);
  changed.SetParam(PcmQueue::kFadeIn, 512);
  Write(changed, Constant(1000, 512));
  EXPECT_FALSE(changed.IsEnded());
  out = ReadAll(changed);
  ASSERT_EQ(out.size(), 1000u);
  ExpectFade(out, 2, true, 512);
}

TEST(PcmQueueTest, FadeOutTailFadesWhatIsQueuedToZeroAndEnds) {
  PcmQueue shortTail;
  ASSERT_EQ(shortTail.Allocate(1000), 1);
  Write(shortTail, Constant(255, 30000));
  shortTail.FadeOutTail(0);
  EXPECT_TRUE(shortTail.IsEnded());
  EXPECT_EQ(ReadAll(shortTail), Constant(255, 0));

  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(1000), 1);
  Write(queue, Constant(900, 1000));
  queue.FadeOutTail(512);  // cut to 512, then runs of 2 samples per gain step
  const std::vector<std::int16_t> out = ReadAll(queue);
  ASSERT_EQ(out.size(), 512u);
  ExpectFade(out, 2, false, 1000);
  std::uint32_t got = 0;
  std::int16_t sample = 0;
  EXPECT_EQ(queue.Read(&sample, 1, got), 0);
}

TEST(PcmQueueTest, ResetOnWriteDropsWhatIsQueuedAtTheNextWriteOnly) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(100), 1);
  Write(queue, Counting(60));
  queue.SetParam(PcmQueue::kResetOnWrite, 1);
  EXPECT_EQ(queue.Fill(), 60u) << "nothing is dropped until the next write";
  Write(queue, Counting(50, 100));
  Write(queue, Counting(10, 200));
  std::vector<std::int16_t> expected = Counting(50, 100);
  const std::vector<std::int16_t> tail = Counting(10, 200);
  expected.insert(expected.end(), tail.begin(), tail.end());
  EXPECT_EQ(ReadAll(queue), expected);
}

TEST(PcmQueueTest, AbortReleasesABlockedReaderAndABlockedWriter) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(10), 1);
  Write(queue, Counting(10));
  std::atomic<int> writerResult{-1};
  std::atomic<int> readerResult{-1};
  PcmQueue empty;
  ASSERT_EQ(empty.Allocate(10), 1);
  std::thread writer([&] {
    std::uint32_t written = 0;
    const std::vector<std::int16_t> more = Counting(5);
    writerResult = queue.Write(more.data(), 5, written);  // full: waits for room
  });
  std::thread reader([&] {
    std::int16_t out[4];
    std::uint32_t got = 0;
    readerResult = empty.Read(out, 4, got);  // empty: waits for samples
  });
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_EQ(writerResult.load(), -1);
  EXPECT_EQ(readerResult.load(), -1);
  queue.Abort();
  empty.Abort();
  writer.join();
  reader.join();
  EXPECT_EQ(writerResult.load(), 0);
  EXPECT_EQ(readerResult.load(), 0);
}

// The one slow test here (about two seconds): a strike needs a second of
// starving. Once past its first second a read earns a strike per 10 ms poll,
// so a read that gets data soon after its first strike has one or two.
TEST(PcmQueueTest, UnderrunStrikesAddUpOverTheQueuesLifeAndTheFourthEndsIt) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(100000), 1);
  std::thread feeder([&] {
    while (queue.UnderrunStrikes() == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    const std::vector<std::int16_t> block = Constant(8192, 7);
    std::uint32_t written = 0;
    queue.Write(block.data(), 8192, written);
  });
  std::vector<std::int16_t> out(8192);
  std::uint32_t got = 0;
  EXPECT_EQ(queue.Read(out.data(), 8192, got), 1);
  feeder.join();
  EXPECT_EQ(got, 8192u);
  EXPECT_GE(queue.UnderrunStrikes(), 1u);
  EXPECT_LE(queue.UnderrunStrikes(), 3u);
  EXPECT_FALSE(queue.IsEnded());

  // The next starving read goes on from the strikes already earned: the
  // fourth of the queue's life ends it, even though this read has had fewer.
  EXPECT_EQ(queue.Read(out.data(), 8192, got), 0);
  EXPECT_EQ(got, 0u);
  EXPECT_EQ(queue.UnderrunStrikes(), 4u);
  EXPECT_TRUE(queue.IsEnded());
}

TEST(PcmQueueTest, AWriterAndAReaderOnTwoThreadsPassEverySampleInOrder) {
  PcmQueue queue;
  ASSERT_EQ(queue.Allocate(20000), 1);
  constexpr int kTotal = 200000;
  std::thread writer([&] {
    std::mt19937 random(7);
    int next = 0;
    std::vector<std::int16_t> chunk;
    while (next < kTotal) {
      const int length = std::min(kTotal - next, static_cast<int>(random() % 5000) + 1);
      chunk.resize(static_cast<std::size_t>(length));
      for (int i = 0; i < length; ++i) chunk[static_cast<std::size_t>(i)] = static_cast<std::int16_t>(next + i);
      std::uint32_t written = 0;
      ASSERT_EQ(queue.Write(chunk.data(), static_cast<std::uint32_t>(length), written), 1);
      next += length;
    }
    std::uint32_t written = 0;
    queue.Write(nullptr, 0, written);
  });
  std::vector<std::int16_t> block(8192);
  int expected = 0;
  bool inOrder = true;
  for (;;) {
    std::uint32_t got = 0;
    if (queue.Read(block.data(), 8192, got) == 0) break;
    for (std::uint32_t i = 0; i < got; ++i) inOrder = inOrder && block[i] == static_cast<std::int16_t>(expected++);
  }
  writer.join();
  EXPECT_TRUE(inOrder);
  EXPECT_EQ(expected, kTotal);
  EXPECT_EQ(queue.UnderrunStrikes(), 0u);
}

}  // namespace
