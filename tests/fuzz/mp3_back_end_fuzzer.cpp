// Runs the MP3 back-end over arbitrary bytes the way the decoder does: a
// window of up to 8192 bytes at the present position, moved on by what was
// consumed, or by one byte past a refusal. The first byte picks the format's
// channels, the output block and whether to reset now and then, so that the
// held-output, channel and reset paths are fuzzed too.
#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include "decoders/libmad_back_end.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (size < 1) return 0;
  const std::uint8_t control = data[0];
  const std::uint8_t* input = data + 1;
  const std::size_t length = size - 1;

  decoders::LibmadBackEnd backEnd;
  if (!backEnd.init(0)) std::abort();
  const auto channels = static_cast<std::uint16_t>(control & 3);  // 0: refused format
  const bool formatAccepted = backEnd.setformat(decoders::MakeMp3WaveFormat(channels, 44100));
  if (formatAccepted != (channels != 0)) std::abort();
  const std::uint32_t block = (control & 4) != 0 ? 2 * 9216 : 1 + (control >> 3) * 97;
  const bool resets = (control & 0x80) != 0;
  std::vector<std::uint8_t> output(block);

  std::size_t position = 0;
  std::size_t calls = 0;
  // Every call consumes input or hands out held output (at most 4608 bytes a
  // frame); far more calls than that mean the back-end stopped making progress.
  const std::size_t callLimit = length * (4608 / block + 2) + 64;
  while (position < length) {
    if (++calls > callLimit) std::abort();  // no progress: a hang in the making
    const auto window = static_cast<std::uint32_t>(std::min<std::size_t>(8192, length - position));
    std::uint32_t got = 0xFFFFFFFF, used = 0xFFFFFFFF;
    const int answer = backEnd.decompress(input + position, window, output.data(), block, &got, &used, 16);
    if (answer == decoders::Mp3BackEnd::kNoCodec) {
      if (formatAccepted) std::abort();
      break;
    }
    if (got > block || used > window) std::abort();
    if (answer == decoders::Mp3BackEnd::kUndecodable || answer == decoders::Mp3BackEnd::kNeedsInput) {
      if (got != 0 || used != 0) std::abort();
      ++position;  // nothing more comes: the file's pump passes it like damage
    } else if (answer == decoders::Mp3BackEnd::kDecoded) {
      position += used;
    } else {
      std::abort();
    }
    if (resets && calls % 7 == 0) backEnd.reset();
  }
  backEnd.close(1);
  return 0;
}
