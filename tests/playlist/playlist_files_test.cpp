// Reading and writing list files, through the view as the player does it.
#include "playlist/playlist_files.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <random>

#include "playlist_fixture.h"

namespace {

using namespace playlist;
using playlist_testing::PlaylistTest;
using testing_support::ReadFile;

class M3uTest : public PlaylistTest {};

TEST_F(M3uTest, ExtinfGivesTitleAndLengthToTheNextPathLineOverComments) {
  const std::string list = Write("x.m3u",
                                 "#EXTM3U\r\n"
                                 "#EXTINF:123,Some Title   \r\n"
                                 "# a comment between\r\n"
                                 "\r\n"
                                 "a.mp3\r\n"
                                 "b.mp3\r\n");
  view.AddEntry(list);
  ASSERT_EQ(Paths(), (std::vector<std::string>{File("a.mp3"), File("b.mp3")}));
  EXPECT_EQ(view.TitleAt(0), "Some Title");
  EXPECT_EQ(view.DurationAt(0), 123000u);
  EXPECT_TRUE(view.FlagsAt(0) & ITEM_HAS_INFO);
  EXPECT_FALSE(view.FlagsAt(1) & ITEM_HAS_INFO) << "a title goes to one entry only";
}

TEST_F(M3uTest, OddExtinfLines) {
  const std::string list = Write("odd.m3u",
                                 "#EXTINF:-5,T\n"
                                 "t.mp3\n"
                                 "#EXTINF:100\n"
                                 "u.mp3\n"
                                 "#extinf:7,Early\n"
                                 "#EXTINF:100\n"
                                 "v.mp3\n"
                                 "#EXTINF:9, \n"
                                 "w.mp3\n");
  view.AddEntry(list);
  ASSERT_EQ(view.ItemCount(), 4);
  EXPECT_EQ(view.TitleAt(0), "T");
  EXPECT_EQ(view.DurationAt(0), 0u) << "a negative length counts as 0, so the reader still reads it";
  EXPECT_TRUE(view.FlagsAt(0) & ITEM_HAS_INFO);
  EXPECT_FALSE(view.FlagsAt(1) & ITEM_HAS_INFO) << "without a comma there is no title";
  EXPECT_EQ(view.DurationAt(1), 0u);
  EXPECT_EQ(view.TitleAt(2), "Early") << "a pending title is taken with the later seconds";
  EXPECT_EQ(view.DurationAt(2), 100000u);
  EXPECT_EQ(view.TitleAt(3), " ") << "the first character of a title is never trimmed";
}

TEST_F(M3uTest, PathsFromWindowsAndLinuxListsAndAddresses) {
  const std::string list = Write("mixed.m3u",
                                 "\xEF\xBB\xBF#EXTM3U\r\n"
                                 "sub\\a.mp3\r\n"
                                 "\\Music\\b.mp3\r\n"
                                 "/abs/c.mp3\r\n"
                                 "HTTP://radio.example/live\r\n"
                                 "https://radio.example/tls\r\n"
                                 "file:///home/u/My%20Song.mp3\r\n"
                                 "file://otherhost/share/x.mp3\r\n"
                                 "   \r\n"
                                 "caf\xE9.mp3\r\n"
                                 "na\xC3\xAFve.mp3\r\n"
                                 "../up.mp3");
  view.AddEntry(list);
  EXPECT_EQ(Paths(), (std::vector<std::string>{
                         File("sub/a.mp3"), "/Music/b.mp3", "/abs/c.mp3", "HTTP://radio.example/live",
                         "https://radio.example/tls", "/home/u/My Song.mp3", File("caf\xC3\xA9.mp3"),
                         File("na\xC3\xAFve.mp3"), File("../up.mp3")}));
}

TEST_F(M3uTest, GarbageKeepsWhatMakesSenseAndDropsTheRest) {
  std::string junk;
  std::mt19937 generator(7);
  for (int i = 0; i < 200000; ++i) junk.push_back(static_cast<char>(generator() & 0xFF));
  const std::string longLine(100000, 'x');
  const std::string list = Write("junk.m3u", junk + "\n#EXTINF:1," + longLine + "\n" + longLine +
                                                 ".mp3\nkept.mp3\nnul.mp3" + std::string(1, '\0') +
                                                 "tail\n" + longLine);
  view.AddEntry(list);
  ASSERT_GE(view.ItemCount(), 2);
  EXPECT_EQ(view.PathAt(view.ItemCount() - 2), File("kept.mp3"));
  EXPECT_FALSE(view.FlagsAt(view.ItemCount() - 2) & ITEM_HAS_INFO) << "the overlong #EXTINF was dropped whole";
  EXPECT_EQ(view.PathAt(view.ItemCount() - 1), File("nul.mp3"));
  for (const std::string& path : Paths()) {
    EXPECT_LE(path.size(), File("").size() + 4095);
    for (char c : path) EXPECT_FALSE(static_cast<unsigned char>(c) < 0x20 && c != '\t') << "control byte kept";
  }
}

TEST_F(M3uTest, ListsThatCantBeReadAddNothingAndNeverBlock) {
  view.AddEntry(File("missing.m3u"));
  std::filesystem::create_directory(File("folder.m3u"));
  view.AddEntry(File("folder.m3u"));
  ASSERT_EQ(::mkfifo(File("pipe.m3u").c_str(), 0600), 0);
  view.AddEntry(File("pipe.m3u"));  // a FIFO would block an ordinary open for ever
  EXPECT_EQ(view.ItemCount(), 0);
}

class PlsTest : public PlaylistTest {};

TEST_F(PlsTest, EachKeyCountsOnItsOwnAndLengthsStartAtTwo) {
  const std::string list = Write("radio.pls",
                                 "[playlist]\r\n"
                                 "NumberOfEntries=1000000\r\n"
                                 "File1=a.mp3\r\n"
                                 "Title1=A\r\n"
                                 "Length1=10\r\n"
                                 "file2=http://stream.example:8000/\r\n"
                                 "TITLE2=B\r\n"
                                 "Length2=20\r\n"
                                 "File3=C:\\Music\\c.mp3\r\n"
                                 "Length3=-1\r\n"
                                 "Version=2\r\n");
  view.AddEntry(list);
  EXPECT_EQ(Paths(), (std::vector<std::string>{"a.mp3", "http://stream.example:8000/", "C:/Music/c.mp3"}))
      << "no folder goes in front of pls entries, and the entry count is never trusted";
  EXPECT_EQ(view.TitleAt(0), "A");
  EXPECT_TRUE(view.FlagsAt(0) & ITEM_HAS_INFO);
  EXPECT_EQ(view.DurationAt(0), 0u) << "Length1 never matches";
  EXPECT_EQ(view.TitleAt(1), "B");
  EXPECT_EQ(view.DurationAt(1), 20000u);
  EXPECT_EQ(view.DurationAt(2), static_cast<std::uint32_t>(-1000)) << "the sign isn't checked";
  EXPECT_FALSE(view.FlagsAt(2) & ITEM_HAS_INFO);
}

TEST_F(PlsTest, KeysOutOfTurnAreIgnored) {
  const std::string list = Write("order.pls",
                                 "Title1=lost, the list is empty\n"
                                 "File2=b.mp3\n"
                                 "File1=a.mp3\n"
                                 "[section]\n"
                                 "File2=c.mp3\n"
                                 "File3=\n"
                                 "File4=d.mp3\n"
                                 "Title2=D\n");
  view.AddEntry(list);
  EXPECT_EQ(Paths(), (std::vector<std::string>{"a.mp3", "c.mp3", "d.mp3"}));
  EXPECT_EQ(view.TitleAt(2), "D") << "the title number moved on with the first title";
  EXPECT_FALSE(view.FlagsAt(0) & ITEM_HAS_INFO);
}

class AsxTest : public PlaylistTest {};

TEST_F(AsxTest, ReferencesLineByLine) {
  const std::string list = Write("l.asx",
                                 "<ASX version=\"3.0\">\r\n"
                                 "  <Entry><Title>ignored</Title><ref href=\"track.mp3\"/></Entry>\r\n"
                                 "  <ENTRY><REF HREF  =  \"sub\\t2.mp3\" /></ENTRY>\r\n"
                                 "  <Entry><Ref Href=\"http://radio.example/live\"/></Entry>\r\n"
                                 "  <Entry><ref href=\"/abs/x.mp3\"/></Entry>\r\n"
                                 "  <Entry><ref  href=\"two-blanks.mp3\"/></Entry>\r\n"
                                 "  <Entry><ref href=\"unterminated.mp3/></Entry>\r\n"
                                 "  <ref href=\"first.mp3\"/><ref href=\"second.mp3\"/>\r\n"
                                 "  <ref href='single.mp3'/>\r\n"
                                 "</ASX\r\n");
  view.AddEntry(list);
  EXPECT_EQ(Paths(), (std::vector<std::string>{File("track.mp3"), File("sub/t2.mp3"),
                                               File("http://radio.example/live"), "/abs/x.mp3",
                                               File("first.mp3")}))
      << "asx puts the folder in front of addresses too";
  EXPECT_FALSE(view.FlagsAt(0) & ITEM_HAS_INFO) << "titles aren't read from asx";
}

TEST_F(AsxTest, BrokenDocumentsGiveWhatTheirLinesHold) {
  view.AddEntry(Write("broken.asx", "<asx><entry><ref href=\"a.mp3\"><<<>>>\n\"\"\"<REF HREF\n<ref href=\"\n<asx"));
  EXPECT_EQ(Paths(), (std::vector<std::string>{File("a.mp3")}));
}

class NestingTest : public PlaylistTest {};

TEST_F(NestingTest, AListInsideAListIsReadWhereItStands) {
  Write("inner.pls", "File1=/abs/b.mp3\nFile2=/abs/c.mp3\n");
  Write("deeper.asx", "<ref href=\"d.mp3\"/>\n");
  Write("middle.m3u", "deeper.asx\n");
  view.AddEntry(Write("outer.m3u", "a.mp3\n#EXTINF:5,Last of inner\ninner.pls\nmiddle.m3u\nz.mp3\n"));
  EXPECT_EQ(Paths(),
            (std::vector<std::string>{File("a.mp3"), "/abs/b.mp3", "/abs/c.mp3", File("d.mp3"), File("z.mp3")}));
  EXPECT_EQ(view.TitleAt(2), "Last of inner") << "a pending title goes to the last entry at that moment";
}

TEST_F(NestingTest, ListsThatNameThemselvesAreReadOnce) {
  view.AddEntry(Write("self.m3u", "a.mp3\nself.m3u\nb.mp3\n"));
  EXPECT_EQ(Paths(), (std::vector<std::string>{File("a.mp3"), File("b.mp3")}));

  view.ClearAll();
  Write("x.m3u", "x1.mp3\ny.pls\nx2.mp3\n");
  Write("y.pls", "File1=" + File("x.m3u") + "\nFile2=" + File("y.pls") + "\nFile3=y1.mp3\n");
  ASSERT_EQ(::symlink(File("x.m3u").c_str(), File("link.m3u").c_str()), 0);
  view.AddEntry(File("link.m3u"));
  EXPECT_EQ(Paths(), (std::vector<std::string>{File("x1.mp3"), "y1.mp3", File("x2.mp3")}));

  view.ClearAll();
  Write("twice.m3u", "leaf.m3u\nleaf.m3u\n");
  Write("leaf.m3u", "leaf.mp3\n");
  view.AddEntry(File("twice.m3u"));
  EXPECT_EQ(view.ItemCount(), 2) << "the same list twice, side by side, is no loop";
}

TEST_F(NestingTest, FanOutAcrossManyListsStaysBounded) {
  // Each list names the next one twice: 2^40 entries if nothing held it back.
  for (int depth = 0; depth < 40; ++depth) {
    const std::string next = "l" + std::to_string(depth + 1) + ".m3u";
    Write("l" + std::to_string(depth) + ".m3u", next + "\n" + next + "\nleaf.mp3\n");
  }
  Write("l40.m3u", "leaf.mp3\n");
  view.AddEntry(File("l0.m3u"));
  EXPECT_GT(view.ItemCount(), 0);
  EXPECT_LE(view.ItemCount(), 20000);
  const int before = view.ItemCount();
  view.AddEntry(File("l39.m3u"));  // the budget is per read, not for ever
  EXPECT_EQ(view.ItemCount(), before + 3);
}

class WriterTest : public PlaylistTest {};

TEST_F(WriterTest, BytesAsWritten) {
  view.AddEntry("/music/a.mp3");
  view.AddEntry("http://radio.example/live");
  view.AddEntry("/music/b.mp3");
  view.AddEntry("/music/c.mp3");
  view.SetTitle(0, "Artist - Song");
  view.SetDuration(0, 185999);
  view.SetTitle(2, "Two\r\nlines");
  view.SetDuration(2, static_cast<std::uint32_t>(-1000));
  view.SetDuration(3, 5000);  // a length without a title isn't written
  EXPECT_EQ(FormatM3u(view),
            "#EXTM3U:\r\n"
            "#EXTINF:185,Artist - Song\r\n"
            "/music/a.mp3\r\n"
            "http://radio.example/live\r\n"
            "#EXTINF:-1,Two  lines\r\n"
            "/music/b.mp3\r\n"
            "/music/c.mp3\r\n");
}

TEST_F(WriterTest, RoundTripKeepsOrderPathsTitlesAndWholeSeconds) {
  view.AddEntry("/music/\xE9t\xE9.mp3");  // a name that isn't UTF-8 stays bytes
  view.AddEntry("/music/AC\\DC/x.mp3");     // a backslash inside a Linux name
  view.AddEntry("relative.mp3");
  view.SetTitle(0, "\xC3\x89t\xC3\xA9");
  view.SetDuration(0, 61500);
  view.SetFlags(1, ITEM_SELECTED, true);
  const std::string saved = File("default.tsl");
  ASSERT_TRUE(view.SaveDefaultList(saved));

  PlaylistView loaded(formats);
  loaded.LoadDefaultList(saved);
  ASSERT_EQ(loaded.ItemCount(), 3);
  EXPECT_EQ(loaded.PathAt(0), "/music/\xE9t\xE9.mp3");
  EXPECT_EQ(loaded.PathAt(1), "/music/AC\\DC/x.mp3");
  EXPECT_EQ(loaded.PathAt(2), File("relative.mp3")) << "a relative entry comes back behind the list's folder";
  EXPECT_EQ(loaded.TitleAt(0), "\xC3\x89t\xC3\xA9");
  EXPECT_EQ(loaded.DurationAt(0), 61000u);
  EXPECT_FALSE(loaded.FlagsAt(1) & ITEM_SELECTED) << "selection isn't saved";
  EXPECT_FALSE(formats.IsEnabled(playback::kFormatNativeList)) << "the native format is on only during the load";
  loaded.StopInfoThread();
}

TEST_F(WriterTest, EmptyListAndFailedWrites) {
  const std::string saved = File("empty.tsl");
  ASSERT_TRUE(WriteM3u(view, saved));
  EXPECT_EQ(ReadFile(saved), "#EXTM3U:\r\n");
  view.LoadDefaultList(saved);
  EXPECT_EQ(view.ItemCount(), 0);

  view.AddEntry("/music/a.mp3");
  std::filesystem::create_directories(File("occupied.tsl/inside"));
  EXPECT_FALSE(WriteM3u(view, File("occupied.tsl")));
  EXPECT_FALSE(WriteM3u(view, File("no/such/folder.m3u")));
  for (const auto& entry : std::filesystem::directory_iterator(folder.Path())) {
    EXPECT_EQ(entry.path().string().find(".tmp."), std::string::npos) << "left behind: " << entry.path();
  }
}

class DefaultListTest : public PlaylistTest {};

TEST_F(DefaultListTest, TheSavedIndexMarksItsEntryWhileTheListLoads) {
  std::string contents = "#EXTM3U:\r\n";
  for (int i = 0; i < 10; ++i) contents += "/m/" + std::to_string(i) + ".mp3\r\n";
  const std::string ten = Write("default.tsl", contents);
  view.SetCurrentIndex(7);  // LastPos
  view.LoadDefaultList(ten);
  for (int i = 0; i < 10; ++i) EXPECT_EQ((view.FlagsAt(i) & ITEM_CURRENT) != 0, i == 7) << i;

  PlaylistView shorter(formats);
  shorter.SetCurrentIndex(7);
  shorter.LoadDefaultList(Write("three.tsl", "/m/0.mp3\n/m/1.mp3\n/m/2.mp3\n"));
  for (int i = 0; i < 3; ++i) EXPECT_FALSE(shorter.FlagsAt(i) & ITEM_CURRENT);
  EXPECT_EQ(shorter.CurrentPath(), "/m/0.mp3");
  EXPECT_EQ(shorter.CurrentIndex(), 0);
  EXPECT_TRUE(shorter.FlagsAt(0) & ITEM_CURRENT);
}

TEST_F(DefaultListTest, TheNativeFormatIsAPlaylistOnlyDuringItsLoad) {
  const std::string list = Write("other.tsl", "/m/a.mp3\n");
  view.AddEntry(list);
  EXPECT_EQ(Paths(), (std::vector<std::string>{list})) << "outside the load a .tsl is a plain entry";
}

}  // namespace
