// The info reader: what it fills in, and how changes of the list stop it.
// These tests also run under ThreadSanitizer.
#include <gtest/gtest.h>

#include <chrono>
#include <thread>

#include "platform/event.h"
#include "playlist/playlist_files.h"
#include "playlist_fixture.h"

namespace {

using namespace playlist;
using playlist_testing::FakeDecoder;
using playlist_testing::PlaylistTest;
using playlist_testing::RecordingListWindow;

// A decoder whose read of one path waits until the test opens the gate.
class GatedDecoder : public FakeDecoder {
 public:
  std::string gatedPath;
  platform::Event entered;
  platform::Event gate;

 protected:
  void BeforeRead(const std::string& path) override {
    if (path != gatedPath) return;
    entered.Set();
    gate.Wait(20000);
  }
};

std::string Entry(int i) { return "/m/" + std::to_string(i) + ".mp3"; }

void WaitUntilIdle(PlaylistView& view) {
  while (view.InfoThreadRunning()) platform::SleepMs(1);
}

class InfoReaderTest : public PlaylistTest {
 protected:
  InfoReaderTest() { FillFormats(gatedFormats, &gated); }
  GatedDecoder gated;
  playback::FormatRegistry gatedFormats;
};

TEST_F(InfoReaderTest, FillsTitlesDurationsAndTrackNumbersAndTellsTheList) {
  RecordingListWindow list;
  view.SetListWindow(&list);
  decoder.Set(Entry(0), {"Artist - One", 61000, 1});
  decoder.Set(Entry(2), {std::string(600, 'l'), 1000, playlist::NO_TRACK_NUMBER});
  decoder.Set(Entry(3), {"Not read again", 5000, 4});
  for (int i = 0; i < 4; ++i) view.AddEntry(Entry(i));
  view.SetTitle(3, "From the list file");
  view.SetDuration(3, 9000);
  view.StartInfoThread();
  WaitUntilIdle(view);

  EXPECT_EQ(view.TitleAt(0), "Artist - One");
  EXPECT_EQ(view.DurationAt(0), 61000u);
  EXPECT_EQ(view.TrackNumberAt(0), 1u);
  EXPECT_TRUE(view.FlagsAt(0) & ITEM_HAS_INFO);
  EXPECT_FALSE(view.FlagsAt(1) & ITEM_HAS_INFO) << "a file that can't be read stays as it is";
  EXPECT_EQ(view.TitleAt(2).size(), PlaylistView::kReaderTitleUnits);
  EXPECT_EQ(view.TitleAt(3), "From the list file") << "an entry with a title and a length isn't read";
  EXPECT_EQ(decoder.Reads(), 3);
  EXPECT_EQ(list.RowsRead(), (std::vector<int>{0, 2}));
  EXPECT_EQ(list.readingDone.load(), 1);
  view.SetListWindow(nullptr);

  decoder.Set(Entry(1), {"Later", 2000, 0});
  view.StartInfoThread();
  WaitUntilIdle(view);
  EXPECT_EQ(view.TitleAt(1), "Later") << "a failed entry is tried again by the next reader";
  EXPECT_EQ(decoder.Reads(), 4);
}

TEST_F(InfoReaderTest, TitledEntriesWithoutALengthAreReadAndTheTagWins) {
  decoder.Set(Entry(0), {"Tag title", 3000, 2});
  view.AddEntry(Entry(0));
  view.SetTitle(0, "pls title");
  view.StartInfoThread();
  WaitUntilIdle(view);
  EXPECT_EQ(view.TitleAt(0), "Tag title");
  view.ForgetInfo(0);
  EXPECT_EQ(view.DurationAt(0), kDurationReadAgain);
  EXPECT_FALSE(view.FlagsAt(0) & ITEM_HAS_INFO);
  view.StartInfoThread();
  WaitUntilIdle(view);
  EXPECT_EQ(view.DurationAt(0), 3000u);
}

TEST_F(InfoReaderTest, AnAdditionStopsTheReaderWithinOneReadAndTheNextReaderStartsOver) {
  PlaylistView gatedView(gatedFormats);
  for (int i = 0; i < 1000; ++i) {
    gated.Set(Entry(i), {"Title " + std::to_string(i), 1000u + static_cast<std::uint32_t>(i), 0});
    gatedView.AddEntry(Entry(i));
  }
  gated.gatedPath = Entry(2);
  gatedView.StartInfoThread();
  ASSERT_TRUE(gated.entered.Wait(10000));

  std::thread opener([this] {
    platform::SleepMs(50);
    gated.gate.Set();
  });
  gatedView.AddEntry(Entry(1000));  // waits for the read of entry 2 to end
  opener.join();
  EXPECT_FALSE(gatedView.InfoThreadRunning());
  EXPECT_EQ(gated.Reads(), 3);
  EXPECT_TRUE(gatedView.FlagsAt(1) & ITEM_HAS_INFO);
  EXPECT_FALSE(gatedView.FlagsAt(2) & ITEM_HAS_INFO) << "a read that the stop overtook isn't stored";

  gated.Set(Entry(1000), {"Added", 5, 0});
  gatedView.StartInfoThread();
  WaitUntilIdle(gatedView);
  EXPECT_EQ(gated.Reads(), 3 + 999) << "entries 0 and 1 were skipped, the rest read";
  for (int i = 0; i <= 1000; ++i) ASSERT_TRUE(gatedView.FlagsAt(i) & ITEM_HAS_INFO) << i;
}

TEST_F(InfoReaderTest, AReaderStuckInAReadIsLeftBehindAndTouchesNothing) {
  auto gatedView = std::make_unique<PlaylistView>(gatedFormats);
  gated.gatedPath = Entry(0);
  gated.Set(Entry(0), {"Stale", 1, 0});
  gatedView->AddEntry(Entry(0));
  gatedView->StartInfoThread();
  ASSERT_TRUE(gated.entered.Wait(10000));

  const auto start = std::chrono::steady_clock::now();
  gatedView->ClearAll();  // gives up after the wait and goes on
  EXPECT_GE(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(PlaylistView::kStopWaitMs - 100));
  EXPECT_EQ(gated.FinishedReads(), 0) << "the read was still going on";
  gatedView->AddEntry(Entry(0));  // a new record where the old one stood
  gated.gate.Set();
  ASSERT_TRUE(gated.WaitForFinishedReads(1));
  platform::SleepMs(50);  // time for the stale reader to find its stop flag
  EXPECT_FALSE(gatedView->FlagsAt(0) & ITEM_HAS_INFO);
  EXPECT_EQ(gatedView->TitleAt(0), "");

  // The same, with the list destroyed while the old reader still waits.
  for (platform::Event* event : {&gated.entered, &gated.gate}) event->Reset();
  gatedView->StartInfoThread();
  ASSERT_TRUE(gated.entered.Wait(10000));
  gatedView.reset();
  gated.gate.Set();
  ASSERT_TRUE(gated.WaitForFinishedReads(2));  // before the decoder is destroyed
}

// Changes of every kind while readers run; ThreadSanitizer checks the sharing.
TEST_F(InfoReaderTest, ShapeChangesWhileReadersRun) {
  RecordingListWindow list;
  for (int i = 0; i < 300; ++i) decoder.Set(Entry(i), {"T" + std::to_string(i), 1000, 1});
  for (int round = 0; round < 30; ++round) {
    view.SetListWindow(round % 2 == 0 ? &list : nullptr);
    for (int i = 0; i < 10; ++i) view.AddEntry(Entry(view.ItemCount() % 300));
    view.StartInfoThread();
    view.SetCurrentIndex(round % view.ItemCount());
    (void)view.CurrentTitle();
    (void)view.CurrentPath();
    view.SetShuffle(round % 3 == 0);
    view.NextTrack(true, false);
    view.SetFlags(round % view.ItemCount(), ITEM_SELECTED, true);
    (void)FormatM3u(view);
    if (round % 5 == 4) view.SwapEntries(0, view.ItemCount() - 1);
    if (round % 7 == 6) view.ReleaseEntriesFrom(view.ItemCount() / 2);
    view.StartInfoThread();
  }
  view.SetListWindow(nullptr);
  view.StartInfoThread();
  WaitUntilIdle(view);
  for (int i = 0; i < view.ItemCount(); ++i) {
    EXPECT_TRUE(view.FlagsAt(i) & ITEM_HAS_INFO) << i;
    EXPECT_EQ(view.TitleAt(i), "T" + view.PathAt(i).substr(3, view.PathAt(i).size() - 7)) << i;
  }
}

}  // namespace
