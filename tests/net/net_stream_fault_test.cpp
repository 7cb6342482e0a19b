// NetStream against servers that misbehave, and Disconnect from every state.
// Each fault ends in the status the user is shown and a stream that is over
// or goes on correctly; none hangs, crashes or holds more memory than its
// buffer.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <functional>
#include <future>
#include <string>
#include <thread>

#include "fault_server.h"
#include "icy_stream.h"
#include "net/socket_io.h"
#include "net/stream_connection.h"
#include "stream_fixture.h"

namespace net_testing {
namespace {

constexpr int kShortTimeoutMs = 500;

class NetStreamFaultTest : public NetStreamTest {
 protected:
  // Connects to a server running `script`; the result of Connect.
  bool ConnectTo(FaultServer& server, std::string_view path = "/") {
    EXPECT_TRUE(server.Valid());
    EXPECT_TRUE(stream.SetUrl(server.Url(path)));
    return stream.Connect();
  }
  bool ToldCantEstablish() { return log.WaitForText("Can't establish connection", 5000); }
};

TEST_F(NetStreamFaultTest, SilenceAfterTheHeaderMovesToTheNextTrack) {
  stream.SetTimeout(kShortTimeoutMs);
  FaultServer server([](FaultConnection& connection) {
    if (connection.ReadRequest() && connection.Send(RadioHeader() + "12345")) connection.StallUntilClosed();
  });
  ASSERT_TRUE(ConnectTo(server));
  char buffer[100];
  std::uint32_t got = 0;
  // The wait for the prebuffer target ends with the stream; the five bytes
  // that came are still delivered.
  EXPECT_TRUE(stream.Read(buffer, sizeof buffer, &got));
  EXPECT_EQ(std::string(buffer, got), "12345");
  EXPECT_FALSE(stream.Read(buffer, sizeof buffer, &got));
  ASSERT_TRUE(log.WaitForText("Disconnected", 5000));
  const auto& posted = log.Collect();
  EXPECT_EQ(log.Count(net::kMessageNextTrack), 1);
  for (const Posted& p : posted) {
    if (p.id == net::kMessageNextTrack) {
      EXPECT_EQ(p.wParam, 1u);
      EXPECT_EQ(p.lParam, 0);
    }
  }
  EXPECT_FALSE(stream.HasEnded()) << "the server didn't close; the stream was given up";
}

TEST_F(NetStreamFaultTest, CloseInTheMiddleOfAMetadataBlockKeepsOnlyTheAudio) {
  FaultServer server([](FaultConnection& connection) {
    if (connection.ReadRequest())
      connection.Send(RadioHeader(6) + "audio!" + TitleBlock("Cut short").substr(0, 20));
  });
  ASSERT_TRUE(ConnectTo(server));
  EXPECT_EQ(ReadUpTo(100), "audio!");
  EXPECT_TRUE(stream.HasEnded());
  log.Collect();
  EXPECT_TRUE(log.Texts(net::kModeTitle).empty());
}

// Servers whose answer can't start a stream: Connect fails promptly (a
// silence within the timeout) with the user told so, never "Connected to
// server", and the client closes the socket (each script returns only once
// the client has gone).
struct RefusingServer {
  const char* name;
  void (*script)(FaultConnection&);
  bool shortTimeout;  // the fault is a silence that only the timeout ends
  int connections;
};

const RefusingServer kRefusingServers[] = {
    {"SilenceBeforeTheHeader",
     [](FaultConnection& c) {
       if (c.ReadRequest()) c.StallUntilClosed();
     },
     true, 1},
    {"CloseInTheMiddleOfTheHeader",
     [](FaultConnection& c) {
       if (c.ReadRequest()) c.Send("ICY 200 OK\r\nicy-na");
     },
     false, 1},
    {"HeaderLineOfAMegabyte",  // refused once past the header area
     [](FaultConnection& c) {
       if (c.ReadRequest() && c.Send("ICY 200 OK\r\nX-Junk: " + std::string(1 << 20, 'j'))) c.StallUntilClosed();
     },
     false, 1},
    {"EndlessHeader",
     [](FaultConnection& c) {
       if (!c.ReadRequest() || !c.Send("HTTP/1.0 200 OK\r\n")) return;
       for (int line = 0; c.Send("X-Line-" + std::to_string(line) + ": more\r\n"); ++line) {
       }
     },
     false, 1},
    {"HeaderThatDripsForever",  // each byte well within the timeout, the whole header not
     [](FaultConnection& c) {
       if (c.ReadRequest()) c.SendSlowly("HTTP/1.0 200 OK\r\n" + std::string(1000, 'x'), 1, 20);
     },
     true, 1},
    {"RedirectLoop",
     [](FaultConnection& c) {
       if (c.ReadRequest()) c.Send("HTTP/1.0 302 Found\r\nLocation: /loop\r\n\r\n");
     },
     false, net::kMaxRedirects + 1},
    {"RedirectToAnotherScheme",
     [](FaultConnection& c) {
       if (c.ReadRequest()) c.Send("HTTP/1.0 302 Found\r\nLocation: https://secure.invalid/\r\n\r\n");
     },
     false, 1},
    {"NotFound",
     [](FaultConnection& c) {
       if (c.ReadRequest()) c.Send("HTTP/1.0 404 Not Found\r\n\r\nno such mount");
     },
     false, 1},
};

void PrintTo(const RefusingServer& server, std::ostream* out) { *out << server.name; }

class RefusingServerTest : public NetStreamFaultTest, public testing::WithParamInterface<RefusingServer> {};

TEST_P(RefusingServerTest, ConnectFailsAndTheUserIsTold) {
  if (GetParam().shortTimeout) stream.SetTimeout(kShortTimeoutMs);
  FaultServer server(GetParam().script);
  bool connected = true;
  EXPECT_LT(MillisecondsOf([&] { connected = ConnectTo(server, "/loop"); }), kPromptMs) << "a hang";
  EXPECT_FALSE(connected);
  EXPECT_TRUE(ToldCantEstablish());
  EXPECT_FALSE(stream.IsConnected());
  ASSERT_TRUE(server.WaitForScripts(GetParam().connections, 5000)) << "the client didn't close";
  EXPECT_EQ(server.Connections(), GetParam().connections);
  log.Collect();
  for (const std::string& text : log.Texts(net::kModeStatus)) EXPECT_NE(text, "Connected to server");
}

INSTANTIATE_TEST_SUITE_P(Faults, RefusingServerTest, testing::ValuesIn(kRefusingServers),
                         [](const testing::TestParamInfo<RefusingServer>& parameter) { return parameter.param.name; });

TEST_F(NetStreamFaultTest, RefusedConnectionIsReported) {
  std::uint16_t port;
  {
    FaultServer closed([](FaultConnection&) {});
    port = closed.Port();
  }
  ASSERT_TRUE(stream.SetUrl("http://127.0.0.1:" + std::to_string(port) + "/"));
  EXPECT_FALSE(stream.Connect());
  ASSERT_TRUE(ToldCantEstablish());
  EXPECT_EQ(log.StatusLines(),
            (std::vector<std::string>{"1:Connecting 127.0.0.1", "1:<null>", "2:Can't establish connection"}));
}

TEST_F(NetStreamFaultTest, UnknownHostIsReported) {
  stream.SetHostLookup(
      [](const std::string&, std::uint16_t, std::vector<net::SocketAddress>&) { return false; });
  ASSERT_TRUE(stream.SetUrl("http://radio.invalid/"));
  EXPECT_FALSE(stream.Connect());
  ASSERT_TRUE(log.WaitForText("Can't resolve host name", 5000));
  EXPECT_EQ(log.StatusLines(),
            (std::vector<std::string>{"1:Resolving host...", "2:Can't resolve host name"}));
}

// Disconnect from each state of a connection, with Connect or Read waiting
// on another thread as a decoder's would.

TEST_F(NetStreamFaultTest, DisconnectWhileResolvingIsPrompt) {
  // A name server that doesn't answer until the test lets it. The lookup's
  // thread outlives the connection, so it gets only what it can keep alive.
  auto release = std::make_shared<std::atomic<bool>>(false);
  auto finished = std::make_shared<std::atomic<bool>>(false);
  stream.SetHostLookup(
      [release, finished](const std::string&, std::uint16_t, std::vector<net::SocketAddress>&) {
        while (!release->load()) std::this_thread::sleep_for(std::chrono::milliseconds(5));
        finished->store(true);
        return false;
      });
  ASSERT_TRUE(stream.SetUrl("http://slow.invalid/"));
  auto connecting = std::async(std::launch::async, [&] { return stream.Connect(); });
  ASSERT_TRUE(log.WaitForText("Resolving host...", 5000));
  EXPECT_TRUE(stream.IsConnected()) << "a connection under way counts as connected, so Stop reaches it";
  EXPECT_LT(MillisecondsOf([&] { stream.Disconnect(); }), kPromptMs);
  EXPECT_FALSE(connecting.get());
  EXPECT_FALSE(stream.IsConnected());
  release->store(true);
  EXPECT_TRUE(log.WaitUntil([&](const auto&) { return finished->load(); }, 5000));
  log.Collect();
  EXPECT_EQ(log.Texts(net::kModeStatusForASecond), std::vector<std::string>{}) << "a stop is no failure";
}

TEST_F(NetStreamFaultTest, DisconnectWhileConnectingOrReadingTheHeaderIsPrompt) {
  // A listener whose queue is full leaves the next connect unanswered; the
  // fault server stalls in the middle of its header.
  std::uint16_t fullPort = 0;
  const net::Socket full = ListenOnLoopback(0, fullPort);
  net::Socket filler;
  ASSERT_TRUE(ConnectToLoopback(fullPort, filler, 2000));
  FaultServer server([](FaultConnection& connection) {
    if (connection.ReadRequest() && connection.Send("ICY 200 OK\r\n")) connection.StallUntilClosed();
  });
  for (const std::size_t round : {1u, 2u}) {
    ASSERT_TRUE(stream.SetUrl("http://127.0.0.1:" + std::to_string(round == 1 ? fullPort : server.Port())));
    auto connecting = std::async(std::launch::async, [&] { return stream.Connect(); });
    ASSERT_TRUE(log.WaitUntil(
        [&](const auto&) {
          const auto texts = log.Texts(net::kModeStatus);
          return static_cast<std::size_t>(std::count(texts.begin(), texts.end(), "Connecting 127.0.0.1")) == round;
        },
        5000));
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    EXPECT_LT(MillisecondsOf([&] { stream.Disconnect(); }), kPromptMs) << "round " << round;
    EXPECT_FALSE(connecting.get());
  }
}

TEST_F(NetStreamFaultTest, DisconnectWhileBufferingIsPromptAndTheReadFails) {
  FaultServer server([](FaultConnection& connection) {
    if (connection.ReadRequest() && connection.Send(RadioHeader() + "not enough"))
      connection.StallUntilClosed();
  });
  ASSERT_TRUE(ConnectTo(server));
  std::uint32_t got = 99;
  char buffer[64];
  auto reading = std::async(std::launch::async, [&] { return stream.Read(buffer, sizeof buffer, &got); });
  std::this_thread::sleep_for(std::chrono::milliseconds(100));
  EXPECT_LT(MillisecondsOf([&] { stream.Disconnect(); }), kPromptMs);
  EXPECT_FALSE(reading.get());
  EXPECT_EQ(got, 0u);
}

TEST_F(NetStreamFaultTest, DisconnectWhilePlayingAndWhileTheBufferIsFullIsPrompt) {
  for (const bool reading : {true, false}) {
    FaultServer server([](FaultConnection& connection) {
      if (!connection.ReadRequest() || !connection.Send(RadioHeader())) return;
      const std::string second = std::string(4000, 's');
      while (connection.SendSlowly(second, 1000, 5)) {
      }
    });
    UseBuffer(32768);
    ASSERT_TRUE(ConnectTo(server));
    std::atomic<bool> stop{false};
    auto reader = std::async(std::launch::async, [&] {
      char buffer[2048];
      std::uint32_t got = 0;
      while (reading && !stop && stream.Read(buffer, sizeof buffer, &got)) {
      }
    });
    ASSERT_TRUE(log.WaitUntil([&](const auto&) { return stream.BytesAvailable() > 0 || reading; }, 5000));
    std::this_thread::sleep_for(
        std::chrono::milliseconds(reading ? 300 : 1500));  // without a reader it fills up
    EXPECT_LT(MillisecondsOf([&] { stream.Disconnect(); }), kPromptMs) << (reading ? "playing" : "full");
    stop = true;
    reader.get();
    EXPECT_FALSE(stream.IsConnected());
  }
}

}  // namespace
}  // namespace net_testing
