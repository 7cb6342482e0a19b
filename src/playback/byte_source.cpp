#include "playback/byte_source.h"

namespace playback {

std::int64_t ByteSource::GetSize() {
  return kUnknownSize;
}

std::int64_t ByteSource::Seek(std::int64_t /*offset*/, int /*origin*/) {
  return 0;
}

int ByteSource::Read(void* /*destination*/, std::uint32_t /*count*/, std::uint32_t* got) {
  if (got != nullptr) *got = 0;
  return 0;
}

int ByteSource::Close() {
  return 0;
}

int ByteSource::Open(const char* /*path*/) {
  return 0;
}

int ByteSource::IsOpen() {
  return isOpen.load(std::memory_order_relaxed);
}

int ByteSource::GetError() {
  return error.load(std::memory_order_relaxed);
}

bool ByteSource::ReadExactly(void* destination, std::uint32_t count) {
  std::uint32_t got = 0;
  if (Read(destination, count, &got) != 0 && got == count) return true;
  error.store(1, std::memory_order_relaxed);
  return false;
}

std::uint8_t ByteSource::ReadU8() {
  std::uint8_t byte = 0;
  return ReadExactly(&byte, 1) ? byte : 0;
}

std::uint16_t ByteSource::ReadU16() {
  std::uint8_t bytes[2] = {};
  if (!ReadExactly(bytes, sizeof bytes)) return 0;
  return static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8);
}

std::uint32_t ByteSource::ReadU32() {
  std::uint8_t bytes[4] = {};
  if (!ReadExactly(bytes, sizeof bytes)) return 0;
  return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
         static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

std::uint64_t ByteSource::ReadU64() {
  std::uint8_t bytes[8] = {};
  if (!ReadExactly(bytes, sizeof bytes)) return 0;
  std::uint64_t value = 0;
  for (int i = 7; i >= 0; --i) value = value << 8 | bytes[i];
  return value;
}

ByteSource::~ByteSource() = default;

}  // namespace playback
