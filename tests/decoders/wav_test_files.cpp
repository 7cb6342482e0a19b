#include "wav_test_files.h"

#include <cstring>

#include "support/command_decode.h"

namespace wav_testing {

std::string MediaPath(const std::string& name) {
  return std::string(TS_TEST_DATA_DIR) + "/wav/" + name;
}

std::vector<std::int16_t> SoxDecode(const std::string& path) {
  return testing_support::DecodeWith("sox -D '" + path + "' -t raw -e signed -b 16 -L - 2>/dev/null");
}

std::vector<std::int16_t> FfmpegDecode(const std::string& path) {
  return testing_support::DecodeWith("ffmpeg -loglevel error -i '" + path + "' -f s16le -c:a pcm_s16le - 2>/dev/null");
}

std::string Le16(std::uint16_t value) {
  return std::string{static_cast<char>(value & 0xFF), static_cast<char>(value >> 8)};
}

std::string Le32(std::uint32_t value) {
  return Le16(static_cast<std::uint16_t>(value & 0xFFFF)) + Le16(static_cast<std::uint16_t>(value >> 16));
}

std::string Chunk(std::string_view id, std::string_view body) {
  std::string chunk = std::string(id) + Le32(static_cast<std::uint32_t>(body.size())) + std::string(body);
  if (body.size() % 2 != 0) chunk.push_back('\0');
  return chunk;
}

std::string Riff(std::initializer_list<std::string> chunks) {
  std::string body = "WAVE";
  for (const std::string& chunk : chunks) body += chunk;
  return "RIFF" + Le32(static_cast<std::uint32_t>(body.size())) + body;
}

std::string PcmWav(const std::vector<std::int16_t>& samples, std::uint32_t rate, std::uint16_t channels) {
  std::string data;
  data.reserve(samples.size() * 2);
  for (const std::int16_t sample : samples) data += Le16(static_cast<std::uint16_t>(sample));
  const auto blockAlign = static_cast<std::uint16_t>(channels * 2);
  return Riff({Chunk("fmt ", FormatFields(1, channels, rate, rate * blockAlign, blockAlign, 16)),
               Chunk("data", data)});
}

std::string FormatFields(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate,
                         std::uint32_t bytesPerSecond, std::uint16_t blockAlign, std::uint16_t bits) {
  return Le16(tag) + Le16(channels) + Le32(rate) + Le32(bytesPerSecond) + Le16(blockAlign) + Le16(bits);
}

WavParts SplitWav(const std::string& bytes) {
  WavParts parts;
  for (std::size_t at = 12; at + 8 <= bytes.size();) {
    std::uint32_t size = 0;
    std::memcpy(&size, bytes.data() + at + 4, 4);
    const std::string id = bytes.substr(at, 4);
    const std::string body = bytes.substr(at + 8, size);
    if (id == "fmt ") parts.format = body;
    if (id == "data") parts.data = body;
    at += 8 + size + (size & 1);
  }
  return parts;
}

std::vector<std::int16_t> LeftChannel(const std::vector<std::int16_t>& stereo) {
  std::vector<std::int16_t> left;
  for (std::size_t i = 0; i < stereo.size(); i += 2) left.push_back(stereo[i]);
  return left;
}

}  // namespace wav_testing
