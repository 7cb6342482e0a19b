// Feeds arbitrary bytes to the response header reader as a server would send
// them, and checks the bounds the client relies on: the header fits the
// area, station texts are valid UTF-8 within their UTF-16 bound, and a
// redirect's address either parses or is refused.
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "net/response_header.h"
#include "fuzz_checks.h"
#include "net/stream_url.h"

using fuzz_checks::Require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  std::string_view received(reinterpret_cast<const char*>(data), size);
  if (received.size() > net::kHeaderAreaBytes - 1) received = received.substr(0, net::kHeaderAreaBytes - 1);
  net::ParseStatusCode(received);
  const auto end = net::FindHeaderEnd(received);
  if (!end) return 0;
  Require(*end <= received.size());
  const net::ResponseHeader header = net::ParseResponseHeader(received.substr(0, *end));
  for (const std::string* text : {&header.stationName, &header.stationGenre, &header.stationUrl}) {
    fuzz_checks::RequireText(*text, net::kStationTextUnits);
  }
  Require(header.metaInterval <= 0x7FFFFFFFu);
  if (header.location) {
    const auto next = net::ResolveLocation("http://radio.example:8000/dir/live?x", *header.location);
    if (next) {
      if (const auto url = net::ParseStreamUrl(*next)) {
        const std::string request = net::BuildRequest(*url, *next, false, "Tavrinsonic");
        // Nothing from the server may end the request line early.
        Require(request.find("\r\n") == request.find(" HTTP/1.0\r\n") + 9);
      }
    }
  }
  return 0;
}
