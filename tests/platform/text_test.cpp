#include "platform/text.h"

#include <gtest/gtest.h>

namespace {

using namespace platform;

TEST(TextTest, NarrowTextIsUtf8WhenValidElseWindows1252) {
  EXPECT_EQ(NarrowToUtf8("Motörhead"), "Motörhead");
  EXPECT_EQ(NarrowToUtf8("Mot\xF6rhead"), "Motörhead");
  EXPECT_EQ(NarrowToUtf8("\x80 \x93quoted\x94 \x81"), "€ “quoted” \xC2\x81");
  // Overlong forms and surrogates are not valid UTF-8, so the bytes are 1252.
  EXPECT_FALSE(IsValidUtf8("\xC0\xAF"));
  EXPECT_FALSE(IsValidUtf8("\xED\xA0\x80"));
  EXPECT_FALSE(IsValidUtf8("\xF4\x90\x80\x80"));
  EXPECT_FALSE(IsValidUtf8("\xE2\x82"));
  EXPECT_TRUE(IsValidUtf8("𝄞"));
  EXPECT_EQ(Latin1ToUtf8("\x80\xE9"), "\xC2\x80\xC3\xA9");
}

TEST(TextTest, Utf16ConvertsBothWaysWithSurrogatesAndRepairsBrokenPairs) {
  EXPECT_EQ(Utf8ToUtf16("a€𝄞"), (std::u16string{u'a', 0x20AC, 0xD834, 0xDD1E}));
  EXPECT_EQ(Utf16ToUtf8(u"a€𝄞"), "a€𝄞");
  EXPECT_EQ(Utf16ToUtf8(std::u16string{0xD834, u'x'}), "\xEF\xBF\xBDx");
  EXPECT_EQ(Utf16BytesToUtf8(std::string("\x00h\x00i\xD8\x34\xDD\x1E!", 9), true), "hi𝄞");
  EXPECT_EQ(Utf16BytesToUtf8(std::string("h\x00i\x00", 4), false), "hi");
  EXPECT_EQ(Utf8ToUtf16("\xF6"), std::u16string(1, u'ö')) << "invalid bytes are 1252";
}

TEST(TextTest, WideCharacterBoundsCountUtf16Units) {
  EXPECT_EQ(Utf16Length("abc"), 3u);
  EXPECT_EQ(Utf16Length("ü€𝄞"), 4u);
  EXPECT_EQ(TruncateToUtf16Units("ab𝄞c", 3), "ab") << "a pair is never split";
  EXPECT_EQ(TruncateToUtf16Units("ab𝄞c", 4), "ab𝄞");
  EXPECT_EQ(TruncateToUtf16Units("äöü", 2), "äö");
  EXPECT_EQ(TruncateToUtf16Units("x\xFFy", 2), "x\xFF");
}

TEST(TextTest, CaseInsensitiveComparesFoldAsciiOnly) {
  EXPECT_TRUE(EqualsIgnoreCase("HTTP://", "http://"));
  EXPECT_TRUE(StartsWithIgnoreCase("Http://radio", "http://"));
  EXPECT_TRUE(EndsWithIgnoreCase("song.OGG", ".ogg"));
  EXPECT_FALSE(EndsWithIgnoreCase("ogg", ".ogg"));
  EXPECT_FALSE(EqualsIgnoreCase("Ä", "ä"));
}

}  // namespace
