// The orders that the list's bubble sorts produce, computed without the
// quadratic number of swaps.
//
// The list sorts with a bubble sort: pass p from 0 to n - 2, j from 0 to
// n - p - 2, entries j and j + 1 swapped when the left one sorts behind the
// right one. After each swap at j the current index follows a rule in two
// tests, in this order: if it is j it becomes j + 1; then if it is j + 1 it
// becomes j. Together: an index at j stays, an index at j + 1 moves to j. So
// the index follows its record only when that record moves left.
//
// When "sorts behind" is a strict weak order (a comparison of keys), the
// bubble sort's result is the stable sort by those keys, since equal neighbours
// never swap. Where the index ends takes a closer look (see BubbleOrder).
// When the comparison is not an order, only the bubble sort itself knows the
// result: LiteralBubbleOrder runs it, on indexes.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "playlist/item_store.h"

namespace playlist {

struct SortOutcome {
  // order[k]: the old index of the entry that ends at index k.
  std::vector<int> order;
  // The current index after the sort; unchanged when it wasn't in 0..n-1.
  int currentIndex = -1;
};

// What the bubble sort gives for entries with these keys, an entry sorting
// behind another when its key is greater. O(n log n).
SortOutcome BubbleOrder(const std::vector<std::uint64_t>& keys, int currentIndex);

// The bubble sort itself, on indexes: `sortsBehind(left, right)` (old indexes)
// says whether to swap. It stops after a pass without a swap, which changes
// nothing in the result. Quadratic: only for comparisons that aren't orders.
SortOutcome LiteralBubbleOrder(int count, const std::function<bool(int left, int right)>& sortsBehind,
                               int currentIndex);

// Dense ranks of texts compared byte by byte: equal texts share a rank, and a
// rank is greater when its text sorts behind.
std::vector<std::uint64_t> RankTexts(const std::vector<std::string>& texts);

// Puts the entries from `first` on in `order` (relative to `first`), by swaps:
// entry first + k becomes the old entry first + order[k].
void ApplyOrder(ItemStore& items, int first, const std::vector<int>& order);

}  // namespace playlist
