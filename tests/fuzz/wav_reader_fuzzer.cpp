// Feeds arbitrary bytes to the WAV reader as a file in memory: open, read to
// the end (or a bound), seek, read again. The sanitizers watch the reads and
// the arithmetic; the reader must never deliver more than it was asked for.
#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "decoders/wav_reader.h"
#include "playback/byte_source.h"

namespace {

// A byte source over the fuzzer's bytes.
class MemorySource final : public playback::ByteSource {
 public:
  MemorySource(const std::uint8_t* data, std::size_t size) : bytes(data), length(size) {}

  std::int64_t GetSize() override { return static_cast<std::int64_t>(length); }
  std::int64_t Seek(std::int64_t offset, int origin) override {
    const std::int64_t base = origin == kFromCurrent ? position : origin == kFromEnd ? GetSize() : 0;
    if (offset > 0 && base > kSeekFailed - offset) return kSeekFailed;
    const std::int64_t target = base + offset;
    if (target < 0) return kSeekFailed;
    position = target;
    return position;
  }
  int Read(void* destination, std::uint32_t count, std::uint32_t* got) override {
    std::uint32_t copied = 0;
    if (position < GetSize()) {
      copied = static_cast<std::uint32_t>(
          std::min<std::uint64_t>(count, length - static_cast<std::size_t>(position)));
      std::memcpy(destination, bytes + position, copied);
      position += copied;
    }
    if (got != nullptr) *got = copied;
    return 1;
  }
  int Close() override {
    isOpen = 0;
    return 1;
  }
  int Open(const char* /*path*/) override {
    if (isOpen != 0) return 0;
    position = 0;
    error = 0;
    isOpen = 1;
    return 1;
  }

 private:
  const std::uint8_t* bytes;
  std::size_t length;
  std::int64_t position = 0;
};

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
