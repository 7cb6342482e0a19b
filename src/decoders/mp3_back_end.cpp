#include "decoders/mp3_back_end.h"

namespace decoders {

Mp3WaveFormat MakeMp3WaveFormat(std::uint16_t channels, std::uint32_t sampleRate) {
  Mp3WaveFormat format{};
  format.formatTag = kMpegLayer3FormatTag;
  format.channels = channels;
  format.samplesPerSecond = sampleRate;
  format.averageBytesPerSecond = 1000;
  format.blockAlign = 1;
  format.bitsPerSample = 0;
  format.extraSize = 12;
  format.id = 1;
  format.flags = 2;
  format.blockSize = 417;
  format.framesPerBlock = 1;
  format.codecDelay = 0;
  return format;
}

}  // namespace decoders
