// Writes 16-bit PCM as a canonical WAV file (RIFF, fmt, data).
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace render {

// False when the file can't be written or the data is too large for RIFF.
bool WriteWavFile(const std::string& path, const std::vector<std::int16_t>& samples, std::uint32_t sampleRate,
                  int channels);

}  // namespace render
