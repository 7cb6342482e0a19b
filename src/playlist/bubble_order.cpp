// Where the current index ends after a bubble sort, in O(n log n).
//
// Call inv(x) the number of entries to the left of x at the start that sort
// strictly behind x. A pass carries the greatest entry met so far to the right;
// an entry with inv >= 1 is passed over by exactly one of the greater ones and
// moves one place left, so its inv drops by one; an entry with inv 0 has
// nothing greater on its left and never moves left again. So at the start of
// pass p, an entry x with inv(x) >= p stands at its first index - p, and index
// m holds the entry that stood at m + p when that one's inv is at least p.
//
// The current index at m moves to m - 1 in pass p exactly when the entry at m
// is passed over, that is when it is that entry and its inv is above p. Then
// it keeps following the same entry (m - 1 + p + 1 = m + p) until that
// entry's inv is used up. Otherwise it stays at m and looks at the entry that
// started at m + p + 1 in the next pass. One walk over the entries from the
// current index on gives the end; the inv counts come from a Fenwick tree over
// the keys' ranks.
#include "playlist/bubble_order.h"

#include <algorithm>
#include <numeric>

namespace playlist {
namespace {

// Counts of ranks seen so far; prefix sums in O(log n).
class RankCounter {
 public:
  explicit RankCounter(std::size_t ranks) : tree(ranks + 1, 0) {}
  void Add(std::size_t rank) {
    for (std::size_t i = rank + 1; i < tree.size(); i += i & (~i + 1)) ++tree[i];
  }
  // How many of the added ranks are at most `rank`.
  int AtMost(std::size_t rank) const {
    int sum = 0;
    for (std::size_t i = rank + 1; i > 0; i -= i & (~i + 1)) sum += tree[i];
    return sum;
  }

 private:
  std::vector<int> tree;
};

int CurrentAfterBubbleSort(const std::vector<std::size_t>& ranks, std::size_t rankCount, int current) {
  const int count = static_cast<int>(ranks.size());
  if (current < 1 || current >= count) return current;  // index 0 is never passed over
  // inv of every entry from the current index on.
  RankCounter seen(rankCount);
  std::vector<int> greaterOnLeft(ranks.size(), 0);
  for (int i = 0; i < count; ++i) {
    const auto rank = ranks[static_cast<std::size_t>(i)];
    if (i >= current) greaterOnLeft[static_cast<std::size_t>(i)] = i - seen.AtMost(rank);
    seen.Add(rank);
  }
  int position = current;
  int start = current;  // position + pass: where the entry now at `position` began
  for (int pass = 0; pass <= count - 2 && start < count; ++pass) {
    if (greaterOnLeft[static_cast<std::size_t>(start)] > pass) {
      --position;
    } else {
      ++start;
    }
  }
  return position;
}

}  // namespace

SortOutcome BubbleOrder(const std::vector<std::uint64_t>& keys, int currentIndex) {
  SortOutcome outcome;
  outcome.order.resize(keys.size());
  std::iota(outcome.order.begin(), outcome.order.end(), 0);
  std::stable_sort(outcome.order.begin(), outcome.order.end(), [&keys](int a, int b) {
    return keys[static_cast<std::size_t>(a)] < keys[static_cast<std::size_t>(b)];
  });
  // Dense ranks for the counting of greater entries.
  std::vector<std::size_t> ranks(keys.size(), 0);
  std::size_t rank = 0;
  for (std::size_t k = 0; k < outcome.order.size(); ++k) {
    const auto index = static_cast<std::size_t>(outcome.order[k]);
    if (k > 0 && keys[index] != keys[static_cast<std::size_t>(outcome.order[k - 1])]) ++rank;
    ranks[index] = rank;
  }
  outcome.currentIndex = CurrentAfterBubbleSort(ranks, rank + 1, currentIndex);
  return outcome;
}

SortOutcome LiteralBubbleOrder(int count, const std::function<bool(int left, int right)>& sortsBehind,
                               int currentIndex) {
  SortOutcome outcome;
  outcome.order.resize(static_cast<std::size_t>(std::max(count, 0)));
  std::iota(outcome.order.begin(), outcome.order.end(), 0);
  int current = currentIndex;
  auto& order = outcome.order;
  for (int pass = 0; pass <= count - 2; ++pass) {
    bool swapped = false;
    for (int j = 0; j <= count - pass - 2; ++j) {
      const auto left = static_cast<std::size_t>(j);
      if (!sortsBehind(order[left], order[left + 1])) continue;
      std::swap(order[left], order[left + 1]);
      swapped = true;
      if (current == j) current = j + 1;
      if (current == j + 1) current = j;
    }
    if (!swapped) break;  // every later pass would find the same
  }
  outcome.currentIndex = current;
  return outcome;
}

std::vector<std::uint64_t> RankTexts(const std::vector<std::string>& texts) {
  std::vector<int> order(texts.size());
  std::iota(order.begin(), order.end(), 0);
  std::sort(order.begin(), order.end(), [&texts](int a, int b) {
    return texts[static_cast<std::size_t>(a)] < texts[static_cast<std::size_t>(b)];
  });
  std::vector<std::uint64_t> ranks(texts.size(), 0);
  std::uint64_t rank = 0;
  for (std::size_t k = 0; k < order.size(); ++k) {
    const auto index = static_cast<std::size_t>(order[k]);
    if (k > 0 && texts[index] != texts[static_cast<std::size_t>(order[k - 1])]) ++rank;
    ranks[index] = rank;
  }
  return ranks;
}

void ApplyOrder(ItemStore& items, int first, const std::vector<int>& order) {
  // at[k]: which old entry stands at first + k now; where[old]: where it stands.
  std::vector<int> at(order.size());
  std::iota(at.begin(), at.end(), 0);
  std::vector<int> where = at;
  for (std::size_t k = 0; k < order.size(); ++k) {
    const int wanted = order[k];
    const int from = where[static_cast<std::size_t>(wanted)];
    if (from == static_cast<int>(k)) continue;
    const int displaced = at[k];
    items.Swap(first + static_cast<int>(k), first + from);
    at[static_cast<std::size_t>(from)] = displaced;
    where[static_cast<std::size_t>(displaced)] = from;
    at[k] = wanted;
    where[static_cast<std::size_t>(wanted)] = static_cast<int>(k);
  }
}

}  // namespace playlist
