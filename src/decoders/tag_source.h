// The bytes a tag reader may look at.
//
// Tag readers read by absolute offset from a TagSource and never keep a
// position of their own in it, so they can't disturb a decoder that reads the
// same file. A source answers what it has: a read beyond its end comes back
// short, never from outside the bytes it was given.
//
// Threads: a source is used by one reader at a time; FileTagSource holds its
// own descriptor, so readers on several threads each open their own.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

namespace decoders {

class TagSource {
 public:
  virtual ~TagSource() = default;

  // Length of the whole source in bytes.
  virtual std::uint64_t Size() const = 0;
  // Copies up to `count` bytes from `offset` into `destination`; returns how
  // many were copied: fewer than asked at the end of the source or on a read
  // error, 0 at or beyond the end.
  virtual std::size_t ReadAt(std::uint64_t offset, std::uint8_t* destination, std::size_t count) const = 0;
};

// A source over bytes in memory; the bytes must outlive it.
class MemoryTagSource final : public TagSource {
 public:
  explicit MemoryTagSource(std::span<const std::uint8_t> contents) : bytes(contents) {}

  std::uint64_t Size() const override { return bytes.size(); }
  std::size_t ReadAt(std::uint64_t offset, std::uint8_t* destination, std::size_t count) const override;

 private:
  std::span<const std::uint8_t> bytes;
};

// A regular file, opened for reading only. Anything that isn't a regular
// file (a folder, a pipe, a device) is refused at Open, so a reader can't
// block on a pipe that nobody writes.
class FileTagSource final : public TagSource {
 public:
  FileTagSource() = default;
  ~FileTagSource() override;
  FileTagSource(const FileTagSource&) = delete;
  FileTagSource& operator=(const FileTagSource&) = delete;

  bool Open(const std::string& path);
  bool IsOpen() const { return descriptor >= 0; }

  std::uint64_t Size() const override { return size; }
  std::size_t ReadAt(std::uint64_t offset, std::uint8_t* destination, std::size_t count) const override;

 private:
  int descriptor = -1;
  std::uint64_t size = 0;
};

}  // namespace decoders
