#include "wav_writer.h"

#include <fstream>
#include <limits>

namespace render {
namespace {

void PutLe16(std::string& out, std::uint32_t value) {
  out.push_back(static_cast<char>(value & 0xFF));
  out.push_back(static_cast<char>(value >> 8 & 0xFF));
}

void PutLe32(std::string& out, std::uint32_t value) {
  PutLe16(out, value & 0xFFFF);
  PutLe16(out, value >> 16);
}

}  // namespace

bool WriteWavFile(const std::string& path, const std::vector<std::int16_t>& samples, std::uint32_t sampleRate,
                  int channels) {
  const std::uint64_t dataBytes = static_cast<std::uint64_t>(samples.size()) * 2;
  if (dataBytes > std::numeric_limits<std::uint32_t>::max() - 36) return false;
  const auto blockAlign = static_cast<std::uint32_t>(channels) * 2;
  std::string header;
  header.append("RIFF");
  PutLe32(header, static_cast<std::uint32_t>(36 + dataBytes));
  header.append("WAVEfmt ");
  PutLe32(header, 16);
  PutLe16(header, 1);  // PCM
  PutLe16(header, static_cast<std::uint32_t>(channels));
  PutLe32(header, sampleRate);
  PutLe32(header, sampleRate * blockAlign);
  PutLe16(header, blockAlign);
  PutLe16(header, 16);
  header.append("data");
  PutLe32(header, static_cast<std::uint32_t>(dataBytes));

  std::string data;
  data.reserve(static_cast<std::size_t>(dataBytes));
  for (const std::int16_t sample : samples) PutLe16(data, static_cast<std::uint16_t>(sample));

  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file.write(header.data(), static_cast<std::streamsize>(header.size()));
  file.write(data.data(), static_cast<std::streamsize>(data.size()));
  file.close();
  return static_cast<bool>(file);
}

}  // namespace render
