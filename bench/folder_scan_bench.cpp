// The file picker's walk over a large music folder: 50 000 files in 2 000
// album folders (20 artists of 100 albums, each album 20 MP3s, an Ogg, a
// playlist and three files that don't count), made in a temporary folder.
//
// Targets: the first level of the picker in under 100 ms whatever the tree's
// size; a whole ScanFolder into the list in under 1 s; while a folder is
// added from the window thread, no stretch without events longer than
// 100 ms (longest_block_ms).
//
// The tree is read from the page cache after its creation: these are the
// walk's own costs, not the disk's.
#include <benchmark/benchmark.h>

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <string>

#include "playback/format_registry.h"
#include "playlist/folder_scan.h"
#include "playlist/playlist_view.h"
#include "playlist/sliced_scan.h"

namespace {

namespace fs = std::filesystem;
using Clock = std::chrono::steady_clock;

constexpr int kArtists = 20;
constexpr int kAlbumsPerArtist = 100;
constexpr int kTracksPerAlbum = 20;
constexpr int kCountedPerAlbum = kTracksPerAlbum + 1;  // the Ogg; the playlist stands beside tracks

class MadeTree {
 public:
  MadeTree() {
    root = fs::temp_directory_path() / ("ts_folder_scan_bench_" + std::to_string(::getpid()));
    for (int artist = 0; artist < kArtists; ++artist) {
      for (int album = 0; album < kAlbumsPerArtist; ++album) {
        const fs::path folder = root / ("artist " + std::to_string(artist)) / ("album " + std::to_string(album));
        fs::create_directories(folder);
        for (int track = 0; track < kTracksPerAlbum; ++track) Touch(folder / ("track " + std::to_string(track) + ".mp3"));
        for (const char* name : {"bonus.ogg", "album.m3u", "cover.jpg", "notes.txt", "booklet.pdf"}) Touch(folder / name);
      }
    }
    for (const auto& [id, extension] : {std::pair{playback::kFormatM3u, "m3u"}, {playback::kFormatPls, "pls"},
                                        {playback::kFormatMp3, "mp3"}, {playback::kFormatOgg, "ogg"}}) {
      formats.AddExtension(id, extension);
      formats.Enable(id, true);
    }
  }
  ~MadeTree() {
    std::error_code error;
    fs::remove_all(root, error);
  }
  static void Touch(const fs::path& path) { std::ofstream(path).put('x'); }

  fs::path root;
  playback::FormatRegistry formats;
};

MadeTree& Tree() {
  static MadeTree tree;
  return tree;
}

void BM_FirstLevelOfThePicker(benchmark::State& state) {
  MadeTree& tree = Tree();
  const playlist::PickerFilter filter{false, false, state.range(0) != 0};
  std::size_t shown = 0;
  for (auto _ : state) {
    const std::vector<playlist::LevelEntry> level = playlist::ReadLevel(tree.formats, tree.root, filter);
    shown = level.size();
    benchmark::DoNotOptimize(level.data());
  }
  state.counters["nodes"] = double(shown);
  state.SetLabel(state.range(0) != 0 ? "show all folders" : "only folders with media");
}
BENCHMARK(BM_FirstLevelOfThePicker)->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

void BM_ScanFolderIntoTheList(benchmark::State& state) {
  MadeTree& tree = Tree();
  int entries = 0;
  for (auto _ : state) {
    playlist::PlaylistView view(tree.formats);
    playlist::ScanFolder(tree.formats, tree.root, false, false, [&view](const std::string& path) {
      return playlist::PlaylistView::AddEntry(path.c_str(), &view) == 1;
    });
    entries = view.ItemCount();
  }
  if (entries != kArtists * kAlbumsPerArtist * kCountedPerAlbum) state.SkipWithError("wrong number of entries");
  state.counters["entries"] = entries;
}
BENCHMARK(BM_ScanFolderIntoTheList)->Unit(benchmark::kMillisecond);

// As the window thread adds a folder: the walk on its worker, the entries
// added in slices, the window's events between them (here: the time of the
// longest stretch without a turn of events).
void BM_AddFolderFromTheWindowThread(benchmark::State& state) {
  MadeTree& tree = Tree();
  double longestMs = 0;
  int entries = 0;
  for (auto _ : state) {
    playlist::PlaylistView view(tree.formats);
    Clock::time_point lastTurn = Clock::now();
    playlist::ScanFolderInSlices(
        tree.formats, tree.root.string(), false, false,
        [&view](const std::string& path) { return playlist::PlaylistView::AddEntry(path.c_str(), &view) == 1; },
        [&] {
          const Clock::time_point now = Clock::now();
          longestMs = std::max(longestMs, std::chrono::duration<double, std::milli>(now - lastTurn).count());
          lastTurn = now;
        });
    longestMs = std::max(longestMs, std::chrono::duration<double, std::milli>(Clock::now() - lastTurn).count());
    entries = view.ItemCount();
  }
  if (entries != kArtists * kAlbumsPerArtist * kCountedPerAlbum) state.SkipWithError("wrong number of entries");
  state.counters["entries"] = entries;
  state.counters["longest_block_ms"] = longestMs;
}
BENCHMARK(BM_AddFolderFromTheWindowThread)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
