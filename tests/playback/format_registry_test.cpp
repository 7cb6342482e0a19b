#include "playback/format_registry.h"

#include <gtest/gtest.h>

#include "playback/media_decoder.h"

namespace {

using namespace playback;

// A registry filled as the application fills it at start-up.
class FormatRegistryTest : public ::testing::Test {
 protected:
  void SetUp() override {
    for (int id : {500, 501, 502}) {
      formats.AddExtension(id, id == 500 ? "m3u" : id == 501 ? "pls" : "asx");
      formats.Enable(id, true);
    }
    formats.AddExtension(kFormatOgg, "ogg");
    formats.Enable(kFormatOgg, true);
    for (const char* extension : {"mp3", "mp2", "mpa"}) formats.AddExtension(kFormatMp3, extension);
    formats.Enable(kFormatMp3, true);
    formats.AddExtension(kFormatWav, "wav");
    formats.Enable(kFormatWav, true);
    formats.SetDecoder(kFormatMp3, &mp3);
    formats.SetDecoder(kFormatMp3Stream, &mp3);
  }
  FormatRegistry formats;
  MediaDecoder mp3;
};

TEST_F(FormatRegistryTest, HttpAddressesAreStreamsByTheirLastFourCharacters) {
  EXPECT_EQ(formats.FormatOf("http://radio.example/live"), kFormatMp3Stream);
  EXPECT_EQ(formats.FormatOf("HTTP://radio.example/live.OGG"), kFormatOggStream);
  EXPECT_EQ(formats.FormatOf("http://radio.example/live.ogg?x=1"), kFormatMp3Stream);
  EXPECT_EQ(formats.FormatOf("http://radio.example/list.m3u"), kFormatMp3Stream)
      << "addresses never look at the table";
  EXPECT_EQ(formats.FormatOf("https://radio.example/live"), kFormatNone);
  EXPECT_EQ(formats.DecoderForPath("http://x/y"), &mp3);
}

TEST_F(FormatRegistryTest, TailsMatchWithoutADotButMustBeShorterThanThePath) {
  EXPECT_EQ(formats.FormatOf("/music/Song.MP3"), kFormatMp3);
  EXPECT_EQ(formats.FormatOf("/music/tune.xmp3"), kFormatMp3);
  EXPECT_EQ(formats.FormatOf("foomp3"), kFormatMp3);
  EXPECT_EQ(formats.FormatOf("mp3"), kFormatNone);
  EXPECT_EQ(formats.FormatOf(""), kFormatNone);
  EXPECT_EQ(formats.FormatOf("/music/readme.txt"), kFormatNone);
  EXPECT_EQ(formats.DecoderForPath(""), nullptr);
  EXPECT_EQ(formats.DecoderForPath("/a.wav"), nullptr) << "no decoder bound to 7";
}

TEST_F(FormatRegistryTest, ADisabledFirstMatchStopsTheSearch) {
  EXPECT_EQ(formats.FormatOf("/home/u/default.tsl"), kFormatNone);
  formats.AddExtension(600, "tsl");  // a later, enabled row with the same tail
  formats.Enable(600, true);
  EXPECT_EQ(formats.FormatOf("/home/u/default.tsl"), kFormatNone);
  formats.Enable(kFormatNativeList, true);
  EXPECT_EQ(formats.FormatOf("/home/u/default.tsl"), kFormatNativeList);
  EXPECT_TRUE(formats.IsEnabled(kFormatNativeList));
  EXPECT_FALSE(formats.IsEnabled(kFormatAac));
}

TEST_F(FormatRegistryTest, ExtensionWalksSkipDisabledRowsAndOtherKinds) {
  std::vector<std::string> playlists, media;
  int cursor;
  for (auto* e = formats.FirstPlaylistExtension(cursor); e; e = formats.NextPlaylistExtension(cursor))
    playlists.push_back(*e);
  EXPECT_EQ(cursor, -1);
  for (auto* e = formats.FirstMediaExtension(cursor); e; e = formats.NextMediaExtension(cursor))
    media.push_back(*e);
  EXPECT_EQ(playlists, (std::vector<std::string>{"m3u", "pls", "asx"}));
  EXPECT_EQ(media, (std::vector<std::string>{"ogg", "mp3", "mp2", "mpa", "wav"}));
  EXPECT_EQ(formats.ExtensionAt(0), nullptr) << "row 503 is disabled";
  ASSERT_NE(formats.ExtensionAt(1), nullptr);
  EXPECT_EQ(*formats.ExtensionAt(1), "m3u");
  EXPECT_EQ(formats.ExtensionAt(formats.ExtensionCount()), nullptr);
}

TEST(FormatRegistryLimits, BothTablesStopAtTheirLimits) {
  FormatRegistry formats;
  MediaDecoder first, second;
  for (int id = 0; id < FormatRegistry::kMaxDecoders; ++id) formats.SetDecoder(id, &first);
  formats.SetDecoder(0, &second);
  EXPECT_EQ(formats.DecoderFor(0), &first) << "a known id is not replaced once the table is full";
  formats.SetDecoder(99, &second);
  EXPECT_EQ(formats.DecoderFor(99), nullptr);

  FormatRegistry replacing;
  replacing.SetDecoder(1, &first);
  replacing.SetDecoder(1, &second);
  EXPECT_EQ(replacing.DecoderFor(1), &second);

  for (int row = 1; row < FormatRegistry::kMaxExtensions + 5; ++row) formats.AddExtension(1, "x" + std::to_string(row));
  EXPECT_EQ(formats.ExtensionCount(), FormatRegistry::kMaxExtensions);
  formats.AddExtension(1, "averyveryverylongextension");
  EXPECT_EQ(formats.ExtensionCount(), FormatRegistry::kMaxExtensions);

  FormatRegistry trimmed;
  trimmed.AddExtension(1, "averyveryverylongextension");
  trimmed.Enable(1, true);
  EXPECT_EQ(*trimmed.ExtensionAt(1), "averyveryverylo") << "15 characters and the terminator";
}

}  // namespace
