// NetStream against a real Icecast 2 server: a stream arrives as its source
// sent it, and its titles arrive as they change.
#include <gtest/gtest.h>

#include <iostream>
#include <string>

#include "icecast_server.h"
#include "stream_fixture.h"
#include "support/test_environment.h"

namespace net_testing {
namespace {

constexpr int kTestTimeoutMs = 3000;  // silence from the server ends a stream this soon

std::string ReadTestFile(const std::string& name) {
  return testing_support::ReadFile(std::string(TS_TEST_DATA_DIR) + "/net/" + name);
}

class IcecastStreamTest : public NetStreamTest {
 protected:
  void SetUp() override {
    NetStreamTest::SetUp();
    if (const std::string why = IcecastServer::WhyUnavailable(); !why.empty()) FAIL() << why;
    std::string error;
    ASSERT_TRUE(server.Start(error)) << error;
    stream.SetTimeout(kTestTimeoutMs);
    UseBuffer(32768);  // the first read waits for 8192 bytes
  }
  void TearDown() override {
    NetStreamTest::TearDown();
    if (HasFailure()) std::cerr << server.Log();
    server.Stop();
  }

  IcecastServer server;
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

}  // namespace
}  // namespace net_testing
