// The response header of an HTTP/1.0 or ICY stream server.
//
// A radio server answers a GET with a status line, header lines and an empty
// line, then the stream:
//
//   ICY 200 OK\r\n                      (SHOUTcast; Icecast says HTTP/1.0 200 OK)
//   icy-name:Radio One\r\n              station name
//   icy-genre:Jazz\r\n                  station genre
//   icy-url:http://radio.example/\r\n   station home page
//   icy-metaint:16000\r\n               audio bytes between metadata blocks
//   \r\n
//
// The whole header must fit in kHeaderAreaBytes - 1 bytes together with its
// final empty line; a longer one is refused, so a hostile server can't make
// the client hold more. The first word of the status line is not checked,
// which takes "HTTP/1.0", "HTTP/1.1" and "ICY" alike. Header names are
// compared without regard to case, as HTTP has them; a value loses the blanks
// in front of it and is cut to kHeaderValueBytes bytes. Station texts are
// narrow text: UTF-8 when valid, else Windows-1252, bounded to
// kStationTextUnits UTF-16 units.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace net {

inline constexpr std::size_t kHeaderAreaBytes = 2048;
inline constexpr std::size_t kHeaderValueBytes = 256;
inline constexpr std::size_t kStationTextUnits = 259;

inline constexpr int kStatusOk = 200;
inline constexpr int kStatusFound = 302;

struct ResponseHeader {
  int status = 0;                       // 0 when the status line has no number
  std::string stationName;              // icy-name, as UTF-8
  std::string stationGenre;             // icy-genre
  std::string stationUrl;               // icy-url
  std::uint32_t metaInterval = 0;       // icy-metaint; 0 without metadata
  std::optional<std::string> location;  // Location, raw bytes
};

// Offset just behind the "\r\n\r\n" that ends the header, or nullopt while
// the text has no end of header yet.
std::optional<std::size_t> FindHeaderEnd(std::string_view received);

// The status number of a status line: the second word, read as a decimal
// number with an optional sign. 0 when there is none.
int ParseStatusCode(std::string_view statusLine);

// Reads a whole header (the text up to and including its empty line).
ResponseHeader ParseResponseHeader(std::string_view header);

// The value of icy-metaint: decimal digits after optional blanks. Anything
// else (a sign, a letter first, a number above 2^31 - 1) means no metadata.
std::uint32_t ParseMetaInterval(std::string_view value);

}  // namespace net
