// What the Icecast tests know about the media they stream.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace net_testing {

struct OggPacket {
  long serial = 0;
  std::string bytes;
  bool operator==(const OggPacket&) const = default;
};

// Every packet of every logical stream, in order, through libogg (which
// drops any page whose checksum fails).
std::vector<OggPacket> OggPackets(std::string_view data);

// The longest run of MPEG audio layer III frames that follow one another
// exactly (each header where the last frame ends), and where it starts.
struct FrameRun {
  std::size_t start = 0;
  std::size_t frames = 0;
  std::size_t end = 0;  // behind the last whole frame
};
FrameRun LongestMp3FrameRun(std::string_view data);

std::string ReadTestFile(const std::string& name);

}  // namespace net_testing
