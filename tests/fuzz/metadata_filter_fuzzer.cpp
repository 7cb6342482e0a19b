// Feeds an arbitrary stream through the ICY metadata filter in arbitrary
// pieces, and checks it against the same stream filtered in one piece: the
// audio and the titles must not depend on where the reads were cut. Titles
// must be valid UTF-8 within their bound.
//
// Input: 2 bytes of interval, 1 byte of piece-size seed, then the stream.
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "fuzz_checks.h"
#include "net/metadata_filter.h"

using fuzz_checks::Require;

namespace {

struct Result {
  std::vector<std::uint8_t> audio;
  std::vector<std::string> titles;
  std::string lastTitle;
  bool hasTitle = false;
};

Result Run(std::uint32_t interval, std::vector<std::uint8_t> wire, std::uint32_t seed) {
  net::MetadataFilter filter;
  filter.Start(interval);
  Result result;
  std::size_t offset = 0;
  std::uint32_t state = seed * 2654435761u + 1;
  while (offset < wire.size()) {
    std::size_t count = wire.size() - offset;
    if (seed != 0) {
      state = state * 1103515245u + 12345u;
      count = std::min<std::size_t>(count, 1 + (state >> 16) % 97);
    }
    const std::size_t metadata = filter.Filter(wire.data() + offset, count, &result.titles);
    Require(metadata <= count);
    result.audio.insert(result.audio.end(), wire.begin() + static_cast<std::ptrdiff_t>(offset),
                        wire.begin() + static_cast<std::ptrdiff_t>(offset + count - metadata));
    offset += count;
  }
  result.hasTitle = filter.GetStreamTitle(result.lastTitle);
  return result;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 3) return 0;
  const std::uint32_t interval = static_cast<std::uint32_t>(data[0] | (data[1] << 8));
  const std::uint32_t seed = data[2];
  const std::vector<std::uint8_t> wire(data + 3, data + size);
  const Result whole = Run(interval, wire, 0);
  const Result pieces = Run(interval, wire, seed | 1);
  Require(whole.audio == pieces.audio && whole.titles == pieces.titles && whole.hasTitle == pieces.hasTitle &&
          whole.lastTitle == pieces.lastTitle);
  Require(interval != 0 || whole.audio == wire);
  for (const std::string& title : whole.titles) fuzz_checks::RequireText(title, net::kTitleUnits);
  return 0;
}
