// A FormatReader without a file: it delivers a known pattern, so that tests
// of the decoder can tell every sample apart, and its track information is
// whatever the test sets.
#pragma once

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <string>

#include "tavrinsonic/format_reader.h"

namespace reader_testing {

// Sample i of the pattern: never quiet (always at least 600), and distinct
// for the first 32000 samples.
inline std::int16_t PatternSample(std::uint32_t index) {
  return static_cast<std::int16_t>(600 + index % 32000);
}

class PatternReader : public playback::FormatReader {
 public:
  PatternReader(std::uint32_t rate, std::uint32_t channelCount, std::uint32_t frameCount)
      : sampleRate(rate), channels(channelCount), samples(frameCount * channelCount) {}

  void SetSource(playback::ByteSource* /*source*/, const char* /*path*/) override {}
  int Open(const char* /*path*/) override {
    position = 0;
    open = true;
    return 1;
  }
  int Seek(int milliseconds) override {
    const std::uint64_t frame = static_cast<std::uint64_t>(milliseconds) * sampleRate / 1000;
    position = static_cast<std::uint32_t>(std::min<std::uint64_t>(frame * channels, samples));
    return milliseconds;
  }
  void Close() override { open = false; }
  int GetFormat(std::uint32_t* rate, std::uint32_t* count) override {
    ++formatCalls;
    if (!open) return 0;
    *rate = sampleRate;
    *count = channels;
    return 1;
  }
  int GetTrackInfo(const char* path, playback::TrackInfo* info) override {
    if (std::string(path).find("missing") != std::string::npos) return 0;
    info->Clear();
    if (!title.empty()) info->SetTitleA(title.c_str());
    if (!artist.empty()) info->SetArtistA(artist.c_str());
    if (!description.empty()) info->SetDescriptionA(description.c_str());
    info->SetAlbumA("Album");
    info->SetGenreA("A genre with a name far longer than thirty-one units");
    info->SetSampleRate(sampleRate);
    info->SetStereo(channels == 2);
    info->SetBitRate(128999);
    info->SetTrackNumber(7);
    info->SetDuration(GetDuration());
    return 1;
  }
  std::uint32_t GetDuration() override {
    return static_cast<std::uint32_t>(static_cast<std::uint64_t>(samples / channels) * 1000 / sampleRate);
  }
  int Read(std::int16_t* destination, std::uint32_t wanted, std::uint32_t* got) override {
    const std::uint32_t count = std::min(wanted, samples - position);
    for (std::uint32_t i = 0; i < count; ++i) destination[i] = PatternSample(position + i);
    position += count;
    readCount.fetch_add(1);
    *got = count;
    return 1;
  }

  // Set before the decoder uses the reader.
  std::string title;
  std::string artist;
  std::string description;
  std::atomic<int> formatCalls{0};
  // Reads so far: a decoder reads a block only once the one before is written.
  std::atomic<int> readCount{0};

 private:
  const std::uint32_t sampleRate;
  const std::uint32_t channels;
  const std::uint32_t samples;
  std::uint32_t position = 0;
  bool open = false;
};

}  // namespace reader_testing
