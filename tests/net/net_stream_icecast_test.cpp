// NetStream against a real Icecast 2 server: MP3 and Ogg streams arrive as
// their source sent them, titles arrive as they change, and a live encoder
// (ffmpeg) as a source gives streams that decode frame after frame.
#include <gtest/gtest.h>
#include <ogg/ogg.h>

#include <cstring>
#include <future>
#include <iostream>
#include <map>
#include <string>

#include "icecast_server.h"
#include "stream_fixture.h"
#include "support/test_environment.h"

namespace net_testing {
namespace {

constexpr int kTestTimeoutMs = 3000;  // silence from the server ends a stream this soon

struct OggPacket {
  long serial = 0;
  std::string bytes;
  bool operator==(const OggPacket&) const = default;
};

// Every packet of every logical stream, in order, through libogg (which
// drops any page whose checksum fails).
std::vector<OggPacket> OggPackets(std::string_view data) {
  ogg_sync_state sync;
  ogg_sync_init(&sync);
  char* area = ogg_sync_buffer(&sync, static_cast<long>(data.size()));
  std::memcpy(area, data.data(), data.size());
  ogg_sync_wrote(&sync, static_cast<long>(data.size()));
  std::map<long, ogg_stream_state> streams;
  std::vector<OggPacket> packets;
  ogg_page page;
  while (ogg_sync_pageout(&sync, &page) == 1) {
    const long serial = ogg_page_serialno(&page);
    auto [entry, added] = streams.try_emplace(serial);
    if (added) ogg_stream_init(&entry->second, static_cast<int>(serial));
    ogg_stream_pagein(&entry->second, &page);
    ogg_packet packet;
    while (ogg_stream_packetout(&entry->second, &packet) == 1) {
      packets.push_back({serial, std::string(reinterpret_cast<const char*>(packet.packet),
                                             static_cast<std::size_t>(packet.bytes))});
    }
  }
  for (auto& [serial, state] : streams) ogg_stream_clear(&state);
  ogg_sync_clear(&sync);
  return packets;
}

// The longest run of MPEG audio layer III frames that follow one another
// exactly (each header where the last frame ends).
struct FrameRun {
  std::size_t frames = 0;
  std::size_t end = 0;  // behind the last whole frame
};

// Length of the layer III frame whose header starts at `p`, or 0.
std::size_t Mp3FrameLength(const unsigned char* p) {
  static constexpr int kBitrates[2][16] = {
      {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},  // MPEG-1
      {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}};     // MPEG-2 and 2.5
  static constexpr int kRates[3] = {44100, 48000, 32000};
  if (p[0] != 0xFF || (p[1] & 0xE0) != 0xE0 || (p[1] & 0x06) != 0x02) return 0;  // sync, layer III
  const int version = (p[1] >> 3) & 3;  // 3 MPEG-1, 2 MPEG-2, 0 MPEG-2.5
  if (version == 1) return 0;
  const int bitrate = kBitrates[version == 3 ? 0 : 1][p[2] >> 4];
  const int rateIndex = (p[2] >> 2) & 3;
  if (bitrate == 0 || rateIndex == 3) return 0;
  const int rate = kRates[rateIndex] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
  const int padding = (p[2] >> 1) & 1;
  return static_cast<std::size_t>((version == 3 ? 144000 : 72000) * bitrate / rate + padding);
}

FrameRun LongestMp3FrameRun(std::string_view data) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
  FrameRun best;
  for (std::size_t start = 0; start + 4 <= data.size(); ++start) {
    FrameRun run{0, start};
    while (run.end + 4 <= data.size()) {
      const std::size_t length = Mp3FrameLength(bytes + run.end);
      if (length == 0 || run.end + length > data.size()) break;
      run.end += length;
      ++run.frames;
    }
    if (run.frames > best.frames) best = run;
    if (run.frames > 0) start = run.end - 1;  // the next run can't start inside this one
  }
  return best;
}

std::string ReadTestFile(const std::string& name) {
  return testing_support::ReadFile(std::string(TS_TEST_DATA_DIR) + "/net/" + name);
}

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
    std::vector<std::string> argv = {*ffmpeg, "-nostdin", "-hide_banner", "-loglevel", "warning", "-re", "-f",
                                     "lavfi", "-i", "anoisesrc=color=pink:amplitude=0.3:sample_rate=44100:duration=30",
                                     "-ac", "2", "-flush_packets", "1"};
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
