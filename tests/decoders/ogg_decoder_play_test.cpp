// The Ogg decoder's texts, chained files, seeks, refused and damaged files
// and the transport's calls, through the output engine into capture
// devices.
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "decoders/ogg_pipeline.h"
#include "playback/audio_output.h"

namespace decoders_test {
namespace {

using platform::CapturePace;

// --- Texts --------------------------------------------------------------------------------------

TEST_F(OggPipelineTest, TitlesSummariesAndDetailsComeFromTheComments) {
  decoders::OggDecoder& vorbis = WireOgg();
  std::string title = "old";
  EXPECT_FALSE(vorbis.GetDisplayTitle(title)) << "nothing is open";
  EXPECT_EQ(title, "");
  EXPECT_EQ(vorbis.GetDuration(), 0u);

  // The later "title" (small letters) replaces "TITLE"; texts in UTF-8.
  ASSERT_TRUE(vorbis.Open(OggMediaPath("stereo_44k.ogg")));
  ASSERT_TRUE(vorbis.GetDisplayTitle(title));
  EXPECT_EQ(title, "Ärtist - Café Ünïcode ☕");
  playback::FormatSummary summary;
  vorbis.GetFormatSummary(summary);
  EXPECT_EQ(summary.trackNumber, 3u) << "3/12";
  EXPECT_EQ(summary.genre, "Jazz");
  EXPECT_EQ(summary.bitRate, 160u) << "quality 5's nominal bitrate";
  EXPECT_EQ(summary.stereo, 1u);
  vorbis.Close();

  // Only an artist: an empty side. Neither: the file's name. No track
  // number reads 0, not the 100000 of other formats.
  ASSERT_TRUE(vorbis.Open(OggMediaPath("mono_22k.ogg")));
  ASSERT_TRUE(vorbis.GetDisplayTitle(title));
  EXPECT_EQ(title, "Mono Artist - ");
  vorbis.GetFormatSummary(summary);
  EXPECT_EQ(summary.trackNumber, 0u);
  EXPECT_EQ(summary.stereo, 0u);
  vorbis.Close();
  ASSERT_TRUE(vorbis.Open(OggMediaPath("stereo_48k.ogg")));
  ASSERT_TRUE(vorbis.GetDisplayTitle(title));
  EXPECT_EQ(title, "stereo_48k");
  vorbis.Close();
  EXPECT_FALSE(vorbis.GetDisplayTitle(title)) << "closed";

  // Details of another file leave the open one alone.
  ASSERT_TRUE(vorbis.Open(OggMediaPath("mono_22k.ogg")));
  std::string display, album, artist, name;
  std::uint32_t durationMs = 0, reserved = 7;
  ASSERT_TRUE(vorbis.GetFileDetails(OggMediaPath("stereo_44k.ogg"), &display, &album, &summary, &durationMs,
                                    &reserved, &artist, &name));
  EXPECT_EQ(display, "Ärtist - Café Ünïcode ☕");
  EXPECT_EQ(album, "Album ß");
  EXPECT_EQ(artist, "Ärtist");
  EXPECT_EQ(name, "Café Ünïcode ☕");
  EXPECT_EQ(durationMs, 4000u);
  EXPECT_EQ(reserved, 0u);
  EXPECT_EQ(summary.sampleRate, 44100u);
  EXPECT_EQ(summary.trackNumber, 3u);
  EXPECT_TRUE(vorbis.GetFileDetails(OggMediaPath("stereo_48k.ogg"), nullptr, nullptr, nullptr, nullptr,
                                    nullptr, nullptr, nullptr));
  EXPECT_FALSE(vorbis.GetFileDetails(MediaPath("cbr128_44k_stereo.mp3"), &display, nullptr, nullptr, nullptr,
                                     nullptr, nullptr, nullptr));
  EXPECT_FALSE(vorbis.GetFileDetails("", nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr));
  ASSERT_TRUE(vorbis.GetDisplayTitle(title));
  EXPECT_EQ(title, "Mono Artist - ");
  EXPECT_EQ(vorbis.GetDuration(), 3000u);
}

TEST_F(OggPipelineTest, TheInformationTextListsWhatIsThere) {
  decoders::OggDecoder& vorbis = WireOgg();
  std::string text;
  ASSERT_TRUE(vorbis.GetInfoText(OggMediaPath("stereo_44k.ogg"), text));
  EXPECT_EQ(text,
            "<b>Title:</b> Café Ünïcode ☕<br><b>Artist:</b> Ärtist<br><b>Total play time:</b> 00:00:04<br>"
            "<b>Bitrate:</b> 160 kbps<br><b>Sampling Rate:</b> 44100 Hz<br><b>Channels:</b> 2<br>"
            "<b>Album:</b> Album ß<br><b>Genre:</b> Jazz<br><b>Date:</b> 2011<br><b>Track:</b> 3/12<br>"
            "<b>Comment:</b> A comment<br>");
  ASSERT_TRUE(vorbis.GetInfoText(OggMediaPath("mono_22k.ogg"), text));
  EXPECT_EQ(text.rfind("<b>Artist:</b> Mono Artist<br><b>Total play time:</b> 00:00:03<br>", 0), 0u) << text;
  EXPECT_NE(text.find("<b>Channels:</b> 1<br>"), std::string::npos);
  EXPECT_FALSE(vorbis.GetInfoText("http://host/radio.ogg", text));
  EXPECT_FALSE(vorbis.GetInfoText(MediaPath("cbr128_44k_stereo.mp3"), text));
  EXPECT_EQ(text, "");
}

// --- Chained files ------------------------------------------------------------------------------

TEST_F(OggPipelineTest, TheNextLinkOfAChainedFileBringsItsTitle) {
  UseCapture(CapturePace::kUnpaced);
  decoders::OggDecoder& vorbis = WireOgg();
  ASSERT_TRUE(vorbis.Open(OggMediaPath("chained.ogg")));
  EXPECT_EQ(vorbis.GetDuration(), 4000u) << "both links";
  std::string title;
  ASSERT_TRUE(vorbis.GetDisplayTitle(title));
  EXPECT_EQ(title, "Chain - Link One");
  ASSERT_TRUE(vorbis.Play());
  ASSERT_TRUE(Ended());
  const std::vector<std::uint32_t> ids = notify.PendingIds();
  EXPECT_EQ(std::count(ids.begin(), ids.end(), playback::kMessageTitleChanged), 1);
  ASSERT_LT(std::find(ids.begin(), ids.end(), playback::kMessageTitleChanged),
            std::find(ids.begin(), ids.end(), playback::kMessageTrackEnded));
  ASSERT_TRUE(vorbis.GetDisplayTitle(title));
  EXPECT_EQ(title, "Chain - Link Two");
}

// --- Seeks --------------------------------------------------------------------------------------

TEST_F(OggPipelineTest, ASeekLandsOnAPageBeforeTheTargetAndThePositionShowsIt) {
  UseCapture(CapturePace::kStepped);
  const std::string path = OggMediaPath("stereo_44k.ogg");
  const Samples reference = OggReferenceDecode(path);
  ASSERT_FALSE(reference.empty());
  decoders::OggDecoder& vorbis = WireOgg();
  ASSERT_TRUE(vorbis.Open(path));
  EXPECT_FALSE(vorbis.Seek(1000)) << "stopped";
  vorbis.Close();
  PlayUntilQueued(vorbis, path, 44100);
  const std::uint32_t before = output->LastHandle();

  ASSERT_TRUE(vorbis.Seek(-200)) << "a negative time is the start";
  EXPECT_EQ(vorbis.GetPosition(), 0u);
  EXPECT_FALSE(vorbis.Seek(static_cast<int>(vorbis.GetDuration()))) << "the end itself is refused";
  ASSERT_TRUE(vorbis.Seek(2500));
  const std::uint32_t position = vorbis.GetPosition();
  std::printf("a seek to 2500 ms lands at %u ms\n", position);
  EXPECT_LE(position, 2500u);
  EXPECT_GT(position, 2000u);
  EXPECT_FALSE(output->IsStreamAlive(before)) << "without crossfade the old stream goes";
  PlayOut();
  ASSERT_TRUE(Ended());

  // The sound goes on at the page's first sample, where the position says.
  const Samples sound = Sound(2);
  const std::size_t guess = static_cast<std::size_t>(position) * 441 / 10;
  const Alignment found = AlignSound(sound, reference, guess, 100, 2, 20000);
  EXPECT_GT(found.snr, 70.0);
  EXPECT_EQ(found.frame * 1000 / 44100, position);
  EXPECT_NEAR(static_cast<double>(sound.size()), static_cast<double>(reference.size() - found.frame * 2),
              4.0);
}

// --- Files that don't open, damaged files ------------------------------------------------------

TEST_F(OggPipelineTest, WhatIsntOggVorbisDoesntOpenAndLeavesTheFileClosed) {
  decoders::OggDecoder& vorbis = WireOgg();
  const Bytes whole = LoadOggMedia("stereo_44k.ogg");
  const std::vector<std::pair<const char*, Bytes>> files{
      {"empty", {}},
      {"text", Bytes(5000, 'a')},
      {"headers only", Bytes(whole.begin(), whole.begin() + 200)},
      {"mp3", LoadMedia("cbr128_44k_stereo.mp3")},
  };
  for (const auto& [name, bytes] : files) {
    EXPECT_FALSE(vorbis.Open(WriteMedia("bad.ogg", bytes))) << name;
    EXPECT_EQ(file.IsOpen(), 0) << name;
    EXPECT_FALSE(vorbis.Play()) << name;
  }
  EXPECT_FALSE(vorbis.Open(Root().File("missing.ogg")));
  EXPECT_FALSE(vorbis.Open("http://host/radio.ogg")) << "no stream client";
  EXPECT_TRUE(vorbis.Open(OggMediaPath("stereo_44k.ogg")));
}

struct DamageCase {
  const char* name;
  std::function<Bytes(const Bytes& whole)> damage;
  double share;  // what share of the whole sound must play at least
};

void PrintTo(const DamageCase& damageCase, std::ostream* out) {
  *out << damageCase.name;
}

class OggDamageTest : public OggPipelineTest, public ::testing::WithParamInterface<DamageCase> {};

TEST_P(OggDamageTest, PlaysWhatCanBePlayedAndEnds) {
  const std::size_t whole = OggReferenceDecode(OggMediaPath("stereo_44k.ogg")).size();
  const Bytes damaged = GetParam().damage(LoadOggMedia("stereo_44k.ogg"));
  const std::size_t played = PlayDamaged(WireOgg(), WriteMedia("damaged.ogg", damaged));
  std::printf("%s: %zu of %zu samples\n", GetParam().name, played, whole);
  EXPECT_GE(static_cast<double>(played), GetParam().share * static_cast<double>(whole));
  EXPECT_LE(played, whole);
}

INSTANTIATE_TEST_SUITE_P(
    Files, OggDamageTest,
    ::testing::Values(DamageCase{"scrambled pages",
                                 [](const Bytes& whole) {
                                   Bytes bytes = whole;
                                   std::uint32_t seed = 5;
                                   for (std::size_t i = whole.size() / 3; i < whole.size() / 3 + 4000; ++i) {
                                     seed = seed * 1664525u + 1013904223u;
                                     bytes[i] = static_cast<std::uint8_t>(seed >> 24);
                                   }
                                   return bytes;
                                 },
                                 0.7},
                      DamageCase{"cut short",
                                 [](const Bytes& whole) {
                                   return Bytes(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(
                                                                                   whole.size() * 6 / 10));
                                 },
                                 0.5}));

// --- Transport ----------------------------------------------------------------------------------

TEST_F(OggPipelineTest, PauseStopAndPlayAgainFromTheStart) {
  UseCapture(CapturePace::kStepped);
  const std::string path = OggMediaPath("stereo_44k.ogg");
  decoders::OggDecoder& vorbis = WireOgg();
  ASSERT_TRUE(vorbis.Open(path));
  ASSERT_TRUE(vorbis.Play());
  EXPECT_FALSE(vorbis.Play()) << "already playing";
  EXPECT_EQ(vorbis.GetState(), playback::kStatePlaying);
  vorbis.TogglePause();
  EXPECT_EQ(vorbis.GetState(), playback::kStatePaused);
  ASSERT_TRUE(vorbis.Play()) << "Play resumes";
  EXPECT_EQ(vorbis.GetState(), playback::kStatePlaying);
  ASSERT_TRUE(output_testing::WaitUntil([&] { return output->StreamCount() == 1; }));

  vorbis.Stop();
  EXPECT_EQ(vorbis.GetState(), playback::kStateStopped);
  EXPECT_EQ(output->StreamCount(), 0) << "the stream is removed";
  EXPECT_EQ(notify.PendingCount(), 0u) << "a stop is no end of track";

  // Played again, the track starts from its beginning. The stepped device
  // played nothing of the first run.
  ASSERT_TRUE(vorbis.Play());
  ASSERT_TRUE(output_testing::WaitUntil([&] {
    const auto tap = driver->Taps().back();
    tap->Advance(1);
    return output->StreamCount() == 0 && tap->QueuedBuffers() == 0;
  }));
  ASSERT_TRUE(Ended());
  const Samples reference = FromFirstSound(OggReferenceDecode(path), 2);
  const Samples sound = TrimmedSound(driver->Taps().back()->Samples(), 2);
  ASSERT_GT(sound.size(), 40000u);
  EXPECT_GT(SnrDb(Samples(sound.begin(), sound.begin() + 40000), reference), 70.0);
  vorbis.Close();
  EXPECT_EQ(file.IsOpen(), 0);
}

}  // namespace
}  // namespace decoders_test
