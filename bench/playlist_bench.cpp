// A list of 100 000 entries: loading it from an m3u file, adding the entries
// one by one, walking them with shuffle on, and saving them.
// Target: the load under half a second, the process well under 100 MB.
// Run: build/bench/playlist_bench   (peak memory: /usr/bin/time -v on top)
#include <benchmark/benchmark.h>
#include <stdlib.h>
#include <sys/resource.h>
#include <malloc.h>

#include <filesystem>
#include <string>
#include <vector>

#include "platform/durable_file.h"
#include "playback/format_registry.h"
#include "playlist/playlist_files.h"
#include "playlist/playlist_view.h"

namespace {

constexpr int kEntries = 100000;

std::string EntryPath(int i) {
  const std::string n = std::to_string(i);
  return "/home/listener/Music/Artist " + std::to_string(i / 100) + "/Album " + std::to_string(i / 10) +
         "/" + n + " Title of track " + n + ".mp3";
}

// A temporary folder with a 100 000-entry m3u list, and a format table.
struct Fixture {
  Fixture() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tavrinsonic-bench-XXXXXX").string();
    folder = ::mkdtemp(pattern.data()) != nullptr ? pattern : "/tmp";
    for (int id : {playback::kFormatM3u, playback::kFormatPls, playback::kFormatAsx}) {
      formats.AddExtension(id, id == playback::kFormatM3u ? "m3u" : id == playback::kFormatPls ? "pls" : "asx");
      formats.Enable(id, true);
    }
    formats.AddExtension(playback::kFormatMp3, "mp3");
    formats.Enable(playback::kFormatMp3, true);
    std::string contents = "#EXTM3U\r\n";
    for (int i = 0; i < kEntries; ++i) {
      paths.push_back(EntryPath(i));
      contents += "#EXTINF:" + std::to_string(180 + i % 120) + ",Artist " + std::to_string(i / 100) +
                  " - Title of track " + std::to_string(i) + "\r\n" + paths.back() + "\r\n";
    }
    list = folder + "/big.m3u";
    platform::WriteFileDurably(list, contents);
  }
  ~Fixture() {
    std::error_code error;
    std::filesystem::remove_all(folder, error);
  }
  std::string folder;
  std::string list;
  std::vector<std::string> paths;
  playback::FormatRegistry formats;
};

Fixture& Shared() {
  static Fixture fixture;
  return fixture;
}

// Bytes the heap has handed out and not yet taken back, in MB.
double HeapInUseMegabytes() {
  const struct mallinfo2 info = ::mallinfo2();
  return static_cast<double>(info.uordblks + info.hblkhd) / (1024.0 * 1024.0);
}

void ReportPeakMemory(benchmark::State& state) {
  rusage usage{};
  ::getrusage(RUSAGE_SELF, &usage);
  state.counters["peak_rss_MB"] = static_cast<double>(usage.ru_maxrss) / 1024.0;
}

void BM_LoadM3u100k(benchmark::State& state) {
  Fixture& fixture = Shared();
  const double before = HeapInUseMegabytes();
  playlist::PlaylistView view(fixture.formats);
  for (auto _ : state) {
    view.ClearAll();
    view.AddEntry(fixture.list);
    benchmark::DoNotOptimize(view.ItemCount());
  }
  if (view.ItemCount() != kEntries) state.SkipWithError("wrong entry count");
  state.counters["list_heap_MB"] = HeapInUseMegabytes() - before;
  state.SetItemsProcessed(state.iterations() * kEntries);
  ReportPeakMemory(state);
}
BENCHMARK(BM_LoadM3u100k)->Unit(benchmark::kMillisecond);

void BM_AddEntries100k(benchmark::State& state) {
  Fixture& fixture = Shared();
  playlist::PlaylistView view(fixture.formats);
  for (auto _ : state) {
    view.ClearAll();
    for (const std::string& path : fixture.paths) view.AddEntry(path);
    benchmark::DoNotOptimize(view.ItemCount());
  }
  state.SetItemsProcessed(state.iterations() * kEntries);
  ReportPeakMemory(state);
}
BENCHMARK(BM_AddEntries100k)->Unit(benchmark::kMillisecond);

// One whole shuffle cycle: every entry drawn once, then a step back.
void BM_ShuffleWalk100k(benchmark::State& state) {
  Fixture& fixture = Shared();
  playlist::PlaylistView view(fixture.formats);
  for (const std::string& path : fixture.paths) view.AddEntry(path);
  view.SetShuffle(true);
  for (auto _ : state) {
    for (int i = 0; i < kEntries; ++i) benchmark::DoNotOptimize(view.NextTrack(true, false));
    benchmark::DoNotOptimize(view.PreviousTrack());
  }
  state.SetItemsProcessed(state.iterations() * kEntries);
}
BENCHMARK(BM_ShuffleWalk100k)->Unit(benchmark::kMillisecond);

void BM_SaveDefaultList100k(benchmark::State& state) {
  Fixture& fixture = Shared();
  playlist::PlaylistView view(fixture.formats);
  view.AddEntry(fixture.list);
  const std::string saved = fixture.folder + "/default.tsl";
  for (auto _ : state) {
    if (!view.SaveDefaultList(saved)) state.SkipWithError("save failed");
  }
  state.SetItemsProcessed(state.iterations() * kEntries);
}
BENCHMARK(BM_SaveDefaultList100k)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
