// Speed of the Ogg decoder beside the floor, in one program and one run:
// the q5 stereo test file chained fifteen times (a minute of sound) in a
// temporary file, page-cached after the first pass. "x_real_time" is seconds
// of sound per second of wall time.
//   BareTremor         ov_open + ov_read of 4096 bytes to the end: what
//                      Tremor itself costs
//   OggDecoderToQueue  OggDecoder with its thread, the byte-source
//                      callbacks, the lock and the feed, writing into an
//                      output that takes every block at once: what the
//                      decoder costs
//   OggDecoderToCapture the whole pipeline: the real output engine into an
//                      unpaced capture device, all options off (target: 0.87
//                      of the bare loop or more)
//   QueueBesideBare,   the bare loop and the decoder to the queue (or the
//   CaptureBesideBare  whole pipeline) in turn, one of each per iteration,
//                      so that a machine whose speed drifts during the run
//                      moves both sides alike. "of_bare" is the bare loop's
//                      time over the other's, "of_bare_median" the median of
//                      that ratio per iteration, which a stray slow pass
//                      moves least; run them for 30 s or more
//                      (--benchmark_min_time=30) on this noisy a machine.
#include <benchmark/benchmark.h>
#include <tremor/ivorbisfile.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "decoders/ogg_decoder.h"
#include "platform/message_queue.h"
#include "platform/wave_out_capture.h"
#include "counting_output.h"
#include "playback/audio_output.h"
#include "playback/locked_file.h"
#include "playback/playback_settings.h"

namespace {

constexpr int kLinks = 15;
constexpr double kSecondsPerLink = 4.0;
constexpr double kSampleRate = 44100;

using bench_support::CountingOutput;

struct OggFile {
  std::string folder;
  std::string path;
  double seconds = kLinks * kSecondsPerLink;
  OggFile() {
    char pattern[] = "/tmp/ts_ogg_bench_XXXXXX";
    folder = ::mkdtemp(pattern);
    path = folder + "/minute.ogg";
    std::ifstream in(TS_TEST_DATA_DIR "/ogg/stereo_44k.ogg", std::ios::binary);
    const std::vector<char> link(std::istreambuf_iterator<char>(in), {});
    std::ofstream out(path, std::ios::binary);
    for (int i = 0; i < kLinks; ++i) out.write(link.data(), static_cast<std::streamsize>(link.size()));
  }
  ~OggFile() { std::filesystem::remove_all(folder); }
};

const OggFile& TheFile() {
  static const OggFile file;
  return file;
}

void Report(benchmark::State& state) {
  state.counters["x_real_time"] = benchmark::Counter(
      static_cast<double>(state.iterations()) * TheFile().seconds, benchmark::Counter::kIsRate);
}

void AllOptionsOff() {
  playback::PlaybackSettings& options = playback::Playback();
  for (auto* option : {&options.crossfade, &options.gapless, &options.trimSilence}) {
    playback::PlaybackSettings::Write(*option, false);
  }
}

// Decodes the file once with Tremor alone; false when it can't be opened or
// comes out short.
bool BareDecodeOnce() {
  std::vector<char> pcm(4096);
  FILE* file = std::fopen(TheFile().path.c_str(), "rb");
  OggVorbis_File vorbis;
  if (file == nullptr) return false;
  if (ov_open(file, &vorbis, nullptr, 0) != 0) {
    std::fclose(file);
    return false;
  }
  std::uint64_t bytes = 0;
  int link = 0;
  for (long got; (got = ov_read(&vorbis, pcm.data(), static_cast<int>(pcm.size()), &link)) != 0;) {
    if (got > 0) bytes += static_cast<std::uint64_t>(got);
  }
  ov_clear(&vorbis);  // closes the file
  return static_cast<double>(bytes) / 4 / kSampleRate + 0.1 >= TheFile().seconds;
}

void BareTremor(benchmark::State& state) {
  for (auto _ : state) {
    if (!BareDecodeOnce()) return state.SkipWithError("no Vorbis, or a short decode");
  }
  Report(state);
}

// Plays the file once through `output`; false when it doesn't play to its end.
bool PlayOnce(playback::AudioOutput& output) {
  playback::LockedFile file;
  platform::MessageQueue notify;
  decoders::OggDecoder decoder;
  decoder.SetOutput(&output);
  decoder.SetSource(&file);
  decoder.SetNotifyWindow(&notify);
  if (!decoder.Open(TheFile().path) || !decoder.Play()) return false;
  const bool ended = notify.WaitFor(playback::kMessageTrackEnded, 120000);
  decoder.Close();
  return ended;
}

void OggDecoderToQueue(benchmark::State& state) {
  AllOptionsOff();
  for (auto _ : state) {
    CountingOutput output;
    if (!PlayOnce(output)) return state.SkipWithError("the file does not play");
    if (static_cast<double>(output.written.load()) / 2 / kSampleRate + 0.1 < TheFile().seconds) {
      return state.SkipWithError("not every block was written");
    }
  }
  Report(state);
}

// Plays the file once into a fresh unpaced capture device.
bool CaptureOnce() {
  platform::SetWaveOutDriver(std::make_shared<platform::CaptureDriver>(
      platform::CaptureOptions{platform::CapturePace::kUnpaced, false, 1}));
  bool played = false;
  {
    playback::AudioOutput output;
    played = PlayOnce(output);
  }
  platform::SetWaveOutDriver(nullptr);
  return played;
}

void OggDecoderToCapture(benchmark::State& state) {
  AllOptionsOff();
  for (auto _ : state) {
    if (!CaptureOnce()) return state.SkipWithError("the file does not play");
  }
  Report(state);
}

// Each iteration the bare loop, then one play through `playOnce`.
template <typename Play>
void BesideBare(benchmark::State& state, Play playOnce) {
  AllOptionsOff();
  using Clock = std::chrono::steady_clock;
  using Seconds = std::chrono::duration<double>;
  Seconds bare{};
  Seconds played{};
  std::vector<double> ratios;
  for (auto _ : state) {
    const auto start = Clock::now();
    if (!BareDecodeOnce()) return state.SkipWithError("no Vorbis, or a short decode");
    const auto middle = Clock::now();
    if (!playOnce()) return state.SkipWithError("the file does not play");
    const Seconds thisBare = middle - start;
    const Seconds thisPlay = Clock::now() - middle;
    bare += thisBare;
    played += thisPlay;
    ratios.push_back(thisBare / thisPlay);
  }
  std::sort(ratios.begin(), ratios.end());
  state.counters["of_bare"] = bare / played;
  state.counters["of_bare_median"] = ratios.empty() ? 0 : ratios[ratios.size() / 2];
}

void QueueBesideBare(benchmark::State& state) {
  BesideBare(state, [] {
    CountingOutput output;
    return PlayOnce(output);
  });
}

void CaptureBesideBare(benchmark::State& state) {
  BesideBare(state, CaptureOnce);
}

BENCHMARK(BareTremor)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(OggDecoderToQueue)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(OggDecoderToCapture)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(QueueBesideBare)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(CaptureBesideBare)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace

BENCHMARK_MAIN();
