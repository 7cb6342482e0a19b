#include "mp3_bench_media.h"

#include <fstream>
#include <iterator>

#include "decoders/id3v2.h"
#include "decoders/mp3_frame_header.h"

namespace mp3_bench {

const std::vector<std::uint8_t>& RepeatedMp3() {
  static const std::vector<std::uint8_t> bytes = [] {
    std::ifstream in(TS_TEST_DATA_DIR "/decoders/cbr128_44k_stereo.mp3", std::ios::binary);
    const std::vector<std::uint8_t> file(std::istreambuf_iterator<char>(in), {});
    const std::size_t start = decoders::Id3v2TagLength(file);
    const std::size_t end = file.size() >= 128 ? file.size() - 128 : file.size();  // ID3v1
    std::vector<std::uint8_t> repeated;
    for (int i = 0; i < kRepeats && start < end; ++i)
      repeated.insert(repeated.end(), file.begin() + start, file.begin() + end);
    return repeated;
  }();
  return bytes;
}

double RepeatedMp3Seconds() {
  const std::vector<std::uint8_t>& bytes = RepeatedMp3();
  std::size_t frames = 0;
  for (std::size_t at = 0; at + 4 <= bytes.size(); ++frames) {
    const auto header = decoders::ParseMp3FrameHeader(bytes.data() + at);
    if (!header) break;
    at += header->frameBytes;
  }
  return static_cast<double>(frames) * 1152 / kSampleRate;
}

}  // namespace mp3_bench
