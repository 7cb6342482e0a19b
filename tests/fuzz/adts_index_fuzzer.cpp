// Feeds arbitrary bytes to the AAC plug-in's frame scan, behind any leading
// ID3v2 tag as the plug-in skips it. Every frame found must lie inside the
// bytes, in order, and the block count must add up.
#include <cstdint>
#include <span>

#include "decoders/id3v2.h"
#include "decoders/tag_source.h"
#include "fuzz_checks.h"
#include "plugins/aac/adts_index.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::span<const std::uint8_t> bytes(data, size);
  const decoders::MemoryTagSource source(bytes);
  plugins::aac::AdtsIndex index;
  if (!index.Build(source, decoders::Id3v2TagLength(bytes))) return 0;
  std::uint64_t end = 0;
  std::uint64_t blocks = 0;
  for (const plugins::aac::AdtsFrame& frame : index.Frames()) {
    fuzz_checks::Require(frame.offset >= end && frame.offset + frame.length <= size && frame.firstBlock == blocks);
    end = frame.offset + frame.length;
    blocks += bytes[frame.offset + 6] % 4 + 1;
  }
  fuzz_checks::Require(blocks == index.TotalBlocks() && index.FrameForBlock(0) == 0 &&
                       index.FrameForBlock(blocks + 10) == index.Frames().size() - 1);
  index.DurationMs();
  return 0;
}
