#include "net/response_header.h"

#include <limits>

#include "platform/text.h"

namespace net {
namespace {

bool IsBlank(char c) {
  return c == ' ' || c == '\t';
}
bool IsSpace(char c) {
  return IsBlank(c) || c == '\r' || c == '\n' || c == '\v' || c == '\f';
}
bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::string_view TrimLeadingBlanks(std::string_view text) {
  std::size_t start = 0;
  while (start < text.size() && IsBlank(text[start])) ++start;
  return text.substr(start);
}

// The header's lines one by one, without their line ends. A bare "\n" also
// ends a line, so a server that forgets the "\r" still has its fields read.
class LineReader {
 public:
  explicit LineReader(std::string_view text) : rest(text) {}
  bool Next(std::string_view& line) {
    if (rest.empty()) return false;
    const std::size_t end = rest.find('\n');
    line = rest.substr(0, end);
    rest = end == std::string_view::npos ? std::string_view() : rest.substr(end + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    return true;
  }

 private:
  std::string_view rest;
};

std::string StationText(std::string_view value) {
  return platform::TruncateToUtf16Units(platform::NarrowToUtf8(value), kStationTextUnits);
}

}  // namespace

std::optional<std::size_t> FindHeaderEnd(std::string_view received) {
  const std::size_t found = received.find("\r\n\r\n");
  if (found == std::string_view::npos) return std::nullopt;
  return found + 4;
}

int ParseStatusCode(std::string_view statusLine) {
  std::size_t i = 0;
  while (i < statusLine.size() && IsSpace(statusLine[i])) ++i;
  while (i < statusLine.size() && !IsSpace(statusLine[i])) ++i;  // "HTTP/1.0" or "ICY"
  while (i < statusLine.size() && IsSpace(statusLine[i])) ++i;
  bool negative = false;
  if (i < statusLine.size() && (statusLine[i] == '-' || statusLine[i] == '+')) {
    negative = statusLine[i] == '-';
    ++i;
  }
  if (i >= statusLine.size() || !IsDigit(statusLine[i])) return 0;
  long long code = 0;
  for (; i < statusLine.size() && IsDigit(statusLine[i]); ++i) {
    code = code * 10 + (statusLine[i] - '0');
    if (code > 999999) return 0;  // no status has so many digits
  }
  return static_cast<int>(negative ? -code : code);
}

std::uint32_t ParseMetaInterval(std::string_view value) {
  value = TrimLeadingBlanks(value);
  if (value.empty() || !IsDigit(value.front())) return 0;
  std::uint64_t interval = 0;
  for (char c : value) {
    if (!IsDigit(c)) break;
    interval = interval * 10 + static_cast<std::uint64_t>(c - '0');
    if (interval > static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max())) return 0;
  }
  return static_cast<std::uint32_t>(interval);
}

ResponseHeader ParseResponseHeader(std::string_view header) {
  ResponseHeader parsed;
  LineReader lines(header);
  std::string_view line;
  if (!lines.Next(line)) return parsed;
  parsed.status = ParseStatusCode(line);
  while (lines.Next(line)) {
    if (line.empty()) break;  // the end of the header
    const std::size_t colon = line.find(':');
    if (colon == std::string_view::npos) continue;
    const std::string_view name = line.substr(0, colon);
    std::string_view value = TrimLeadingBlanks(line.substr(colon + 1));
    if (value.size() > kHeaderValueBytes) value = value.substr(0, kHeaderValueBytes);
    if (platform::EqualsIgnoreCase(name, "icy-name")) {
      parsed.stationName = StationText(value);
    } else if (platform::EqualsIgnoreCase(name, "icy-genre")) {
      parsed.stationGenre = StationText(value);
    } else if (platform::EqualsIgnoreCase(name, "icy-url")) {
      parsed.stationUrl = StationText(value);
    } else if (platform::EqualsIgnoreCase(name, "icy-metaint")) {
      parsed.metaInterval = ParseMetaInterval(value);
    } else if (platform::EqualsIgnoreCase(name, "location")) {
      parsed.location = std::string(value);
    }
  }
  return parsed;
}

}  // namespace net
