// The AAC plug-in as the player loads it: the library, its reader through a
// ReaderDecoder into the capture device against ffmpeg's decode, its track
// information, its seek, and damaged files.
//
// Tolerance: FAAD2 and ffmpeg's own AAC decoder both work in floating point
// and round to 16 bits; FAAD2 leaves out the first frame's output (its
// filter-bank delay), so ours lags ffmpeg's by that frame's 1024 samples.
// Measured per frame after that: 90 to 97 dB of SNR, at most 2 apart, except
// the first three frames of sound (53 to 81 dB: the decoders start up
// differently at the onset) and the last whole frame and the part behind it
// (66 dB: the encoder's tail, where noise substitution, whose random state
// no two decoders share, dominates). So over all but those: SNR above 85 dB
// and no sample more than 2 apart.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "../playback/output_test_support.h"
#include "decoders/id3_builders.h"
#include "decoders/wav_test_files.h"
#include "platform/message_queue.h"
#include "playback/format_plugin.h"
#include "playback/locked_file.h"
#include "playback/reader_decoder.h"

namespace {

using namespace output_testing;
using Samples = std::vector<std::int16_t>;

constexpr double kMinimumSnr = 85.0;
constexpr int kLargestDifference = 2;
constexpr std::uint32_t kRate = 32000;
constexpr std::uint32_t kFrames = 1024;

double SnrAt(const Samples& ours, const Samples& reference, std::ptrdiff_t lag, std::size_t limit) {
  double signal = 0;
  double noise = 0;
  std::size_t count = 0;
  for (std::size_t i = 0; i < ours.size() && count < limit; ++i) {
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) + lag;
    if (at < 0 || at >= static_cast<std::ptrdiff_t>(reference.size())) continue;
    const double difference = static_cast<double>(ours[i]) - reference[static_cast<std::size_t>(at)];
    signal += static_cast<double>(reference[static_cast<std::size_t>(at)]) *
              reference[static_cast<std::size_t>(at)];
    noise += difference * difference;
    ++count;
  }
  if (count == 0 || signal == 0) return 0;
  return noise == 0 ? 200.0 : 10.0 * std::log10(signal / noise);
}

int LargestDifference(const Samples& ours, const Samples& reference, std::ptrdiff_t lag) {
  int largest = 0;
  for (std::size_t i = 0; i < ours.size(); ++i) {
    const std::ptrdiff_t at = static_cast<std::ptrdiff_t>(i) + lag;
    if (at < 0 || at >= static_cast<std::ptrdiff_t>(reference.size())) continue;
    largest = std::max(largest, std::abs(ours[i] - reference[static_cast<std::size_t>(at)]));
  }
  return largest;
}

Samples Slice(const Samples& samples, std::size_t from, std::size_t to) {
  to = std::min(to, samples.size());
  return from < to ? Samples(samples.begin() + static_cast<std::ptrdiff_t>(from),
                             samples.begin() + static_cast<std::ptrdiff_t>(to))
                   : Samples{};
}

class AacPluginTest : public OutputTest {
 protected:
  void SetUp() override {
    OutputTest::SetUp();
    plugin = playback::LoadFormatPlugin({TS_AAC_PLUGIN});
    ASSERT_TRUE(plugin);
    decoder.SetReader(plugin->reader.get());
    decoder.SetOutput(output.get());
    decoder.SetSource(&file);
    decoder.SetNotifyWindow(&notify);
    SetPlaybackOptions(false, false, false);
  }
  void TearDown() override {
    decoder.Close();
    SetPlaybackOptions(true, true, true);
    OutputTest::TearDown();
  }
  playback::FormatReader& Reader() { return *plugin->reader; }
  std::string Write(const std::string& name, const std::string& bytes) {
    const std::string path = Root().File(name);
    testing_support::WriteFile(path, bytes);
    return path;
  }
  Samples ReadAll() {
    Samples all;
    Samples block(4000);
    for (std::uint32_t got = 1; got != 0;) {
      got = 0;
      EXPECT_EQ(Reader().Read(block.data(), 4000, &got), 1);
      all.insert(all.end(), block.begin(), block.begin() + got);
    }
    return all;
  }

  std::unique_ptr<playback::FormatPlugin> plugin;
  playback::LockedFile file;
  platform::MessageQueue notify;
  playback::ReaderDecoder decoder;
};

