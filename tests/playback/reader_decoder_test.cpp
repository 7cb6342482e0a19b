// The reader-driven decoder through the real output engine into capture
// devices: WAV files against sox's decode, and the track-end, stop and seek
// protocols with a pattern reader whose every sample is known.
#include "playback/reader_decoder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <thread>

#include "decoders/wav_reader.h"
#include "decoders/wav_test_files.h"
#include "output_test_support.h"
#include "pattern_reader.h"

namespace {

using namespace output_testing;
using platform::CapturePace;
using playback::ReaderDecoder;
using reader_testing::PatternReader;
using reader_testing::PatternSample;
using Samples = std::vector<std::int16_t>;

class ReaderDecoderTest : public DecoderTest {
 protected:
  void TearDown() override {
    decoder.reset();
    DecoderTest::TearDown();
  }
  // Readers live in the fixture: a decode thread may still read while a test
  // returns, until the decoder goes in TearDown.
  PatternReader& MakeReader(std::uint32_t rate, std::uint32_t channels, std::uint32_t frames) {
    ownedReader = std::make_unique<PatternReader>(rate, channels, frames);
    return *ownedReader;
  }
  ReaderDecoder& Wire(playback::FormatReader& reader, bool withSource = true) {
    decoder = std::make_unique<ReaderDecoder>();
    decoder->SetReader(&reader);
    decoder->SetOutput(output.get());
    if (withSource) decoder->SetSource(&file);
    decoder->SetNotifyWindow(&notify);
    return *decoder;
  }

