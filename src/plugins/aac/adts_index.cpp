#include "plugins/aac/adts_index.h"

#include <algorithm>
#include <array>
#include <limits>

namespace plugins::aac {
namespace {

constexpr std::array<std::uint32_t, 13> kSampleRates = {96000, 88200, 64000, 48000, 44100, 32000, 24000,
                                                        22050, 16000, 12000, 11025, 8000,  7350};
constexpr std::uint64_t kNotFound = std::numeric_limits<std::uint64_t>::max();

// A window of the source, so that the scan reads it in large pieces.
class Window {
 public:
  explicit Window(const decoders::TagSource& from) : source(from), size(from.Size()) {}

  std::uint64_t Size() const { return size; }

  // `count` bytes at `offset`, or null when the source ends before them.
  const std::uint8_t* At(std::uint64_t offset, std::size_t count) {
    if (offset > size || count > size - offset) return nullptr;
    if (offset < base || offset + count > base + filled) {
      base = offset;
      filled = source.ReadAt(offset, bytes.data(), bytes.size());
      if (count > filled) return nullptr;
    }
    return bytes.data() + (offset - base);
  }

 private:
  const decoders::TagSource& source;
  const std::uint64_t size;
  std::array<std::uint8_t, 1 << 16> bytes{};
  std::uint64_t base = 0;
  std::size_t filled = 0;
};

bool Agrees(const AdtsHeader& header, const AdtsHeader& first) {
  return header.profile == first.profile && header.samplingIndex == first.samplingIndex &&
         header.channelConfiguration == first.channelConfiguration;
}

// A header that agrees with the stream's and whose frame lies in the source.
bool FrameAt(Window& window, std::uint64_t offset, const AdtsHeader& first, AdtsHeader& header) {
  const std::uint8_t* bytes = window.At(offset, kAdtsHeaderBytes);
  return bytes != nullptr && ParseAdtsHeader(bytes, header) && Agrees(header, first) &&
         header.frameLength <= window.Size() - offset;
}

// The next offset from `from` on where a frame stands that is followed by
// another frame or by the end of the source.
std::uint64_t Resynchronise(Window& window, std::uint64_t from, const AdtsHeader& first) {
  for (std::uint64_t offset = from; offset + kAdtsHeaderBytes <= window.Size(); ++offset) {
    const std::uint8_t* bytes = window.At(offset, 2);
    if (bytes == nullptr) break;
    if (bytes[0] != 0xFF || (bytes[1] & 0xF6) != 0xF0) continue;
    AdtsHeader header;
    if (!FrameAt(window, offset, first, header)) continue;
    const std::uint64_t next = offset + header.frameLength;
    AdtsHeader following;
    if (next == window.Size() || FrameAt(window, next, first, following)) return offset;
  }
  return kNotFound;
}

}  // namespace

bool ParseAdtsHeader(const std::uint8_t* bytes, AdtsHeader& header) {
  if (bytes[0] != 0xFF || (bytes[1] & 0xF0) != 0xF0 || (bytes[1] & 0x06) != 0) return false;
  const bool protectionAbsent = (bytes[1] & 0x01) != 0;
  header.profile = static_cast<std::uint8_t>(bytes[2] >> 6);
  header.samplingIndex = static_cast<std::uint8_t>((bytes[2] >> 2) & 0x0F);
  header.channelConfiguration = static_cast<std::uint8_t>((bytes[2] & 0x01) << 2 | bytes[3] >> 6);
  header.frameLength = static_cast<std::uint16_t>((bytes[3] & 0x03) << 11 | bytes[4] << 3 | bytes[5] >> 5);
  header.rawBlocks = static_cast<std::uint8_t>((bytes[6] & 0x03) + 1);
  const std::size_t headerLength = protectionAbsent ? kAdtsHeaderBytes : kAdtsHeaderBytes + 2;
  return AdtsSampleRate(header.samplingIndex) != 0 && header.frameLength > headerLength;
}

std::uint32_t AdtsSampleRate(std::uint8_t samplingIndex) {
  return samplingIndex < kSampleRates.size() ? kSampleRates[samplingIndex] : 0;
}

bool AdtsIndex::Build(const decoders::TagSource& source, std::uint64_t start) {
  Clear();
  Window window(source);
  const std::uint8_t* bytes = window.At(start, kAdtsHeaderBytes);
  if (bytes == nullptr || !ParseAdtsHeader(bytes, first)) return false;
  std::uint64_t offset = start;
  while (offset != kNotFound && offset < window.Size()) {
    AdtsHeader header;
    if (FrameAt(window, offset, first, header)) {
      frames.push_back(AdtsFrame{offset, totalBlocks, header.frameLength});
      totalBlocks += header.rawBlocks;
      totalBytes += header.frameLength;
      offset += header.frameLength;
    } else {
      offset = Resynchronise(window, offset + 1, first);
    }
  }
  return !frames.empty();
}

void AdtsIndex::Clear() {
  frames.clear();
  first = AdtsHeader{};
  totalBlocks = 0;
  totalBytes = 0;
}

std::uint32_t AdtsIndex::DurationMs() const {
  return static_cast<std::uint32_t>(std::min<std::uint64_t>(BlockMs(totalBlocks), 0xFFFFFFFFu));
}

std::uint64_t AdtsIndex::BlockMs(std::uint64_t block) const {
  const std::uint32_t rate = CoreSampleRate();
  return rate == 0 ? 0 : block * kSamplesPerBlock * 1000 / rate;
}

std::size_t AdtsIndex::FrameForBlock(std::uint64_t block) const {
  if (frames.empty()) return 0;
  const auto after = std::upper_bound(
      frames.begin(), frames.end(), block,
      [](std::uint64_t wanted, const AdtsFrame& frame) { return wanted < frame.firstBlock; });
  return after == frames.begin() ? 0 : static_cast<std::size_t>(after - frames.begin() - 1);
}

}  // namespace plugins::aac
