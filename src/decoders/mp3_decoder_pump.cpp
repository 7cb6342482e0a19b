// Mp3Decoder: the decode thread of a file, the pump.
//
//  1. Under seekLock, from the file's start: the format-locked search for a
//     frame of the version and layer Open found. None: the thread ends
//     without a word, and Play fails.
//  2. Playback begins: the back-end's init(0) and setformat; a PCM block of
//     channels × 9216 bytes (one frame's output, the pump's only
//     allocation); a held output stream (StreamFeed step 1); then Play
//     learns that playback has begun.
//     If the stream doesn't open the thread ends and Play fails.
//  3. Per frame, under seekLock: when fewer than 4096 bytes are buffered,
//     top the 8192-byte input buffer up from the file (nothing came and
//     nothing is buffered: the end of the file); then one decompress with
//     all that is buffered, and the frame's bytes are moved out of the
//     buffer. Of the two frames after a seek the PCM is dropped: their bit
//     reservoir lies before the seek.
//  4. Without seekLock, so that a seek never waits for the device: wait
//     until the frame's samples fit below two seconds less 100 samples
//     (1 to 10 ms looks), then write them (StreamFeed steps 2 and 3: PCM
//     decoded before a seek is dropped; the prefill). A write that fails
//     means the stream is gone: the end of the track.
//  5. Damage, when the back-end refuses the bytes at the buffer's front:
//     with more than two average frames buffered, look for a header at the
//     offsets 2, 4, 6, ... (steps of two only, deliberately) short of the
//     last two frames' worth and go on from there; otherwise drop the
//     buffer and run the format-locked search on from the file's position.
//     Nothing found: the end of the file. A frame cut short at the end of a
//     file ends the track the same way. Nothing is reported.
//  6. At the end of the file, unless a stop came: a stream still held in
//     prefill starts (StreamFeed step 4: a file shorter than a second sounds
//     too), then the end of the track (step 5), which posts 2568. Whenever
//     the thread ends, the back-end is closed.
#include <algorithm>
#include <memory>
#include <new>

#include "decoders/mp3_back_end.h"
#include "decoders/mp3_decoder.h"
#include "decoders/mp3_frame_search.h"
#include "playback/byte_source.h"

namespace decoders {
namespace {

// A frame is decoded while at least this much is buffered; below it the
// buffer is topped up first.
constexpr std::size_t kDecodeThreshold = 4096;
// The queue is kept this many samples short of its two seconds.
constexpr std::uint32_t kQueueHeadroom = 100;
constexpr std::uint32_t kFramesDroppedAfterSeek = 2;

}  // namespace

void Mp3Decoder::FilePump() {
  if (!FindFirstFrame()) return;
  std::unique_ptr<std::int16_t[]> pcm;
  if (!BeginPlayback(pcm)) return;
  const bool ended = PumpFile(pcm.get());
  feed.EndLoop();
  {
    std::lock_guard guard(seekLock);
    threadBackEnd->close(1);
  }
  if (ended) feed.FinishTrack(threadNotify);
}

bool Mp3Decoder::FindFirstFrame() {
  std::lock_guard guard(seekLock);
  const Mp3FrameMatch match = FormatMatch();
  return file->Seek(0, playback::ByteSource::kFromBegin) == 0 && FindFrameSync(*file, &match) != kNoFrame;
}

bool Mp3Decoder::BeginPlayback(std::unique_ptr<std::int16_t[]>& pcm) {
  std::uint32_t rate = 0;
  std::uint32_t channels = 0;
  {
    std::lock_guard guard(seekLock);
    threadBackEnd->init(0);
    threadBackEnd->setformat(
        MakeMp3WaveFormat(static_cast<std::uint16_t>(format.channels), format.sampleRate));
    input.Clear();
    discardingAfterSeek = false;
    rate = format.sampleRate;
    channels = format.channels;
    pcm.reset(new (std::nothrow) std::int16_t[PcmBufferBytes() / 2]);
  }
  if (!pcm || !feed.OpenStream(rate, channels)) {
    std::lock_guard guard(seekLock);
    threadBackEnd->close(1);
    return false;
  }
  thread.Begun();
  return true;
}

bool Mp3Decoder::PumpFile(std::int16_t* pcm) {
  while (!feed.StopRequested()) {
    std::uint32_t pcmBytes = 0;
    std::uint32_t seekStamp = 0;
    {
      std::lock_guard guard(seekLock);
      seekStamp = feed.SeekStamp();
      if (DecodeNextFrame(reinterpret_cast<std::uint8_t*>(pcm), pcmBytes) == FrameStep::kEnd) return true;
    }
    const std::uint32_t samples = pcmBytes / 2;
    if (samples == 0) continue;
    if (!feed.WaitForRoom(samples, kQueueHeadroom)) return false;
    switch (feed.WriteSamples(pcm, samples, seekStamp)) {
      case playback::StreamFeed::WriteResult::kWritten:
      case playback::StreamFeed::WriteResult::kStale:
        break;
      case playback::StreamFeed::WriteResult::kStopped:
        return false;
      case playback::StreamFeed::WriteResult::kFailed:
        return true;
    }
  }
  return false;
}

Mp3Decoder::FrameStep Mp3Decoder::DecodeNextFrame(std::uint8_t* pcm, std::uint32_t& pcmBytes) {
  pcmBytes = 0;
  if (input.Fill() < kDecodeThreshold && input.ReadFrom(*file) == 0 && input.Fill() == 0)
    return FrameStep::kEnd;
  for (;;) {
    const int answer = input.Decode(*threadBackEnd, pcm, PcmBufferBytes(), pcmBytes);
    if (answer == Mp3BackEnd::kDecoded) break;
    // No codec (-2) ends the track; a back-end that asks for more input
    // than the buffer holds is treated as refusing it.
    if (answer == Mp3BackEnd::kNoCodec || !Recover()) return FrameStep::kEnd;
    if (input.Fill() == 0) return FrameStep::kGoOn;  // read anew at the frame found
  }
  if (discardingAfterSeek) {
    pcmBytes = 0;
    if (++discardedFrames >= kFramesDroppedAfterSeek) discardingAfterSeek = false;
  }
  return FrameStep::kGoOn;
}

bool Mp3Decoder::Recover() {
  const std::size_t keep = 2 * static_cast<std::size_t>(format.frameBytes);
  const std::size_t fill = input.Fill();
  if (fill >= keep && fill - keep >= 3) {
    // Offsets below fill - keep; a header there has its four bytes inside.
    const std::size_t scanned = std::min(fill, fill - keep + kMp3HeaderBytes - 1);
    if (const auto hit = FindMp3FrameHeader(input.Data(), scanned, 2, 2, nullptr)) {
      input.Consume(*hit);
      return true;
    }
  }
  input.Clear();
  const Mp3FrameMatch match = FormatMatch();
  return FindFrameSync(*file, &match) != kNoFrame;
}

}  // namespace decoders
