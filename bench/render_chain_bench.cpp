// The whole chain, as the render tool runs it: a minute of 128 kbit/s stereo
// MP3 through the real PlayerApp (headless), its MP3 decoder and output
// engine, the equalizer and extra bass, into the unpaced capture device held
// to the decoder's pace by the render tool's feed gate. Crossfade, gapless
// play and silence trimming are off.
//
// "x_real_time" is the file's seconds of sound per second of wall time from
// opening the file until the list has played out, the span the tool reports
// itself; the player's start and the writing of the WAV file are not in it,
// nor is the silence the device records around the track (the tool's own
// figure counts that too).
//   RenderChain/0  equalizer off, extra bass off
//   RenderChain/1  equalizer on (a curve that runs every band), extra bass 3
// The target: 230x real time or more with both on.
#include <benchmark/benchmark.h>
#include <stdlib.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>

#include "mp3_bench_media.h"
#include "private_settings.h"
#include "render_options.h"
#include "render_session.h"

namespace {

namespace fs = std::filesystem;

// A folder with the MP3, the WAV that each run writes, and XDG folders of
// its own, so the player starts from its defaults and not the user's.
struct ChainWorld {
  std::string folder;
  std::string input;
  std::string output;
  std::unique_ptr<render::PrivateSettings> settings;

  ChainWorld() {
    std::string pattern = (fs::temp_directory_path() / "ts_render_chain_XXXXXX").string();
    if (::mkdtemp(pattern.data()) == nullptr) return;
    folder = pattern;
    input = folder + "/minute.mp3";
    output = folder + "/minute.wav";
    const auto& bytes = mp3_bench::RepeatedMp3();
    std::ofstream(input, std::ios::binary)
        .write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
    ::setenv("XDG_CONFIG_HOME", (folder + "/config").c_str(), 1);
    ::setenv("XDG_DATA_HOME", (folder + "/data").c_str(), 1);
    ::setenv("XDG_RUNTIME_DIR", (folder + "/runtime").c_str(), 1);
    settings = std::make_unique<render::PrivateSettings>();
  }
  ~ChainWorld() {
    settings.reset();
    std::error_code error;
    if (!folder.empty()) fs::remove_all(folder, error);
  }
};

ChainWorld& TheWorld() {
  static ChainWorld world;
  return world;
}

render::RenderOptions OptionsFor(bool effectsOn) {
  render::RenderOptions options;
  options.input = TheWorld().input;
  options.output = TheWorld().output;
  options.crossfade = false;
  options.gapless = false;
  options.trimSilence = false;
  options.equalizer = effectsOn;
  if (effectsOn) {
    // No band centred, so every filter of the bank runs; the preamp at 0 dB.
    options.equalizerSliders = {{20, 18, 16, 12, 10, 10, 12, 16, 18, 20, 14}};
  }
  options.extraBass = effectsOn ? 3 : 0;
  return options;
}

void RenderChain(benchmark::State& state) {
  ChainWorld& world = TheWorld();
  if (!world.settings || !world.settings->Ready()) return state.SkipWithError("no temporary folder");
  const render::RenderOptions options = OptionsFor(state.range(0) != 0);
  std::FILE* report = std::fopen("/dev/null", "w");
  const double trackSeconds = mp3_bench::RepeatedMp3Seconds();
  double playSeconds = 0;
  for (auto _ : state) {
    double audioSeconds = 0;
    double sessionSeconds = 0;
    int result = 0;
    {
      render::GatedCapture capture;
      render::RenderSession session(options, capture.Driver(), capture.Gate(), report);
      result = session.Run(world.settings->RegistryFile());
      audioSeconds = session.AudioSeconds();
      sessionSeconds = session.PlaySeconds();
    }
    if (result != 0 || audioSeconds + 0.5 < trackSeconds) {
      std::fclose(report);
      return state.SkipWithError("the file did not render whole");
    }
    state.SetIterationTime(sessionSeconds);
    playSeconds += sessionSeconds;
  }
  std::fclose(report);
  const double iterations = static_cast<double>(state.iterations());
  state.counters["x_real_time"] = playSeconds > 0 ? trackSeconds * iterations / playSeconds : 0;
}

BENCHMARK(RenderChain)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond)->UseManualTime();

}  // namespace

BENCHMARK_MAIN();
