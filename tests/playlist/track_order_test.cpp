// The order of play: NextTrack, PreviousTrack, shuffle and the repeat modes.
#include <gtest/gtest.h>

#include <deque>
#include <random>

#include "playlist_fixture.h"

namespace {

using namespace playlist;
using playlist_testing::PlaylistTest;

// Hands out the values it was given, then repeats the last one.
class ScriptedRandom : public RandomGenerator {
 public:
  explicit ScriptedRandom(std::deque<int> script, int* seeds = nullptr, int* draws = nullptr)
      : values(std::move(script)), seedCount(seeds), drawCount(draws) {}
  void Seed(std::uint32_t) override {
    if (seedCount) ++*seedCount;
  }
  int Next() override {
    if (drawCount) ++*drawCount;
    if (values.size() > 1) {
      const int value = values.front();
      values.pop_front();
      return value;
    }
    return values.empty() ? 0 : values.front();
  }

 private:
  std::deque<int> values;
  int* seedCount;
  int* drawCount;
};

class TrackOrderTest : public PlaylistTest {
 protected:
  void Fill(int count) {
    view.ClearAll();
    for (int i = 0; i < count; ++i) view.AddEntry("/m/" + std::to_string(i) + ".mp3");
  }
  static std::string Path(int index) { return "/m/" + std::to_string(index) + ".mp3"; }
  int Next(bool honourOrder, bool userStep) {
    const auto path = view.NextTrack(honourOrder, userStep);
    if (!path) return -1;
    EXPECT_EQ(*path, view.PathAt(view.CurrentIndex()));
    return view.CurrentIndex();
  }
  int Previous() { return view.PreviousTrack() ? view.CurrentIndex() : -1; }
  int CurrentMarks() const {
    int marks = 0;
    for (int i = 0; i < view.ItemCount(); ++i) marks += (view.FlagsAt(i) & ITEM_CURRENT) ? 1 : 0;
    return marks;
  }
};

// Steps from a current entry: (honour the order, a user's step) -> the
// entry landed on, -1 for none.
TEST_F(TrackOrderTest, PlainRepeatAllAndRepeatOneSteps) {
  struct Step {
    bool honourOrder, userStep;
    int expected;
  };
  const struct {
    const char* name;
    int mode, count, start;
    std::vector<Step> steps;
  } cases[] = {
      {"PlainFromNoEntry", 0, 3, -1, {{true, true, 1}, {true, true, 2}, {true, true, -1}, {true, false, -1}}},
      {"AllWrapsUnlessOrderIsIgnored", kRepeatAll, 3, 2, {{false, true, -1}, {true, false, 0}, {true, false, 1}}},
      {"OneStaysForTheEndOfATrack", kRepeatOne, 3, 1,
       {{true, false, 1}, {true, false, 1}, {true, true, 2}, {true, true, 0}}},
  };
  for (const auto& c : cases) {
    Fill(c.count);
    view.SetRepeatMode(c.mode);
    view.SetCurrentIndex(c.start);
    for (std::size_t i = 0; i < c.steps.size(); ++i) {
      const std::uint32_t stamp = view.NextStamp();
      const int landed = Next(c.steps[i].honourOrder, c.steps[i].userStep);
      EXPECT_EQ(landed, c.steps[i].expected) << c.name << " step " << i;
      // Each step stamps the entry it lands on anew, even the same one again.
      if (landed >= 0) {
        EXPECT_EQ(view.PlayStampAt(landed), stamp) << c.name << " step " << i;
      }
      EXPECT_EQ(view.NextStamp(), stamp + (landed >= 0 ? 1 : 0)) << c.name << " step " << i;
    }
    EXPECT_EQ(CurrentMarks(), 1) << c.name;
  }

  view.SetShuffle(true);  // repeat one wins over shuffle
  EXPECT_EQ(Next(true, false), 0);
  EXPECT_EQ(Next(true, true), 1);

  Fill(1);
  view.SetShuffle(false);
  view.SetRepeatMode(0);
  view.SetCurrentIndex(0);
  view.CurrentPath();
  EXPECT_EQ(Next(true, false), -1);
  EXPECT_TRUE(view.FlagsAt(0) & ITEM_CURRENT) << "the end of the list changes nothing";
}

TEST_F(TrackOrderTest, RepeatSelectedWalksTheSelection) {
  Fill(7);
  view.SetRepeatMode(kRepeatSelected);
  view.SetCurrentIndex(5);
  EXPECT_EQ(Next(true, false), 5) << "nothing selected: the ended entry again";
  view.SetFlags(2, ITEM_SELECTED, true);
  view.SetFlags(5, ITEM_SELECTED, true);
  EXPECT_EQ(view.NextSelected(6), 2) << "the search wraps";
  EXPECT_EQ(Next(true, false), 2);
  EXPECT_EQ(Next(true, true), 5);
  view.SetFlags(2, ITEM_SELECTED, false);
  EXPECT_EQ(Next(true, false), 5) << "the only selected entry plays again";
  EXPECT_EQ(CurrentMarks(), 1);
}

TEST_F(TrackOrderTest, ShuffleDrawsEachEntryOncePerCycleAndNeverEnds) {
  constexpr int kCount = 100000;
  Fill(kCount);
  view.SetShuffle(true);
  std::vector<char> seen(kCount, 0);
  std::vector<int> order;
  for (int i = 0; i < kCount; ++i) {
    const int index = Next(true, false);
    ASSERT_GE(index, 0);
    ASSERT_FALSE(seen[static_cast<std::size_t>(index)]) << "drawn twice in one cycle: " << index;
    seen[static_cast<std::size_t>(index)] = 1;
    order.push_back(index);
  }
  for (int i = 0; i < kCount; ++i) ASSERT_TRUE(view.FlagsAt(i) & ITEM_PLAYED) << i;
  ASSERT_GE(Next(true, false), 0) << "shuffle without repeat starts a new cycle";
  int played = 0;
  for (int i = 0; i < kCount; ++i) played += (view.FlagsAt(i) & ITEM_PLAYED) ? 1 : 0;
  EXPECT_EQ(played, 1);
  EXPECT_EQ(Previous(), order[kCount - 1]);
  EXPECT_EQ(Previous(), order[kCount - 2]);
  const int current = view.CurrentIndex();
  EXPECT_EQ(Next(false, true), current == kCount - 1 ? -1 : current + 1) << "a plain step ignores shuffle";
}

TEST_F(TrackOrderTest, ShuffleFallsBackToTheFirstUnplayedEntry) {
  Fill(4);
  view.SetRandomGenerator(std::make_unique<ScriptedRandom>(std::deque<int>{32767}));
  view.SetShuffle(true);
  view.SetCurrentIndex(0);
  EXPECT_EQ(view.RandomIndex(), 3) << "the top value is kept below the count";
  EXPECT_EQ(Next(true, false), 3);
  EXPECT_EQ(Next(true, false), 0) << "a hundred misses, then the scan from the start";
  EXPECT_EQ(Next(true, false), 1);
  EXPECT_EQ(Next(true, false), 2);
  EXPECT_EQ(Next(true, false), 3) << "a new cycle may begin with the entry that ended the last";

  view.AddEntry("/m/new.mp3");
  view.SetShuffle(false);
  view.SetShuffle(true);
  EXPECT_EQ(view.RandomIndex(), 4);
  EXPECT_EQ(Next(true, false), 4) << "an entry added mid-cycle can be drawn at once";
  EXPECT_EQ(Next(true, false), 0) << "switching shuffle off and on keeps the cycle";

  Fill(1);
  view.SetCurrentIndex(0);
  EXPECT_EQ(Next(true, false), 0);
  EXPECT_EQ(Next(true, false), 0) << "one entry: every draw is that entry";
}

TEST_F(TrackOrderTest, RandomIndexAndReseeding) {
  int seeds = 0;
  int draws = 0;
  Fill(10);
  view.SetRandomGenerator(std::make_unique<ScriptedRandom>(std::deque<int>{0, 16383, 32766}, &seeds, &draws));
  EXPECT_EQ(view.RandomIndex(), 0);
  EXPECT_EQ(view.RandomIndex(), 4);
  EXPECT_EQ(view.RandomIndex(), 9);
  view.SetShuffle(false);
  EXPECT_EQ(seeds, 1);
  EXPECT_EQ(draws, 103) << "each switch draws a hundred values and drops them";

  CrtRandom crt(1);
  EXPECT_EQ(crt.Next(), 41);
  EXPECT_EQ(crt.Next(), 18467);
  view.SetRandomGenerator(std::make_unique<ScriptedRandom>(std::deque<int>{32766}));
  Fill(100000);
  EXPECT_EQ(view.RandomIndex(), 99996) << "a long list times 32767 overflows 32 bits";
}

}  // namespace

