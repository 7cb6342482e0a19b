// The cost of the output engine's mixing step and of the PCM queue, per
// 16-bit sample. 44100 Hz stereo is 88200 samples a second, so N ns per
// sample costs N * 88.2 microseconds of one core per second of audio.
//
// The queue is kept as full as a decoder keeps it (two seconds), because a
// read moves what stays queued down to the start of the block: that move is
// most of the cost of a read.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <vector>

#include "playback/audio_mixer.h"
#include "playback/pcm_queue.h"

namespace {

using playback::kBlockSamples;
using playback::PcmQueue;
using playback::StreamRecord;

constexpr std::uint32_t kTwoSeconds = 2 * 44100 * 2;

std::vector<std::int16_t> Sound(std::size_t count) {
  std::vector<std::int16_t> samples(count);
  for (std::size_t i = 0; i < count; ++i) samples[i] = static_cast<std::int16_t>((i * 7919) % 20000 - 10000);
  return samples;
}

void MakeStream(StreamRecord& stream, int channels) {
  stream.queue = std::make_shared<PcmQueue>();
  stream.queue->Allocate(kTwoSeconds);
  stream.channels = channels;
  stream.state = playback::kStreamPlaying;
}

// Tops the queue up to full, as a decoder does between the mixer's reads.
void TopUp(StreamRecord& stream, const std::vector<std::int16_t>& source) {
  PcmQueue& queue = *stream.queue;
  while (queue.Capacity() - queue.Fill() > 0) {
    std::uint32_t written = 0;
    const std::uint32_t room = queue.Capacity() - queue.Fill();
    queue.Write(source.data(), std::min<std::uint32_t>(room, static_cast<std::uint32_t>(source.size())), written);
  }
}

// Time per sample, and per second of 44100 Hz stereo (88200 samples).
void ReportPerSample(benchmark::State& state, std::uint64_t samplesPerBlock) {
  const auto samples = static_cast<double>(state.iterations() * samplesPerBlock);
  const auto inverseRate = benchmark::Counter::kIsRate | benchmark::Counter::kInvert;
  state.counters["per_sample"] = benchmark::Counter(samples, inverseRate);
  state.counters["per_audio_second"] = benchmark::Counter(samples / 88200.0, inverseRate);
}

// Times MixStreams alone (manual time), with every queue topped up between blocks.
void MixBenchmark(benchmark::State& state, const std::vector<int>& channels) {
  std::vector<StreamRecord> streams(channels.size());
  for (std::size_t i = 0; i < channels.size(); ++i) MakeStream(streams[i], channels[i]);
  const std::vector<std::int16_t> source = Sound(kBlockSamples);
  std::vector<std::int16_t> block(kBlockSamples);
  std::vector<std::int16_t> scratch(kBlockSamples);
  for (auto _ : state) {
    for (StreamRecord& stream : streams) TopUp(stream, source);
    const auto start = std::chrono::steady_clock::now();
    const int active = playback::MixStreams(streams.data(), static_cast<int>(streams.size()), 2, block.data(),
                                            scratch.data());
    const auto end = std::chrono::steady_clock::now();
    benchmark::DoNotOptimize(active);
    benchmark::DoNotOptimize(block.data());
    state.SetIterationTime(std::chrono::duration<double>(end - start).count());
  }
  // Per sample of the device block.
  ReportPerSample(state, kBlockSamples);
}

void BM_MixOneStereoStream(benchmark::State& state) { MixBenchmark(state, {2}); }
void BM_MixTwoStereoStreams(benchmark::State& state) { MixBenchmark(state, {2, 2}); }
void BM_MixMonoIntoStereo(benchmark::State& state) { MixBenchmark(state, {1}); }

BENCHMARK(BM_MixOneStereoStream)->UseManualTime();
BENCHMARK(BM_MixTwoStereoStreams)->UseManualTime();
BENCHMARK(BM_MixMonoIntoStereo)->UseManualTime();

// A decoder's write of one block into a queue with room; the queue is
// emptied (untimed) when it is full.
void BM_QueueWrite(benchmark::State& state) {
  PcmQueue queue;
  queue.Allocate(kTwoSeconds);
  const std::vector<std::int16_t> source = Sound(kBlockSamples);
  for (auto _ : state) {
    if (queue.Capacity() - queue.Fill() < kBlockSamples) {
      state.PauseTiming();
      queue.Clear();
      state.ResumeTiming();
    }
    std::uint32_t written = 0;
    benchmark::DoNotOptimize(queue.Write(source.data(), kBlockSamples, written));
  }
  ReportPerSample(state, kBlockSamples);
}
BENCHMARK(BM_QueueWrite)->UseRealTime();

// The mixer's read of one block, from a queue holding `range(0)` samples.
void BM_QueueRead(benchmark::State& state) {
  PcmQueue queue;
  queue.Allocate(kTwoSeconds);
  const auto level = static_cast<std::uint32_t>(state.range(0));
  const std::vector<std::int16_t> source = Sound(level);
  std::vector<std::int16_t> block(kBlockSamples);
  for (auto _ : state) {
    state.PauseTiming();
    queue.Clear();
    std::uint32_t written = 0;
    queue.Write(source.data(), level, written);
    state.ResumeTiming();
    std::uint32_t got = 0;
    benchmark::DoNotOptimize(queue.Read(block.data(), kBlockSamples, got));
  }
  ReportPerSample(state, kBlockSamples);
}
BENCHMARK(BM_QueueRead)->Arg(kBlockSamples)->Arg(kTwoSeconds)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
