// ID3v1 records, the genre table and the decimal reading shared by the tags.
#include <gtest/gtest.h>

#include "decoders/id3_builders.h"
#include "decoders/id3_genres.h"
#include "decoders/id3_text.h"
#include "decoders/id3v1.h"
#include "decoders/mpeg_test_files.h"

namespace decoders_test {
namespace {

using decoders::Id3v1Info;

Id3v1Info ReadRecord(const Id3v1Fields& fields) {
  const std::string file = std::string(300, '\xFF') + Id3v1Record(fields);
  const decoders::MemoryTagSource source = SourceOf(file);
  Id3v1Info info;
  EXPECT_TRUE(decoders::ReadId3v1(source, info));
  return info;
}

TEST(Id3v1RealFiles, RecordsAsLameWritesThem) {
  Id3v1Info info;
  ASSERT_TRUE(decoders::ReadId3v1(MediaPath("cbr128_44k_stereo.mp3"), info));
  EXPECT_EQ(info.title, "Latin Title");
  EXPECT_EQ(info.artist, "Some Artist");
  EXPECT_EQ(info.album, "An Album");
  EXPECT_EQ(info.year, 2004);
  EXPECT_EQ(info.comment, "A comment");
  EXPECT_EQ(info.track, 7);
  EXPECT_TRUE(decoders::Id3v1HasTrackNumber(info));
  EXPECT_STREQ(decoders::GenreName(info.genre), "Rock");

  // lame writes Latin-1 into the record: not UTF-8, so read as Windows-1252.
  ASSERT_TRUE(decoders::ReadId3v1(MediaPath("vbr_44k_stereo.mp3"), info));
  EXPECT_EQ(info.title, "Café Ünïcode ?");
  EXPECT_EQ(info.artist, "Ärtist");
  EXPECT_EQ(info.year, 2011);
  EXPECT_EQ(info.track, 3);
  EXPECT_STREQ(decoders::GenreName(info.genre), "Jazz");
}

TEST(Id3v1RealFiles, FilesWithoutARecord) {
  Id3v1Info info;
  info.title = "old";
  EXPECT_FALSE(decoders::ReadId3v1(MediaPath("mpeg25_8k_mono.mp3"), info));
  EXPECT_EQ(info.title, "");
  EXPECT_EQ(info.genre, -1);
  EXPECT_FALSE(decoders::ReadId3v1(MediaPath("id3v24_utf8.mp3"), info));
  const std::string shortFile = "TAG" + std::string(100, 'x');  // under 128 bytes
  EXPECT_FALSE(decoders::ReadId3v1(SourceOf(shortFile), info));
}

TEST(Id3v1Record, TrackNumbersFrom1To31Only) {
  EXPECT_EQ(ReadRecord({.comment = "c", .track = 1}).track, 1);
  EXPECT_EQ(ReadRecord({.comment = "c", .track = 31}).track, 31);
  EXPECT_EQ(ReadRecord({.comment = "c", .track = 0}).track, 0);
  EXPECT_EQ(ReadRecord({.comment = "c", .track = 33}).track, 0);
  // A full comment leaves no room for a track: its 29th character is taken.
  const Id3v1Info full = ReadRecord({.comment = std::string(29, 'c'), .track = 5});
  EXPECT_EQ(full.track, 5);
  EXPECT_FALSE(decoders::Id3v1HasTrackNumber(full));
  EXPECT_TRUE(decoders::Id3v1HasTrackNumber(ReadRecord({.comment = std::string(28, 'c'), .track = 5})));
}

TEST(Id3v1Record, TrailingBlanksGoOnlyWhenTheFieldEndsInOne) {
  EXPECT_EQ(ReadRecord({.title = "Padded" + std::string(24, ' ')}).title, "Padded");
  EXPECT_EQ(ReadRecord({.title = "Inner   " + std::string(21, ' ') + "X"}).title,
            "Inner   " + std::string(21, ' ') + "X");
  EXPECT_EQ(ReadRecord({.title = "Kept blanks  "}).title, "Kept blanks  ");  // zero-padded
  EXPECT_EQ(ReadRecord({.title = std::string(30, 'T')}).title, std::string(30, 'T'));
}

TEST(Id3v1Record, TextIsUtf8WhenValidElseWindows1252) {
  const Id3v1Info info = ReadRecord({.title = "Ünïcode", .artist = "\x80uro caf\xE9", .album = "\xC3"});
  EXPECT_EQ(info.title, "Ünïcode");
  EXPECT_EQ(info.artist, "€uro café");
  EXPECT_EQ(info.album, "Ã");
}

TEST(Id3v1Record, YearAndGenre) {
  EXPECT_EQ(ReadRecord({.year = "19x9"}).year, 19);
  EXPECT_EQ(ReadRecord({.year = ""}).year, 0);
  const Id3v1Info info = ReadRecord({.genre = 200});
  EXPECT_EQ(info.genre, 200);
  EXPECT_EQ(decoders::GenreName(info.genre), nullptr);  // beyond the 148 rows
  EXPECT_STREQ(decoders::GenreName(0), "Blues");
  EXPECT_STREQ(decoders::GenreName(147), "Synthpop");
  EXPECT_EQ(decoders::GenreName(-1), nullptr);
}

TEST(DecimalValue, ReadsAsAtoiDoesAndSaturates) {
  EXPECT_EQ(decoders::DecimalValue("  -12x"), -12);
  EXPECT_EQ(decoders::DecimalValue("RX)"), 0);
  EXPECT_EQ(decoders::DecimalValue("99999999999999999999"), 2147483647);
  EXPECT_EQ(decoders::DecimalValue("-99999999999999999999"), -2147483648LL);
}

}  // namespace
}  // namespace decoders_test
