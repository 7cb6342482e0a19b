// ID3v2 tags as encoders write them, the reading rules the player keeps, and
// damaged, hostile and odd input: read as far as it makes sense or refused,
// never outside the bytes given, never without end.
#include <gtest/gtest.h>
#include <sys/stat.h>

#include "decoders/id3_builders.h"
#include "decoders/id3v1.h"
#include "decoders/id3v2.h"
#include "decoders/mpeg_test_files.h"
#include "support/test_environment.h"

namespace decoders_test {
namespace {

using decoders::Id3v2Info;

// Reads a tag from bytes in memory; returns whether a tag was found.
bool Read(const std::string& file, Id3v2Info& info) {
  const decoders::MemoryTagSource source = SourceOf(file);
  return decoders::ReadId3v2(source, info);
}

// The tag of a frame list in a tag of `major`, in front of real audio.
Id3v2Info ReadFrames(Id3v2Builder& builder) {
  const Bytes audio = LoadMedia("mpeg25_8k_mono.mp3");
  Id3v2Info info;
  EXPECT_TRUE(Read(builder.Build() + std::string(audio.begin(), audio.end()), info));
  return info;
}

TEST(Id3v2RealFiles, Version23InUtf16WithByteOrderMark) {
  Id3v2Info info;
  ASSERT_TRUE(decoders::ReadId3v2(MediaPath("vbr_44k_stereo.mp3"), info));
  EXPECT_EQ(info.title, "Café Ünïcode ☕");
  EXPECT_EQ(info.artist, "Ärtist");
  EXPECT_EQ(info.album, "Album ß");
  EXPECT_EQ(info.year, "2011");
  EXPECT_EQ(info.track, "3/12");
  EXPECT_EQ(info.genre, "Jazz");
  EXPECT_FALSE(info.comment);
}

TEST(Id3v2RealFiles, UnreadableTextsAndAbsentTags) {
  Id3v2Info info;
  info.title = "left over";
  // ffmpeg's 2.4 tag: every frame in UTF-8 (no text) and the year in TDRC.
  ASSERT_TRUE(decoders::ReadId3v2(MediaPath("id3v24_utf8.mp3"), info));
  for (const auto* field : {&info.title, &info.artist, &info.album, &info.genre, &info.track, &info.year}) {
    EXPECT_FALSE(*field);
  }
  info.title = "left over";
  EXPECT_FALSE(decoders::ReadId3v2(MediaPath("mpeg2_22k_mono.mp3"), info));  // ID3v1 only
  EXPECT_FALSE(info.title);
}

TEST(Id3v2Versions, Version22HasShortFramesAndItsOwnNames) {
  Id3v2Builder tag(2);
  tag.Frame("TT2", Latin1Text("Short Title"))
      .Frame("PIC", std::string("\0JPG\3\0\xFF\xD8", 8))
      .Frame("TP1", Utf16Text(u"Ärtist", false))
      .Frame("TAL", Latin1Text("Album"))
      .Frame("TYE", Latin1Text("1999"))
      .Frame("TRK", Latin1Text("04"))
      .Frame("TCO", Latin1Text("(17)"))
      .Frame("COM", Latin1Text(std::string("eng\0Comment", 11)))
      .Frame("TEN", Latin1Text("Encoder"))
      .Frame("TCM", Latin1Text("Composer"));
  const Id3v2Info info = ReadFrames(tag);
  EXPECT_EQ(info.title, "Short Title");
  EXPECT_EQ(info.artist, "Ärtist");
  EXPECT_EQ(info.album, "Album");
  EXPECT_EQ(info.year, "1999");
  EXPECT_EQ(info.track, "04");
  EXPECT_EQ(info.genre, "Rock");
  EXPECT_EQ(info.comment, "eng");
  EXPECT_EQ(info.encodedBy, "Encoder");
  EXPECT_EQ(info.composer, "Composer");
}

TEST(Id3v2Versions, Version24MixesEncodingsFrameByFrame) {
  Id3v2Builder tag(4);
  tag.Frame("TIT2", Utf16Text(u"Tïtle \U0001D11E", false))
      .Frame("TPE1", Utf8Text("Artïst"))
      .Frame("TALB", Utf16BigEndianText(u"AB"))
      .Frame("TCOM", Utf16Text(u"Cz", true))
      .Frame("TCON", Latin1Text("(13)Pop Music"))
      .Frame("TRCK", Latin1Text("5/9"));
  const Id3v2Info info = ReadFrames(tag);
  EXPECT_EQ(info.title, "Tïtle \U0001D11E");
  EXPECT_FALSE(info.artist);  // UTF-8 frames give no text
  // Big-endian text is read as little-endian: "AB" comes out as U+4100 U+4200,
  // "Cz" behind a big-endian mark as U+4300 U+7A00.
  EXPECT_EQ(info.album, "\u4100\u4200");
  EXPECT_EQ(info.composer, "\u4300\u7A00");
  EXPECT_EQ(info.genre, "Pop");
  EXPECT_EQ(info.track, "5/9");
}

TEST(Id3v2Versions, Version24SizesAreReadAsPlainNumbersWithoutTheUnsynchronisationFlag) {
  // A 200-byte title: synchsafe 00 00 01 48, which an 8-bit reading takes as
  // 328, so the walk lands inside the next frame and misses it.
  const std::string title = Latin1Text(std::string(198, 'T') + '\0');
  Id3v2Builder tag(4);
  tag.Bytes(std::string("TIT2\0\0\x01\x48\0\0", 10)).Bytes(title).Frame("TPE1", Latin1Text("Artist"));
  tag.Bytes(std::string(200, '\0'));
  const Id3v2Info info = ReadFrames(tag);
  EXPECT_EQ(info.title, std::string(198, 'T'));
  EXPECT_FALSE(info.artist);
}

TEST(Id3v2Versions, UnsynchronisationFlagMeansSevenBitFrameSizesAndNothingElse) {
  Id3v2Builder tag(3, 0x80);
  tag.Frame("TIT2", Latin1Text(std::string(199, 'T')))  // 200 bytes: 00 00 01 48 in 7 bits
      .Frame("TPE1", Latin1Text(std::string("A\xFF\0B", 4)))
      .Frame("TALB", Latin1Text("Album"));
  const Id3v2Info info = ReadFrames(tag);
  EXPECT_EQ(info.title, std::string(199, 'T'));
  // FF 00 would be FF after undoing unsynchronisation; it isn't undone, so
  // the zero ends the text.
  EXPECT_EQ(info.artist, "A\u00FF");
  EXPECT_EQ(info.album, "Album");
}

TEST(Id3v2Versions, ExtendedHeaderIsSkippedByItsSize) {
  // 2.4: the size counts its own four bytes, so the frames follow at once.
  Id3v2Builder tag24(4, 0x40);
  tag24.Bytes(std::string("\0\0\0\x06\x01\0", 6)).Frame("TIT2", Latin1Text("Title"));
  EXPECT_EQ(ReadFrames(tag24).title, "Title");
  // 2.3: the size doesn't count itself, the walk starts four bytes early,
  // meets a zero id and ends: the tag is found but gives nothing (accepted).
  Id3v2Builder tag23(3, 0x40);
  tag23.Bytes(std::string("\0\0\0\x06\0\0\0\0\0\0", 10)).Frame("TIT2", Latin1Text("Title"));
  EXPECT_FALSE(ReadFrames(tag23).title);
}

TEST(Id3v2Frames, NamesMatchLooselyFromTheTopOfTheTable) {
  Id3v2Builder tag(3);
  tag.Frame("TCON", Latin1Text("Rock"))
      .Frame("TCOP", Latin1Text("2001 Someone"))  // begins with TCO: a genre
      .Frame("COMR", Latin1Text("Offer"))         // begins with COM: a comment
      .Frame("PRIV", std::string("owner\0\x01\x02\x03", 9))
      .Frame("TIT1", Latin1Text("Not a title"))
      .Frame("TPE2", Latin1Text("Not the artist"));
  const Id3v2Info info = ReadFrames(tag);
  EXPECT_EQ(info.genre, "2001 Someone");
  EXPECT_EQ(info.comment, "Offer");
  EXPECT_FALSE(info.title);
  EXPECT_FALSE(info.artist);
}

TEST(Id3v2Frames, EmptyAndUnreadableFramesClearTheirField) {
  Id3v2Builder tag(3);
  tag.Frame("TIT2", Latin1Text("First"))
      .Frame("TIT2", "")  // size 0
      .Frame("TPE1", Latin1Text("Artist"))
      .Frame("TPE1", Utf8Text("Artist in UTF-8"))
      .Frame("TALB", Latin1Text("Album"))
      .Frame("TALB", std::string(1, '\0'))  // size 1: the encoding byte alone
      .Frame("TYER", Latin1Text(std::string(1, '\0')));  // an empty text is a text
  const Id3v2Info info = ReadFrames(tag);
  EXPECT_FALSE(info.title);
  EXPECT_FALSE(info.artist);
  EXPECT_FALSE(info.album);
  EXPECT_EQ(info.year, "");
}

TEST(Id3v2Frames, UnknownEncodingLeavesTheWalkOutOfStep) {
  // Nothing behind the encoding byte is read or skipped, so the next header
  // is read from inside the payload: "Titl" with a nonsense size.
  Id3v2Builder tag(3);
  tag.Frame("TALB", Latin1Text("Album")).Frame("TIT2", "\x04Title").Frame("TPE1", Latin1Text("Artist"));
  const Id3v2Info info = ReadFrames(tag);
  EXPECT_EQ(info.album, "Album");
  EXPECT_FALSE(info.title);
  EXPECT_FALSE(info.artist);
}

TEST(Id3v2Frames, TextDecoding) {
  Id3v2Builder tag(3);
  tag.Frame("TIT2", Latin1Text(std::string("Title\0Junk", 10)))  // to the first terminator
      .Frame("TPE1", Utf16Text(std::u16string(u"Ar\0xx", 5), false))
      .Frame("COMM", Latin1Text(std::string("engShort\0Comment proper", 23)))
      .Frame("TALB", Latin1Text("Ünï"))                   // valid UTF-8
      .Frame("TCOM", Latin1Text("\x80uro caf\xE9"))       // else Windows-1252
      .Frame("TENC", std::string("\x01\xFF\xFE" "A\0B\0C", 8))  // an odd last byte is no unit
      .Frame("TYER", std::string("\x02\0", 2))            // one byte of UTF-16: empty
      .Frame("TRCK", std::string("\x01\xFF", 2))          // shorter than its mark
      .Frame("TCON", Latin1Text("Rock"));
  const Id3v2Info info = ReadFrames(tag);
  EXPECT_EQ(info.title, "Title");
  EXPECT_EQ(info.artist, "Ar");
  EXPECT_EQ(info.comment, "engShort");
  EXPECT_EQ(info.album, "Ünï");
  EXPECT_EQ(info.composer, "€uro café");
  EXPECT_EQ(info.encodedBy, "AB");
  EXPECT_EQ(info.year, "");
  EXPECT_EQ(info.track, "");
  // Skipping the two-byte mark of a two-byte frame goes one byte too far, so
  // the next header is read one byte late and the walk ends there.
  EXPECT_FALSE(info.genre);
}

TEST(Id3v2Genres, NumbersInParenthesesNameTableRows) {
  const auto genreOf = [](std::uint8_t major, const char* id, const std::string& text) {
    Id3v2Builder tag(major);
    tag.Frame(id, Latin1Text(text));
    return ReadFrames(tag).genre;
  };
  EXPECT_EQ(genreOf(3, "TCON", "(13)"), "Pop");
  EXPECT_EQ(genreOf(3, "TCON", "((13)"), "((13)");
  EXPECT_EQ(genreOf(3, "TCON", "(13)Pop Music"), "Pop");
  EXPECT_EQ(genreOf(3, "TCON", "(200)"), "(200)");
  EXPECT_EQ(genreOf(3, "TCON", "(RX)"), "Blues");  // no digits: number 0
  EXPECT_EQ(genreOf(3, "TCON", "(-5)"), "(-5)");
  EXPECT_EQ(genreOf(3, "TCON", "Synthpop (147)"), "Synthpop (147)");
  EXPECT_EQ(genreOf(3, "TCON", "(147)"), "Synthpop");
  EXPECT_EQ(genreOf(3, "TCON", "(148)"), "(148)");
  // A 2.2 TCO with a number loses its text even beyond the table.
  EXPECT_EQ(genreOf(2, "TCO", "(13)"), "Pop");
  EXPECT_EQ(genreOf(2, "TCO", "(200)"), std::nullopt);
  EXPECT_EQ(genreOf(2, "TCO", "(RX)"), "Blues");
  EXPECT_EQ(genreOf(2, "TCO", "Jazz"), "Jazz");
}

TEST(Id3v2TagLength, CountsTheHeaderAndTheSynchsafeSize) {
  const std::uint8_t largest[10] = {'I', 'D', '3', 4, 0, 0, 0x7F, 0x7F, 0x7F, 0x7F};
  EXPECT_EQ(decoders::Id3v2TagLength(largest), 10u + 0x0FFFFFFFu);
  EXPECT_EQ(decoders::Id3v2TagLength(std::span(largest, 9)), 0u);
  const std::uint8_t frame[10] = {0xFF, 0xFB, 0x90, 0x44};
  EXPECT_EQ(decoders::Id3v2TagLength(frame), 0u);
}

// --- Damage ---------------------------------------------------------------------------------------

std::string TitleTag(std::uint8_t major = 3, std::uint8_t flags = 0, std::uint8_t revision = 0) {
  return Id3v2Builder(major, flags, revision).Frame("TIT2", Latin1Text("Title")).Build();
}

TEST(Id3v2Header, RefusesWhatIsNoTagAndClearsTheRecord) {
  Id3v2Info info;
  EXPECT_TRUE(Read(WithAudioBehind(TitleTag(4)), info));
  EXPECT_TRUE(Read(WithAudioBehind(TitleTag(3, 0x20, 254)), info));  // experimental flag, revision 254
  EXPECT_FALSE(Read(WithAudioBehind(TitleTag(5)), info));
  EXPECT_FALSE(info.title);
  EXPECT_FALSE(Read(WithAudioBehind(TitleTag(3, 0, 255)), info));
  for (std::uint8_t flag = 1; flag <= 0x10; flag <<= 1) {
    EXPECT_FALSE(Read(WithAudioBehind(TitleTag(3, flag)), info)) << "flag " << int{flag};
  }
  EXPECT_FALSE(Read(WithAudioBehind("ID4" + TitleTag().substr(3)), info));
  EXPECT_FALSE(Read("ID3\3\0", info));  // truncated header
  // The tag must end before the file does: a size of exactly the file's
  // length less ten is no tag, nor is one that points far beyond.
  EXPECT_FALSE(Read(TitleTag(), info));
  EXPECT_TRUE(Read(TitleTag() + "x", info));
  EXPECT_FALSE(Read(WithAudioBehind(Id3v2Builder(3).Frame("TIT2", Latin1Text("T")).Build(0x0FFFFFFF)), info));
}

TEST(Id3v2Damage, AbsurdUnknownFrameSizeEndsTheWalkKeepingWhatWasRead) {
  Id3v2Builder tag(3);
  tag.Frame("TIT2", Latin1Text("Title")).FrameHeader("APIC", 0xFFFFFFFF).Frame("TPE1", Latin1Text("Artist"));
  Id3v2Info info;
  EXPECT_TRUE(Read(WithAudioBehind(tag.Build()), info));
  EXPECT_EQ(info.title, "Title");
  EXPECT_FALSE(info.artist);
}

TEST(Id3v2Damage, AbsurdTextFrameSizeReadsOnlyWhatIsThere) {
  // The tag says 10 bytes (the frame header); the frame says 2 GB; the file
  // holds 19 bytes of text behind the encoding byte.
  const std::string file = Id3v2Builder(3).FrameHeader("TIT2", 0x7FFFFFFF).Build(10) + Latin1Text("Nineteen characters");
  Id3v2Info info;
  EXPECT_TRUE(Read(file, info));
  EXPECT_EQ(info.title, "Nineteen characters");
}

TEST(Id3v2Damage, TruncatedFrameHeaderEndsTheWalkQuietly) {
  const std::string tag = Id3v2Builder(3).Frame("TIT2", Latin1Text("Title")).Bytes("TPE").Build(100);
  Id3v2Info info;
  EXPECT_TRUE(Read(tag + std::string(100, 'x'), info));  // "TPExxxxxxx" isn't known
  EXPECT_EQ(info.title, "Title");
  // The file ends three bytes into the second frame's header.
  EXPECT_TRUE(Read(Id3v2Builder(3).Frame("TIT2", Latin1Text("Title")).Bytes("TPE").Build(17), info));
  EXPECT_EQ(info.title, "Title");
  EXPECT_FALSE(info.artist);
}

TEST(Id3v2Damage, AMillionFramesAreWalkedToTheEnd) {
  Id3v2Builder tag(3);
  for (int i = 0; i < 1'000'000; ++i) tag.Frame("PRIV", "");
  tag.Frame("TIT2", Latin1Text("Last"));
  Id3v2Info info;
  EXPECT_TRUE(Read(WithAudioBehind(tag.Build()), info));
  EXPECT_EQ(info.title, "Last");
}

class TagFilesTest : public ::testing::Test {
 protected:
  testing_support::TemporaryDirectory folder;
};

TEST_F(TagFilesTest, PathsThatAreNoReadableFileGiveNoTag) {
  const std::string pipe = folder.File("pipe.mp3");
  ASSERT_EQ(mkfifo(pipe.c_str(), 0600), 0);
  for (const std::string& path : {folder.File("missing.mp3"), folder.Path(), pipe, std::string()}) {
    Id3v2Info info;
    info.title = "old";
    EXPECT_FALSE(decoders::ReadId3v2(path, info)) << path;
    EXPECT_FALSE(info.title);
    decoders::Id3v1Info v1;
    v1.genre = 3;
    EXPECT_FALSE(decoders::ReadId3v1(path, v1)) << path;
    EXPECT_EQ(v1.genre, -1);
  }
}

}  // namespace
}  // namespace decoders_test
