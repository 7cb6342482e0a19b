// The order of play: which entry comes next and which came before.
//
// The history is kept in the entries themselves: NextTrack stamps the entry
// it lands on with `nextStamp` and counts on; PreviousTrack walks the stamps
// back. Stamps and ITEM_PLAYED move with their records when the list is
// reordered. Shuffle draws entries not yet played in the present cycle; when
// every entry is played a new cycle begins on its own, so shuffle without
// repeat never ends.
#include <algorithm>
#include <chrono>

#include "playlist/playlist_view.h"

namespace playlist {

std::uint32_t MillisecondTicks() {
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return static_cast<std::uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

std::optional<std::string> PlaylistView::NextTrack(bool honourOrder, bool userStep) {
  const int count = items.Count();
  if (count == 0) return std::nullopt;
  const bool shuffled = honourOrder && shuffle;
  const bool repeating = honourOrder && repeatMode != 0;
  int& current = settings.currentIndex;
  // The end of the list: nothing changes, the mark stays where it is.
  if (current >= count - 1 && !repeating && !shuffled) return std::nullopt;
  if (current < 0) current = 0;
  const int old = current;
  items[current].Clear(ITEM_CURRENT);
  if (shuffled && repeatMode != kRepeatOne) {
    current = PickUnplayed();
  } else if (repeating && repeatMode == kRepeatOne) {
    if (userStep) ++current;  // else the same entry plays again
  } else if (repeating && repeatMode == kRepeatSelected) {
    current = NextSelected(current + 1);
    if (current < 0) current = old;  // nothing selected: the ended entry again
  } else {
    ++current;  // plain order and repeat all (and any mode the list doesn't know)
  }
  if (current >= count) current = 0;  // only repeat reaches this wrap
  PlaylistItem& item = items[current];
  item.Set(ITEM_CURRENT);
  Invalidate(false);
  item.playStamp = nextStamp++;
  return item.path;
}

int PlaylistView::PickUnplayed() {
  if (AllPlayed()) {
    for (int i = 0; i < items.Count(); ++i) items[i].Clear(ITEM_PLAYED);
    playedCount = 0;
    firstUnplayedHint = 0;
  }
  constexpr int kTries = 100;
  int pick = 0;
  bool found = false;
  for (int attempt = 0; attempt < kTries && !found; ++attempt) {
    pick = RandomIndex();
    found = !items[pick].Has(ITEM_PLAYED);
  }
  if (!found) {
    // The first unplayed entry from the start. Every entry below the hint is
    // known to be played, so the scan may begin there.
    for (int i = firstUnplayedHint; i < items.Count(); ++i) {
      if (!items[i].Has(ITEM_PLAYED)) {
        pick = i;
        firstUnplayedHint = i;
        break;
      }
    }
  }
  if (!items[pick].Has(ITEM_PLAYED)) {
    items[pick].Set(ITEM_PLAYED);
    ++playedCount;
  }
  return pick;
}

bool PlaylistView::AllPlayed() {
  if (playedCountStale) {
    playedCount = 0;
    for (int i = 0; i < items.Count(); ++i) playedCount += items[i].Has(ITEM_PLAYED) ? 1 : 0;
    playedCountStale = false;
  }
  return playedCount >= items.Count();
}

void PlaylistView::ForgetPlayedCache() {
  playedCountStale = true;
  firstUnplayedHint = 0;
}

// The walk back, step by step, would be: while nextStamp >= 3, lower it by
// one, clear every stamp not below it, and stop at the first entry stamped
// nextStamp - 1, if there is one. After the first step every remaining stamp
// lies below nextStamp, so the steps that follow only count down to the
// highest remaining stamp. One pass that clears the abandoned stamps and finds
// the highest of the rest does the same, without a pass per missing stamp.
std::optional<std::string> PlaylistView::PreviousTrack() {
  const int count = items.Count();
  if (count == 0) return std::nullopt;
  int& current = settings.currentIndex;
  if (current < 0) current = 0;
  const int old = current;
  bool found = false;
  if ((shuffle || repeatMode != 0) && nextStamp >= 3) {
    const std::uint32_t abandoned = nextStamp - 1;
    std::uint32_t highest = 0;
    for (int i = 0; i < count; ++i) {
      std::uint32_t& stamp = items[i].playStamp;
      if (stamp >= abandoned) stamp = 0;
      else highest = std::max(highest, stamp);
    }
    if (highest >= 1) {
      nextStamp = highest + 1;
      for (int i = 0; i < count && !found; ++i) {
        if (items[i].playStamp == highest) {
          current = i;
          found = true;
        }
      }
    } else {
      nextStamp = 2;
    }
  }
  if (!found) {
    if (current < 1) return std::nullopt;
    --current;
  }
  items[old].Clear(ITEM_CURRENT);
  items[current].Set(ITEM_CURRENT);
  Invalidate(false);
  return items[current].path;
}

void PlaylistView::SetShuffle(bool on) {
  shuffle = on;
  random->Seed(MillisecondTicks());
  for (int i = 0; i < 100; ++i) random->Next();
}

int PlaylistView::NextSelected(int start) const {
  const int count = items.Count();
  int index = std::max(start, 0);
  for (int step = 0; step < count; ++step, ++index) {
    if (index >= count) index = 0;
    if (items[index].Has(ITEM_SELECTED)) return index;
  }
  return -1;
}

int PlaylistView::RandomIndex() {
  const int count = items.Count();
  if (count <= 0) return 0;
  // In 64 bits: a long list times 32767 doesn't fit in 32.
  const std::int64_t pick =
      static_cast<std::int64_t>(count) * random->Next() / RandomGenerator::kMaxValue;
  return static_cast<int>(std::clamp<std::int64_t>(pick, 0, count - 1));
}

}  // namespace playlist
