// Stream and proxy addresses, redirects, the request line, and the status
// texts' fill-in.
#include "net/stream_url.h"

#include <gtest/gtest.h>

#include "net/status_text.h"

namespace net {
namespace {

TEST(StreamUrl, HostPortAndTarget) {
  const struct {
    const char* url;
    const char* host;
    int port;
    const char* target;
  } cases[] = {
      {"http://radio.example:8000/live.mp3?x=1", "radio.example", 8000, "/live.mp3?x=1"},
      {"http://radio.example", "radio.example", 80, "/"},  // no path asks for /
      {"http://radio.example:/x", "radio.example", 80, "/x"},
      {"http://radio.example?q", "radio.example", 80, "/?q"},
      {"http://[::1]:8000/s", "::1", 8000, "/s"},
  };
  for (const auto& c : cases) {
    const auto url = ParseStreamUrl(c.url);
    ASSERT_TRUE(url.has_value()) << c.url;
    EXPECT_EQ(url->server.host, c.host) << c.url;
    EXPECT_EQ(url->server.port, c.port) << c.url;
    EXPECT_EQ(url->target, c.target) << c.url;
  }
}

TEST(StreamUrl, UnusableAddresses) {
  for (const char* url : {"", "http://", "http:///path", "http://host:0/", "http://host:65536/", "http://host:80x/",
                          "https://host/", "ftp://host/", "http://[::1/"}) {
    EXPECT_FALSE(ParseStreamUrl(url).has_value()) << url;
  }
  EXPECT_TRUE(ParseStreamUrl("HTTP://host/").has_value()) << "a redirect may write the scheme in capitals";
}

TEST(StreamUrl, ProxyWithOrWithoutScheme) {
  auto proxy = ParseProxyAddress("http://proxy.example:3128");
  ASSERT_TRUE(proxy.has_value());
  EXPECT_EQ(proxy->host, "proxy.example");
  EXPECT_EQ(proxy->port, 3128);
  proxy = ParseProxyAddress("proxy.example");
  ASSERT_TRUE(proxy.has_value());
  EXPECT_EQ(proxy->port, 80);
  EXPECT_FALSE(ParseProxyAddress(":3128").has_value());
}

TEST(StreamUrl, RedirectLocations) {
  const std::string current = "http://a.example:8000/dir/stream.mp3?id=5";
  EXPECT_EQ(ResolveLocation(current, "http://b.example/x"), "http://b.example/x");
  EXPECT_EQ(ResolveLocation(current, "HTTP://b.example/x"), "HTTP://b.example/x");
  EXPECT_EQ(ResolveLocation(current, "/root"), "http://a.example:8000/root");
  EXPECT_EQ(ResolveLocation(current, "other.mp3"), "http://a.example:8000/dir/other.mp3");
  EXPECT_EQ(ResolveLocation("http://a.example", "x"), "http://a.example/x");
  EXPECT_EQ(ResolveLocation("http://a.example?q", "/x"), "http://a.example/x");
  EXPECT_FALSE(ResolveLocation(current, "https://secure.example/").has_value());
  EXPECT_FALSE(ResolveLocation(current, "").has_value());
}

TEST(StreamUrl, RequestDirectAndThroughAProxy) {
  const auto url = ParseStreamUrl("http://radio.example/live");
  ASSERT_TRUE(url.has_value());
  EXPECT_EQ(BuildRequest(*url, "http://radio.example/live", false, "Tavrinsonic"),
            "GET /live HTTP/1.0\r\nHost: radio.example\r\nAccept: */*\r\nIcy-MetaData:1\r\n"
            "User-Agent: Tavrinsonic\r\n\r\n");
  const auto other = ParseStreamUrl("http://[::1]:8000/");
  ASSERT_TRUE(other.has_value());
  EXPECT_EQ(BuildRequest(*other, "http://[::1]:8000/", true, "Tavrinsonic"),
            "GET http://[::1]:8000/ HTTP/1.0\r\nHost: [::1]:8000\r\nAccept: */*\r\nIcy-MetaData:1\r\n"
            "User-Agent: Tavrinsonic\r\n\r\n");
}

TEST(StreamUrl, AnAddressCantAddLinesToTheRequest) {
  const auto url = ParseStreamUrl("http://radio.example/a b\r\nX-Evil: 1\xc3\xa9");
  ASSERT_TRUE(url.has_value());
  const std::string request = BuildRequest(*url, "", false, "UA");
  EXPECT_EQ(request.substr(0, request.find("\r\n")), "GET /a%20b%0D%0AX-Evil:%201%C3%A9 HTTP/1.0");
  EXPECT_EQ(request.find("X-Evil: 1"), std::string::npos);
}

TEST(StatusText, FillsInTheOneValue) {
  EXPECT_EQ(FillIn("Connecting %s", "radio.example"), "Connecting radio.example");
  EXPECT_EQ(FillIn("Prebuffering:%d%%", "42"), "Prebuffering:42%");
  EXPECT_EQ(FillIn("%d%% %s %n %", "7"), "7% %s %n %");
  EXPECT_EQ(FillIn("No value", "x"), "No value");
  EXPECT_EQ(FillIn("Connecting %s", std::string(400, 'h')), "Connecting " + std::string(255 - 11, 'h'));
}

}  // namespace
}  // namespace net
