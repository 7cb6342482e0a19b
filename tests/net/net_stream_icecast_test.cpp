// NetStream against a real Icecast 2 server: MP3 and Ogg streams arrive as
// their source sent them, titles arrive as they change, and a live encoder
// (ffmpeg) as a source gives streams that decode frame after frame.
#include <gtest/gtest.h>

#include <future>
#include <iostream>
#include <string>

#include "child_process.h"
#include "icecast_server.h"
#include "media_checks.h"
#include "stream_fixture.h"
#include "support/test_environment.h"

namespace net_testing {
namespace {

constexpr int kTestTimeoutMs = 3000;  // silence from the server ends a stream this soon

class IcecastStreamTest : public NetStreamTest {
 protected:
  void SetUp() override {
    NetStreamTest::SetUp();
    if (const std::string why = IcecastServer::WhyUnavailable(); !why.empty()) GTEST_SKIP() << why;
    std::string error;
    ASSERT_TRUE(server.Start(error)) << error;
    stream.SetTimeout(kTestTimeoutMs);
    UseBuffer(32768);  // the first read waits for 8192 bytes
  }
  void TearDown() override {
    encoder.Terminate();
    NetStreamTest::TearDown();
    if (HasFailure()) std::cerr << server.Log();
    server.Stop();
  }

  // Starts ffmpeg encoding live noise to `mount`; skips the test without ffmpeg.
  void StartLiveEncoder(const std::string& mount, const std::vector<std::string>& format) {
    const auto ffmpeg = FindProgram("ffmpeg");
    if (!ffmpeg) GTEST_SKIP() << "ffmpeg is not installed (scripts/install-deps.sh installs it)";
    std::vector<std::string> argv = {*ffmpeg,
                                     "-nostdin",
                                     "-hide_banner",
                                     "-loglevel",
                                     "warning",
                                     "-re",
                                     "-f",
                                     "lavfi",
                                     "-i",
                                     "anoisesrc=color=pink:amplitude=0.3:sample_rate=44100:duration=30",
                                     "-ac",
                                     "2",
                                     "-flush_packets",
                                     "1"};
    argv.insert(argv.end(), format.begin(), format.end());
    argv.insert(argv.end(), {"-ice_name", "Live Sine", "-ice_genre", "Synth",
                             "icecast://source:" + std::string(IcecastServer::kSourcePassword) +
                                 "@127.0.0.1:" + std::to_string(server.Port()) + mount});
    ASSERT_TRUE(encoder.Start(argv, logFolder.File("ffmpeg.log")));
    ASSERT_TRUE(server.WaitForMount(mount, 10000)) << ReadLog();
  }
  std::string ReadLog() { return testing_support::ReadFile(logFolder.File("ffmpeg.log")); }

