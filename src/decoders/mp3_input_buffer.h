// The compressed bytes in front of the MP3 back-end.
//
// The back-end wants contiguous input that begins at a frame, so the buffer
// is always decoded from its start and compacted with a move after every
// frame, rather than kept as a ring: a frame is small against the buffer.
// The file pump uses 8192 bytes; a stream pump uses a smaller block.
//
// Threads: owned by one decoder and guarded by its seekLock.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace playback {
class ByteSource;
}

namespace decoders {

class Mp3BackEnd;

class Mp3InputBuffer {
 public:
  static constexpr std::size_t kMaxBytes = 8192;

  explicit Mp3InputBuffer(std::size_t capacityBytes = kMaxBytes)
      : capacity(capacityBytes < kMaxBytes ? capacityBytes : kMaxBytes) {}

  const std::uint8_t* Data() const { return bytes.data(); }
  std::size_t Fill() const { return fill; }
  std::size_t Room() const { return capacity - fill; }

  // Reads up to Room() bytes from the source's position behind the fill;
  // returns how many came (0 at the end or on a read error).
  std::size_t ReadFrom(playback::ByteSource& source);
  // Copies up to Room() bytes behind the fill; returns how many were taken.
  std::size_t Append(const std::uint8_t* data, std::size_t count);
  // Drops `count` bytes (at most the fill) from the front.
  void Consume(std::size_t count);
  void Clear() { fill = 0; }

  // Hands the back-end everything buffered, as one call of decompress into
  // `pcm` (`pcmCapacity` bytes), and on success removes the bytes the frame
  // took. Returns the back-end's answer; `pcmBytes` gets the PCM bytes
  // written (whole 16-bit samples). An answer of 0 that neither consumed nor
  // gave anything reads as -1, so a back-end can't stall the pump.
  int Decode(Mp3BackEnd& backEnd, std::uint8_t* pcm, std::uint32_t pcmCapacity, std::uint32_t& pcmBytes);

 private:
  std::size_t capacity;
  std::size_t fill = 0;
  std::array<std::uint8_t, kMaxBytes> bytes{};
};

}  // namespace decoders
