// The editing commands. Each works on the model and tells the list on screen
// through it. Those that reorder or remove stop the info reader first and do
// not restart it; the selection commands leave it running.
//
// Removals share one shape, compaction: the entries to keep are swapped down
// to a write index in their order, everything behind it is released, the list
// is told its count, the current index is found again from ITEM_CURRENT, and
// the list is redrawn with erase.
//
// The sorts produce what the list's bubble sorts produce, current index
// included (see bubble_order.h), without their quadratic cost.
#include "playlist/playlist_editing.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <numeric>
#include <string>
#include <unordered_set>
#include <vector>

#include "platform/text.h"
#include "playlist/bubble_order.h"
#include "playlist/file_title.h"
#include "playlist/playlist_view.h"

namespace playlist {
namespace {

// Up to this many entries Randomize makes its itemCount squared swaps of
// RandomIndex pairs, as it always has (4 million swaps, about 20 ms).
// Longer lists get a Fisher-Yates shuffle instead (see RandomizeList).
constexpr int kSquaredShuffleLimit = 2000;

bool IsSelected(const PlaylistView& view, int index) { return (view.FlagsAt(index) & ITEM_SELECTED) != 0; }

bool AnySelected(const PlaylistView& view) {
  for (int i = 0; i < view.ItemCount(); ++i) {
    if (IsSelected(view, i)) return true;
  }
  return false;
}

// The comparison "without regard to case": letters A to Z compare as a to z.
std::string FoldCase(std::string text) {
  for (char& c : text) c = platform::AsciiLower(c);
  return text;
}

// Keeps the entries whose `keep` is set, in their order; see the top.
void Compact(PlaylistView& view, const std::vector<bool>& keep) {
  view.EditEntries([&keep](ItemStore& items) {
    int write = 0;
    for (int read = 0; read < items.Count(); ++read) {
      if (!keep[static_cast<std::size_t>(read)]) continue;
      items.Swap(read, write);
      ++write;
    }
    items.ReleaseFrom(write);
  });
  view.TellCount();
  view.ResyncCurrent();
  view.Invalidate(true);
}

// Keeps the entries whose selection equals `selected`.
std::vector<bool> KeepBySelection(const PlaylistView& view, bool selected) {
  std::vector<bool> keep(static_cast<std::size_t>(view.ItemCount()));
  for (int i = 0; i < view.ItemCount(); ++i) keep[static_cast<std::size_t>(i)] = IsSelected(view, i) == selected;
  return keep;
}

// An address ("scheme://...") names no file here: it counts as gone.
bool FileExists(const std::string& path) {
  if (path.find("://") != std::string::npos) return false;
  struct stat info {};
  return ::stat(path.c_str(), &info) == 0;
}

bool HasTrackNumber(std::uint32_t number) { return number != 0 && number != NO_TRACK_NUMBER; }

// The keys of SortBy; greater sorts behind.
std::vector<std::uint64_t> SortKeys(const ItemStore& items, SortKey key) {
  const auto count = static_cast<std::size_t>(items.Count());
  if (key == SortKey::kTrackNumber) {
    // Entries without a number sort behind every number, equal among themselves.
    std::vector<std::uint64_t> keys(count);
    for (std::size_t i = 0; i < count; ++i) {
      const std::uint32_t number = items[static_cast<int>(i)].TrackNumber();
      keys[i] = HasTrackNumber(number) ? number : std::uint64_t{1} << 32;
    }
    return keys;
  }
  std::vector<std::string> texts(count);
  for (std::size_t i = 0; i < count; ++i) {
    const PlaylistItem& item = items[static_cast<int>(i)];
    switch (key) {
      case SortKey::kTitle: texts[i] = item.Has(ITEM_HAS_INFO) ? item.title : FileTitle(item.path); break;
      case SortKey::kFileName: texts[i] = FileTitle(item.path); break;
      default: texts[i] = item.path; break;
    }
    texts[i] = FoldCase(std::move(texts[i]));
  }
  return RankTexts(texts);
}

// The folder part of a path for SortLoaded: up to the last '/', without it;
// "/" when there is none beyond the first character.
std::string Directory(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos || slash == 0) return "/";
  return path.substr(0, slash);
}

// How the entries of one folder compare in SortLoaded.
enum class FolderOrder {
  kByNumber,  // all numbered: the numbers alone
  kByTitle,   // the file titles: none numbered, or the numbers agree with them
  kNoOrder,   // numbers against titles can go round in a circle
};

// With sortByTrackNumber, two numbered entries of a folder compare by number
// and every other pair by file title. That is an order when the folder is all
// numbered or all unnumbered, or when sorting its numbered entries by number
// sorts them by title too (numbered file names, the usual case); then the
// title decides for every pair.
std::vector<FolderOrder> FolderOrders(const std::vector<std::uint64_t>& folderRanks,
                                      const std::vector<std::uint64_t>& titleRanks,
                                      const std::vector<std::uint32_t>& numbers, const std::vector<bool>& numbered) {
  const std::size_t count = folderRanks.size();
  std::vector<std::vector<std::size_t>> numberedOf(count);
  std::vector<bool> hasUnnumbered(count, false);
  for (std::size_t i = 0; i < count; ++i) {
    const auto folder = static_cast<std::size_t>(folderRanks[i]);
    if (numbered[i]) numberedOf[folder].push_back(i);
    else hasUnnumbered[folder] = true;
  }
  std::vector<FolderOrder> orders(count, FolderOrder::kByTitle);
  for (std::size_t folder = 0; folder < count; ++folder) {
    auto& members = numberedOf[folder];
    if (members.empty()) continue;
    if (!hasUnnumbered[folder]) {
      orders[folder] = FolderOrder::kByNumber;
      continue;
    }
    std::stable_sort(members.begin(), members.end(),
                     [&numbers](std::size_t a, std::size_t b) { return numbers[a] < numbers[b]; });
    for (std::size_t k = 1; k < members.size(); ++k) {
      const std::size_t a = members[k - 1], b = members[k];
      const bool agree = numbers[a] == numbers[b] ? titleRanks[a] == titleRanks[b] : titleRanks[a] < titleRanks[b];
      if (!agree) orders[folder] = FolderOrder::kNoOrder;
    }
  }
  return orders;
}

// SortLoaded's order of the entries first..last: by folder, then within a
// folder by track number where both have one (with sortByTrackNumber),
// otherwise by file title. Where that comparison is no order (see
// FolderOrders) only the bubble sort itself knows the result, and it runs.
SortOutcome LoadedOrder(const ItemStore& items, int first, int last, bool byTrackNumber, int current) {
  const auto count = static_cast<std::size_t>(last - first + 1);
  std::vector<std::string> folders(count), titles(count);
  std::vector<std::uint32_t> numbers(count);
  std::vector<bool> numbered(count);
  for (std::size_t i = 0; i < count; ++i) {
    const PlaylistItem& item = items[first + static_cast<int>(i)];
    folders[i] = FoldCase(Directory(item.path));
    titles[i] = FoldCase(FileTitle(item.path));
    numbers[i] = item.TrackNumber();
    numbered[i] = byTrackNumber && HasTrackNumber(numbers[i]);
  }
  const std::vector<std::uint64_t> folderRanks = RankTexts(folders);
  const std::vector<std::uint64_t> titleRanks = RankTexts(titles);
  const std::vector<FolderOrder> orders = FolderOrders(folderRanks, titleRanks, numbers, numbered);
  const int relativeCurrent = current - first;
  SortOutcome outcome;
  if (std::find(orders.begin(), orders.end(), FolderOrder::kNoOrder) == orders.end()) {
    std::vector<std::uint64_t> keys(count);
    for (std::size_t i = 0; i < count; ++i) {
      const bool byNumber = orders[static_cast<std::size_t>(folderRanks[i])] == FolderOrder::kByNumber;
      keys[i] = (folderRanks[i] << 32) | (byNumber ? numbers[i] : titleRanks[i]);
    }
    outcome = BubbleOrder(keys, relativeCurrent);
  } else {
    outcome = LiteralBubbleOrder(
        static_cast<int>(count),
        [&](int leftIndex, int rightIndex) {
          const auto left = static_cast<std::size_t>(leftIndex);
          const auto right = static_cast<std::size_t>(rightIndex);
          if (folderRanks[left] != folderRanks[right]) return folderRanks[left] > folderRanks[right];
          if (numbered[left] && numbered[right]) return numbers[left] > numbers[right];
          return titleRanks[left] > titleRanks[right];
        },
        relativeCurrent);
  }
  outcome.currentIndex += first;
  return outcome;
}

// A value below `bound` from the list's generator, every value alike likely:
// two draws make 30 bits, and draws beyond the last whole multiple of `bound`
// are drawn again.
int UniformBelow(RandomGenerator& random, int bound) {
  constexpr std::uint32_t kSpan = std::uint32_t{1} << 30;
  const std::uint32_t limit = kSpan - kSpan % static_cast<std::uint32_t>(bound);
  for (;;) {
    const auto high = static_cast<std::uint32_t>(random.Next());
    const auto low = static_cast<std::uint32_t>(random.Next());
    const std::uint32_t value = (high << 15) | low;
    if (value < limit) return static_cast<int>(value % static_cast<std::uint32_t>(bound));
  }
}

}  // namespace

