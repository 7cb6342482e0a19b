// ReaderDecoder: the decode thread. The protocols it follows are stated at
// the top of reader_decoder.cpp.
#include <algorithm>
#include <memory>
#include <new>

#include "playback/reader_decoder.h"

namespace playback {
namespace {

constexpr std::uint32_t kMaxChannels = 2;
constexpr std::uint64_t kMaxBlockBytes = 65536;

}  // namespace

void ReaderDecoder::DecodeThread() {
  if (!StartStream()) return;
  // Half a second of 16-bit audio, or less.
  const std::uint64_t blockBytes = std::min<std::uint64_t>(
      static_cast<std::uint64_t>(feed.Channels()) * feed.SampleRate(), kMaxBlockBytes);
  const auto blockSamples = static_cast<std::uint32_t>(blockBytes / 2);
  std::unique_ptr<std::int16_t[]> block(blockSamples == 0 ? nullptr
                                                          : new (std::nothrow) std::int16_t[blockSamples]);
  bool finished = false;
  if (block) DecodeLoop(block.get(), blockSamples, finished);
  feed.EndLoop();
  if (finished) feed.FinishTrack(threadNotify);
}

bool ReaderDecoder::StartStream() {
  std::lock_guard sourceGuard(sourceLock);
  if (feed.StopRequested()) return false;
  std::uint32_t rate = 0;
  std::uint32_t count = 0;
  if (reader->GetFormat(&rate, &count) == 0) return false;
  return feed.OpenStream(rate, std::min(count, kMaxChannels));
}

void ReaderDecoder::DecodeLoop(std::int16_t* block, std::uint32_t blockSamples, bool& finished) {
  for (;;) {
    std::uint32_t got = 0;
    std::uint32_t seekStamp = 0;
    {
      std::lock_guard sourceGuard(sourceLock);
      seekStamp = feed.SeekStamp();
      if (reader->Read(block, blockSamples, &got) == 0 || got == 0) finished = true;
    }
    got = std::min(got, blockSamples);
    if (got == 0) return;
    if (!feed.WaitForRoom(got, 0)) return;
    switch (feed.WriteSamples(block, got, seekStamp)) {
      case StreamFeed::WriteResult::kWritten:
        break;
      case StreamFeed::WriteResult::kStale:
        finished = false;  // the end that block met is no longer ahead
        continue;
      case StreamFeed::WriteResult::kStopped:
        return;
      case StreamFeed::WriteResult::kFailed:
        finished = true;  // the stream has ended or gone: the end of the track
        return;
    }
    if (finished) return;
  }
}

}  // namespace playback