TEST(FormatPluginTest, TheFirstCandidateThatGivesAReaderIsTakenAndNoneIsNoError) {
  const std::string missing = "/nonexistent/libTSAACPlugin.so";
  EXPECT_EQ(playback::LoadFormatPlugin({missing, TS_NO_ENTRY_PLUGIN}), nullptr);
  EXPECT_EQ(playback::LoadFormatPlugin({}), nullptr);
  const auto plugin = playback::LoadFormatPlugin({missing, TS_NO_ENTRY_PLUGIN, TS_AAC_PLUGIN});
  ASSERT_TRUE(plugin);
  EXPECT_TRUE(plugin->reader);
  EXPECT_EQ(playback::AacPluginCandidates("/opt/player/bin", ""),
            std::vector<std::string>{"/opt/player/bin/libTSAACPlugin.so"});
  EXPECT_EQ(playback::AacPluginCandidates("/bin", "/home/u/.local/share/tavrinsonic").back(),
            "/home/u/.local/share/tavrinsonic/libTSAACPlugin.so");
}

TEST_F(AacPluginTest, AnAacFileSoundsAsFfmpegDecodesIt) {
  UseCapture(platform::CapturePace::kUnpaced);
  const std::string path = wav_testing::MediaPath("aac_mono.aac");
  const Samples reference = wav_testing::FfmpegDecode(path);
  ASSERT_GT(reference.size(), kRate);
  ASSERT_TRUE(decoder.Open(path));
  ASSERT_TRUE(decoder.Play());
  ASSERT_TRUE(notify.WaitFor(playback::kMessageTrackEnded, 10000));
  ASSERT_TRUE(PlayedOut());
  EXPECT_EQ(Tap()->SampleRate(), kRate);

  // FAAD2 gives mono as two equal channels (Parametric Stereo could make
  // them differ). The last frame's right sample is gone: the end mark takes
  // the last loud sample.
  Samples played = Tap()->Samples();
  played.erase(std::find_if(played.rbegin(), played.rend(), [](std::int16_t s) { return s != 0; }).base(),
               played.end());
  Samples left;
  for (std::size_t i = 0; i + 3 < played.size(); i += 2) {
    ASSERT_EQ(played[i], played[i + 1]) << i;
    left.push_back(played[i]);
  }
  left.erase(left.begin(), std::find_if(left.begin(), left.end(), [](std::int16_t s) { return s != 0; }));
  // Ours begins with ffmpeg's second frame; past the onset they agree.
  ASSERT_GT(left.size(), reference.size() - 3 * kFrames) << "all but the first frame and the tail";
  const Samples steady = Slice(left, 3 * kFrames, (left.size() / kFrames - 1) * kFrames);
  const double snr = SnrAt(steady, reference, 4 * kFrames, steady.size());
  const int largest = LargestDifference(steady, reference, 4 * kFrames);
  std::printf("aac_mono.aac: SNR %.1f dB and at most %d apart past the onset, at %d samples' lag\n", snr,
              largest, static_cast<int>(kFrames));
  EXPECT_GT(snr, kMinimumSnr);
  EXPECT_LE(largest, kLargestDifference);
}

TEST_F(AacPluginTest, SeekLandsOnTheFrameThatHoldsThePosition) {
  const std::string path = wav_testing::MediaPath("aac_mono.aac");
  ASSERT_EQ(Reader().Open(path.c_str()), 1);
  const Samples fromStart = ReadAll();
  // 1000 ms is raw block 31.25: frame 31 begins at 992 ms.
  EXPECT_EQ(Reader().Seek(1000), 992);
  const Samples afterSeek = ReadAll();
  ASSERT_FALSE(afterSeek.empty());
  // The first frame gives no output, so frame 31 is at 30 frames into what
  // a read from the start delivers (two channels, see below).
  const Samples expected(fromStart.begin() + 30 * kFrames * 2, fromStart.end());
  ASSERT_EQ(afterSeek.size(), expected.size());
  // Primed by the frame before, the first frames are whole; the tail's
  // noise substitution differs from a decode from the start.
  const Samples head = Slice(afterSeek, 0, afterSeek.size() - 4 * kFrames);
  EXPECT_GT(SnrAt(head, expected, 0, head.size()), kMinimumSnr);
  EXPECT_LE(LargestDifference(head, expected, 0), kLargestDifference);
  EXPECT_EQ(Reader().Seek(60000), static_cast<int>(Reader().GetDuration() - 1000) / 32 * 32)
      << "beyond the end: one second before it, on a frame";
  EXPECT_EQ(Reader().Seek(0), 0);
  EXPECT_EQ(ReadAll(), fromStart);
}

