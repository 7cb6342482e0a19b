// NetStream against a server the test scripts byte for byte: the request,
// the station texts, the audio without its metadata, the titles, the status
// texts in order, the buffer targets, the proxy and redirects.
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <string>
#include <thread>

#include "fault_server.h"
#include "icy_stream.h"
#include "playback/playback_settings.h"
#include "stream_fixture.h"

namespace net_testing {
namespace {

TEST_F(NetStreamTest, DeliversTheAudioWithoutMetadataAndPostsEachTitle) {
  const std::string audio = RandomBytes(60000, 1);
  const std::string wire =
      Interleave(audio, 1000, {TitleBlock("First"), std::string(1, '\0'), TitleBlock("Second")});
  FaultServer server([&](FaultConnection& connection) {
    if (connection.ReadRequest()) connection.SendSlowly(RadioHeader(1000) + wire, 7000, 5);
  });
  ASSERT_TRUE(stream.SetUrl(server.Url("/live")));
  ASSERT_TRUE(stream.Connect());
  EXPECT_TRUE(stream.IsConnected());
  std::string name, genre, url;
  EXPECT_TRUE(stream.GetStationInfo(&name, &genre, &url));
  EXPECT_EQ(name, "Fault Radio");
  EXPECT_EQ(genre, "Test");
  EXPECT_EQ(url, "http://fault.example/");

  // Odd read sizes cut the blocks anywhere.
  std::string received;
  for (std::uint32_t piece = 1; received.size() < audio.size(); piece = piece * 7 % 3001 + 1) {
    received += ReadUpTo(std::min(audio.size() - received.size(), std::size_t{piece}), piece);
  }
  EXPECT_TRUE(received == audio) << "the audio differs from what the server sent";
  log.Collect();
  EXPECT_EQ(log.Texts(net::kModeTitle), (std::vector<std::string>{"First", "Second"}));
  std::string title;
  EXPECT_TRUE(stream.GetStreamTitle(title));
  EXPECT_EQ(title, "Second");

  ASSERT_TRUE(server.WaitForScripts(1, 5000));
  const std::vector<std::string> requests = server.Requests();
  ASSERT_EQ(requests.size(), 1u);
  EXPECT_EQ(requests[0], "GET /live HTTP/1.0\r\nHost: 127.0.0.1:" + std::to_string(server.Port()) +
                             "\r\nAccept: */*\r\nIcy-MetaData:1\r\nUser-Agent: Tavrinsonic\r\n\r\n");
}

TEST_F(NetStreamTest, OnlyAddressesWithTheSmallHttpPrefixAreTaken) {
  EXPECT_FALSE(stream.SetUrl("HTTP://127.0.0.1/")) << "unlike a redirect's";
  EXPECT_FALSE(stream.SetUrl("https://127.0.0.1/"));
  EXPECT_FALSE(stream.SetUrl("/music/song.mp3"));
  EXPECT_FALSE(stream.IsConnected());
}

TEST_F(NetStreamTest, StatusTextsComeInOrder) {
  FaultServer server([&](FaultConnection& connection) {
    if (connection.ReadRequest() && connection.Send(RadioHeader())) connection.StallUntilClosed();
  });
  ASSERT_TRUE(stream.SetUrl("http://localhost:" + std::to_string(server.Port()) + "/"));
  ASSERT_TRUE(stream.Connect());
  stream.Disconnect();
  ASSERT_TRUE(log.WaitForText("Disconnected", 5000));
  EXPECT_EQ(log.StatusLines(), (std::vector<std::string>{"1:Resolving host...", "1:Connecting localhost",
                                                         "1:Connected to server", "2:Disconnected"}));
  EXPECT_EQ(log.Count(net::kMessageNextTrack), 0);
}

TEST_F(NetStreamTest, FirstReadWaitsForAQuarterAndAReadAfterAnUnderrunForHalf) {
  platform::Event step[3];
  FaultServer server([&](FaultConnection& connection) {
    if (!connection.ReadRequest() || !connection.Send(RadioHeader() + std::string(32767, 'a'))) return;
    if (!connection.WaitFor(step[0]) || !connection.Send("b")) return;
    if (!connection.WaitFor(step[1]) || !connection.Send(std::string(65535, 'c'))) return;
    if (!connection.WaitFor(step[2]) || !connection.Send("d")) return;
    connection.StallUntilClosed();
  });
  UseBuffer(131072);
  ASSERT_TRUE(stream.SetUrl(server.Url()));
  ASSERT_TRUE(stream.Connect());
  std::atomic<bool> returned{false};
  std::string buffer(32768, '\0');
  std::uint32_t got = 0;

  auto reader = std::async(std::launch::async, [&] {
    const bool ok = stream.Read(buffer.data(), 1, &got);
    returned = true;
    return ok;
  });
  ASSERT_TRUE(log.WaitUntil([&](const auto&) { return stream.BytesAvailable() == 32767; }, 5000));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_FALSE(returned) << "32767 bytes are one short of the first read's target";
  step[0].Set();
  ASSERT_TRUE(reader.get());
  EXPECT_EQ(buffer[0], 'a');

  ASSERT_TRUE(stream.Read(buffer.data(), 32767, &got));  // everything left: 32766 'a' and 'b'
  EXPECT_EQ(got, 32767u);
  EXPECT_EQ(buffer[32766], 'b');
  EXPECT_EQ(stream.BytesAvailable(), 0u);

  // The buffer is empty: this read underruns, as long as it begins before
  // the server sends more.
  returned = false;
  std::atomic<bool> reading{false};
  reader = std::async(std::launch::async, [&] {
    reading = true;
    const bool ok = stream.Read(buffer.data(), 1, &got);
    returned = true;
    return ok;
  });
  ASSERT_TRUE(log.WaitUntil([&](const auto&) { return reading.load(); }, 5000));
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  step[1].Set();
  ASSERT_TRUE(log.WaitUntil([&](const auto&) { return stream.BytesAvailable() == 65535 || returned; }, 5000));
  std::this_thread::sleep_for(std::chrono::milliseconds(200));
  EXPECT_FALSE(returned) << "after an underrun a read waits for half of 131072";
  EXPECT_TRUE(log.WaitForText("Prebuffering:99%", 0)) << "65535 of 65536 bytes";
  step[2].Set();
  ASSERT_TRUE(reader.get());
  EXPECT_EQ(buffer[0], 'c');
  log.Collect();
  EXPECT_EQ(log.Texts(net::kModeStatus).back(), "<null>") << "the status line empties when the wait is over";
}

TEST_F(NetStreamTest, FullBufferHoldsTheServerBackAndLosesNothing) {
  const std::string audio = RandomBytes(200000, 2);
  FaultServer server([&](FaultConnection& connection) {
    if (connection.ReadRequest()) connection.Send(RadioHeader() + audio);
  });
  UseBuffer(32768);
  ASSERT_TRUE(stream.SetUrl(server.Url()));
  ASSERT_TRUE(stream.Connect());
  ASSERT_TRUE(log.WaitUntil([&](const auto&) { return stream.BytesAvailable() > 32768 - 2048; }, 5000));
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_LE(stream.BytesAvailable(), 32768u) << "the buffer never grows";
  const std::string received = ReadUpTo(audio.size(), 3000);
  EXPECT_EQ(received.size(), audio.size());
  EXPECT_TRUE(received == audio);
}

TEST_F(NetStreamTest, WhatIsBufferedCanBeReadAfterTheServerCloses) {
  FaultServer server([](FaultConnection& connection) {
    if (connection.ReadRequest()) connection.Send(RadioHeader() + std::string(10000, 'z'));
  });
  ASSERT_TRUE(stream.SetUrl(server.Url()));
  ASSERT_TRUE(stream.Connect());
  ASSERT_TRUE(log.WaitForText("Disconnected", 5000));
  EXPECT_TRUE(stream.HasEnded());
  EXPECT_TRUE(stream.IsConnected());
  EXPECT_EQ(stream.BytesAvailable(), 10000u);
  EXPECT_EQ(ReadUpTo(20000, 4096), std::string(10000, 'z'));
  std::uint32_t got = 7;
  char byte;
  EXPECT_FALSE(stream.Read(&byte, 1, &got));
  EXPECT_EQ(got, 0u);
  stream.Disconnect();
  EXPECT_FALSE(stream.IsConnected());
  EXPECT_FALSE(stream.HasEnded());
  EXPECT_FALSE(stream.Read(&byte, 1, &got));
  EXPECT_FALSE(stream.Read(&byte, 1, nullptr));
}

TEST_F(NetStreamTest, ProxyGetsTheWholeAddressAndTheOriginsHost) {
  FaultServer proxy([](FaultConnection& connection) {
    if (connection.ReadRequest()) connection.Send(RadioHeader() + "proxied");
  });
  for (const std::string& address :
       {"127.0.0.1:" + std::to_string(proxy.Port()), "http://127.0.0.1:" + std::to_string(proxy.Port())}) {
    playback::Playback().proxyAddress = address;
    ASSERT_TRUE(stream.SetUrl("http://radio.invalid:8000/live"));
    ASSERT_TRUE(stream.Connect()) << address;
    EXPECT_EQ(ReadUpTo(7), "proxied");
    stream.Disconnect();
  }
  ASSERT_TRUE(proxy.WaitForScripts(2, 5000));
  ASSERT_EQ(proxy.Requests().size(), 2u);
  for (const std::string& request : proxy.Requests()) {
    EXPECT_EQ(request.substr(0, request.find("Accept")),
              "GET http://radio.invalid:8000/live HTTP/1.0\r\nHost: radio.invalid:8000\r\n");
  }
}

TEST_F(NetStreamTest, RedirectsAreFollowedRelativeAndAbsolute) {
  std::uint16_t port = 0;
  FaultServer server([&](FaultConnection& connection) {
    if (!connection.ReadRequest()) return;
    const std::string target = connection.Target();
    if (target == "/a") connection.Send("HTTP/1.0 302 Found\r\nLocation: /b\r\n\r\n");
    if (target == "/b") {
      connection.Send("HTTP/1.1 302 Found\r\nLocation: http://127.0.0.1:" + std::to_string(port) +
                      "/c\r\n\r\n");
    }
    if (target == "/c") connection.Send(RadioHeader() + "arrived");
  });
  port = server.Port();
  ASSERT_TRUE(stream.SetUrl(server.Url("/a")));
  ASSERT_TRUE(stream.Connect());
  EXPECT_EQ(ReadUpTo(7), "arrived");
  EXPECT_EQ(server.Connections(), 3);
}

TEST_F(NetStreamTest, ReconnectsAfterADisconnectAndResetForgetsTheStation) {
  FaultServer server([](FaultConnection& connection) {
    if (connection.ReadRequest()) connection.Send(RadioHeader(4, "") + "abcd" + TitleBlock("Song") + "efgh");
  });
  ASSERT_TRUE(stream.SetUrl(server.Url()));
  for (int round = 0; round < 3; ++round) {
    ASSERT_TRUE(stream.Connect()) << round;
    EXPECT_EQ(ReadUpTo(8), "abcdefgh");
    stream.Disconnect();
  }
  std::string title;
  EXPECT_TRUE(stream.GetStreamTitle(title)) << "the title outlives the connection";
  EXPECT_EQ(title, "Song");
  stream.Reset();
  EXPECT_FALSE(stream.GetStreamTitle(title));
  std::string name = "stale";
  EXPECT_FALSE(stream.GetStationInfo(&name, nullptr, nullptr));
  EXPECT_EQ(name, "");
  EXPECT_FALSE(stream.Connect()) << "Reset forgets the address too";
}

}  // namespace
}  // namespace net_testing
