// Feeds arbitrary bytes to the WAV reader as a file in memory: open, read to
// the end (or a bound), seek, read again. The sanitizers watch the reads and
// the arithmetic; the reader must never deliver more than it was asked for.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "decoders/wav_reader.h"
#include "memory_source.h"

namespace {

using fuzzing::MemorySource;

constexpr std::uint32_t kBlock = 32768;  // the decoder's largest block
constexpr int kMaxReads = 64;

void ReadSome(decoders::WavReader& reader, std::vector<std::int16_t>& block) {
  for (int reads = 0; reads < kMaxReads; ++reads) {
    std::uint32_t got = 0;
    if (reader.Read(block.data(), kBlock, &got) != 1 || got > kBlock) std::abort();
    if (got == 0) return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  MemorySource source(data, size);
  decoders::WavReader reader;
  reader.SetSource(&source, "memory.wav");
  if (reader.Open("memory.wav") == 0) {
    if (source.IsOpen() != 0) std::abort();  // a refusal frees the shared source
    return 0;
  }
  std::vector<std::int16_t> block(kBlock);
  std::uint32_t rate = 0;
  std::uint32_t channels = 0;
  reader.GetFormat(&rate, &channels);
  ReadSome(reader, block);
  const std::uint32_t duration = reader.GetDuration();
  for (const std::uint32_t position : {duration / 2, duration + 5000, 0u}) {
    const int reached = reader.Seek(static_cast<int>(std::min<std::uint32_t>(position, 0x7FFFFFFF)));
    if (reached > static_cast<int>(std::max<std::uint32_t>(duration, 0))) std::abort();
    ReadSome(reader, block);
  }
  reader.Close();
  return 0;
}
