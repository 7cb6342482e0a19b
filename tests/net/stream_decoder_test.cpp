// Internet radio through the decoders: a real Icecast 2 server fed by a
// source client in the test, the NetStream, the MP3 or Ogg decoder, the
// output engine and an unpaced capture device.
//
// The source sends known files, so what the capture device played is
// compared with a reference decode of the same files: mpg123's for MP3
// (from the frame where the decoder took up the stream, since the first
// 2048 bytes are never heard), oggdec's for Ogg (from the first sample:
// the stream begins with its headers). Tolerance: an SNR above 70 dB over
// half a second for MP3 (measured: 90), 60 dB over a tenth of a second for
// the Ogg stream (quality 1; measured: 69).
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <iostream>
#include <string>

#include "decoders/bare_libmad.h"
#include "decoders/ogg_pipeline.h"
#include "fault_server.h"
#include "icecast_server.h"
#include "net/net_stream.h"
#include "platform/event.h"
#include "playback/playback_settings.h"
#include "stream_fixture.h"
#include "support/test_environment.h"

namespace net_testing {
namespace {

using decoders_test::Samples;

std::string ReadTestFile(const std::string& name) {
  return testing_support::ReadFile(std::string(TS_TEST_DATA_DIR) + "/net/" + name);
}

constexpr std::size_t kCompared = 8820;  // samples: a tenth of a second of stereo at 44.1 kHz

class StreamDecoderTest : public decoders_test::OggPipelineTest {
 protected:
  void SetUp() override {
    OggPipelineTest::SetUp();
    if (const std::string why = IcecastServer::WhyUnavailable(); !why.empty()) FAIL() << why;
    std::string error;
    ASSERT_TRUE(server.Start(error)) << error;
    stream.SetTimeout(3000);
    stream.SetNotifyWindow(log.Target());
    playback::Playback().streamBufferSize.store(32768);
    UseCapture(platform::CapturePace::kStepped);
  }
  void TearDown() override {
    decoder.reset();
    ogg.reset();
    stream.Disconnect();
    playback::Playback().streamBufferSize.store(0x20000);
    OggPipelineTest::TearDown();
    if (HasFailure()) {
      std::cerr << server.Log();
      log.Collect();
      for (const std::string& line : log.StatusLines()) std::cerr << "status " << line << "\n";
      for (const std::string& line : log.Texts(net::kModeTitle)) std::cerr << "title " << line << "\n";
    }
    server.Stop();
  }
  // Waits until the decoder's thread has the server's answer, for the
  // `count`-th time in the test.
  bool Connected(int count = 1) {
    return log.WaitUntil(
        [count](const std::vector<Posted>& posted) {
          return std::count_if(posted.begin(), posted.end(), [](const Posted& message) {
                   return message.text && *message.text == "Connected to server";
                 }) >= count;
        },
        5000);
  }

  // Plays the stepped device a buffer at a time until `done`, but only while
  // the stream has a buffer's worth queued: a playing stream that runs dry
  // for long ends in the output engine, and the network here delivers in
  // bursts, unlike a paced sound card with two seconds queued. `draining`:
  // the track is ending, play whatever is left.
  bool PlayUntil(const std::function<bool()>& done, bool draining = false) {
    return output_testing::WaitUntil(
        [&] {
          if (done()) return true;
          if (draining || output->QueuedSamples(output->LastHandle()) >= 8192) {
            Tap()->Advance(1);
          } else {
            platform::SleepMs(1);
          }
          return false;
        },
        20000);
  }
  bool Titled(const std::string& text) {
    return PlayUntil([&] { return log.WaitForText(text, 0); });
  }