TEST_F(AacPluginTest, TrackInformationComesFromTheFramesAndALeadingTag) {
  const std::string aac = testing_support::ReadFile(wav_testing::MediaPath("aac_mono.aac"));
  const std::string tag = decoders_test::Id3v2Builder(3)
                              .Frame("TIT2", decoders_test::Latin1Text("Caf\xE9"))
                              .Frame("TPE1", decoders_test::Latin1Text("Artist"))
                              .Frame("TALB", decoders_test::Latin1Text("Album"))
                              .Frame("TYER", decoders_test::Latin1Text("1999"))
                              .Frame("TRCK", decoders_test::Latin1Text("3/12"))
                              .Build();
  const std::string path = Write("tagged.aac", tag + aac);
  playback::TrackInfo info;
  ASSERT_EQ(Reader().GetTrackInfo(path.c_str(), &info), 1);
  EXPECT_EQ(info.TextUtf8(playback::TrackInfo::kCodec), "AAC LC");
  EXPECT_EQ(info.TextUtf8(playback::TrackInfo::kTitle), "Caf\u00e9");
  EXPECT_EQ(info.TextUtf8(playback::TrackInfo::kArtist), "Artist");
  EXPECT_EQ(info.TextUtf8(playback::TrackInfo::kAlbum), "Album");
  EXPECT_EQ(info.GetYear(), 1999u);
  EXPECT_EQ(info.GetTrackNumber(), 3u);
  EXPECT_EQ(info.GetSampleRate(), kRate);
  EXPECT_EQ(info.GetStereo(), 0u);
  EXPECT_GT(info.GetBitRate(), 40000u);
  EXPECT_LT(info.GetBitRate(), 60000u);

  // The tagged file plays the same as the bare one.
  ASSERT_EQ(Reader().Open(path.c_str()), 1);
  EXPECT_EQ(Reader().GetDuration(), info.GetDuration());
  EXPECT_GE(info.GetDuration(), 1500u) << "1.5 s of sound and the encoder's frames around it";
  EXPECT_LE(info.GetDuration(), 1600u);
  const Samples tagged = ReadAll();
  ASSERT_EQ(Reader().Open(wav_testing::MediaPath("aac_mono.aac").c_str()), 1);
  EXPECT_EQ(ReadAll(), tagged);
  std::uint32_t rate = 0;
  std::uint32_t channels = 0;
  ASSERT_EQ(Reader().GetFormat(&rate, &channels), 1);
  EXPECT_EQ(rate, kRate);
  EXPECT_EQ(channels, 2u) << "FAAD2 makes mono two channels, for Parametric Stereo";
}

TEST_F(AacPluginTest, TextIsRefusedAndDamageOnlyCostsTheFramesItHits) {
  const std::string text = Write("notes.aac", "These are my notes, not music.\n");
  playback::TrackInfo info;
  EXPECT_EQ(Reader().Open(text.c_str()), 0);
  EXPECT_EQ(Reader().GetTrackInfo(text.c_str(), &info), 0);
  EXPECT_FALSE(decoder.Open(text));

  const std::string aac = testing_support::ReadFile(wav_testing::MediaPath("aac_mono.aac"));
  ASSERT_EQ(Reader().Open(wav_testing::MediaPath("aac_mono.aac").c_str()), 1);
  const std::uint32_t whole = Reader().GetDuration();
  const std::size_t wholeSamples = ReadAll().size();

  // Garbage in the middle: the scan finds the frames behind it again.
  std::string damaged = aac;
  damaged.insert(aac.size() / 2, std::string(3000, '\xFF'));
  ASSERT_EQ(Reader().Open(Write("damaged.aac", damaged).c_str()), 1);
  EXPECT_GE(Reader().GetDuration(), whole - 96);
  EXPECT_GE(ReadAll().size(), wholeSamples - 3 * kFrames);

  // Cut in the middle of a frame: the frames before it play.
  ASSERT_EQ(Reader().Open(Write("cut.aac", aac.substr(0, aac.size() / 2 + 50)).c_str()), 1);
  EXPECT_LT(Reader().GetDuration(), whole * 2 / 3);
  EXPECT_GT(ReadAll().size(), wholeSamples / 3);
  Reader().Close();
  EXPECT_EQ(Reader().Read(nullptr, 10, nullptr), 1) << "closed: nothing, and no harm";
}

}  // namespace
