// A byte source over a fuzzer's bytes, for targets that read through a
// playback::ByteSource as the decoders do.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "playback/byte_source.h"

namespace fuzzing {

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

}  // namespace fuzzing