  IcecastServer server;
  MessageLog log;  // outlives the stream, which posts to it
  net::NetStream stream;
};

TEST_F(StreamDecoderTest, AnMp3StreamPlaysWithItsTitlesAsTheyChange) {
  const std::string sent = ReadTestFile("tone.mp3");
  const Samples reference = decoders_test::ReferenceDecode(std::string(TS_TEST_DATA_DIR) + "/net/tone.mp3");
  ASSERT_FALSE(reference.empty());
  IcecastSource source;
  ASSERT_TRUE(source.Connect(server.Port(), "/test.mp3", "audio/mpeg"));
  std::string error;
  ASSERT_TRUE(server.UpdateTitle("/test.mp3", "First Title", error)) << error;

  decoders::Mp3Decoder& mp3 = Wire();
  mp3.SetNetStream(&stream);
  ASSERT_TRUE(mp3.Open(server.Url("/test.mp3")));
  EXPECT_FALSE(mp3.CanSeek());
  EXPECT_EQ(mp3.GetDuration(), 0u);
  ASSERT_TRUE(mp3.Play());
  ASSERT_TRUE(Connected());
  std::string title;
  ASSERT_TRUE(mp3.GetDisplayTitle(title));
  EXPECT_EQ(title, "Loopback Radio") << "the station's name until a title comes";

  ASSERT_TRUE(source.SendPaced(sent, 4096, 5));
  ASSERT_TRUE(Titled("First Title"));
  ASSERT_TRUE(notify.WaitFor(playback::kMessageFormatChanged, 5000));
  ASSERT_TRUE(server.UpdateTitle("/test.mp3", "Second Title", error)) << error;
  // The file again, so that the server passes the new title on, and the
  // client's reader gets to it.
  ASSERT_TRUE(source.SendPaced(sent, 4096, 5));
  ASSERT_TRUE(source.SendPaced(sent, 4096, 5));
  ASSERT_TRUE(Titled("Second Title"));
  ASSERT_TRUE(mp3.GetDisplayTitle(title));
  EXPECT_EQ(title, "Second Title");
  playback::FormatSummary summary;
  mp3.GetFormatSummary(summary);
  EXPECT_EQ(summary.sampleRate, 44100u);
  EXPECT_EQ(summary.bitRate, 128u);

  // The server's end is the end of the track.
  source.Close();
  ASSERT_TRUE(PlayUntil([&] { return notify.WaitFor(playback::kMessageTrackEnded, 0); }, true));
  const Samples sound = decoders_test::TrimmedSound(Tap()->Samples(), 2);
  ASSERT_GT(sound.size(), 44100u * 2) << "more than a second of sound";
  // Compared from the tenth frame's worth heard on (the first frames after
  // the decoder takes up the stream lack their bit reservoir, and the first
  // sound needn't begin at a frame's start): found in the file by a short
  // probe, then half a second must match, frame after frame.
  constexpr std::size_t kFrame = 1152 * 2;
  constexpr std::size_t kProbe = 256;
  constexpr std::size_t kSpan = 44100;
  const auto heardFrom = sound.begin() + 10 * kFrame;
  const Samples probe(heardFrom, heardFrom + kProbe);
  double best = 0;
  std::size_t found = 0;
  for (std::size_t at = 0; at + kSpan < reference.size(); at += 2) {
    const double snr =
        decoders_test::SnrDb(probe, Samples(reference.begin() + at, reference.begin() + at + kProbe));
    if (snr > best) {
      best = snr;
      found = at;
    }
  }
  const Samples heard(heardFrom, heardFrom + kSpan);
  const Samples expected(reference.begin() + static_cast<std::ptrdiff_t>(found), reference.end());
  EXPECT_GT(decoders_test::SnrDb(heard, expected), 70.0) << "whole frames of the file, one after another";
  mp3.Close();
  EXPECT_FALSE(stream.IsConnected());
}

// A server that sends a whole file and closes: the stream's last frames
// (those the decoder keeps back while more may come, and those still
// buffered) are heard before the track ends. The tail of what played is
// libmad's own decode of the file's end, sample for sample, but for the quiet
// tail the end mark trims.
TEST_F(StreamDecoderTest, AFiniteMp3StreamPlaysToItsLastFrame) {
  const std::string sent = ReadTestFile("tone.mp3");
  const Samples expected =
      decoders_test::AsQueued(decoders_test::BareLibmadDecode(decoders_test::Bytes(sent.begin(), sent.end())), 2);
  FaultServer radio([&](FaultConnection& c) {
    if (c.ReadRequest()) c.Send("ICY 200 OK\r\ncontent-type:audio/mpeg\r\n\r\n" + sent);
  });
  ASSERT_TRUE(radio.Valid());

  decoders::Mp3Decoder& mp3 = Wire();
  mp3.SetNetStream(&stream);
  ASSERT_TRUE(mp3.Open(radio.Url("/finite.mp3")));
  ASSERT_TRUE(mp3.Play());
  ASSERT_TRUE(output_testing::WaitUntil([&] { return Tap() != nullptr; }));  // the stream's format was found
  // Blocks are played only while a whole one is queued, until the decoder
  // has written its last samples: the server has closed, everything it sent
  // was read, and the queue stands still.
  std::uint32_t level = 0;
  int still = 0;
  ASSERT_TRUE(PlayUntil([&] {
    const std::uint32_t now = output->QueuedSamples(output->LastHandle());
    still = now == level ? still + 1 : 0;
    level = now;
    return stream.HasEnded() && stream.BytesAvailable() == 0 && still > 50;
  }));
  ASSERT_TRUE(PlayUntil([&] { return notify.WaitFor(playback::kMessageTrackEnded, 0); }, true));
  PlayOut();
  const Samples sound = decoders_test::TrimmedSound(Tap()->Samples(), 2);
  constexpr std::size_t kTail = 10 * 1152 * 2;  // the last ten frames
  ASSERT_GT(sound.size(), kTail);
  EXPECT_TRUE(std::equal(sound.end() - kTail, sound.end(), expected.end() - kTail))
      << "the file's last frames, none missing: " << sound.size() << " samples played";
  mp3.Close();
}

TEST_F(StreamDecoderTest, AnOggStreamPlaysAndEachNewLinkBringsItsTitle) {
  const std::string sent = ReadTestFile("chained.ogg");
  const Samples reference =
      decoders_test::OggReferenceDecode(std::string(TS_TEST_DATA_DIR) + "/net/chained.ogg");
  ASSERT_FALSE(reference.empty());
  IcecastSource source;
  ASSERT_TRUE(source.Connect(server.Port(), "/test.ogg", "application/ogg"));

  decoders::OggDecoder& vorbis = WireOgg();
  vorbis.SetNetStream(&stream);
  ASSERT_TRUE(vorbis.Open(server.Url("/test.ogg")));
  std::string title;
  EXPECT_FALSE(vorbis.GetDisplayTitle(title)) << "no headers yet";
  ASSERT_TRUE(vorbis.Play());
  ASSERT_TRUE(Connected());
  ASSERT_TRUE(source.SendPaced(sent, 4096, 5));
  ASSERT_TRUE(notify.WaitFor(playback::kMessageFormatChanged, 5000));
  ASSERT_TRUE(vorbis.GetDisplayTitle(title));
  EXPECT_EQ(title, " - First Link") << "a title without an artist leaves an empty side";
  EXPECT_FALSE(vorbis.Seek(1000)) << "a stream doesn't seek";
  ASSERT_TRUE(source.SendPaced(sent, 4096, 5));    // the file again: links three and four
  ASSERT_TRUE(source.Send(sent.substr(0, 8192)));  // more behind, so the server passes the fourth on
  ASSERT_TRUE(PlayUntil([&] { return vorbis.GetDisplayTitle(title) && title == " - Second Link"; }));
  // The server drops what it hasn't sent when its source leaves: the
  // fourth link must have begun.
  ASSERT_TRUE(PlayUntil([&] {
    const std::vector<std::uint32_t> posted = notify.PendingIds();
    return std::count(posted.begin(), posted.end(), playback::kMessageTitleChanged) >= 4;
  }));

  source.Close();
  ASSERT_TRUE(PlayUntil([&] { return notify.WaitFor(playback::kMessageTrackEnded, 0); }, true));
  std::vector<std::uint32_t> ids = notify.PendingIds();
  EXPECT_GE(std::count(ids.begin(), ids.end(), playback::kMessageTitleChanged), 4)
      << "at the start, and at each new link";
  const Samples sound = decoders_test::TrimmedSound(Tap()->Samples(), 2);
  ASSERT_GT(sound.size(), reference.size()) << "the file, and some of it again";
  // The file's quality 1 sets Tremor and libvorbis further apart: measured 69 dB.
  EXPECT_GT(decoders_test::SnrDb(Samples(sound.begin(), sound.begin() + kCompared), reference), 60.0);
  vorbis.Close();
  EXPECT_FALSE(stream.IsConnected());
}

TEST_F(StreamDecoderTest, AStopWhileBufferingIsPrompt) {
  IcecastSource source;
  ASSERT_TRUE(source.Connect(server.Port(), "/test.mp3", "audio/mpeg"));
  ASSERT_TRUE(source.Send(ReadTestFile("tone.mp3").substr(0, 4000)));  // less than the first read waits for
  IcecastSource oggSource;
  ASSERT_TRUE(oggSource.Connect(server.Port(), "/test.ogg", "application/ogg"));
  ASSERT_TRUE(oggSource.Send(ReadTestFile("chained.ogg").substr(0, 3000)));

  decoders::Mp3Decoder& mp3 = Wire();
  mp3.SetNetStream(&stream);
  ASSERT_TRUE(mp3.Open(server.Url("/test.mp3")));
  ASSERT_TRUE(mp3.Play());
  ASSERT_TRUE(Connected());
  EXPECT_LT(MillisecondsOf([&] { mp3.Stop(); }), kPromptMs);
  EXPECT_EQ(mp3.GetState(), playback::kStateStopped);
  EXPECT_FALSE(stream.IsConnected());

  decoders::OggDecoder& vorbis = WireOgg();
  vorbis.SetNetStream(&stream);
  ASSERT_TRUE(vorbis.Open(server.Url("/test.ogg")));
  ASSERT_TRUE(vorbis.Play());
  ASSERT_TRUE(Connected(2));  // then waiting for the headers, which never come whole
  platform::SleepMs(100);
  EXPECT_LT(MillisecondsOf([&] { vorbis.Close(); }), kPromptMs);
  EXPECT_FALSE(stream.IsConnected());
  EXPECT_EQ(notify.PendingCount(), 0u) << "a stop is no end of track";
}

}  // namespace
}  // namespace net_testing
