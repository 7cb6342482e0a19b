// The editing commands: one table of every command's effect, then the sorts
// against the bubble sort as the list always ran it, the moves, the removals
// on real files, randomize and the sort on load.
#include "playlist/playlist_editing.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <random>
#include <sstream>
#include <thread>

#include "platform/text.h"
#include "playlist/file_title.h"
#include "playlist/playlist_dialogs.h"
#include "playlist_fixture.h"

namespace {

using namespace playlist;
using playlist_testing::PlaylistTest;
using playlist_testing::RecordingListWindow;

class EditingTest : public PlaylistTest {
 protected:
  EditingTest() { view.SetCurrentIndex(-1); }  // no entry is marked while a test fills the list

  // Fills the list in the temporary folder from tokens "name[+][@][#N]": +
  // selected, @ current, #N read information with track number N and the
  // title "z" + name. Names starting with x have no file.
  void Fill(const std::string& tokens) {
    std::istringstream words(tokens);
    for (std::string word; words >> word;) {
      const std::string name = word.substr(0, word.find_first_of("+@#"));
      const std::string path = File(name + ".mp3");
      if (name[0] != 'x') Write(name + ".mp3", "");
      ASSERT_TRUE(view.AddEntry(path));
      const int index = view.ItemCount() - 1;
      if (word.find('+') != std::string::npos) view.SetFlags(index, ITEM_SELECTED, true);
      if (word.find('@') != std::string::npos) {
        view.SetFlags(index, ITEM_CURRENT, true);
        view.SetCurrentIndex(index);
      }
      if (const auto hash = word.find('#'); hash != std::string::npos) {
        decoder.Set(path, {"z" + name, 1000, static_cast<std::uint32_t>(std::stoul(word.substr(hash + 1)))});
        ASSERT_TRUE(view.ReadInfoNow(index));
      }
    }
  }
  // The list as tokens "name[+][@][#]", # for read information.
  std::string Describe() const {
    std::string text;
    for (int i = 0; i < view.ItemCount(); ++i) {
      const std::uint32_t flags = view.FlagsAt(i);
      text += (i > 0 ? " " : "") + FileTitle(view.PathAt(i));
      if (flags & ITEM_SELECTED) text += '+';
      if (flags & ITEM_CURRENT) text += '@';
      if (flags & ITEM_HAS_INFO) text += '#';
    }
    return text;
  }
  void AddPaths(const std::vector<std::string>& paths) {
    for (const auto& path : paths) ASSERT_TRUE(view.AddEntry(path));
  }
  void Select(const std::vector<int>& rows) {
    for (int row : rows) view.SetFlags(row, ITEM_SELECTED, true);
  }
  std::vector<int> SelectedRows() const {
    std::vector<int> rows;
    for (int i = 0; i < view.ItemCount(); ++i)
      if (view.FlagsAt(i) & ITEM_SELECTED) rows.push_back(i);
    return rows;
  }
};

// One list with selected (d, b), current (the first a), dead (x), duplicate
// (a) and case-different (A) entries; c, b and A carry read information.
constexpr const char* kBefore = "c#3 d+ a@ x b+#2 a A#1";

struct CommandCase {
  int command;
  const char* after;
  int currentAfter;
  std::vector<bool> invalidations;  // erase flags of the list's redraws
};

TEST_F(EditingTest, EveryCommandHasItsEffectOnAMixedList) {
  const CommandCase cases[] = {
      {kCommandSelectAll, "c+# d+ a+@ x+ b+# a+ A+#", 2, {false}},
      {kCommandSelectNone, "c# d a@ x b# a A#", 2, {false}},
      {kCommandSelectInvert, "c+# d a+@ x+ b# a+ A+#", 2, {false}},
      {kCommandRemoveAll, "", -1, {true}},
      {kCommandClearAll, "", -1, {true}},
      {kCommandRemoveSelected, "c# a@ x a A#", 1, {true}},
      {kCommandCropSelected, "d+ b+#", -1, {true}},
      // The head goes too, duplicate or not; A differs from a.
      {kCommandRemoveDuplicates, "d+ a@ x b+# A#", 1, {true}},
      {kCommandRemoveDead, "c# d+ a@ b+# a A#", 2, {true}},
      {kCommandEraseSelected, "c# a@ x a A#", 1, {true}},
      // Read titles (zc, zb, zA) where there are, file names elsewhere.
      {kCommandSortTitle, "a@ a d+ x A# b+# c#", 0, {true}},
      {kCommandSortFileName, "a@ a A# b+# c# d+ x", 0, {true}},
      {kCommandSortPath, "a@ a A# b+# c# d+ x", 0, {true}},
      // Numbers first; the rest in their old order. The index went with a
      // record that moved left (A), the flag stayed with a.
      {kCommandSortTrackNumber, "A# b+# c# d+ a@ x a", 0, {true}},
      {kCommandReverse, "A# a b+# x a@ d+ c#", 2, {true}},
      {kCommandMoveItems, "c# d+ a@ x b+# a A#", 2, {}},
  };
  for (const CommandCase& row : cases) {
    SCOPED_TRACE(row.command);
    view.ClearAll();
    view.SetCurrentIndex(-1);
    Fill(kBefore);
    RecordingListWindow list;
    view.SetListWindow(&list);
    EXPECT_TRUE(RunEditingCommand(view, row.command));
    view.SetListWindow(nullptr);
    EXPECT_EQ(Describe(), row.after);
    EXPECT_EQ(view.CurrentIndex(), row.currentAfter);
    EXPECT_EQ(list.invalidations, row.invalidations);
    EXPECT_FALSE(view.InfoThreadRunning()) << "no command here starts the reader";
  }
  for (int screenCommand : {kCommandPlayFocused, kCommandAddFiles, kCommandAddUrl, kCommandSavePlaylist,
                            kCommandLoadPlaylist, kCommandSortPopup, kCommandInfo, kCommandRemovePopup, 2}) {
    EXPECT_FALSE(RunEditingCommand(view, screenCommand)) << screenCommand;
  }
}

TEST_F(EditingTest, RemovalsTellTheCountAndKeepTheStorage) {
  Fill("a+ b+@ c+");
  RecordingListWindow list;
  view.SetListWindow(&list);
  RemoveSelected(view);
  EXPECT_EQ(view.ItemCount(), 0);
  EXPECT_EQ(view.CurrentIndex(), -1);
  EXPECT_EQ(view.Capacity(), 100);
  EXPECT_EQ(list.counts, (std::vector<int>{0}));

  Fill("a b@ c");
  CropSelected(view);  // nothing selected: nothing happens at all
  EXPECT_EQ(Describe(), "a b@ c");
  EXPECT_EQ(list.counts.size(), 1u);
  view.SetListWindow(nullptr);
}

TEST_F(EditingTest, RemoveDuplicatesComparesWithRegardToCaseAndLosesTheHead) {
  const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> cases = {
      {{"/m/a.mp3"}, {}},
      {{"/m/a.mp3", "/m/b.mp3", "/m/a.mp3"}, {"/m/b.mp3"}},
      {{"/m/A.MP3", "/m/a.mp3"}, {"/m/a.mp3"}},
      {{"/m/a", "/m/b", "/m/b", "/m/c", "/m/b", "/m/a"}, {"/m/b", "/m/c"}},
      {{}, {}},
  };
  for (const auto& [before, after] : cases) {
    view.ClearAll();
    AddPaths(before);
    RemoveDuplicates(view);
    EXPECT_EQ(Paths(), after);
  }
}

TEST_F(EditingTest, RemoveDeadKeepsFilesAndFoldersAndDropsAddresses) {
  const std::string file = Write("here.mp3", "");
  AddPaths({file, File("gone.mp3"), "http://radio.example/stream", folder.Path(), "ftp://host/x.mp3"});
  view.SetFlags(1, ITEM_CURRENT, true);
  view.SetCurrentIndex(1);
  RemoveDead(view);
  EXPECT_EQ(Paths(), (std::vector<std::string>{file, folder.Path()}));
  EXPECT_EQ(view.CurrentIndex(), -1) << "the current entry was removed";
}

TEST_F(EditingTest, EraseDeletesTheSelectedFilesAndNothingElse) {
  Fill("keep a+ b+");
  EraseSelected(view);
  EXPECT_EQ(Describe(), "keep");
  EXPECT_EQ(::access(File("keep.mp3").c_str(), F_OK), 0);
  EXPECT_NE(::access(File("a.mp3").c_str(), F_OK), 0);
  EXPECT_NE(::access(File("b.mp3").c_str(), F_OK), 0);

  EraseSelected(view);  // nothing selected
  EXPECT_EQ(Describe(), "keep");
  EXPECT_EQ(::access(File("keep.mp3").c_str(), F_OK), 0);
}

// The comparisons of the sorts, as the list always made them.
int CompareIgnoringCase(const std::string& a, const std::string& b) {
  std::string x = a, y = b;
  for (char& c : x) c = platform::AsciiLower(c);
  for (char& c : y) c = platform::AsciiLower(c);
  return x < y ? -1 : x > y ? 1 : 0;
}
bool Numbered(std::uint32_t number) { return number != 0 && number != NO_TRACK_NUMBER; }

struct Entry {
  std::string path, title;
  std::uint32_t flags = 0, number = 0;
  bool operator==(const Entry&) const = default;
};

std::string SortTitle(const Entry& e) { return (e.flags & ITEM_HAS_INFO) ? e.title : FileTitle(e.path); }

bool SortsBehind(SortKey key, const Entry& left, const Entry& right) {
  switch (key) {
    case SortKey::kTitle: return CompareIgnoringCase(SortTitle(left), SortTitle(right)) > 0;
    case SortKey::kFileName: return CompareIgnoringCase(FileTitle(left.path), FileTitle(right.path)) > 0;
    case SortKey::kPath: return CompareIgnoringCase(left.path, right.path) > 0;
    case SortKey::kTrackNumber:
      return Numbered(right.number) && (!Numbered(left.number) || left.number > right.number);
  }
  return false;
}

std::string Folder(const std::string& path) {
  const auto slash = path.rfind('/');
  return slash == std::string::npos || slash == 0 ? "/" : path.substr(0, slash);
}

bool LoadedSortsBehind(bool byTrackNumber, const Entry& left, const Entry& right) {
  if (const int folders = CompareIgnoringCase(Folder(left.path), Folder(right.path)); folders != 0)
    return folders > 0;
  if (byTrackNumber && Numbered(left.number) && Numbered(right.number)) return left.number > right.number;
  return CompareIgnoringCase(FileTitle(left.path), FileTitle(right.path)) > 0;
}

// The bubble sort of entries first..last with the current index's two tests.
template <typename Behind>
int BubbleSort(std::vector<Entry>& list, int first, int last, int current, Behind sortsBehind) {
  const int count = last - first + 1;
  for (int pass = 0; pass <= count - 2; ++pass) {
    for (int j = first; j <= last - pass - 1; ++j) {
      if (!sortsBehind(list[j], list[j + 1])) continue;
      std::swap(list[j], list[j + 1]);
      if (current == j) current = j + 1;
      if (current == j + 1) current = j;
    }
  }
  return current;
}

class SortAgainstBubbleTest : public EditingTest {
 protected:
  // A random list: few folders and names, so that many keys tie; some entries
  // read, with titles and numbers, some with none.
  void FillRandomly(std::mt19937& random, int count, int numbering) {
    static const char* const kFolders[] = {"/m/", "/M/", "/n/", "", "/"};
    static const char* const kNames[] = {"a", "A", "b", "ab", "abc"};
    static const char* const kExtensions[] = {".mp3", ""};
    static const char* const kTitles[] = {"x", "X", "y", ""};
    static const std::uint32_t kNumbers[] = {0, NO_TRACK_NUMBER, 1, 2, 3};
    for (int i = 0; i < count; ++i) {
      const std::string path =
          std::string(kFolders[random() % 5]) + kNames[random() % 5] + kExtensions[random() % 2];
      ASSERT_TRUE(view.AddEntry(path));
      const std::uint32_t number = numbering == 0 ? kNumbers[random() % 5]
                                   : numbering == 1 ? kNumbers[2 + random() % 3]
                                                    : 0;
      if (random() % 3 != 0) {
        decoder.Set(path, {kTitles[random() % 4], 1000, number});
        view.ReadInfoNow(i);
      }
      if (random() % 4 == 0) view.SetFlags(i, ITEM_SELECTED, true);
    }
    const int current = static_cast<int>(random() % static_cast<unsigned>(count + 2)) - 1;
    view.SetCurrentIndex(current);
    if (current >= 0 && current < count) view.SetFlags(current, ITEM_CURRENT, true);
  }
  std::vector<Entry> Snapshot() const {
    std::vector<Entry> list;
    for (int i = 0; i < view.ItemCount(); ++i)
      list.push_back({view.PathAt(i), view.TitleAt(i), view.FlagsAt(i), view.TrackNumberAt(i)});
    return list;
  }
};

TEST_F(SortAgainstBubbleTest, EachSortKeyGivesTheBubbleSortsOrderAndCurrentIndex) {
  std::mt19937 random(7);
  for (int round = 0; round < 1500; ++round) {
    const auto key = static_cast<SortKey>(1 + round % 4);
    view.ClearAll();
    FillRandomly(random, 1 + static_cast<int>(random() % 12), static_cast<int>(random() % 3));
    std::vector<Entry> expected = Snapshot();
    const int count = static_cast<int>(expected.size());
    const int current = BubbleSort(expected, 0, count - 1, view.CurrentIndex(),
                                   [key](const Entry& l, const Entry& r) { return SortsBehind(key, l, r); });
    SortBy(view, key);
    ASSERT_EQ(Snapshot(), expected) << "round " << round;
    ASSERT_EQ(view.CurrentIndex(), current) << "round " << round;
  }
}

TEST_F(SortAgainstBubbleTest, TheSortOnLoadGivesTheBubbleSortsOrderOnItsRange) {
  std::mt19937 random(11);
  for (int round = 0; round < 1500; ++round) {
    view.ClearAll();
    const int count = 1 + static_cast<int>(random() % 12);
    FillRandomly(random, count, static_cast<int>(random() % 3));
    const bool byTrackNumber = random() % 2 == 0;
    view.Settings().sortByTrackNumber = byTrackNumber ? 1 : 0;
    // Everything that SortLoaded would read is read beforehand.
    for (int i = 0; i < count; ++i)
      if (!(view.FlagsAt(i) & ITEM_HAS_INFO) && byTrackNumber) view.ReadInfoNow(i);
    const int first = static_cast<int>(random() % static_cast<unsigned>(count + 1)) - 1;
    const int last = first + static_cast<int>(random() % static_cast<unsigned>(count + 1));
    std::vector<Entry> expected = Snapshot();
    const int from = std::max(first, 0), to = std::min(last, count - 1);
    int current = view.CurrentIndex();
    if (from < to) {
      current = BubbleSort(expected, from, to, current, [byTrackNumber](const Entry& l, const Entry& r) {
        return LoadedSortsBehind(byTrackNumber, l, r);
      });
    }
    SortLoaded(view, first, last);
    ASSERT_EQ(Snapshot(), expected) << "round " << round;
    ASSERT_EQ(view.CurrentIndex(), current) << "round " << round;
  }
}

TEST_F(EditingTest, SortsKeepTiesInOrderAndSinkEntriesWithoutNumbers) {
  // File names without regard to case; equal ones keep their order. A name
  // without an extension loses its last character: "abc" sorts as "ab".
  AddPaths({"/m/B.mp3", "/m/a.mp3", "/m/b.mp3", "/m/A.mp3", "/m/abb.mp3", "/m/abc"});
  SortBy(view, SortKey::kFileName);
  EXPECT_EQ(Paths(), (std::vector<std::string>{"/m/a.mp3", "/m/A.mp3", "/m/abc", "/m/abb.mp3", "/m/B.mp3",
                                               "/m/b.mp3"}));
  SortBy(view, SortKey::kPath);
  EXPECT_EQ(Paths()[2], "/m/abb.mp3") << "the full path has no such cut";

  view.ClearAll();
  AddPaths({"/m/three.mp3", "/m/none.mp3", "/m/one.mp3", "/m/zero.mp3", "/m/tag.mp3", "/m/one-too.mp3"});
  decoder.Set("/m/three.mp3", {"", 1, 3});
  decoder.Set("/m/one.mp3", {"", 1, 1});
  decoder.Set("/m/zero.mp3", {"", 1, 0});
  decoder.Set("/m/tag.mp3", {"", 1, NO_TRACK_NUMBER});
  decoder.Set("/m/one-too.mp3", {"", 1, 1});
  for (int i = 0; i < view.ItemCount(); ++i) view.ReadInfoNow(i);
  SortBy(view, SortKey::kTrackNumber);
  EXPECT_EQ(Paths(), (std::vector<std::string>{"/m/one.mp3", "/m/one-too.mp3", "/m/three.mp3", "/m/none.mp3",
                                               "/m/zero.mp3", "/m/tag.mp3"}));

  view.ClearAll();
  AddPaths({"/m/only.mp3"});
  view.SetFlags(0, ITEM_CURRENT, true);
  view.SetCurrentIndex(0);
  SortBy(view, SortKey::kTitle);
  EXPECT_EQ(Describe(), "only@");
  EXPECT_EQ(view.CurrentIndex(), 0);
}

// The classic generator, deaf to reseeding, counting its draws.
class FixedRandom : public RandomGenerator {
 public:
  explicit FixedRandom(std::uint32_t seed, int* draws) : inner(seed), drawCount(draws) {}
  void Seed(std::uint32_t) override {}
  int Next() override {
    ++*drawCount;
    return inner.Next();
  }

