// Runs the MP3 decoder's frame finding over arbitrary bytes as a file in
// memory: the acceptance test, the analysis of Open, the seek's
// format-locked search with the three-frame test at a few places, and the
// recovery's two-byte scan of a buffer. Beside the sanitizers' watch, every
// hit must lie inside the file, hold a header of what was asked for, and
// leave the source there; a three-frame test must leave it where it was.
#include <cstdint>
#include <cstdlib>
#include <optional>

#include "decoders/mp3_frame_header.h"
#include "decoders/mp3_frame_search.h"
#include "memory_source.h"

namespace {

using decoders::kNoFrame;
using playback::ByteSource;

// `source` null: the hit is an offset only (the analysis walks on past it).
void CheckHit(ByteSource* source, const std::uint8_t* data, std::size_t size, std::int64_t from,
              std::int64_t hit, const decoders::Mp3FrameMatch* match) {
  if (hit == kNoFrame) return;
  if (hit < from || hit + 4 > static_cast<std::int64_t>(size)) std::abort();
  const std::uint8_t* header = data + hit;
  if (match != nullptr ? !match->Accepts(header) : !decoders::IsMp3FrameHeader(header)) std::abort();
  if (source != nullptr && source->Seek(0, ByteSource::kFromCurrent) != hit) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzzing::MemorySource source(data, size);
  source.Open("memory.mp3");
  decoders::IsMpegAudio(source);

  decoders::Mp3FileFormat file;
  if (decoders::AnalyseMp3File(source, file)) {
    CheckHit(nullptr, data, size, 0, file.firstFrameOffset, nullptr);
    if (file.countedFrames != 0 && (file.format.frameBytes == 0 || file.format.samplesPerFrame == 0))
      std::abort();
    const decoders::Mp3FrameMatch match{file.format.version, file.format.layer};
    for (const std::size_t from : {std::size_t{0}, size / 3, size / 2 + 1}) {
      source.Seek(static_cast<std::int64_t>(from), ByteSource::kFromBegin);
      const std::int64_t hit = decoders::FindFrameSync(source, &match);
      if (hit == kNoFrame) continue;
      // At 0 a leading tag is passed by its length, so the hit lies behind it.
      CheckHit(&source, data, size, static_cast<std::int64_t>(from), hit, &match);
      decoders::ThreeFramesFollow(source, file.format);
      if (source.Seek(0, ByteSource::kFromCurrent) != hit) std::abort();
    }
  }

  // The recovery's scan: even offsets only, headers whole inside.
  std::size_t start = 2;
  while (const std::optional<std::size_t> hit = decoders::FindMp3FrameHeader(data, size, start, 2, nullptr)) {
    if (*hit % 2 != 0 || *hit + 4 > size || !decoders::IsMp3FrameHeader(data + *hit)) std::abort();
    start = *hit + 2;
  }
  return 0;
}
