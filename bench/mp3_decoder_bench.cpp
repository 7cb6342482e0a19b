// Speed of the MP3 decoder, in the same program (and run) as the bare
// libmad loop of mp3_back_end_bench.cpp, over the same sound written to a
// file (page-cached after the first pass). "x_real_time" is seconds of sound
// per second of wall time, from Play to the end-of-track message.
//   Mp3DecoderToQueue    Mp3Decoder with its thread, file reads, frame
//                        finding, back-end and feed, writing into an
//                        output that takes every block at once: what the
//                        decoder itself costs
//   Mp3DecoderToCapture  the whole pipeline: the real output engine into an
//                        unpaced capture device, all options off
// The target: the decoder to the queue costs at most 15% more than the bare
// loop.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

#include "decoders/libmad_back_end.h"
#include "decoders/mp3_decoder.h"
#include "mp3_bench_media.h"
#include "platform/message_queue.h"
#include "platform/wave_out_capture.h"
#include "counting_output.h"
#include "playback/audio_output.h"
#include "playback/locked_file.h"
#include "playback/playback_settings.h"

namespace {

using bench_support::CountingOutput;

struct Mp3File {
  std::string folder;
  std::string path;
  double seconds = 0;  // of sound: every frame's 1152 samples
  Mp3File() {
    char pattern[] = "/tmp/ts_mp3_bench_XXXXXX";
    folder = ::mkdtemp(pattern);
    path = folder + "/minute.mp3";
    const std::vector<std::uint8_t>& bytes = mp3_bench::RepeatedMp3();
    std::ofstream(path, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    seconds = mp3_bench::RepeatedMp3Seconds();
  }
  ~Mp3File() { std::filesystem::remove_all(folder); }
};

const Mp3File& TheFile() {
  static const Mp3File file;
  return file;
}

void AllOptionsOff() {
  playback::PlaybackSettings& options = playback::Playback();
  for (auto* option : {&options.crossfade, &options.gapless, &options.trimSilence}) {
    playback::PlaybackSettings::Write(*option, false);
  }
}

// Plays the file once through `output`; false when it doesn't play to its end.
bool PlayOnce(playback::AudioOutput& output) {
  decoders::LibmadBackEnd backEnd;
  playback::LockedFile file;
  platform::MessageQueue notify;
  decoders::Mp3Decoder decoder;
  decoder.SetBackEnd(&backEnd);
  decoder.SetOutput(&output);
  decoder.SetSource(&file);
  decoder.SetNotifyWindow(&notify);
  decoder.SetDecodePriority(3);
  if (!decoder.Open(TheFile().path) || !decoder.Play()) return false;
  const bool ended = notify.WaitFor(playback::kMessageTrackEnded, 120000);
  decoder.Close();
  return ended;
}

void Report(benchmark::State& state) {
  state.counters["x_real_time"] = benchmark::Counter(
      static_cast<double>(state.iterations()) * TheFile().seconds, benchmark::Counter::kIsRate);
}

void Mp3DecoderToQueue(benchmark::State& state) {
  AllOptionsOff();
  for (auto _ : state) {
    CountingOutput output;
    if (!PlayOnce(output)) return state.SkipWithError("the file does not play");
    const double seconds = static_cast<double>(output.written.load()) / 2 / mp3_bench::kSampleRate;
    if (seconds + 0.1 < TheFile().seconds) return state.SkipWithError("not every frame was written");
  }
  Report(state);
}

void Mp3DecoderToCapture(benchmark::State& state) {
  AllOptionsOff();
  for (auto _ : state) {
    platform::SetWaveOutDriver(std::make_shared<platform::CaptureDriver>(
        platform::CaptureOptions{platform::CapturePace::kUnpaced, false, 1}));
    playback::AudioOutput output;
    if (!PlayOnce(output)) return state.SkipWithError("the file does not play");
  }
  platform::SetWaveOutDriver(nullptr);
  Report(state);
}

BENCHMARK(Mp3DecoderToQueue)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(Mp3DecoderToCapture)->Unit(benchmark::kMillisecond)->UseRealTime();

}  // namespace