  IcecastServer server;
  testing_support::TemporaryDirectory logFolder;
  ChildProcess encoder;
};

TEST_F(IcecastStreamTest, Mp3StreamArrivesByteForByteWithItsTitlesAsTheyChange) {
  const std::string file = ReadTestFile("tone.mp3");
  ASSERT_GT(file.size(), 60000u);
  IcecastSource source;
  ASSERT_TRUE(source.Connect(server.Port(), "/test.mp3", "audio/mpeg"));
  std::string error;
  ASSERT_TRUE(server.UpdateTitle("/test.mp3", "First Title", error)) << error;
  ASSERT_TRUE(stream.SetUrl(server.Url("/test.mp3")));
  ASSERT_TRUE(stream.Connect());
  std::string name, genre, url;
  ASSERT_TRUE(stream.GetStationInfo(&name, &genre, &url));
  EXPECT_EQ(name, "Loopback Radio");
  EXPECT_EQ(genre, "Test Tones");
  EXPECT_EQ(url, "http://loopback.example/");

  const std::size_t half = file.size() / 2;
  ASSERT_TRUE(source.SendPaced(std::string_view(file).substr(0, half), 4096, 5));
  std::string received = ReadUpTo(half - 8192, 2048);  // the server may hold back its last piece
  ASSERT_EQ(received.size(), half - 8192);
  log.Collect();
  ASSERT_EQ(log.Texts(net::kModeTitle), std::vector<std::string>{"First Title"});

  ASSERT_TRUE(server.UpdateTitle("/test.mp3", "Second Title: Caf\xc3\xa9", error)) << error;
  ASSERT_TRUE(source.SendPaced(std::string_view(file).substr(half), 4096, 5));
  ASSERT_TRUE(source.Send(file.substr(0, 16384)));  // more behind, so that the file's end is passed on
  received += ReadUpTo(file.size() - received.size(), 3000);
  ASSERT_EQ(received.size(), file.size());
  EXPECT_TRUE(received == file) << "the stream differs from the file the source sent";

  log.Collect();
  const std::vector<std::string> titles = log.Texts(net::kModeTitle);
  ASSERT_EQ(titles.size(), 2u) << "Icecast sends a title only when it changes";
  EXPECT_EQ(titles[1], "Second Title: Caf\xc3\xa9") << "Icecast sends Latin-1; it comes out as UTF-8";
  std::string title;
  EXPECT_TRUE(stream.GetStreamTitle(title));
  EXPECT_EQ(title, titles[1]);
}

TEST_F(IcecastStreamTest, OggStreamArrivesPacketForPacketAcrossAChangeOfLink) {
  const std::string file = ReadTestFile("chained.ogg");
  const std::vector<OggPacket> sent = OggPackets(file);
  ASSERT_GT(sent.size(), 10u);
  IcecastSource source;
  ASSERT_TRUE(source.Connect(server.Port(), "/test.ogg", "application/ogg"));
  ASSERT_TRUE(stream.SetUrl(server.Url("/test.ogg")));
  ASSERT_TRUE(stream.Connect());
  std::string name;
  EXPECT_TRUE(stream.GetStationInfo(&name, nullptr, nullptr));
  EXPECT_EQ(name, "Loopback Radio");

  ASSERT_TRUE(source.SendPaced(file, 4096, 5));
  ASSERT_TRUE(source.SendPaced(file, 4096, 5));  // a third and fourth link, so the second is passed on whole
  std::string received;
  std::vector<OggPacket> packets;
  while (packets.size() < sent.size()) {
    const std::string more = ReadUpTo(4096);
    if (more.empty()) break;
    received += more;
    packets = OggPackets(received);
  }
  ASSERT_GE(packets.size(), sent.size());
  // Icecast re-pages an Ogg stream and numbers its links anew, but every
  // packet must arrive unchanged, and the new link where it began.
  for (std::size_t i = 0; i < sent.size(); ++i) {
    ASSERT_TRUE(packets[i].bytes == sent[i].bytes) << "packet " << i;
    if (i > 0) {
      EXPECT_EQ(packets[i].serial == packets[i - 1].serial, sent[i].serial == sent[i - 1].serial)
          << "packet " << i;
    }
  }
  EXPECT_NE(sent.back().serial, sent.front().serial);
  log.Collect();
  EXPECT_TRUE(log.Texts(net::kModeTitle).empty()) << "an Ogg stream's titles travel in the stream itself";
}

TEST_F(IcecastStreamTest, LiveMp3FromAnEncoderDecodesFrameAfterFrameAndChangesTitle) {
  StartLiveEncoder("/live.mp3",
                   {"-c:a", "libmp3lame", "-b:a", "128k", "-content_type", "audio/mpeg", "-f", "mp3"});
  if (IsSkipped() || HasFatalFailure()) return;
  std::string error;
  ASSERT_TRUE(server.UpdateTitle("/live.mp3", "Live One", error)) << error;
  ASSERT_TRUE(stream.SetUrl(server.Url("/live.mp3")));
  ASSERT_TRUE(stream.Connect()) << ReadLog();
  std::string name;
  EXPECT_TRUE(stream.GetStationInfo(&name, nullptr, nullptr));
  EXPECT_EQ(name, "Live Sine");

  std::string received = ReadUpTo(10000, 2048);
  ASSERT_TRUE(log.WaitForText("Live One", 5000));
  ASSERT_TRUE(server.UpdateTitle("/live.mp3", "Live Two", error)) << error;
  for (int reads = 0; reads < 100 && !log.WaitForText("Live Two", 0); ++reads) {
    const std::string more = ReadUpTo(2048, 2048);
    ASSERT_FALSE(more.empty());
    received += more;
  }
  EXPECT_TRUE(log.WaitForText("Live Two", 0));
  const FrameRun run = LongestMp3FrameRun(received);
  EXPECT_GT(run.frames, 40u) << "no metadata may cut into the frames";
  EXPECT_GT(run.end + 2 * 418, received.size()) << "the frames run to the end of what was read";
}

TEST_F(IcecastStreamTest, LiveOggFromAnEncoderStartsWithItsHeaders) {
  StartLiveEncoder("/live.ogg",
                   {"-c:a", "libvorbis", "-q:a", "1", "-content_type", "application/ogg", "-f", "ogg"});
  if (IsSkipped() || HasFatalFailure()) return;
  ASSERT_TRUE(stream.SetUrl(server.Url("/live.ogg")));
  ASSERT_TRUE(stream.Connect()) << ReadLog();
  const std::string received = ReadUpTo(12000);
  const std::vector<OggPacket> packets = OggPackets(received);
  ASSERT_GT(packets.size(), 10u) << received.size() << " bytes came, starting " << received.substr(0, 64) << "\n"
                                 << ReadLog();
  EXPECT_EQ(packets[0].bytes.substr(0, 7), std::string("\x01vorbis", 7));
  EXPECT_EQ(packets[1].bytes.substr(0, 7), std::string("\x03vorbis", 7));
  EXPECT_EQ(packets[2].bytes.substr(0, 7), std::string("\x05vorbis", 7));
  for (const OggPacket& packet : packets) EXPECT_EQ(packet.serial, packets[0].serial);
}

TEST_F(IcecastStreamTest, StopWhileBufferingIsPrompt) {
  IcecastSource source;
  ASSERT_TRUE(source.Connect(server.Port(), "/test.mp3", "audio/mpeg"));
  ASSERT_TRUE(stream.SetUrl(server.Url("/test.mp3")));
  ASSERT_TRUE(stream.Connect());
  ASSERT_TRUE(source.Send(ReadTestFile("tone.mp3").substr(0, 4000)));  // less than the first read waits for
  std::uint32_t got = 1;
  char buffer[1024];
  auto reading = std::async(std::launch::async, [&] { return stream.Read(buffer, sizeof buffer, &got); });
  ASSERT_TRUE(log.WaitUntil([&](const auto&) { return stream.BytesAvailable() > 0; }, 5000));
  EXPECT_LT(MillisecondsOf([&] { stream.Disconnect(); }), kPromptMs);
  EXPECT_FALSE(reading.get());
  EXPECT_EQ(got, 0u);
}

}  // namespace
}  // namespace net_testing
