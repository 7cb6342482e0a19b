// The model: storage, the current entry, the ways entries come in.
#include "playlist/playlist_view.h"

#include <gtest/gtest.h>

#include <climits>

#include "platform/event.h"
#include "platform/message_queue.h"
#include "playlist/file_title.h"
#include "playlist/playlist_dialogs.h"
#include "playlist_fixture.h"

namespace {

using namespace playlist;
using playlist_testing::PlaylistTest;
using playlist_testing::RecordingListWindow;

class ModelTest : public PlaylistTest {};

TEST_F(ModelTest, StorageKeepsDuplicatesAndRefusesWhatCantBeHeld) {
  for (int i = 0; i < 150; ++i) ASSERT_TRUE(view.AddEntry("/m/" + std::to_string(i % 100) + ".mp3"));
  EXPECT_EQ(view.PathAt(100), view.PathAt(0)) << "no check for duplicates";
  EXPECT_EQ(view.PathAt(57), "/m/57.mp3") << "growing moved nothing out of place";
  EXPECT_FALSE(view.AddEntry("")) << "an empty path is no entry";
  EXPECT_FALSE(view.GrowItems(INT_MAX));
  EXPECT_EQ(view.ItemCount(), 150);

  view.ClearAll();
  EXPECT_EQ(view.Capacity(), 0);
  EXPECT_EQ(view.ItemCount(), 0);
  EXPECT_EQ(view.CurrentPath(), std::nullopt);
  EXPECT_EQ(view.CurrentTitle(), std::nullopt);
  EXPECT_EQ(view.NextTrack(true, true), std::nullopt);
  EXPECT_EQ(view.PreviousTrack(), std::nullopt);
}

TEST_F(ModelTest, CurrentPathRepairsTheIndexAndMarksTheEntry) {
  RecordingListWindow list;
  view.SetListWindow(&list);
  view.AddEntry("/m/a.mp3");
  view.AddEntry("/m/b.mp3");
  view.SetCurrentIndex(5);
  EXPECT_EQ(view.CurrentTitle(), std::nullopt) << "an index out of range has no title";
  EXPECT_EQ(view.CurrentPath(), "/m/a.mp3");
  EXPECT_EQ(view.CurrentIndex(), 0);
  EXPECT_TRUE(view.FlagsAt(0) & ITEM_CURRENT);
  EXPECT_EQ(list.redrawnRows, (std::vector<int>{0, 0}));
  view.SetCurrentIndex(1);
  EXPECT_EQ(view.CurrentPath(), "/m/b.mp3");
  EXPECT_TRUE(view.FlagsAt(1) & ITEM_CURRENT);
  view.SetListWindow(nullptr);
}

TEST_F(ModelTest, CurrentTitleIsTheReadTitleElseTheShortName) {
  view.AddEntry("/m/Artist - Song.mp3");
  view.AddEntry("/m/abc");
  view.AddEntry("/m/" + std::string(400, 'n') + ".mp3");
  view.SetCurrentIndex(0);
  EXPECT_EQ(view.CurrentTitle(), "Artist - Song");
  view.SetTitle(0, "From the tag");
  EXPECT_EQ(view.CurrentTitle(), "From the tag");
  view.SetCurrentIndex(1);
  EXPECT_EQ(view.CurrentTitle(), "ab");
  view.SetCurrentIndex(2);
  EXPECT_EQ(view.CurrentTitle()->size(), PlaylistView::kShortTitleUnits);
}

TEST(FileTitleTest, ShortNamesAsTheListHasAlwaysShownThem) {
  EXPECT_EQ(FileTitle("/music/Band - Song.mp3"), "Band - Song");
  EXPECT_EQ(FileTitle("abc"), "ab") << "no extension: the last character goes";
  EXPECT_EQ(FileTitle("/a.b/abc"), "ab") << "the only dot stands in a folder name";
  EXPECT_EQ(FileTitle("/music/.hidden"), ".hidde");
  EXPECT_EQ(FileTitle("/music/caf\xC3\xA9"), "caf") << "a whole character is cut, never half of one";
  EXPECT_EQ(FileTitle("song.tar.mp3"), "song.tar");
  EXPECT_EQ(FileTitle(".mp3"), ".mp");
  EXPECT_EQ(FileTitle("/music/"), "");
  EXPECT_EQ(FileTitle(""), "");
  EXPECT_EQ(FileTitle("x"), "");
  EXPECT_EQ(FileTitle("HTTP://radio.example/live.mp3"), "HTTP://radio.example/live.mp3");
}

TEST_F(ModelTest, PlayPathFindsOrAddsAndPostsPlayThenSeek) {
  platform::MessageQueue mainWindow;
  view.SetMainWindow(&mainWindow);
  view.AddEntry("/m/A.mp3");
  view.AddEntry("/m/b.mp3");
  view.SetCurrentIndex(1);
  view.CurrentPath();

  view.PlayPath("/M/a.MP3", 42, false);
  EXPECT_EQ(view.ItemCount(), 2) << "found without regard to case, not added";
  EXPECT_EQ(view.CurrentIndex(), 0);
  EXPECT_TRUE(view.FlagsAt(0) & ITEM_CURRENT);
  EXPECT_FALSE(view.FlagsAt(1) & ITEM_CURRENT);
  platform::Message message;
  ASSERT_TRUE(mainWindow.TakeNext(message));
  EXPECT_EQ(message.id, kMessagePlay);
  EXPECT_EQ(message.wParam, 1u);
  ASSERT_TRUE(mainWindow.TakeNext(message));
  EXPECT_EQ(message.id, kMessageSeek);
  EXPECT_EQ(message.wParam, 42000u);

  view.PlayPath("/m/A.mp3", 0, true);
  EXPECT_EQ(view.ItemCount(), 3) << "enqueue only adds even what is there";
  EXPECT_EQ(view.CurrentIndex(), 0);
  EXPECT_EQ(mainWindow.PendingCount(), 0u);

  view.PlayPath("/m/new.mp3", 7, false);
  EXPECT_EQ(view.CurrentIndex(), 3);
  EXPECT_FALSE(view.FlagsAt(0) & ITEM_CURRENT);
  EXPECT_TRUE(view.FlagsAt(3) & ITEM_CURRENT);
  EXPECT_EQ(mainWindow.PendingIds(), (std::vector<std::uint32_t>{kMessagePlay, kMessageSeek}));
  view.StopInfoThread();
}

TEST_F(ModelTest, ThePickerCallbackClearsOnNullAndStartsTheReaderAtTheEndOfABatch) {
  decoder.Set("/m/a.mp3", {"Read", 1000, 1});
  view.AddEntry("/m/old.mp3");
  EXPECT_EQ(PlaylistView::AddEntry("/m/x.mp3", nullptr), 0);
  EXPECT_EQ(PlaylistView::AddEntry(nullptr, &view), 1);
  EXPECT_EQ(view.ItemCount(), 0);
  EXPECT_EQ(PlaylistView::AddEntry("/m/a.mp3", &view), 1);
  EXPECT_FALSE(view.InfoThreadRunning()) << "adding alone doesn't start the reader";
  EXPECT_EQ(PlaylistView::AddEntry(PlaylistView::kEndOfBatch, &view), 1);
  while (view.InfoThreadRunning()) platform::SleepMs(1);
  EXPECT_EQ(view.TitleAt(0), "Read");
}

TEST_F(ModelTest, SwappingMovesEverythingARecordHolds) {
  view.AddEntry("/m/a.mp3");
  view.AddEntry("/m/b.mp3");
  view.SetTitle(0, "A");
  view.SetDuration(0, 3000);
  view.SetFlags(0, ITEM_SELECTED, true);
  view.SetRepeatMode(kRepeatAll);
  view.SetCurrentIndex(1);
  view.NextTrack(true, false);  // stamps entry 0
  view.SwapEntries(0, 1);
  EXPECT_EQ(view.PathAt(1), "/m/a.mp3");
  EXPECT_EQ(view.TitleAt(1), "A");
  EXPECT_EQ(view.DurationAt(1), 3000u);
  EXPECT_EQ(view.FlagsAt(1), ITEM_SELECTED | ITEM_HAS_INFO | ITEM_CURRENT);
  EXPECT_EQ(view.PlayStampAt(1), 1u);
  EXPECT_EQ(view.FlagsAt(0), 0u);
  view.ResyncCurrent();
  EXPECT_EQ(view.CurrentIndex(), 1);
  view.ReleaseEntriesFrom(1);
  EXPECT_EQ(view.ItemCount(), 1);
  view.ResyncCurrent();
  EXPECT_EQ(view.CurrentIndex(), -1);
  EXPECT_EQ(view.Capacity(), 100) << "releasing keeps the storage";
}

// Dialogs that hand over fixed answers.
class ScriptedDialogs : public PlaylistDialogs {
 public:
  int RunPicker(PickerMode, bool replace, PlaylistView& list) override {
    if (replace) PlaylistView::AddEntry(nullptr, &list);
    for (const std::string& path : chosen) PlaylistView::AddEntry(path.c_str(), &list);
    return result;
  }
  void ScanFolder(const std::string& folder, PlaylistView& list) override {
    for (const std::string& path : chosen) PlaylistView::AddEntry((folder + path).c_str(), &list);
  }
  std::optional<std::string> EditText(int captionTextId, const std::string& preset) override {
    asked = std::to_string(captionTextId) + " " + preset;
    return typed;
  }
  std::optional<std::string> AskSavePath() override { return savePath; }

