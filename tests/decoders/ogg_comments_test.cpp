// The player's own reading of Vorbis comments: which names count, which of
// two wins, and its lenient UTF-8 decoder with its deliberate stops.
#include "decoders/ogg_comments.h"

#include <gtest/gtest.h>

namespace decoders {
namespace {

TEST(OggCommentTextTest, DecodesOneTwoAndThreeByteCharacters) {
  EXPECT_EQ(DecodeOggCommentText("Caf\xC3\xA9 \xE2\x98\x95!"), u"Café ☕!");
  EXPECT_EQ(DecodeOggCommentText(""), u"");
}

TEST(OggCommentTextTest, StopsWhereTheLenientDecoderGivesUp) {
  // A stray continuation byte ends the text there.
  EXPECT_EQ(DecodeOggCommentText("ab\x80"
                                 "cd"),
            u"ab");
  // A four-byte sequence is read as three bytes keeping the low 16 bits
  // (F0 9F 8E gives 0x07CE), and its last
  // byte is then a stray continuation.
  EXPECT_EQ(DecodeOggCommentText("x\xF0\x9F\x8E\xB5y"), std::u16string(u"x") + char16_t{0x07CE});
  // A zero byte, or a sequence cut off by the end.
  EXPECT_EQ(DecodeOggCommentText(std::string_view("ab\0cd", 5)), u"ab");
  EXPECT_EQ(DecodeOggCommentText("ab\xC3"), u"ab");
  EXPECT_EQ(DecodeOggCommentText("ab\xE2\x98"), u"ab");
}

TEST(OggCommentTextTest, KeepsSixtyThreeUnits) {
  const std::string longText(100, 'x');
  EXPECT_EQ(DecodeOggCommentText(longText).size(), 63u);
  std::string accents;
  for (int i = 0; i < 70; ++i) accents += "\xC3\xA9";
  EXPECT_EQ(DecodeOggCommentText(accents), std::u16string(63, u'é'));
}

TEST(OggTagsTest, NamesCountInAnyCaseAndALaterCommentWins) {
  const OggTags tags = ReadOggTags({"TITLE=First", "Artist=Someone", "title=Second", "album=A", "GENRE=Jazz",
                                    "tracknumber=3/12", "DATE=2011", "comment=c", "ENCODER=x",
                                    "TITLEX=not a title", "=empty", "noequals"});
  EXPECT_EQ(tags.title, "Second");
  EXPECT_EQ(tags.artist, "Someone");
  EXPECT_EQ(tags.album, "A");
  EXPECT_EQ(tags.genre, "Jazz");
  EXPECT_EQ(tags.trackNumber, "3/12");
  EXPECT_EQ(tags.date, "2011");
  EXPECT_EQ(tags.comment, "c");
}

TEST(OggTagsTest, ValuesAreTheDecodersTextInUtf8) {
  const OggTags tags = ReadOggTags({"TITLE=\xC3\x84rtist\x80tail", "ARTIST=\xE2\x98\x95"});
  EXPECT_EQ(tags.title, "\xC3\x84rtist");
  EXPECT_EQ(tags.artist, "\xE2\x98\x95");
  EXPECT_EQ(ReadOggTags({}), OggTags{});
}

}  // namespace
}  // namespace decoders
