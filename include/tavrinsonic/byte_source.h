// An abstract source of bytes: what decoders and format readers read local
// files through.
//
// The program holds one LockedFile (playback/locked_file.h) for the whole run
// and hands it to every decoder, so that the window thread and a decode
// thread can share one open file object. The plain ByteSource is a source
// that has nothing: it reads nothing and claims the largest size, so that a
// source of unknown length never reads as too short.
//
// The virtual operations keep their order: a format reader built apart from
// the program (see tavrinsonic/format_reader.h) may be handed a ByteSource
// and calls it through this table only.
//
// Errors: `error` is sticky. A short read through ReadU8 to ReadU64 sets it,
// and it stays set until the source is opened again; a reader checks it once
// after a run of small reads instead of after each.
//
// Threads: the plain class has no state that changes. A LockedFile may be
// called from several threads at once.
#pragma once

#include <atomic>
#include <cstdint>
#include <limits>

namespace playback {

class ByteSource {
 public:
  // GetSize of a source of unknown length.
  static constexpr std::int64_t kUnknownSize = std::numeric_limits<std::int64_t>::max();
  // What Seek returns on failure (the platform's high word 0x7fffffff with
  // the low word -1).
  static constexpr std::int64_t kSeekFailed = std::numeric_limits<std::int64_t>::max();

  enum SeekOrigin : int { kFromBegin = 0, kFromCurrent = 1, kFromEnd = 2 };

  ByteSource() = default;
  ByteSource(const ByteSource&) = delete;
  ByteSource& operator=(const ByteSource&) = delete;

  // 1. Length in bytes; kUnknownSize here.
  virtual std::int64_t GetSize();
  // 2. Moves to `offset` from `origin` (SeekOrigin) and returns the new
  //    position, or kSeekFailed. Returns 0 here.
  virtual std::int64_t Seek(std::int64_t offset, int origin);
  // 3. Reads up to `count` bytes; `got` (may be null) gets how many came,
  //    fewer than asked at the end. Non-zero on success. Returns 0 here.
  virtual int Read(void* destination, std::uint32_t count, std::uint32_t* got);
  // 4. Non-zero when something was closed. Returns 0 here.
  virtual int Close();
  // 5. Opens a path (UTF-8 bytes, as the file system has them); non-zero on
  //    success. Returns 0 here.
  virtual int Open(const char* path);
  // 6, 7.
  virtual int IsOpen();
  virtual int GetError();
  // 8 to 11. Little endian, through Read. A short read sets the sticky error
  //    and returns 0.
  virtual std::uint8_t ReadU8();
  virtual std::uint16_t ReadU16();
  virtual std::uint32_t ReadU32();
  virtual std::uint64_t ReadU64();
  // 12.
  virtual ~ByteSource();

 protected:
  // Reads exactly `count` bytes or sets `error`.
  bool ReadExactly(void* destination, std::uint32_t count);

  std::atomic<int> isOpen{0};
  std::atomic<int> error{0};
};

}  // namespace playback
