#include "icy_stream.h"

#include <random>

namespace net_testing {

std::string RandomBytes(std::size_t count, std::uint32_t seed) {
  std::mt19937 random(seed);
  std::string bytes(count, '\0');
  for (char& byte : bytes) byte = static_cast<char>(random());
  return bytes;
}

std::string MetadataBlock(std::string_view text) {
  const std::size_t units = (text.size() + 15) / 16;
  std::string block(1 + units * 16, '\0');
  block[0] = static_cast<char>(units);
  block.replace(1, text.size(), text);
  return block;
}

std::string TitleBlock(std::string_view title) {
  return MetadataBlock("StreamTitle='" + std::string(title) + "';StreamUrl='';");
}

std::string Interleave(std::string_view audio, std::size_t interval, const std::vector<std::string>& blocks) {
  std::string wire;
  std::size_t next = 0;
  for (std::size_t offset = 0; offset < audio.size(); offset += interval) {
    const std::string_view stretch = audio.substr(offset, interval);
    wire += stretch;
    if (stretch.size() < interval) break;
    wire += next < blocks.size() ? blocks[next++] : std::string(1, '\0');
  }
  return wire;
}

}  // namespace net_testing
