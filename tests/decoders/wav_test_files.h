// The WAV and AAC test media (tests/data/wav, made by make_media.sh there),
// their reference decodes, and a builder of RIFF files for the cases that no
// tool writes.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

namespace wav_testing {

std::string MediaPath(const std::string& name);

// sox's decode to 16-bit (for 8-bit PCM: (byte - 128) * 256, exactly).
std::vector<std::int16_t> SoxDecode(const std::string& path);
// ffmpeg's decode (its own AAC decoder) to 16-bit.
std::vector<std::int16_t> FfmpegDecode(const std::string& path);

std::string Le16(std::uint16_t value);
std::string Le32(std::uint32_t value);
// An 8-byte header and the body, and a pad byte when the body's size is odd.
std::string Chunk(std::string_view id, std::string_view body);
// "RIFF", size, "WAVE" and the chunks in order.
std::string Riff(std::initializer_list<std::string> chunks);
// The 16 common bytes of a fmt chunk.
std::string FormatFields(std::uint16_t tag, std::uint16_t channels, std::uint32_t rate,
                         std::uint32_t bytesPerSecond, std::uint16_t blockAlign, std::uint16_t bits);

// A whole 16-bit PCM file of interleaved `samples`.
std::string PcmWav(const std::vector<std::int16_t>& samples, std::uint32_t rate, std::uint16_t channels);

// The fmt and data bodies of a file that has them (walked the simple way).
struct WavParts {
  std::string format;
  std::string data;
};
WavParts SplitWav(const std::string& bytes);

// Left channel of interleaved stereo.
std::vector<std::int16_t> LeftChannel(const std::vector<std::int16_t>& stereo);

}  // namespace wav_testing
