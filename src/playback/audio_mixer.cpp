#include "playback/audio_mixer.h"

#include <algorithm>
#include <cstring>

namespace playback {
namespace {

void ClearFrom(std::int16_t* block, std::uint32_t start) {
  if (start < kBlockSamples) {
    std::memset(block + start, 0, (kBlockSamples - start) * sizeof(std::int16_t));
  }
}

// Reads into `destination`; on the end of the stream marks it ended.
bool ReadQueue(StreamRecord& stream, std::int16_t* destination, std::uint32_t wanted,
               std::uint32_t& got) {
  got = 0;
  if (stream.queue->Read(destination, wanted, got) == 0) {
    got = 0;
    stream.state = kStreamEnded;
    return false;
  }
  return true;
}

void PullSameChannels(StreamRecord& stream, std::int16_t* block) {
  std::uint32_t got = 0;
  ReadQueue(stream, block, kBlockSamples, got);
  ClearFrom(block, got);
  stream.played.fetch_add(got, std::memory_order_relaxed);
}

void PullMonoIntoStereo(StreamRecord& stream, std::int16_t* block) {
  std::uint32_t got = 0;
  ReadQueue(stream, block, kBlockSamples / 2, got);
  // From the back, so that no sample is overwritten before it is copied.
  for (std::uint32_t i = got; i-- > 0;) {
    block[2 * i + 1] = block[i];
    block[2 * i] = block[i];
  }
  ClearFrom(block, 2 * got);
  stream.played.fetch_add(2 * got, std::memory_order_relaxed);
}

// Averages stereo pairs of `source` into mono samples at `destination`.
void AverageIntoMono(const std::int16_t* source, std::uint32_t samples, std::int16_t* destination) {
  for (std::uint32_t i = 0; i + 1 < samples; i += 2) {
    destination[i / 2] = static_cast<std::int16_t>((source[i] + source[i + 1]) >> 1);
  }
}

// A mono device takes up to two blocks of a stereo stream per block.
void PullStereoIntoMono(StreamRecord& stream, std::int16_t* block, std::int16_t* scratch) {
  std::uint32_t first = 0;
  std::uint32_t second = 0;
  if (ReadQueue(stream, scratch, kBlockSamples, first)) {
    AverageIntoMono(scratch, first, block);
    if (first == kBlockSamples && ReadQueue(stream, scratch, kBlockSamples, second)) {
      AverageIntoMono(scratch, second, block + kBlockSamples / 2);
    }
  }
  ClearFrom(block, (first + second) / 2);
  stream.played.fetch_add((first + second) / 2, std::memory_order_relaxed);
}

}  // namespace

void StreamRecord::TakeFrom(StreamRecord& other) {
  queue = std::move(other.queue);
  channels = other.channels;
  id = other.id;
  state = other.state;
  played.store(other.played.load(std::memory_order_relaxed), std::memory_order_relaxed);
  wantedRoom.store(other.wantedRoom.load(std::memory_order_relaxed), std::memory_order_relaxed);
  other.Clear();
}

void StreamRecord::Clear() {
  queue.reset();
  channels = 0;
  id = 0;
  state = 0;
  played.store(0, std::memory_order_relaxed);
  wantedRoom.store(0, std::memory_order_relaxed);
}

int PullStream(StreamRecord& stream, int deviceChannels, std::int16_t* block, std::int16_t* scratch) {
  if (stream.state != kStreamPlaying || !stream.queue) {
    std::memset(block, 0, kBlockBytes);
    return 0;
  }
  if (deviceChannels == stream.channels) {
    PullSameChannels(stream, block);
  } else if (deviceChannels == 2) {
    PullMonoIntoStereo(stream, block);
  } else {
    PullStereoIntoMono(stream, block, scratch);
  }
  return 1;
}

int MixStreams(StreamRecord* streams, int count, int deviceChannels, std::int16_t* block,
               std::int16_t* scratch) {
  if (count <= 0) {
    std::memset(block, 0, kBlockBytes);
    return 0;
  }
  if (count == 1) return PullStream(streams[0], deviceChannels, block, scratch);

  std::int32_t sums[kBlockSamples] = {};
  int active = 0;
  for (int i = 0; i < count; ++i) {
    active += PullStream(streams[i], deviceChannels, block, scratch);
    for (std::uint32_t j = 0; j < kBlockSamples; ++j) sums[j] += block[j];
  }
  for (std::uint32_t j = 0; j < kBlockSamples; ++j) {
    block[j] = static_cast<std::int16_t>(std::clamp(sums[j], -32768, 32767));
  }
  return active;
}

}  // namespace playback
