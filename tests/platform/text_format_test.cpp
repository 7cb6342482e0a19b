#include "platform/text_format.h"

#include <gtest/gtest.h>


namespace {

using platform::FormatText;

TEST(TextFormatTest, TheConversionsOfTheProgramsTextsWork) {
  EXPECT_EQ(FormatText("Volume: %d%%", {std::int64_t{42}}), "Volume: 42%");
  EXPECT_EQ(FormatText("Seek to %s", {"01:05"}), "Seek to 01:05");
  EXPECT_EQ(FormatText("%d:%02d:%02d", {std::int64_t{1}, std::int64_t{2}, std::int64_t{3}}), "1:02:03");
  EXPECT_EQ(FormatText("Locale %#X", {std::int64_t{0x407}}), "Locale 0X407");
  EXPECT_EQ(FormatText("%03d|%-4d|%4s", {std::int64_t{7}, std::int64_t{-5}, "ab"}), "007|-5  |  ab");
  EXPECT_EQ(FormatText("%x %u", {std::int64_t{255}, std::int64_t{-1}}), "ff 4294967295");
}

TEST(TextFormatTest, AFormatFromAPackCanNeitherCrashNorReadWhatIsntThere) {
  EXPECT_EQ(FormatText("%s seconds", {std::int64_t{5}}), "5 seconds") << "an argument is what it is";
  EXPECT_EQ(FormatText("%d", {"text"}), "0");
  EXPECT_EQ(FormatText("%s %s %n %p", {"one"}), "one  %n %p") << "missing arguments give nothing";
  EXPECT_EQ(FormatText("100%", {}), "100%");
  EXPECT_EQ(FormatText("%99999999999d", {std::int64_t{1}}).size(), 256u) << "widths are bounded";
  EXPECT_EQ(FormatText("%l", {}), "%l");
}

}  // namespace