  std::unique_ptr<PatternReader> ownedReader;
  decoders::WavReader wavReader;
  std::unique_ptr<ReaderDecoder> decoder;
};

// --- Sound of real files --------------------------------------------------------------------

class ReaderDecoderSoundTest : public ReaderDecoderTest, public ::testing::WithParamInterface<const char*> {};

TEST_P(ReaderDecoderSoundTest, TheCaptureDevicePlaysWhatSoxDecodes) {
  UseCapture(CapturePace::kUnpaced);
  const std::string path = wav_testing::MediaPath(GetParam());
  Samples reference = wav_testing::SoxDecode(path);
  ASSERT_FALSE(reference.empty());
  ReaderDecoder& wav = Wire(wavReader);
  ASSERT_TRUE(wav.Open(path));
  ASSERT_TRUE(wav.Play());
  ASSERT_TRUE(Ended());
  // The end mark trims the tail with the threshold that the end of the
  // prefill armed, and the queue drops the last loud sample with it.
  reference.pop_back();
  const int channels = std::string(GetParam()).find("stereo") != std::string::npos ? 2 : 1;
  ASSERT_TRUE(WaitUntil([&] { return TrimmedSound(Tap()->Samples(), channels).size() >= reference.size(); }));
  EXPECT_EQ(Sound(channels), reference);
  EXPECT_EQ(wav.GetState(), playback::kStatePlaying) << "the end only posts; the application closes";
  wav.Close();
  EXPECT_EQ(file.IsOpen(), 0);
}

INSTANTIATE_TEST_SUITE_P(Files, ReaderDecoderSoundTest,
                         ::testing::Values("pcm16_stereo.wav", "pcm8_mono.wav", "adpcm_mono.wav"));

TEST_F(ReaderDecoderTest, PlayNeedsAReaderAndASourceAndStartsOneThread) {
  UseCapture(CapturePace::kStepped);
  PatternReader& reader = MakeReader(8000, 2, 80000);
  ReaderDecoder& pattern = Wire(reader, false);
  ASSERT_TRUE(pattern.Open("/any"));
  EXPECT_FALSE(pattern.Play()) << "no source set, although the reader wouldn't use it";
  EXPECT_EQ(pattern.GetState(), playback::kStateStopped);

  pattern.SetSource(&file);
  ASSERT_TRUE(pattern.Play());
  EXPECT_TRUE(pattern.Play()) << "playing already";
  ASSERT_TRUE(WaitUntil([&] { return output->StreamCount() == 1; }));
  EXPECT_EQ(reader.formatCalls.load(), 1);

  ReaderDecoder idle;
  idle.SetSource(&file);
  EXPECT_FALSE(idle.Play()) << "no reader";
}

// --- The end of a track ---------------------------------------------------------------------

TEST_F(ReaderDecoderTest, WithNeitherOptionTheEndWaitsUntilTheQueueHasPlayed) {
  UseCapture(CapturePace::kStepped);
  // Half a second: shorter than the prefill, so it starts at its end.
  PatternReader& reader = MakeReader(8000, 1, 4000);
  ReaderDecoder& pattern = Wire(reader);
  ASSERT_TRUE(pattern.Open("/any"));
  ASSERT_TRUE(pattern.Play());
  EXPECT_FALSE(Ended(300)) << "nothing has played yet";
  PlayOut();
  EXPECT_TRUE(Ended(5000));
  const Samples sound = Sound(1);
  ASSERT_EQ(sound.size(), 4000u);
  for (std::uint32_t i = 0; i < sound.size(); ++i) ASSERT_EQ(sound[i], PatternSample(i)) << i;
}

TEST_F(ReaderDecoderTest, WithCrossfadeTheEndFadesAllThatIsQueuedAndPostsAtOnce) {
  SetPlaybackOptions(true, true, false);
  UseCapture(CapturePace::kStepped);
  PatternReader& reader = MakeReader(8000, 1, 4000);
  ReaderDecoder& pattern = Wire(reader);
  ASSERT_TRUE(pattern.Open("/any"));
  ASSERT_TRUE(pattern.Play());
  ASSERT_TRUE(Ended()) << "without any sound played";
  pattern.Close();
  PlayOut();
  const Samples sound = Sound(1);
  ASSERT_FALSE(sound.empty());
  // The fade-in of 2000 ms keeps all of this half second below a seventh of
  // the pattern (which rises to 4600); the fade-out takes its end to silence.
  EXPECT_LT(*std::max_element(sound.begin(), sound.end()), 1000);
  EXPECT_LT(sound.back(), 100);
}

TEST_F(ReaderDecoderTest, WithGaplessTheStreamStaysForTheNextTrackWhichReplacesItsTail) {
  SetPlaybackOptions(false, true, false);
  UseCapture(CapturePace::kStepped);
  PatternReader first(8000, 2, 4000);
  ReaderDecoder& pattern = Wire(first);
  ASSERT_TRUE(pattern.Open("/first"));
  ASSERT_TRUE(pattern.Play());
  ASSERT_TRUE(Ended()) << "without any sound played";
  pattern.Close();
  EXPECT_EQ(output->StreamCount(), 1) << "Close leaves the stream for the next track";
  EXPECT_EQ(output->QueuedSamples(output->LastHandle()), 8000u) << "and it has no end mark";

  notify.RemovePending(playback::kMessageTrackEnded);
  ASSERT_TRUE(pattern.Open("/second"));
  ASSERT_TRUE(pattern.Play());
  ASSERT_TRUE(Ended());
  EXPECT_EQ(output->StreamCount(), 1) << "the same stream carries on";
  EXPECT_EQ(output->QueuedSamples(output->LastHandle()), 8000u) << "the first write replaced the tail";
}

// --- Stop -------------------------------------------------------------------------------------

TEST_F(ReaderDecoderTest, StopRemovesTheStreamOrWithCrossfadeLetsItFadeOutAlone) {
  UseCapture(CapturePace::kStepped);
  PatternReader& reader = MakeReader(8000, 2, 80000);  // ten seconds: the thread waits for room
  ReaderDecoder& pattern = Wire(reader);
  ASSERT_TRUE(pattern.Open("/any"));
  ASSERT_TRUE(pattern.Play());
  ASSERT_TRUE(WaitUntil([&] { return output->QueuedSamples(output->LastHandle()) == 32000u; }));
  pattern.Stop();
  EXPECT_EQ(pattern.GetState(), playback::kStateStopped);
  EXPECT_EQ(output->StreamCount(), 0);
  EXPECT_EQ(pattern.GetPosition(), 0u);

  SetPlaybackOptions(true, false, false);
  // Two blocks written: the fade starts the device, which takes its buffers
  // from the stream at once, and a drained stream would be gone uncounted.
  // (Counted from before Play: the thread may fill the queue at once.)
  const int reads = reader.readCount.load();
  ASSERT_TRUE(pattern.Play());
  ASSERT_TRUE(WaitUntil([&] { return reader.readCount.load() >= reads + 3; }));
  pattern.Stop();
  EXPECT_EQ(output->StreamCount(), 1) << "the stream fades out by itself";
  PlayOut();
  EXPECT_EQ(notify.PendingCount(), 0u) << "a stop is no end of track";
}

// A reader that gives small blocks slowly, so that a test can act while the
// stream is still held in its prefill.
class SlowReader : public PatternReader {
 public:
  using PatternReader::PatternReader;
  int Read(std::int16_t* destination, std::uint32_t wanted, std::uint32_t* got) override {
    std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return PatternReader::Read(destination, std::min<std::uint32_t>(wanted, 256), got);
  }
};

// An end of track that comes after the user moved on closes the next track
// while its stream is still held in prefill: the stream starts and plays out
// what it has, rather than staying held for ever.
TEST_F(ReaderDecoderTest, CloseDuringThePrefillLetsTheStreamPlayOut) {
  UseCapture(CapturePace::kStepped);
  SlowReader reader(8000, 2, 80000);
  ReaderDecoder& pattern = Wire(reader);
  ASSERT_TRUE(pattern.Open("/any"));
  ASSERT_TRUE(pattern.Play());
  // More than a mixing block read (10240 values), less than the prefill's
  // 16000: a partial block would be lost to the underrun rule anyway.
  ASSERT_TRUE(WaitUntil([&] { return reader.readCount.load() >= 40; }));
  pattern.Close();
  PlayOut();
  EXPECT_FALSE(Sound(2).empty());
  EXPECT_EQ(notify.PendingCount(), 0u);
}

// --- Seek -------------------------------------------------------------------------------------

TEST_F(ReaderDecoderTest, SeekGoesOnInANewStreamFromThePosition) {
  UseCapture(CapturePace::kStepped);
  PatternReader& reader = MakeReader(8000, 1, 32000);  // four seconds: more than the queue holds
  ReaderDecoder& pattern = Wire(reader);
  EXPECT_FALSE(pattern.Seek(1000)) << "stopped";
  ASSERT_TRUE(pattern.Open("/any"));
  ASSERT_TRUE(pattern.Play());
  ASSERT_TRUE(WaitUntil([&] { return output->QueuedSamples(output->LastHandle()) == 16000u; }));
  const std::uint32_t before = output->LastHandle();
  ASSERT_TRUE(pattern.Seek(3000));
  EXPECT_FALSE(output->IsStreamAlive(before)) << "without crossfade the old stream goes";
  EXPECT_EQ(pattern.GetPosition(), 3000u);
  PlayOut();

  // What the device had before the seek, then the pattern from 3 s on, whole.
  const Samples sound = Sound(1);
  const auto jump = std::find(sound.begin(), sound.end(), PatternSample(24000));
  ASSERT_NE(jump, sound.end());
  for (auto at = sound.begin(); at != jump; ++at) {
    ASSERT_TRUE(*at == 0 || *at == PatternSample(static_cast<std::uint32_t>(at - sound.begin())));
  }
  const Samples after(jump, sound.end());
  ASSERT_EQ(after.size(), 7999u) << "the end mark takes the last loud sample";
  for (std::uint32_t i = 0; i < after.size(); ++i) ASSERT_EQ(after[i], PatternSample(24000 + i)) << i;
}

TEST_F(ReaderDecoderTest, WithCrossfadeASeekFadesTheOldStreamUnlessOneFadedWithinFourPolls) {
  SetPlaybackOptions(true, false, false);
  UseCapture(CapturePace::kStepped);
  PatternReader& reader = MakeReader(8000, 2, 80000);
  ReaderDecoder& pattern = Wire(reader);
  ASSERT_TRUE(pattern.Open("/any"));
  ASSERT_TRUE(pattern.Play());
  // Two blocks written: the first fade starts the device, which takes its
  // buffers from the fading stream at once, and a drained stream would be gone
  // uncounted. (Nothing plays after that on a stepped device.)
  ASSERT_TRUE(WaitUntil([&] { return reader.readCount.load() >= 3; }));

  ASSERT_TRUE(pattern.Seek(1000));
  EXPECT_EQ(output->StreamCount(), 2) << "the old stream fades out beside the new";
  ASSERT_TRUE(pattern.Seek(2000));
  EXPECT_EQ(output->StreamCount(), 2) << "a second seek at once cuts";
  for (int poll = 0; poll < 4; ++poll) pattern.GetPosition();
  ASSERT_TRUE(pattern.Seek(3000));
  EXPECT_EQ(output->StreamCount(), 3) << "four polls later a seek fades again";
}

// --- What the decoder tells of files -----------------------------------------------------

TEST_F(ReaderDecoderTest, FileDetailsAndTitlesComeFromTheReadersRecord) {
  PatternReader& reader = MakeReader(44100, 2, 44100 * 3);
  ReaderDecoder& pattern = Wire(reader);
  std::string display;
  std::string title;
  playback::FormatSummary summary;
  std::uint32_t reserved = 99;
  const auto details = [&](const char* path) {
    return pattern.GetFileDetails(path, &display, nullptr, &summary, nullptr, &reserved, nullptr, nullptr);
  };
  ASSERT_TRUE(details("/music/Some Song.v2.wav"));
  EXPECT_EQ(display, "Some Song.v2") << "no title: the name without folder and extension";
  EXPECT_EQ(reserved, 0u);
  EXPECT_EQ(summary.bitRate, 128999u) << "raw here";
  EXPECT_EQ(summary.genre, "A genre with a name far longer ") << "31 units";
  EXPECT_FALSE(details("/music/missing.wav"));
  ASSERT_TRUE(pattern.Open("/music/Track 1.wav"));
  ASSERT_TRUE(pattern.GetDisplayTitle(title));
  EXPECT_EQ(title, "Track 1");

  reader.description = "A description";
  ASSERT_TRUE(pattern.GetDisplayTitle(title));
  EXPECT_EQ(title, "A description");
  reader.title = "Title";
  ASSERT_TRUE(pattern.GetDisplayTitle(title) && details("/x.wav"));
  EXPECT_EQ(title, "Title");
  EXPECT_EQ(display, "Title");
  reader.artist = "Artist";
  ASSERT_TRUE(pattern.GetDisplayTitle(title) && details("/x.wav"));
  EXPECT_EQ(title, "Artist - Title");
  EXPECT_EQ(display, "Artist - Title");

  pattern.GetFormatSummary(summary);
  EXPECT_EQ(summary.bitRate, 128u) << "kilobits in the summary of the open track";
  std::string text;
  ASSERT_TRUE(pattern.GetInfoText("/x.wav", text));
  EXPECT_NE(text.find("<b>Title:</b> Title<br>"), std::string::npos) << text;
}

}  // namespace
