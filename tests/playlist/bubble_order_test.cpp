// The bubble sorts' orders: the fast computation against the bubble sort
// itself, with the current index's swap rule, on many random lists.
#include "playlist/bubble_order.h"

#include <gtest/gtest.h>

#include <random>

namespace {

using namespace playlist;

// The list's bubble sort as it always ran, with the current index's two tests.
SortOutcome BubbleSortAsWritten(const std::vector<std::uint64_t>& keys, int current) {
  const int count = static_cast<int>(keys.size());
  SortOutcome outcome;
  for (int i = 0; i < count; ++i) outcome.order.push_back(i);
  auto& order = outcome.order;
  for (int pass = 0; pass <= count - 2; ++pass) {
    for (int j = 0; j <= count - pass - 2; ++j) {
      if (keys[static_cast<std::size_t>(order[j])] > keys[static_cast<std::size_t>(order[j + 1])]) {
        std::swap(order[j], order[j + 1]);
        if (current == j) current = j + 1;
        if (current == j + 1) current = j;
      }
    }
  }
  outcome.currentIndex = current;
  return outcome;
}

TEST(BubbleOrderTest, OrderAndCurrentIndexEqualTheBubbleSortOnRandomLists) {
  std::mt19937 random(20261125);
  for (int round = 0; round < 3000; ++round) {
    const int count = static_cast<int>(random() % 13);
    const auto distinct = 1 + random() % 6;  // few values: many ties
    std::vector<std::uint64_t> keys(static_cast<std::size_t>(count));
    for (auto& key : keys) key = random() % distinct;
    for (int current = -1; current <= count; ++current) {
      const SortOutcome expected = BubbleSortAsWritten(keys, current);
      const SortOutcome fast = BubbleOrder(keys, current);
      ASSERT_EQ(fast.order, expected.order) << "round " << round;
      ASSERT_EQ(fast.currentIndex, expected.currentIndex) << "round " << round << " current " << current;
      const SortOutcome literal = LiteralBubbleOrder(
          count, [&keys](int l, int r) { return keys[static_cast<std::size_t>(l)] > keys[static_cast<std::size_t>(r)]; },
          current);
      ASSERT_EQ(literal.order, expected.order);
      ASSERT_EQ(literal.currentIndex, expected.currentIndex) << "stopping after a quiet pass changes nothing";
    }
  }
}

TEST(BubbleOrderTest, TheCurrentIndexStaysOnTheLeftOfASwapAndFollowsFromTheRight) {
  // 2 1: one swap at 0. An index at 0 stays; one at 1 follows its record to 0.
  EXPECT_EQ(BubbleOrder({2, 1}, 0).currentIndex, 0);
  EXPECT_EQ(BubbleOrder({2, 1}, 1).currentIndex, 0);
  // 3 1 2: the 3 travels to the end; the index at 2 moves to 1 with its record.
  EXPECT_EQ(BubbleOrder({3, 1, 2}, 2).currentIndex, 1);
  EXPECT_EQ(BubbleOrder({3, 1, 2}, 0).currentIndex, 0) << "its record went to 2, the index stayed";
  EXPECT_EQ(BubbleOrder({1, 2}, 7).currentIndex, 7) << "an index outside the list is left alone";
}

}  // namespace
