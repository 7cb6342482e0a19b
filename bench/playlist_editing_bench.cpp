// The list's editing commands on 100 000 entries: each sort key, the sort on
// load, reverse, randomize, remove duplicates, remove selected, crop, and a
// block move. Each run starts from a freshly filled, scrambled list (the fill
// is not timed). Target: each sort or removal under 300 ms.
// Run: build/bench/playlist_editing_bench
#include <benchmark/benchmark.h>

#include <algorithm>
#include <string>

#include "playback/format_registry.h"
#include "playback/media_decoder.h"
#include "playlist/playlist_editing.h"
#include "playlist/playlist_view.h"

namespace {

constexpr int kEntries = 100000;

// Entry i of a list in 10-track albums, scrambled: consecutive entries come
// from far apart in the collection.
int Scrambled(int i, int count) { return static_cast<int>(static_cast<long long>(i) * 7919 % count); }

std::string EntryPath(int k) {
  const std::string n = std::to_string(k);
  return "/home/listener/Music/Artist " + std::to_string(k / 100) + "/Album " + std::to_string(k / 10) + "/" +
         n + " Title of track " + n + ".mp3";
}

// Details from the path alone: the title, and the track number k % 10 + 1
// (none for every seventh track, as untagged files have).
class PathDetails : public playback::MediaDecoder {
 public:
  bool GetFileDetails(const std::string& path, std::string* display, std::string*,
                      playback::FormatSummary* summary, std::uint32_t* durationMs, std::uint32_t*, std::string*,
                      std::string*) override {
    const std::size_t slash = path.rfind('/');
    const unsigned long k = std::stoul(path.substr(slash + 1));
    if (display) *display = "Song " + std::to_string((k * 31) % 1000);
    if (durationMs) *durationMs = 180000;
    if (summary) summary->trackNumber = k % 7 == 0 ? 0 : static_cast<std::uint32_t>(k % 10 + 1);
    return true;
  }
};

struct Fixture {
  Fixture() {
    formats.AddExtension(playback::kFormatMp3, "mp3");
    formats.Enable(playback::kFormatMp3, true);
    formats.SetDecoder(playback::kFormatMp3, &details);
  }
  PathDetails details;
  playback::FormatRegistry formats;
};

Fixture& Shared() {
  static Fixture fixture;
  return fixture;
}

// `distinct` different paths over `count` entries, scrambled, all read, every
// third one selected, entry 500 current.
void Fill(playlist::PlaylistView& view, int count, int distinct) {
  view.ClearAll();
  view.SetCurrentIndex(500);
  for (int i = 0; i < count; ++i) {
    view.AddEntry(EntryPath(Scrambled(i, count) % distinct));
    view.ReadInfoNow(i);
    if (i % 3 == 0) view.SetFlags(i, playlist::ITEM_SELECTED, true);
  }
}

template <typename Command>
void RunOnFreshLists(benchmark::State& state, int distinct, Command command, int count = kEntries) {
  playlist::PlaylistView view(Shared().formats);
  for (auto _ : state) {
    state.PauseTiming();
    Fill(view, count, std::min(distinct, count));
    state.ResumeTiming();
    command(view);
  }
  state.SetItemsProcessed(state.iterations() * count);
}

void BM_SortBy(benchmark::State& state) {
  const auto key = static_cast<playlist::SortKey>(state.range(0));
  RunOnFreshLists(state, kEntries, [key](playlist::PlaylistView& view) { playlist::SortBy(view, key); });
}
BENCHMARK(BM_SortBy)->ArgName("key")->DenseRange(1, 4)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_SortLoaded(benchmark::State& state) {
  const bool byTrackNumber = state.range(0) != 0;
  RunOnFreshLists(state, kEntries, [byTrackNumber](playlist::PlaylistView& view) {
    view.Settings().sortByTrackNumber = byTrackNumber ? 1 : 0;
    playlist::SortLoaded(view, 0, view.ItemCount() - 1);
  });
}
BENCHMARK(BM_SortLoaded)->ArgName("by_track")->DenseRange(0, 1)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_Reverse(benchmark::State& state) { RunOnFreshLists(state, kEntries, &playlist::ReverseList); }
BENCHMARK(BM_Reverse)->Unit(benchmark::kMillisecond)->Iterations(5);

// 2000 entries: the longest list that still gets the squared number of swaps.
void BM_Randomize(benchmark::State& state) {
  RunOnFreshLists(state, kEntries, &playlist::RandomizeList, static_cast<int>(state.range(0)));
}
BENCHMARK(BM_Randomize)->Arg(2000)->Arg(kEntries)->Unit(benchmark::kMillisecond)->Iterations(5);

// One entry in five repeats an earlier path.
void BM_RemoveDuplicates(benchmark::State& state) {
  RunOnFreshLists(state, kEntries * 4 / 5, &playlist::RemoveDuplicates);
}
BENCHMARK(BM_RemoveDuplicates)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_RemoveSelected(benchmark::State& state) { RunOnFreshLists(state, kEntries, &playlist::RemoveSelected); }
BENCHMARK(BM_RemoveSelected)->Unit(benchmark::kMillisecond)->Iterations(5);

void BM_CropSelected(benchmark::State& state) { RunOnFreshLists(state, kEntries, &playlist::CropSelected); }
BENCHMARK(BM_CropSelected)->Unit(benchmark::kMillisecond)->Iterations(5);

// A third of the list, spread over all of it but clear of the edges, moved
// down a page.
void BM_MoveSelectedPage(benchmark::State& state) {
  playlist::PlaylistView view(Shared().formats);
  for (auto _ : state) {
    state.PauseTiming();
    Fill(view, kEntries, kEntries);
    for (int i = 0; i < kEntries; ++i) view.SetFlags(i, playlist::ITEM_SELECTED, i % 3 == 1 && i < kEntries - 10);
    state.ResumeTiming();
    if (playlist::MoveSelected(view, 9) != 9) state.SkipWithError("the block didn't move");
  }
  state.SetItemsProcessed(state.iterations() * kEntries);
}
BENCHMARK(BM_MoveSelectedPage)->Unit(benchmark::kMillisecond)->Iterations(5);

// The sort on load where a folder's numbers disagree with its file titles:
// no order, so the bubble sort itself runs. Quadratic; shown on short lists.
void BM_SortLoadedNoOrder(benchmark::State& state) {
  const int count = static_cast<int>(state.range(0));
  playlist::PlaylistView view(Shared().formats);
  view.Settings().sortByTrackNumber = 1;
  for (auto _ : state) {
    state.PauseTiming();
    view.ClearAll();
    for (int i = 0; i < count; ++i) {
      // One folder per 20 entries; names against numbers (k % 10 + 1) disagree.
      const int k = Scrambled(i, count);
      view.AddEntry("/music/Album " + std::to_string(k / 20) + "/" + std::to_string(k) + " " +
                    std::string(1, static_cast<char>('z' - k % 20)) + ".mp3");
      view.ReadInfoNow(i);
    }
    state.ResumeTiming();
    playlist::SortLoaded(view, 0, count - 1);
  }
  state.SetItemsProcessed(state.iterations() * count);
}
BENCHMARK(BM_SortLoadedNoOrder)->Arg(1000)->Arg(5000)->Arg(20000)->Unit(benchmark::kMillisecond)->Iterations(3);

}  // namespace

BENCHMARK_MAIN();
