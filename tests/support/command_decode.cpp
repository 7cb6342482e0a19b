#include "support/command_decode.h"

#include <array>
#include <cstdio>

namespace testing_support {

std::vector<std::int16_t> DecodeWith(const std::string& command) {
  std::vector<std::int16_t> samples;
  FILE* pipe = popen(command.c_str(), "r");
  if (pipe == nullptr) return samples;
  std::array<std::uint8_t, 8192> chunk{};
  std::string bytes;
  std::size_t got = 0;
  while ((got = std::fread(chunk.data(), 1, chunk.size(), pipe)) > 0) bytes.append(chunk.begin(), chunk.begin() + got);
  if (pclose(pipe) != 0) return samples;
  samples.resize(bytes.size() / 2);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    samples[i] = static_cast<std::int16_t>(static_cast<std::uint8_t>(bytes[2 * i]) |
                                           static_cast<std::uint8_t>(bytes[2 * i + 1]) << 8);
  }
  return samples;
}

}  // namespace testing_support
