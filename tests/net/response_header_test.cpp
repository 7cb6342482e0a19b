// The response header of a radio server: status, station texts, metadata
// interval and redirects, with the bounds that keep a hostile server small.
#include "net/response_header.h"

#include <gtest/gtest.h>

#include "platform/text.h"

namespace net {
namespace {

TEST(ResponseHeader, ReadsStatusStationTextsIntervalAndLocation) {
  const struct {
    const char* name;
    std::string header;
    int status;
    std::string stationName, genre;
    std::uint32_t metaInterval;
    std::optional<std::string> location;
  } cases[] = {
      {"Icecast",
       "HTTP/1.0 200 OK\r\nServer: Icecast 2.4.4\r\nContent-Type: audio/mpeg\r\nicy-genre:Jazz\r\n"
       "icy-name:Radio One\r\nicy-metaint:16000\r\n\r\n",
       200, "Radio One", "Jazz", 16000, std::nullopt},
      {"NamesIgnoreCaseValuesLoseLeadingBlanks",
       "ICY 200 OK\r\nICY-NAME:   Spaced Out\r\nIcy-MetaInt: 8192\r\nicy-genre:\tRock\r\n\r\n", 200, "Spaced Out",
       "Rock", 8192, std::nullopt},
      {"FieldsAfterTheEmptyLineAreAudio", "HTTP/1.0 200 OK\r\n\r\nicy-metaint:16\r\nicy-name:no\r\n", 200, "", "",
       0, std::nullopt},
      {"Redirect", "HTTP/1.1 302 Found\r\nLocation: http://other.example:8000/live\r\n\r\n", kStatusFound, "", "",
       0, "http://other.example:8000/live"},
      {"LinesWithoutColonOrWithBareLineFeeds", "HTTP/1.0 200 OK\nnonsense\nicy-name:Bare\n\r\n\r\n", 200, "Bare",
       "", 0, std::nullopt},
  };
  for (const auto& c : cases) {
    const ResponseHeader parsed = ParseResponseHeader(c.header);
    EXPECT_EQ(parsed.status, c.status) << c.name;
    EXPECT_EQ(parsed.stationName, c.stationName) << c.name;
    EXPECT_EQ(parsed.stationGenre, c.genre) << c.name;
    EXPECT_EQ(parsed.metaInterval, c.metaInterval) << c.name;
    EXPECT_EQ(parsed.location, c.location) << c.name;
  }
  const std::string icecast = "HTTP/1.0 200 OK\r\nicy-url:http://radio.example/\r\n\r\n";
  ASSERT_EQ(FindHeaderEnd(icecast + "audio"), icecast.size());
  EXPECT_EQ(ParseResponseHeader(icecast).stationUrl, "http://radio.example/");
}

TEST(ResponseHeader, StatusLinesOfEveryKind) {
  EXPECT_EQ(ParseStatusCode("ICY 200 OK"), 200);
  EXPECT_EQ(ParseStatusCode("HTTP/1.1 302 Found"), 302);
  EXPECT_EQ(ParseStatusCode("  HTTP/1.0   404"), 404);
  EXPECT_EQ(ParseStatusCode("HTTP/1.0 -200 OK"), -200);
  EXPECT_EQ(ParseStatusCode("HTTP/1.0 OK"), 0);
  EXPECT_EQ(ParseStatusCode("HTTP/1.0"), 0);
  EXPECT_EQ(ParseStatusCode(""), 0);
  EXPECT_EQ(ParseStatusCode("HTTP/1.0 99999999999999999999"), 0);
}

TEST(ResponseHeader, HeaderEndIsTheFirstEmptyLine) {
  EXPECT_FALSE(FindHeaderEnd("HTTP/1.0 200 OK\r\nicy-name:x\r\n").has_value());
  EXPECT_FALSE(FindHeaderEnd("").has_value());
  EXPECT_EQ(FindHeaderEnd("ICY 200 OK\r\n\r\n\r\n\r\n"), 14u);
}

TEST(ResponseHeader, StationTextsAreBoundedAndConverted) {
  const std::string longName(400, 'n');
  const ResponseHeader parsed = ParseResponseHeader("HTTP/1.0 200 OK\r\nicy-name:" + longName +
                                                    "\r\nicy-genre:Caf\xe9\r\nicy-url:\xe2\x82\xac\r\n\r\n");
  EXPECT_EQ(parsed.stationName, std::string(kHeaderValueBytes, 'n'));
  EXPECT_EQ(parsed.stationGenre, "Caf\xc3\xa9");  // Windows-1252
  EXPECT_EQ(parsed.stationUrl, "\xe2\x82\xac");   // valid UTF-8 stays

  // 256 bytes of Windows-1252 that each become a character outside one
  // UTF-16 unit can't exist, but each é is one unit: the bound holds either way.
  const ResponseHeader wide =
      ParseResponseHeader("ICY 200 OK\r\nicy-name:" + std::string(300, '\xe9') + "\r\n\r\n");
  EXPECT_EQ(platform::Utf16Length(wide.stationName), kHeaderValueBytes);
}

TEST(ResponseHeader, MetaIntervalOnlyFromDigits) {
  EXPECT_EQ(ParseMetaInterval("16000"), 16000u);
  EXPECT_EQ(ParseMetaInterval(" 16000 "), 16000u);
  EXPECT_EQ(ParseMetaInterval("8192abc"), 8192u);
  EXPECT_EQ(ParseMetaInterval("0"), 0u);
  EXPECT_EQ(ParseMetaInterval("-5"), 0u);
  EXPECT_EQ(ParseMetaInterval("abc"), 0u);
  EXPECT_EQ(ParseMetaInterval(""), 0u);
  EXPECT_EQ(ParseMetaInterval("2147483647"), 2147483647u);
  EXPECT_EQ(ParseMetaInterval("2147483648"), 0u);
  EXPECT_EQ(ParseMetaInterval("99999999999999999999999"), 0u);
}

}  // namespace
}  // namespace net