  std::vector<std::string> chosen;
  int result = 1;
  std::string asked;
  std::optional<std::string> typed;
  std::optional<std::string> savePath;
};

TEST_F(ModelTest, FillsSortTheirNewRangeAndSetTheCurrentEntryAsEachRequires) {
  ScriptedDialogs dialogs;
  std::vector<std::pair<int, int>> sorted;
  view.SetDialogs(&dialogs);
  view.SetLoadSorter([&sorted](PlaylistView&, int first, int last) { sorted.emplace_back(first, last); });
  view.AddEntry("/m/old.mp3");

  dialogs.chosen = {"/m/b.mp3", "/m/a.mp3"};
  view.AddFiles();
  dialogs.result = 0;
  view.AddFiles();  // a cancelled picker: no sort
  EXPECT_EQ(sorted, (std::vector<std::pair<int, int>>{{1, 2}}));

  dialogs.chosen = {"a.mp3"};
  view.LoadFolderContents("/media/");
  EXPECT_EQ(view.PathAt(5), "/media/a.mp3");
  EXPECT_EQ(view.CurrentIndex(), 0);
  EXPECT_EQ(sorted.back(), std::make_pair(5, 5));

  view.AddUrl();
  EXPECT_EQ(dialogs.asked, "6340 http://");
  EXPECT_EQ(view.ItemCount(), 6) << "a cancelled box adds nothing";
  dialogs.typed = "http://radio.example/live";
  view.AddUrl();
  EXPECT_EQ(view.PathAt(6), "http://radio.example/live");

  dialogs.chosen = {"/m/x.mp3"};
  view.AddFilesIfEmpty();
  EXPECT_EQ(view.ItemCount(), 7) << "only an empty list opens the picker";
  view.SetCurrentIndex(3);
  view.NewPlaylist();
  EXPECT_EQ(Paths(), (std::vector<std::string>{"/m/x.mp3"}));
  EXPECT_EQ(view.CurrentIndex(), 0);
  EXPECT_EQ(sorted.back(), std::make_pair(0, 0));

  dialogs.savePath = File("saved.m3u");
  view.SavePlaylist();
  EXPECT_EQ(testing_support::ReadFile(File("saved.m3u")), "#EXTM3U:\r\n/m/x.mp3\r\n");
  view.StopInfoThread();
}

}  // namespace
