// The picker's walk over made trees: what counts, in what order, and what the
// walk survives (loops, unreadable and vanishing folders, odd names).
#include <gtest/gtest.h>
#include <linux/capability.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "playback/format_registry.h"
#include "playlist/folder_scan.h"
#include "playlist/save_target.h"
#include "playlist/sliced_scan.h"
#include "support/test_environment.h"

namespace {

namespace fs = std::filesystem;
using playlist::FileClass;
using playlist::LevelEntry;
using playlist::PickerFilter;
using testing_support::WriteFile;

// Clears the capabilities that let root read and write past permissions, for
// the calling thread only, so that a mode of 000 means what it says.
bool DropPermissionOverrideOnThisThread() {
  __user_cap_header_struct header{_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct data[2]{};
  if (syscall(SYS_capget, &header, data) != 0) return false;
  data[0].effective &= ~((1u << CAP_DAC_OVERRIDE) | (1u << CAP_DAC_READ_SEARCH));
  return syscall(SYS_capset, &header, data) == 0;
}

// Runs `work` on a thread that permissions hold for.
template <typename Work>
void WithPermissionsEnforced(Work&& work) {
  std::thread thread([&] {
    ASSERT_TRUE(DropPermissionOverrideOnThisThread());
    work();
  });
  thread.join();
}

class FolderScanTest : public ::testing::Test {
 protected:
  FolderScanTest() {
    for (auto [id, extension] : {std::pair{playback::kFormatM3u, "m3u"}, {playback::kFormatPls, "pls"},
                                 {playback::kFormatMp3, "mp3"}, {playback::kFormatOgg, "ogg"}}) {
      formats.AddExtension(id, extension);
      formats.Enable(id, true);
    }
    formats.AddExtension(playback::kFormatWma, "wma");  // a format the program lacks: disabled
  }

  std::string Make(const std::string& relative, const std::string& contents = "x") const {
    const std::string path = root.File(relative);
    fs::create_directories(fs::path(path).parent_path());
    WriteFile(path, contents);
    return path;
  }
  void Folder(const std::string& relative) const { fs::create_directories(root.File(relative)); }
  void Link(const std::string& relative, const std::string& target) const {
    fs::create_directory_symlink(target, root.File(relative));
  }

  std::vector<std::string> Scan(const std::string& folder, bool expanded, bool playlistsOnly = false) const {
    std::vector<std::string> found;
    EXPECT_TRUE(playlist::ScanFolder(formats, folder, expanded, playlistsOnly, [&](const std::string& path) {
      found.push_back(path.substr(root.Path().size() + 1));
      return true;
    }));
    return found;
  }
  static std::vector<std::string> Names(const std::vector<LevelEntry>& level) {
    std::vector<std::string> names;
    for (const LevelEntry& entry : level)
      names.push_back(entry.name + (entry.isFolder ? "/" + std::to_string(entry.childCount) : ""));
    return names;
  }

  playback::FormatRegistry formats;
  testing_support::TemporaryDirectory root;
};

TEST_F(FolderScanTest, ClassifiesByTheEnabledExtensionsWithoutCase) {
  struct Case {
    const char* name;
    FileClass any;
    FileClass playlistsOnly;
  } cases[] = {
      {"a.mp3", FileClass::kMedia, FileClass::kNone},     {"A.MP3", FileClass::kMedia, FileClass::kNone},
      {"b.Ogg", FileClass::kMedia, FileClass::kNone},     {"c.m3u", FileClass::kPlaylist, FileClass::kPlaylist},
      {"d.PLS", FileClass::kPlaylist, FileClass::kPlaylist}, {"e.wma", FileClass::kNone, FileClass::kNone},
      {"default.tsl", FileClass::kNone, FileClass::kNone}, {"songmp3", FileClass::kNone, FileClass::kNone},
      {"x.notmp3", FileClass::kNone, FileClass::kNone},   {"mp3", FileClass::kNone, FileClass::kNone},
      {"\xff\xfe.mp3", FileClass::kMedia, FileClass::kNone},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(playlist::ClassifyFile(formats, c.name, false), c.any) << c.name;
    EXPECT_EQ(playlist::ClassifyFile(formats, c.name, true), c.playlistsOnly) << c.name;
  }
}

// The tree of the brief: a loop, an unreadable folder, a name that isn't
// UTF-8, a link to a folder the walk has already seen, a pipe, a dangling
// link, hidden entries and extensions of every kind.
TEST_F(FolderScanTest, WalksAMadeTreeInNameOrderAndSurvivesWhatItMeets) {
  Make("a.mp3");
  Make("b.txt");
  Make("C.MP3");
  Make("list.m3u");  // beside tracks: not taken
  Make("\xff\xfe.mp3");
  Make("albums/one/01.mp3");
  Make("albums/one/02.ogg");
  Make("albums/one/cover.jpg");
  Make("albums/one/03.wma");
  Make("albums/two/best.m3u");  // alone: taken
  Link("albums/loop", "..");
  Link("link_to_one", "albums/one");
  Make("locked/secret.mp3");
  Make(".cache/hidden.mp3");
  Make("albums/.hidden.mp3");
  ASSERT_EQ(::mkfifo(root.File("pipe.mp3").c_str(), 0644), 0);
  fs::create_symlink("nowhere.mp3", root.File("dangling.mp3"));
  fs::permissions(root.File("locked"), fs::perms::none);

  std::vector<std::string> found;
  WithPermissionsEnforced([&] { found = Scan(root.Path(), false); });
  fs::permissions(root.File("locked"), fs::perms::owner_all);

  const std::vector<std::string> expected = {"C.MP3", "a.mp3", "albums/one/01.mp3", "albums/one/02.ogg",
                                             "albums/two/best.m3u", "\xff\xfe.mp3"};
  EXPECT_EQ(found, expected);
}

TEST_F(FolderScanTest, TakesPlaylistsOnlyFromFoldersWithoutTracks) {
  Make("only/list.m3u");
  Make("mixed/track.mp3");
  Make("mixed/list.pls");
  struct Case {
    const char* folder;
    bool expanded;
    bool playlistsOnly;
    std::vector<std::string> expected;
  } cases[] = {
      {"only", false, false, {"only/list.m3u"}},
      {"only", true, false, {}},  // the user saw the folder's files
      {"mixed", false, false, {"mixed/track.mp3"}},
      {"mixed", false, true, {"mixed/list.pls"}},
      {"mixed", true, true, {"mixed/list.pls"}},
      {"", true, false, {"mixed/track.mp3", "only/list.m3u"}},  // subfolders decide for themselves
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Scan(root.File(c.folder), c.expanded, c.playlistsOnly), c.expected)
        << c.folder << " expanded " << c.expanded << " playlists only " << c.playlistsOnly;
  }
}

TEST_F(FolderScanTest, AFolderThatVanishesDuringTheWalkIsSkipped) {
  Make("a/1.mp3");
  Make("b/2.mp3");
  Make("c/3.mp3");
  std::vector<std::string> found;
  playlist::ScanFolder(formats, root.Path(), false, false, [&](const std::string& path) {
    found.push_back(fs::path(path).filename());
    if (found.size() == 1) fs::remove_all(root.File("b"));
    return true;
  });
  EXPECT_EQ(found, (std::vector<std::string>{"1.mp3", "3.mp3"}));
}

TEST_F(FolderScanTest, TheSinkStopsTheWalk) {
  Make("a/1.mp3");
  Make("a/2.mp3");
  Make("b/3.mp3");
  int calls = 0;
  EXPECT_FALSE(playlist::ScanFolder(formats, root.Path(), false, false, [&](const std::string&) {
    ++calls;
    return false;
  }));
  EXPECT_EQ(calls, 1);
}

TEST_F(FolderScanTest, PathsLongerThan260CharactersAreDeliveredWhole) {
  std::string relative;
  for (int level = 0; level < 6; ++level) relative += std::string(60, char('a' + level)) + "/";
  Make(relative + "deep.mp3");
  const std::vector<std::string> found = Scan(root.Path(), false);
  ASSERT_EQ(found.size(), 1u);
  EXPECT_EQ(found[0], relative + "deep.mp3");
  EXPECT_GT(root.File(found[0]).size(), 360u);
}

TEST_F(FolderScanTest, AnUnreadableOrMissingFolderHasNoEntries) {
  Make("locked/a.mp3");
  fs::permissions(root.File("locked"), fs::perms::none);
  WithPermissionsEnforced([&] {
    EXPECT_TRUE(Scan(root.File("locked"), false).empty());
    EXPECT_FALSE(playlist::FolderHasMedia(formats, root.File("locked"), false));
    EXPECT_TRUE(playlist::ReadLevel(formats, root.File("locked"), {}).empty());
  });
  fs::permissions(root.File("locked"), fs::perms::owner_all);
  EXPECT_TRUE(Scan(root.File("missing"), false).empty());
  EXPECT_TRUE(playlist::ReadLevel(formats, root.File("missing"), {}).empty());
}

// A level: folders ahead of files, each by name; which folders show and how
// many kinds of children they announce depend on the picker's options.
TEST_F(FolderScanTest, ALevelShowsWhatThePickerAsksFor) {
  Make("z.mp3");
  Make("k.m3u");
  Make("notes.txt");
  Make("withMedia/a.mp3");
  Make("withBoth/a.mp3");
  Make("withBoth/deeper/b.mp3");
  Make("deepOnly/x/y/c.mp3");
  Make("listsOnly/l.pls");
  Folder("empty/inner");
  Link("empty/inner/loop", "..");  // a loop without media ends the search

  struct Case {
    PickerFilter filter;
    std::vector<std::string> expected;
  } cases[] = {
      {{false, false, false},
       {"deepOnly/1", "listsOnly/1", "withBoth/2", "withMedia/1", "k.m3u", "z.mp3"}},
      {{false, false, true},
       {"deepOnly/1", "empty/1", "listsOnly/1", "withBoth/2", "withMedia/1", "k.m3u", "z.mp3"}},
      {{false, true, false}, {"deepOnly/1", "listsOnly/0", "withBoth/1", "withMedia/0"}},
      {{true, false, false}, {"listsOnly/1", "k.m3u"}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(Names(playlist::ReadLevel(formats, root.Path(), c.filter)), c.expected)
        << "playlists only " << c.filter.playlistsOnly << " folders only " << c.filter.foldersOnly
        << " all folders " << c.filter.showAllFolders;
  }
  const std::vector<LevelEntry> level = playlist::ReadLevel(formats, root.Path(), {});
  EXPECT_EQ(level.back().fileClass, FileClass::kMedia);
  EXPECT_EQ(level[level.size() - 2].fileClass, FileClass::kPlaylist);
}

TEST_F(FolderScanTest, ALevelSpendsABoundedSearchOnDeepTreesWithoutMedia) {
  for (int i = 0; i <= playlist::kLevelSearchFolders; ++i) Folder("big/sub" + std::to_string(i));
  Folder("late/empty");
  Make("small/x/a.mp3");
  EXPECT_FALSE(playlist::FolderHasSubfolders(formats, root.File("big"), {})) << "a whole search finds nothing";
  EXPECT_EQ(Names(playlist::ReadLevel(formats, root.Path(), {})),
            (std::vector<std::string>{"big/1", "late/1", "small/1"}))
      << "the budget is spent in big: the folders after it are shown untested";
  EXPECT_EQ(Names(playlist::ReadLevel(formats, root.File("late"), {})), std::vector<std::string>{})
      << "and tested when opened";
}

TEST_F(FolderScanTest, TheSlicedScanDeliversWhatTheWalkFindsAndPumpsBetween) {
  for (int folder = 0; folder < 30; ++folder)
    for (int file = 0; file < 100; ++file)
      Make("f" + std::to_string(folder) + "/" + std::to_string(file) + ".mp3");
  std::vector<std::string> direct;
  playlist::ScanFolder(formats, root.Path(), false, false, [&](const std::string& path) {
    direct.push_back(path);
    return true;
  });
  ASSERT_EQ(direct.size(), 3000u);

  std::vector<std::string> sliced;
  std::size_t pumps = 0;
  std::size_t largestSlice = 0;
  std::size_t sinceLastPump = 0;
  const std::thread::id caller = std::this_thread::get_id();
  EXPECT_TRUE(playlist::ScanFolderInSlices(
      formats, root.Path(), false, false,
      [&](const std::string& path) {
        EXPECT_EQ(std::this_thread::get_id(), caller);
        sliced.push_back(path);
        ++sinceLastPump;
        return true;
      },
      [&] {
        ++pumps;
        largestSlice = std::max(largestSlice, sinceLastPump);
        sinceLastPump = 0;
      }));
  EXPECT_EQ(sliced, direct);
  EXPECT_GE(pumps, 3u);
  EXPECT_LE(largestSlice, playlist::kSlicePaths);

  std::size_t taken = 0;
  EXPECT_FALSE(playlist::ScanFolderInSlices(
      formats, root.Path(), false, false, [&](const std::string&) { return ++taken < 10; }, [] {}));
  EXPECT_EQ(taken, 10u);
}

TEST(SaveTargetTest, AppendsTheListExtensionAlways) {
  struct Case {
    const char* folder;
    const char* name;
    const char* expected;
  } cases[] = {
      {"/music", "party", "/music/party.m3u"},
      {"/music/", "party.m3u", "/music/party.m3u.m3u"},
      {"/", "a.b", "/a.b.m3u"},
      {"", "x", "/x.m3u"},
  };
  for (const Case& c : cases) EXPECT_EQ(playlist::SaveTargetPath(c.folder, c.name), c.expected);
}

TEST(SaveTargetTest, CreatesTheFolderAndTestsWithoutTouchingAnExistingList) {
  testing_support::TemporaryDirectory root;
  const std::string folder = root.File("new/deeper");
  ASSERT_TRUE(playlist::MakeSaveFolder(folder));
  const std::string target = playlist::SaveTargetPath(folder, "list");
  EXPECT_FALSE(playlist::SaveTargetExists(target));
  EXPECT_TRUE(playlist::CanCreateFile(target));
  EXPECT_FALSE(playlist::SaveTargetExists(target)) << "the test leaves nothing behind";

  WriteFile(target, "#EXTM3U\nold.mp3\n");
  EXPECT_TRUE(playlist::SaveTargetExists(target));
  EXPECT_TRUE(playlist::CanCreateFile(target));
  EXPECT_EQ(testing_support::ReadFile(target), "#EXTM3U\nold.mp3\n");
  EXPECT_EQ(std::distance(fs::directory_iterator(folder), fs::directory_iterator()), 1);

  fs::create_directory(root.File("taken.m3u"));
  EXPECT_FALSE(playlist::CanCreateFile(root.File("taken.m3u"))) << "a folder stands there";
  WriteFile(root.File("plain"), "");
  EXPECT_FALSE(playlist::MakeSaveFolder(root.File("plain/sub")));
  EXPECT_FALSE(playlist::CanCreateFile(root.File("plain/sub/x.m3u")));
}

TEST(SaveTargetTest, AReadOnlyFolderRefusesTheList) {
  testing_support::TemporaryDirectory root;
  const std::string folder = root.File("readonly");
  ASSERT_TRUE(playlist::MakeSaveFolder(folder));
  fs::permissions(folder, fs::perms::owner_read | fs::perms::owner_exec);
  bool creatable = true;
  WithPermissionsEnforced([&] { creatable = playlist::CanCreateFile(playlist::SaveTargetPath(folder, "x")); });
  fs::permissions(folder, fs::perms::owner_all);
  EXPECT_FALSE(creatable);
  EXPECT_TRUE(fs::is_empty(folder));
}

}  // namespace
