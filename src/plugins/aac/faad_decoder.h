// A thin adapter over FAAD2: one ADTS frame in, 16-bit PCM out.
//
// FAAD2 is set to 16-bit output and to mix more than two channels down to
// two. It gives no samples for the first frame after Open (the filter bank's
// delay); a decoder that seeks primes it with the frame before the target.
// Rates up to 24000 Hz come out at twice the rate (FAAD2's way with
// possible SBR); Open reports the rate that comes out.
//
// Threads: one object is used by one thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace plugins::aac {

class FaadDecoder {
 public:
  FaadDecoder() = default;
  ~FaadDecoder();
  FaadDecoder(const FaadDecoder&) = delete;
  FaadDecoder& operator=(const FaadDecoder&) = delete;

  // Opens the decoder for a stream whose first frame is given; `sampleRate`
  // and `channels` get what decoding will give. False when FAAD2 refuses.
  bool Open(const std::uint8_t* firstFrame, std::size_t bytes, std::uint32_t& sampleRate,
            std::uint32_t& channels);
  void Close();

  struct Output {
    const std::int16_t* samples = nullptr;  // interleaved, owned by FAAD2 until the next call
    std::uint32_t count = 0;                // 16-bit values
    std::uint32_t channels = 0;
  };
  // Decodes one whole frame; false when it is damaged (then nothing came).
  bool Decode(const std::uint8_t* frame, std::size_t bytes, Output& output);

 private:
  void* handle = nullptr;  // NeAACDecHandle
  // The frame is copied here, with zeros behind it, so that FAAD2's bit
  // reader may look a few bytes past the frame's end.
  std::vector<std::uint8_t> frameCopy;
};

}  // namespace plugins::aac
