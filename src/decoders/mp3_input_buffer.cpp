#include "decoders/mp3_input_buffer.h"

#include <algorithm>
#include <cstring>

#include "decoders/mp3_back_end.h"
#include "playback/byte_source.h"

namespace decoders {

std::size_t Mp3InputBuffer::ReadFrom(playback::ByteSource& source) {
  const auto room = static_cast<std::uint32_t>(Room());
  std::uint32_t got = 0;
  if (room == 0 || source.Read(bytes.data() + fill, room, &got) == 0) return 0;
  got = std::min(got, room);
  fill += got;
  return got;
}

std::size_t Mp3InputBuffer::Append(const std::uint8_t* data, std::size_t count) {
  const std::size_t taken = std::min(count, Room());
  if (taken != 0) std::memcpy(bytes.data() + fill, data, taken);
  fill += taken;
  return taken;
}

void Mp3InputBuffer::Consume(std::size_t count) {
  const std::size_t dropped = std::min(count, fill);
  std::memmove(bytes.data(), bytes.data() + dropped, fill - dropped);
  fill -= dropped;
}

int Mp3InputBuffer::Decode(Mp3BackEnd& backEnd, std::uint8_t* pcm, std::uint32_t pcmCapacity,
                           std::uint32_t& pcmBytes) {
  pcmBytes = 0;
  std::uint32_t got = 0;
  std::uint32_t used = 0;
  const int answer =
      backEnd.decompress(bytes.data(), static_cast<std::uint32_t>(fill), pcm, pcmCapacity, &got, &used, 16);
  if (answer != Mp3BackEnd::kDecoded) return answer;
  if (got == 0 && used == 0) return Mp3BackEnd::kUndecodable;
  Consume(used);
  pcmBytes = std::min(got, pcmCapacity) & ~1u;
  return Mp3BackEnd::kDecoded;
}

}  // namespace decoders