 private:
  CrtRandom inner;
  int* drawCount;
};

std::vector<std::string> Sorted(std::vector<std::string> paths) {
  std::sort(paths.begin(), paths.end());
  return paths;
}

TEST_F(EditingTest, RandomizeShufflesWithTheListsGeneratorAndKeepsEveryEntry) {
  int draws = 0;
  for (int i = 0; i < 6; ++i) view.AddEntry("/m/" + std::to_string(i) + ".mp3");
  view.SetFlags(4, ITEM_CURRENT, true);
  view.SetCurrentIndex(4);
  const std::vector<std::string> before = Paths();
  view.SetRandomGenerator(std::make_unique<FixedRandom>(3, &draws));
  RandomizeList(view);
  EXPECT_EQ(draws, 10 + 2 * 6 * 6) << "ten dropped, then two per swap, count squared swaps";
  EXPECT_EQ(Sorted(Paths()), before);
  EXPECT_NE(Paths(), before);
  EXPECT_EQ(view.CurrentIndex(), 4);

  // The final swaps undo any single exchange: two entries never change places.
  for (std::uint32_t seed = 1; seed <= 20; ++seed) {
    view.ClearAll();
    AddPaths({"/m/first.mp3", "/m/second.mp3"});
    view.SetRandomGenerator(std::make_unique<FixedRandom>(seed, &draws));
    RandomizeList(view);
    EXPECT_EQ(Paths(), (std::vector<std::string>{"/m/first.mp3", "/m/second.mp3"}));
  }
}

TEST_F(EditingTest, RandomizeOfALongListReachesEveryPlace) {
  constexpr int kCount = 40000;  // beyond what RandomIndex's 32768 values can reach
  for (int i = 0; i < kCount; ++i) view.AddEntry("/m/" + std::to_string(i));
  const std::vector<std::string> before = Paths();
  int draws = 0;
  view.SetRandomGenerator(std::make_unique<FixedRandom>(5, &draws));
  RandomizeList(view);
  const std::vector<std::string> after = Paths();
  EXPECT_EQ(Sorted(after), Sorted(before));
  int stayed = 0;
  for (int i = 0; i < kCount; ++i) stayed += after[i] == before[i] ? 1 : 0;
  EXPECT_LT(stayed, 10) << "a uniform shuffle leaves about one entry in place";
  EXPECT_LT(draws, 10 + 4 * kCount) << "linear in the entries";
}

TEST_F(EditingTest, MovingTheSelectionStopsAtTheEdgesAndKeepsTheOrder) {
  struct MoveCase {
    std::vector<int> selected;
    int distance;
    int moved;
    std::vector<int> selectedAfter;
  };
  const MoveCase cases[] = {
      {{2, 5}, -8, -2, {0, 3}},  // up a page of 8: cut to 2
      {{2, 5}, -1, -1, {1, 4}},
      {{2, 5}, 8, 4, {6, 9}},  // down: the last row (9) cuts it
      {{0, 3}, -1, 0, {0, 3}},
      {{2, 5}, 0, 0, {2, 5}},
      {{}, 3, 0, {}},
      {{9}, -100, -9, {0}},
  };
  for (const MoveCase& move : cases) {
    view.ClearAll();
    for (int i = 0; i < 10; ++i) view.AddEntry("/m/" + std::to_string(i));
    Select(move.selected);
    RecordingListWindow list;
    view.SetListWindow(&list);
    EXPECT_EQ(MoveSelected(view, move.distance), move.moved);
    view.SetListWindow(nullptr);
    EXPECT_EQ(SelectedRows(), move.selectedAfter);
    std::vector<std::string> others;
    for (int i = 0; i < 10; ++i)
      if (!(view.FlagsAt(i) & ITEM_SELECTED)) others.push_back(view.PathAt(i));
    EXPECT_TRUE(std::is_sorted(others.begin(), others.end())) << "the rest keep their order";
    EXPECT_EQ(list.invalidations, move.moved != 0 ? std::vector<bool>{false} : std::vector<bool>{});
  }
  // The current entry moves with the block; the index follows its mark.
  view.ClearAll();
  Fill("a b c+@ d+");
  EXPECT_EQ(MoveSelected(view, -2), -2);
  EXPECT_EQ(Describe(), "c+@ d+ a b");
  EXPECT_EQ(view.CurrentIndex(), 0);
}

TEST_F(EditingTest, MoveModeSelectsTheFocusRowOnlyWhenNothingIsSelected) {
  EXPECT_FALSE(ToggleMoveMode(view)) << "an empty list";
  view.SetMoveMode(true);
  EXPECT_FALSE(ToggleMoveMode(view));
  EXPECT_FALSE(view.MoveMode());

  Fill("a b c");
  view.SetFocusIndex(1);
  RecordingListWindow list;
  view.SetListWindow(&list);
  EXPECT_TRUE(ToggleMoveMode(view));
  EXPECT_EQ(SelectedRows(), std::vector<int>{1});
  EXPECT_FALSE(ToggleMoveMode(view));
  EXPECT_EQ(SelectedRows(), std::vector<int>{1}) << "leaving keeps the selection";
  view.SetFocusIndex(2);
  EXPECT_TRUE(ToggleMoveMode(view));
  EXPECT_EQ(SelectedRows(), std::vector<int>{1}) << "a selection exists: the focus isn't added";
  EXPECT_EQ(list.redrawnRows, (std::vector<int>{1, 1, 2}));
  view.SetListWindow(nullptr);
}

TEST_F(EditingTest, ReadInfoAgainForgetsTheSelectedEntriesAndRestartsTheReader) {
  Fill("a#1 b#2 c#3");
  for (const char* name : {"a", "b", "c"}) decoder.Set(File(std::string(name) + ".mp3"), {"new", 2000, 9});
  Select({0, 2});
  const int readsBefore = decoder.Reads();
  ReadInfoAgain(view);
  ASSERT_TRUE(decoder.WaitForFinishedReads(readsBefore + 2));
  for (int waited = 0; view.InfoThreadRunning() && waited < 10000; ++waited)
    std::this_thread::sleep_for(std::chrono::milliseconds(1));
  EXPECT_EQ(decoder.Reads(), readsBefore + 2) << "the others kept their information";
  EXPECT_EQ(view.TitleAt(0), "new");
  EXPECT_EQ(view.TitleAt(1), "zb");
  EXPECT_EQ(view.TitleAt(2), "new");
  EXPECT_EQ(view.TrackNumberAt(2), 9u);
}

TEST_F(EditingTest, SortOnLoadGroupsFoldersAndOrdersTracksByNumber) {
  AddPaths({"/m/Zed/2.mp3", "/m/alpha/b.mp3", "/m/zed/song.mp3", "/m/alpha/a.mp3", "top.mp3", "/m/zed/intro.mp3"});
  decoder.Set("/m/zed/song.mp3", {"", 1000, 1});
  decoder.Set("/m/Zed/2.mp3", {"", 1000, 5});
  decoder.Set("/m/zed/intro.mp3", {"", 1000, 2});
  SortLoaded(view, 0, 5);
  EXPECT_EQ(Paths(), (std::vector<std::string>{"top.mp3", "/m/alpha/a.mp3", "/m/alpha/b.mp3", "/m/Zed/2.mp3",
                                               "/m/zed/intro.mp3", "/m/zed/song.mp3"}))
      << "\"/\" for a name without a folder; Zed and zed are one folder; file titles within";
  EXPECT_EQ(decoder.Reads(), 0) << "nothing is read without the track number option";

  view.Settings().sortByTrackNumber = 1;
  SortLoaded(view, 1, 5);
  EXPECT_EQ(decoder.Reads(), 5) << "read on this thread: every entry of the range lacked its information";
  EXPECT_EQ(Paths(), (std::vector<std::string>{"top.mp3", "/m/alpha/a.mp3", "/m/alpha/b.mp3",
                                               "/m/zed/song.mp3", "/m/zed/intro.mp3", "/m/Zed/2.mp3"}));
  EXPECT_FALSE(view.InfoThreadRunning());

  const std::vector<std::string> sorted = Paths();
  view.Settings().sortOnLoad = 0;
  ReverseList(view);
  SortLoaded(view, 0, 5);
  EXPECT_NE(Paths(), sorted) << "the option is off";
}

// The picker delivers its paths in the order it found them.
class UnsortedPicker : public PlaylistDialogs {
 public:
  int RunPicker(PickerMode, bool, PlaylistView& list) override {
    for (const char* path : {"/m/c.mp3", "/m/a.mp3", "/m/b.mp3"}) PlaylistView::AddEntry(path, &list);
    return 1;
  }
  void ScanFolder(const std::string&, PlaylistView& list) override { RunPicker(PickerMode::kFolder, false, list); }
  std::optional<std::string> EditText(int, const std::string&) override { return std::nullopt; }
  std::optional<std::string> AskSavePath() override { return std::nullopt; }
};

TEST_F(EditingTest, AFillSortsItsNewEntriesThroughTheInstalledSorter) {
  UnsortedPicker picker;
  view.SetDialogs(&picker);
  view.SetLoadSorter(&SortLoaded);
  view.AddEntry("/z/old.mp3");
  view.AddFiles();
  EXPECT_EQ(Paths(), (std::vector<std::string>{"/z/old.mp3", "/m/a.mp3", "/m/b.mp3", "/m/c.mp3"}))
      << "only the new range is sorted";
  view.Settings().sortOnLoad = 0;
  view.LoadFolderContents("/m");
  EXPECT_EQ(view.PathAt(4), "/m/c.mp3");
  view.StopInfoThread();
  view.SetDialogs(nullptr);
}

}  // namespace
