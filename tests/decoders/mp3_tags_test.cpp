// What the MP3 decoder tells of files from their tags: the title line, the
// playlist's details, the format summary and the information text.
#include <gtest/gtest.h>

#include "decoders/id3_builders.h"
#include "decoders/mp3_decoder.h"
#include "decoders/mpeg_test_files.h"
#include "playback/locked_file.h"
#include "support/test_environment.h"

namespace decoders_test {
namespace {

class Mp3TagsTest : public testing_support::IsolatedEnvironmentTest {
 protected:
  // The untagged test file's frames behind `front` and before `back`.
  std::string Tagged(const std::string& name, const std::string& front, const std::string& back = {}) {
    const Bytes audio = LoadMedia("mpeg25_8k_mono.mp3");
    const std::string path = Root().File(name);
    testing_support::WriteFile(path, front + std::string(audio.begin(), audio.end()) + back);
    return path;
  }
  std::optional<std::string> Title(const std::string& path) {
    decoder.Close();
    if (!decoder.Open(path)) return "(does not open)";
    std::string title;
    if (!decoder.GetDisplayTitle(title)) return std::nullopt;
    return title;
  }
  struct Details {
    std::string display, album, artist, title;
    playback::FormatSummary summary;
    std::uint32_t durationMs = 0;
    std::uint32_t reserved = 99;
  };
  std::optional<Details> DetailsOf(const std::string& path) {
    Details details;
    if (!decoder.GetFileDetails(path, &details.display, &details.album, &details.summary, &details.durationMs,
                                &details.reserved, &details.artist, &details.title)) {
      return std::nullopt;
    }
    return details;
  }

  void SetUp() override {
    IsolatedEnvironmentTest::SetUp();
    decoder.SetSource(&file);
  }