void SelectAll(PlaylistView& view) {
  for (int i = 0; i < view.ItemCount(); ++i) view.SetFlags(i, ITEM_SELECTED, true);
  view.Invalidate(false);
}

void SelectNone(PlaylistView& view) {
  for (int i = 0; i < view.ItemCount(); ++i) view.SetFlags(i, ITEM_SELECTED, false);
  view.Invalidate(false);
}

void InvertSelection(PlaylistView& view) {
  for (int i = 0; i < view.ItemCount(); ++i) view.SetFlags(i, ITEM_SELECTED, !IsSelected(view, i));
  view.Invalidate(false);
}

void RemoveSelected(PlaylistView& view) {
  view.StopInfoThread();
  Compact(view, KeepBySelection(view, false));
}

void CropSelected(PlaylistView& view) {
  if (!AnySelected(view)) return;
  view.StopInfoThread();
  Compact(view, KeepBySelection(view, true));
}

void RemoveDead(PlaylistView& view) {
  view.StopInfoThread();
  std::vector<bool> keep(static_cast<std::size_t>(view.ItemCount()));
  for (int i = 0; i < view.ItemCount(); ++i) keep[static_cast<std::size_t>(i)] = FileExists(view.PathAt(i));
  Compact(view, keep);
}

void EraseSelected(PlaylistView& view) {
  view.StopInfoThread();
  for (int i = 0; i < view.ItemCount(); ++i) {
    if (IsSelected(view, i)) static_cast<void>(::unlink(view.PathAt(i).c_str()));
  }
  Compact(view, KeepBySelection(view, false));
}

