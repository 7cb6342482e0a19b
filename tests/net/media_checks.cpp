#include "media_checks.h"

#include <ogg/ogg.h>

#include <cstring>
#include <fstream>
#include <map>
#include <sstream>

namespace net_testing {
namespace {

// Length of the layer III frame whose header starts at `p`, or 0.
std::size_t Mp3FrameLength(const unsigned char* p) {
  static constexpr int kBitrates[2][16] = {
      {0, 32, 40, 48, 56, 64, 80, 96, 112, 128, 160, 192, 224, 256, 320, 0},  // MPEG-1
      {0, 8, 16, 24, 32, 40, 48, 56, 64, 80, 96, 112, 128, 144, 160, 0}};     // MPEG-2 and 2.5
  static constexpr int kRates[3] = {44100, 48000, 32000};
  if (p[0] != 0xFF || (p[1] & 0xE0) != 0xE0 || (p[1] & 0x06) != 0x02) return 0;  // sync, layer III
  const int version = (p[1] >> 3) & 3;  // 3 MPEG-1, 2 MPEG-2, 0 MPEG-2.5
  if (version == 1) return 0;
  const int bitrate = kBitrates[version == 3 ? 0 : 1][p[2] >> 4];
  const int rateIndex = (p[2] >> 2) & 3;
  if (bitrate == 0 || rateIndex == 3) return 0;
  const int rate = kRates[rateIndex] >> (version == 3 ? 0 : version == 2 ? 1 : 2);
  const int padding = (p[2] >> 1) & 1;
  return static_cast<std::size_t>((version == 3 ? 144000 : 72000) * bitrate / rate + padding);
}

}  // namespace

std::vector<OggPacket> OggPackets(std::string_view data) {
  ogg_sync_state sync;
  ogg_sync_init(&sync);
  char* area = ogg_sync_buffer(&sync, static_cast<long>(data.size()));
  std::memcpy(area, data.data(), data.size());
  ogg_sync_wrote(&sync, static_cast<long>(data.size()));
  std::map<long, ogg_stream_state> streams;
  std::vector<OggPacket> packets;
  ogg_page page;
  while (ogg_sync_pageout(&sync, &page) == 1) {
    const long serial = ogg_page_serialno(&page);
    auto [entry, added] = streams.try_emplace(serial);
    if (added) ogg_stream_init(&entry->second, static_cast<int>(serial));
    ogg_stream_pagein(&entry->second, &page);
    ogg_packet packet;
    while (ogg_stream_packetout(&entry->second, &packet) == 1) {
      packets.push_back({serial, std::string(reinterpret_cast<const char*>(packet.packet),
                                             static_cast<std::size_t>(packet.bytes))});
    }
  }
  for (auto& [serial, state] : streams) ogg_stream_clear(&state);
  ogg_sync_clear(&sync);
  return packets;
}

FrameRun LongestMp3FrameRun(std::string_view data) {
  const auto* bytes = reinterpret_cast<const unsigned char*>(data.data());
  FrameRun best;
  for (std::size_t start = 0; start + 4 <= data.size(); ++start) {
    FrameRun run{start, 0, start};
    while (run.end + 4 <= data.size()) {
      const std::size_t length = Mp3FrameLength(bytes + run.end);
      if (length == 0 || run.end + length > data.size()) break;
      run.end += length;
      ++run.frames;
    }
    if (run.frames > best.frames) best = run;
    if (run.frames > 0) start = run.end - 1;  // the next run can't start inside this one
  }
  return best;
}

std::string ReadTestFile(const std::string& name) {
  std::ifstream in(std::string(TS_TEST_DATA_DIR) + "/net/" + name, std::ios::binary);
  std::ostringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

}  // namespace net_testing
