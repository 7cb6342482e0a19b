// The mixing step of an output engine: one device block pulled from the
// engine's streams and summed.
//
// A block is one device buffer: 16384 bytes, 8192 16-bit samples (4096
// stereo frames). The engine calls MixStreams with its stream lock held;
// nothing here allocates: the accumulators of the summing path live on the
// calling thread's stack (32 KB) and the stereo-to-mono path uses the
// engine's scratch block.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>

#include "playback/pcm_queue.h"

namespace playback {

inline constexpr std::uint32_t kBlockBytes = 16384;
inline constexpr std::uint32_t kBlockSamples = kBlockBytes / sizeof(std::int16_t);

enum StreamState : std::uint32_t {
  kStreamEnded = 1,    // its queue reported the end; the mixer removes it
  kStreamHeld = 2,     // gives silence; the queue keeps its content
  kStreamPlaying = 3,
};

// One logical stream of an engine.
struct StreamRecord {
  std::shared_ptr<PcmQueue> queue;  // shared with callers inside a queue operation
  int channels = 0;
  std::uint32_t id = 0;
  std::uint32_t state = 0;             // StreamState; under the engine's stream lock
  std::atomic<std::uint32_t> played{0};  // samples pulled so far, in device samples
  std::atomic<std::uint32_t> wantedRoom{0};

  // Takes over `other`'s contents, leaving it cleared.
  void TakeFrom(StreamRecord& other);
  void Clear();
};

// Pulls one block of `stream` into `block` for a device of `deviceChannels`,
// converting mono to stereo or stereo to mono, and clears what the stream
// did not fill. A stream whose queue has ended becomes kStreamEnded. Returns
// 1 if the stream is playing (it counts as active), else 0 with silence.
// `scratch` holds a block.
int PullStream(StreamRecord& stream, int deviceChannels, std::int16_t* block, std::int16_t* scratch);

// Fills `block` from `count` streams: one stream is pulled straight into it;
// several are summed in 32 bits and clipped, never scaled. Returns the number
// of active streams.
int MixStreams(StreamRecord* streams, int count, int deviceChannels, std::int16_t* block,
               std::int16_t* scratch);

}  // namespace playback