// The list has always done this in two steps: a later entry with the same path
// (compared with regard to case) is blanked, then a packing walk drops the
// blanks. That walk's copy is skipped while its two indexes are equal, which
// happens at the first entry only: the second record is then copied over the
// first, so the first entry is lost every time, duplicates or not. The result
// is kept: the first entry and every later copy of an earlier path go.
void RemoveDuplicates(PlaylistView& view) {
  view.StopInfoThread();
  std::vector<bool> keep(static_cast<std::size_t>(view.ItemCount()), false);
  std::unordered_set<std::string_view> seen;
  for (int i = 0; i < view.ItemCount(); ++i) {
    const bool first = seen.insert(view.PathAt(i)).second;
    keep[static_cast<std::size_t>(i)] = first && i > 0;
  }
  Compact(view, keep);
}

void SortBy(PlaylistView& view, SortKey key) {
  view.StopInfoThread();
  if (view.ItemCount() < 2) {
    view.Invalidate(true);
    return;
  }
  int current = view.CurrentIndex();
  view.EditEntries([&](ItemStore& items) {
    const SortOutcome outcome = BubbleOrder(SortKeys(items, key), current);
    ApplyOrder(items, 0, outcome.order);
    current = outcome.currentIndex;
  });
  view.SetCurrentIndex(current);
  view.Invalidate(true);
}

void ReverseList(PlaylistView& view) {
  view.EditEntries([](ItemStore& items) {
    const int count = items.Count();
    for (int i = 0; i < count / 2; ++i) items.Swap(i, count - 1 - i);
  });
  view.Invalidate(true);
}

// The list's own shuffle makes itemCount squared swaps of two RandomIndex
// values in an index array, then swaps the record at each array value i with
// the record at i. That stays for lists up to kSquaredShuffleLimit. Beyond it
// the squared loop costs seconds to hours, and RandomIndex, with only 32768
// values, can't reach most entries of a list longer than that: a Fisher-Yates
// shuffle of the array with full-width draws from the same generator gives
// every order alike likely, and the array is applied as the permutation it is.
void RandomizeList(PlaylistView& view) {
  const int count = view.ItemCount();
  if (count == 0) return;
  view.StopInfoThread();
  RandomGenerator& random = view.Random();
  random.Seed(MillisecondTicks());
  for (int i = 0; i < 10; ++i) random.Next();
  std::vector<int> order;
  try {
    order.resize(static_cast<std::size_t>(count));
  } catch (const std::bad_alloc&) {
    return;
  }
  std::iota(order.begin(), order.end(), 0);
  if (count <= kSquaredShuffleLimit) {
    for (int round = 0; round < count; ++round) {
      for (int step = 0; step < count; ++step) {
        const int a = view.RandomIndex();
        const int b = view.RandomIndex();
        std::swap(order[static_cast<std::size_t>(a)], order[static_cast<std::size_t>(b)]);
      }
    }
    view.EditEntries([&order](ItemStore& items) {
      for (int i = 0; i < items.Count(); ++i) items.Swap(order[static_cast<std::size_t>(i)], i);
    });
  } else {
    for (int i = count - 1; i > 0; --i) {
      std::swap(order[static_cast<std::size_t>(i)], order[static_cast<std::size_t>(UniformBelow(random, i + 1))]);
    }
    view.EditEntries([&order](ItemStore& items) { ApplyOrder(items, 0, order); });
  }
  view.Invalidate(true);
}