  playback::LockedFile file;
  decoders::Mp3Decoder decoder;
};

TEST_F(Mp3TagsTest, TheTitleComesFromId3v2ThenId3v1AndOtherwiseThereIsNone) {
  EXPECT_EQ(Title(MediaPath("cbr128_44k_stereo.mp3")), "Some Artist - Latin Title");
  EXPECT_EQ(Title(MediaPath("vbr_44k_stereo.mp3")), "Ärtist - Café Ünïcode ☕");
  EXPECT_EQ(Title(MediaPath("mpeg2_22k_mono.mp3")), "Mono Artist - Mono Title") << "ID3v1 only";
  EXPECT_EQ(Title(MediaPath("mpeg25_8k_mono.mp3")), std::nullopt) << "no tag";
  EXPECT_EQ(Title(MediaPath("id3v24_utf8.mp3")), "id3v24_utf8") << "UTF-8 frames give no text";
  EXPECT_EQ(Title(Tagged("a.b.mp3", Id3v2Builder(3).Frame("TIT2", Latin1Text("Alone")).Build())), "Alone");
  // A readable ID3v2 tag ends the matter, even without the fields.
  EXPECT_EQ(Title(Tagged("Only v1.mp3", Id3v2Builder(3).Build(), Id3v1Record({.title = "T", .artist = "A"}))),
            "Only v1");
  EXPECT_EQ(Title(Tagged("x.mp3", "", Id3v1Record({.title = "Title"}))), " - Title") << "an empty side stays";
}

TEST_F(Mp3TagsTest, TheSummaryTakesTrackAndGenreFromId3v1) {
  playback::FormatSummary summary;
  decoder.GetFormatSummary(summary);
  EXPECT_EQ(summary.sampleRate, 0u) << "nothing open";
  ASSERT_TRUE(decoder.Open(MediaPath("cbr128_44k_stereo.mp3")));
  decoder.GetFormatSummary(summary);
  EXPECT_EQ(summary.trackNumber, 7u);
  EXPECT_EQ(summary.genre, "Rock");
  EXPECT_EQ(summary.stereo, 1u);
  decoder.Close();
  // A comment reaching its 29th character leaves no room for a track; genre
  // numbers past the table name nothing.
  ASSERT_TRUE(decoder.Open(
      Tagged("long.mp3", "", Id3v1Record({.comment = std::string(29, 'c'), .track = 4, .genre = 148}))));
  decoder.GetFormatSummary(summary);
  EXPECT_EQ(summary.trackNumber, playback::kUnknownTrackNumber);
  EXPECT_EQ(summary.genre, "");
  EXPECT_EQ(summary.stereo, 0u);
}

TEST_F(Mp3TagsTest, FileDetailsFollowTheTagsAndFillTheArtistWithTheAlbumOfId3v1) {
  const std::optional<Details> v1 = DetailsOf(MediaPath("mpeg2_22k_mono.mp3"));
  ASSERT_TRUE(v1.has_value());
  EXPECT_EQ(v1->display, "Mono Artist - Mono Title");
  EXPECT_EQ(v1->album, "Mono Album");
  EXPECT_EQ(v1->artist, "Mono Album") << "the player's slip, kept";
  EXPECT_EQ(v1->title, "Mono Title");
  EXPECT_EQ(v1->summary.trackNumber, 31u);
  EXPECT_EQ(v1->summary.genre, "Synthpop");
  EXPECT_EQ(v1->summary.bitRate, 32u);
  EXPECT_EQ(v1->summary.sampleRate, 22050u);
  EXPECT_NEAR(v1->durationMs, 2064, 30);
  EXPECT_EQ(v1->reserved, 0u);

  const std::optional<Details> v2 = DetailsOf(MediaPath("vbr_44k_stereo.mp3"));
  ASSERT_TRUE(v2.has_value());
  EXPECT_EQ(v2->display, "Ärtist - Café Ünïcode ☕");
  EXPECT_EQ(v2->artist, "Ärtist");
  EXPECT_EQ(v2->album, "Album ß");
  EXPECT_EQ(v2->summary.trackNumber, 3u) << "of \"3/12\"";
  EXPECT_EQ(v2->summary.genre, "Jazz");

  const auto artistOnly =
      DetailsOf(Tagged("Tune.mp3", Id3v2Builder(3).Frame("TPE1", Latin1Text("Band")).Build()));
  ASSERT_TRUE(artistOnly.has_value());
  EXPECT_EQ(artistOnly->display, "Band - Tune");
  const auto untagged = DetailsOf(MediaPath("mpeg25_8k_mono.mp3"));
  ASSERT_TRUE(untagged.has_value());
  EXPECT_EQ(untagged->display, "mpeg25_8k_mono");
  EXPECT_EQ(untagged->summary.trackNumber, playback::kUnknownTrackNumber);

  EXPECT_FALSE(DetailsOf(Root().File("missing.mp3")).has_value());
  // An ID3v2 header that the reader refuses (major version 5) fails the details.
  std::string refused = Id3v2Builder(3).Frame("TIT2", Latin1Text("x")).Build();
  refused[3] = 5;
  EXPECT_FALSE(DetailsOf(Tagged("refused.mp3", refused)).has_value());
  EXPECT_EQ(file.IsOpen(), 0) << "the details don't touch the decoder's file";
}

TEST_F(Mp3TagsTest, TheInformationTextHasTheLinesOfTheTagItFinds) {
  std::string text;
  // lame's ID3v2.3 tag in Latin-1; its comment runs to the first terminator,
  // the language code, and its TSSE frame isn't read.
  ASSERT_TRUE(decoder.GetInfoText(MediaPath("cbr128_44k_stereo.mp3"), text));
  EXPECT_EQ(text,
            "<b>Title:</b> Latin Title<br><b>Artist:</b> Some Artist<br>"
            "<b>Total play time:</b> 00:00:02<br><b>Bitrate:</b> 128 kbps<br>"
            "<b>Sampling Rate:</b> 44100 Hz<br><b>Channels:</b> 2<br><b>Album:</b> An Album<br>"
            "<b>Genre:</b> Rock<br><b>Track:</b> 7<br><b>Year:</b> 2004<br><b>Comment:</b> eng<br>");
  ASSERT_TRUE(decoder.GetInfoText(MediaPath("mpeg2_22k_mono.mp3"), text));
  EXPECT_EQ(text,
            "<b>Title:</b> Mono Title<br><b>Artist:</b> Mono Artist<br>"
            "<b>Total play time:</b> 00:00:02<br><b>Bitrate:</b> 32 kbps<br>"
            "<b>Sampling Rate:</b> 22050 Hz<br><b>Channels:</b> 1<br><b>Album:</b> Mono Album<br>"
            "<b>Genre:</b> Synthpop<br><b>Year:</b> 1987<br><b>Comment:</b> <br>");
  ASSERT_TRUE(decoder.GetInfoText(MediaPath("mpeg25_8k_mono.mp3"), text));
  EXPECT_EQ(text,
            "<b>Total play time:</b> 00:00:02<br><b>Bitrate:</b> 16 kbps<br>"
            "<b>Sampling Rate:</b> 8000 Hz<br><b>Channels:</b> 1<br>");
  // A long comment is cut so that the text stays within its block.
  ASSERT_TRUE(decoder.GetInfoText(
      Tagged("long.mp3", Id3v2Builder(3).Frame("COMM", Latin1Text(std::string(3000, 'c'))).Build()), text));
  EXPECT_EQ(text.size(), 1023u);
  EXPECT_EQ(text.substr(text.size() - 5), "c<br>");
  EXPECT_FALSE(decoder.GetInfoText("http://radio.example/stream", text));
  EXPECT_EQ(text, "");
}

}  // namespace
}  // namespace decoders_test
