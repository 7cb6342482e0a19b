// WAV decoding speed, as multiples of real time ("x_real_time": seconds of
// audio per second of wall time).
//
// - WavThroughDecoder: a whole file through the WAV reader, a ReaderDecoder
//   and the output engine into an unpaced capture device, from Open to the
//   end of the track (the last block played), all options off.
// - WavReader: the reader alone, delivering the decoder's blocks.
// - FileRead: the same file read through the shared LockedFile in blocks of
//   65536 bytes: the floor for 16-bit PCM, which the reader hands on
//   without a copy.
//
// The files are 60 seconds of 44100 Hz, made in a temporary folder: stereo
// 16-bit PCM (10.6 MB), and mono Microsoft ADPCM encoded by sox (1.3 MB). The page cache
// holds them after the first pass, so the figures are of the code, not of
// the disk.
#include <benchmark/benchmark.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <vector>

#include "decoders/wav_reader.h"
#include "platform/message_queue.h"
#include "platform/wave_out_capture.h"
#include "playback/audio_output.h"
#include "playback/locked_file.h"
#include "playback/playback_settings.h"
#include "playback/reader_decoder.h"

namespace {

constexpr std::uint32_t kRate = 44100;
constexpr std::uint32_t kSeconds = 60;
constexpr std::uint32_t kDecoderBlock = 32768;  // samples: 65536 bytes

std::string Le32(std::uint32_t value) {
  std::string bytes(4, '\0');
  for (int i = 0; i < 4; ++i) bytes[static_cast<std::size_t>(i)] = static_cast<char>(value >> (8 * i));
  return bytes;
}

// 16-bit stereo PCM of a loud, never silent pattern.
std::string MakePcmFile(const std::string& folder) {
  const std::uint32_t dataBytes = kRate * 4 * kSeconds;
  std::string data(dataBytes, '\0');
  for (std::uint32_t i = 0; i < dataBytes / 2; ++i) {
    const auto sample = static_cast<std::uint16_t>(2000 + (i * 7919) % 20000);
    data[2 * i] = static_cast<char>(sample & 0xFF);
    data[2 * i + 1] = static_cast<char>(sample >> 8);
  }
  const std::string format =
      std::string("\x01\x00\x02\x00", 4) + Le32(kRate) + Le32(kRate * 4) + std::string("\x04\x00\x10\x00", 4);
  const std::string path = folder + "/pcm16.wav";
  std::ofstream(path, std::ios::binary) << "RIFF" << Le32(36 + dataBytes) << "WAVEfmt " << Le32(16) << format
                                        << "data" << Le32(dataBytes) << data;
  return path;
}

struct Files {
  std::string folder;
  std::string pcm;
  std::string adpcm;
  Files() {
    char pattern[] = "/tmp/ts_reader_bench_XXXXXX";
    folder = ::mkdtemp(pattern);
    pcm = MakePcmFile(folder);
    adpcm = folder + "/adpcm.wav";
    // Mono: of a stereo ADPCM block the reader delivers half, as it always has.
    const std::string command = "sox '" + pcm + "' -c 1 -e ms-adpcm '" + adpcm + "' 2>/dev/null";
    if (std::system(command.c_str()) != 0) adpcm.clear();
  }
  ~Files() { std::filesystem::remove_all(folder); }
};

const Files& TheFiles() {
  static const Files files;
  return files;
}

const std::string& PathOf(const benchmark::State& state) {
  return state.range(0) == 0 ? TheFiles().pcm : TheFiles().adpcm;
}

void ReportRealTime(benchmark::State& state) {
  state.counters["x_real_time"] =
      benchmark::Counter(static_cast<double>(state.iterations()) * kSeconds, benchmark::Counter::kIsRate);
}

void WavThroughDecoder(benchmark::State& state) {
  const std::string& path = PathOf(state);
  if (path.empty()) return state.SkipWithError("sox could not make the file");
  playback::PlaybackSettings& options = playback::Playback();
  for (auto* option : {&options.crossfade, &options.gapless, &options.trimSilence}) {
    playback::PlaybackSettings::Write(*option, false);
  }
  for (auto _ : state) {
    platform::SetWaveOutDriver(std::make_shared<platform::CaptureDriver>(
        platform::CaptureOptions{platform::CapturePace::kUnpaced, false, 1}));
    playback::AudioOutput output;
    playback::LockedFile file;
    platform::MessageQueue notify;
    decoders::WavReader reader;
    playback::ReaderDecoder decoder;
    decoder.SetReader(&reader);
    decoder.SetOutput(&output);
    decoder.SetSource(&file);
    decoder.SetNotifyWindow(&notify);
    if (!decoder.Open(path) || !decoder.Play()) return state.SkipWithError("the file does not play");
    if (!notify.WaitFor(playback::kMessageTrackEnded, 120000)) return state.SkipWithError("no end of track");
    decoder.Close();
  }
  platform::SetWaveOutDriver(nullptr);
  ReportRealTime(state);
}

void WavReader(benchmark::State& state) {
  const std::string& path = PathOf(state);
  if (path.empty()) return state.SkipWithError("sox could not make the file");
  std::vector<std::int16_t> block(kDecoderBlock);
  for (auto _ : state) {
    playback::LockedFile file;
    decoders::WavReader reader;
    reader.SetSource(&file, nullptr);
    reader.Open(path.c_str());
    for (std::uint32_t got = 1; got != 0;) reader.Read(block.data(), kDecoderBlock, &got);
    benchmark::DoNotOptimize(block.data());
    reader.Close();
  }
  ReportRealTime(state);
}

void FileRead(benchmark::State& state) {
  std::vector<std::int16_t> block(kDecoderBlock);
  for (auto _ : state) {
    playback::LockedFile file;
    file.Open(TheFiles().pcm.c_str());
    for (std::uint32_t got = 1; got != 0;) file.Read(block.data(), kDecoderBlock * 2, &got);
    benchmark::DoNotOptimize(block.data());
  }
  ReportRealTime(state);
}

// Argument 0: 16-bit PCM; 1: Microsoft ADPCM.
BENCHMARK(WavThroughDecoder)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(WavReader)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(FileRead)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
