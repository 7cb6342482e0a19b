// Feeds arbitrary bytes to the Ogg handle as a file in memory, through the
// player's byte-source callbacks: open, the stream's values and comments,
// read to the end (or a bound), seek to a page, read again. The sanitizers
// watch Tremor and the comment reader; a read must never deliver more than
// it was asked for.
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "decoders/ogg_handle.h"
#include "memory_source.h"

namespace {

constexpr int kMaxReads = 256;

void ReadSome(decoders::OggHandle& handle, std::vector<std::uint8_t>& block) {
  for (int reads = 0; reads < kMaxReads; ++reads) {
    std::uint32_t bytes = 0;
    const decoders::OggReadResult result =
        handle.ReadPcm(block.data(), static_cast<std::uint32_t>(block.size()), bytes);
    if (bytes > block.size()) std::abort();
    if (handle.TagsChanged()) handle.ReadTags();
    if (result == decoders::OggReadResult::kEnd || result == decoders::OggReadResult::kError) return;
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzzing::MemorySource source(data, size);
  source.Open("memory");
  std::unique_ptr<decoders::OggHandle> handle = decoders::OggHandle::OpenSource(source);
  if (!handle) return 0;
  decoders::OggStreamInfo info;
  handle->Info(info);
  handle->ReadTags();
  const std::int64_t total = handle->Total();
  std::vector<std::uint8_t> block(decoders::kOggMinimumBlock);
  ReadSome(*handle, block);
  if (total > 0 && handle->SeekPage(total / 2)) {
    handle->Tell();
    ReadSome(*handle, block);
  }
  return 0;
}