namespace {

// The walk back as the list has always done it, one stamp at a time; the
// view does it in one pass. Both must agree on every arrangement of stamps,
// including those left by removed entries and swapped ones.
struct LiteralWalk {
  std::vector<std::uint32_t> stamps;
  std::uint32_t nextStamp;
  int found = -1;

  void Run(bool historyOn) {
    if (!historyOn) return;
    while (nextStamp >= 3) {
      --nextStamp;
      for (auto& stamp : stamps) {
        if (stamp >= nextStamp) stamp = 0;
      }
      for (std::size_t i = 0; i < stamps.size(); ++i) {
        if (stamps[i] == nextStamp - 1) {
          found = static_cast<int>(i);
          return;
        }
      }
    }
  }
};

TEST_F(TrackOrderTest, TheOnePassWalkBackMatchesTheStepByStepWalk) {
  std::mt19937 generator(20240611);
  const auto roll = [&generator](int below) { return static_cast<int>(generator() % static_cast<unsigned>(below)); };
  Fill(12);
  for (int step = 0; step < 5000; ++step) {
    switch (roll(8)) {
      case 0: view.SetRepeatMode(roll(4)); break;
      case 1: view.SwapEntries(roll(view.ItemCount()), roll(view.ItemCount())); break;
      case 2:
        if (view.ItemCount() > 3) view.ReleaseEntriesFrom(view.ItemCount() - 1 - roll(2));
        break;
      case 3: view.AddEntry(Path(roll(100))); break;
      case 4: view.SetShuffle(roll(2) == 1); break;
      case 5: {
        LiteralWalk walk;
        for (int i = 0; i < view.ItemCount(); ++i) walk.stamps.push_back(view.PlayStampAt(i));
        walk.nextStamp = view.NextStamp();
        walk.Run(view.Shuffle() || view.RepeatMode() != 0);
        const int before = std::max(view.CurrentIndex(), 0);
        const auto path = view.PreviousTrack();
        const int expected = walk.found >= 0 ? walk.found : (before >= 1 ? before - 1 : -1);
        ASSERT_EQ(path ? view.CurrentIndex() : -1, expected) << "step " << step;
        ASSERT_EQ(view.NextStamp(), walk.nextStamp) << "step " << step;
        for (int i = 0; i < view.ItemCount(); ++i) ASSERT_EQ(view.PlayStampAt(i), walk.stamps[i]) << i;
        break;
      }
      default: view.NextTrack(roll(4) != 0, roll(2) == 1); break;
    }
    if (view.CurrentIndex() >= view.ItemCount()) view.SetCurrentIndex(view.ItemCount() - 1);
  }
}

}  // namespace