void ReadInfoAgain(PlaylistView& view) {
  view.StopInfoThread();
  for (int i = 0; i < view.ItemCount(); ++i) {
    if (IsSelected(view, i)) view.ForgetInfo(i);
  }
  view.StartInfoThread();
}

void SortLoaded(PlaylistView& view, int first, int last) {
  const PlaylistSettings& settings = view.Settings();
  if (settings.sortOnLoad == 0) return;
  first = std::max(first, 0);
  last = std::min(last, view.ItemCount() - 1);
  if (first >= last) return;
  view.StopInfoThread();
  const bool byTrackNumber = settings.sortByTrackNumber != 0;
  if (byTrackNumber) {
    // The numbers decide the order, so they are read now; the window waits.
    for (int i = first; i <= last; ++i) {
      if ((view.FlagsAt(i) & ITEM_HAS_INFO) == 0 || view.DurationAt(i) == 0) view.ReadInfoNow(i);
    }
  }
  int current = view.CurrentIndex();
  view.EditEntries([&](ItemStore& items) {
    const SortOutcome outcome = LoadedOrder(items, first, last, byTrackNumber, current);
    ApplyOrder(items, first, outcome.order);
    current = outcome.currentIndex;
  });
  view.SetCurrentIndex(current);
}

bool ToggleMoveMode(PlaylistView& view) {
  if (view.ItemCount() == 0) {
    view.SetMoveMode(false);
    return false;
  }
  const bool on = !view.MoveMode();
  view.SetMoveMode(on);
  const int focus = view.FocusIndex();
  const bool focusInList = focus >= 0 && focus < view.ItemCount();
  if (on && focusInList && !AnySelected(view)) view.SetFlags(focus, ITEM_SELECTED, true);
  if (focusInList) view.RedrawRow(focus);
  return on;
}

int MoveSelected(PlaylistView& view, int distance) {
  view.StopInfoThread();
  const int count = view.ItemCount();
  if (distance == 0 || count == 0 || !AnySelected(view)) return 0;
  const bool up = distance < 0;
  // The block stops at the edge: the selected row nearest to it cuts the distance.
  const std::int64_t wanted = up ? -std::int64_t{distance} : std::int64_t{distance};
  int steps = static_cast<int>(std::min<std::int64_t>(wanted, count));
  for (int k = 0; k < steps; ++k) {
    if (IsSelected(view, up ? k : count - 1 - k)) {
      steps = k;
      break;
    }
  }
  if (steps == 0) return 0;
  // Selected rows land `steps` away; the others keep their order in the rest.
  std::vector<int> order(static_cast<std::size_t>(count), -1);
  for (int i = 0; i < count; ++i) {
    if (IsSelected(view, i)) order[static_cast<std::size_t>(up ? i - steps : i + steps)] = i;
  }
  int slot = 0;
  for (int i = 0; i < count; ++i) {
    if (IsSelected(view, i)) continue;
    while (order[static_cast<std::size_t>(slot)] >= 0) ++slot;
    order[static_cast<std::size_t>(slot)] = i;
  }
  view.EditEntries([&order](ItemStore& items) { ApplyOrder(items, 0, order); });
  view.ResyncCurrent();
  view.Invalidate(false);
  return up ? -steps : steps;
}

bool RunEditingCommand(PlaylistView& view, int command) {
  switch (command) {
    case kCommandMoveItems: ToggleMoveMode(view); return true;
    case kCommandSelectAll: SelectAll(view); return true;
    case kCommandSelectNone: SelectNone(view); return true;
    case kCommandSelectInvert: InvertSelection(view); return true;
    case kCommandRemoveAll:
    case kCommandClearAll: view.ClearAll(); return true;
    case kCommandRemoveSelected: RemoveSelected(view); return true;
    case kCommandCropSelected: CropSelected(view); return true;
    case kCommandRemoveDuplicates: RemoveDuplicates(view); return true;
    case kCommandRemoveDead: RemoveDead(view); return true;
    case kCommandEraseSelected: EraseSelected(view); return true;
    case kCommandSortTitle: SortBy(view, SortKey::kTitle); return true;
    case kCommandSortFileName: SortBy(view, SortKey::kFileName); return true;
    case kCommandSortPath: SortBy(view, SortKey::kPath); return true;
    case kCommandSortTrackNumber: SortBy(view, SortKey::kTrackNumber); return true;
    case kCommandReverse: ReverseList(view); return true;
    case kCommandRandomize: RandomizeList(view); return true;
    case kCommandReadInfoAgain: ReadInfoAgain(view); return true;
    default: return false;
  }
}

}  // namespace playlist
