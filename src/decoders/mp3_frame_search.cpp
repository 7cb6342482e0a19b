#include "decoders/mp3_frame_search.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <optional>

#include "decoders/id3v2.h"
#include "playback/byte_source.h"

namespace decoders {
namespace {

using playback::ByteSource;

constexpr std::size_t kSearchBlockBytes = 4096;
constexpr std::size_t kThreeFrameWindowBytes = 16384;
constexpr std::uint32_t kCbrFrameLimit = 128;
constexpr std::uint32_t kVbrFrameLimit = 512;
constexpr std::uint16_t kMpegLayer3Tag = 85;

std::size_t ReadUpTo(ByteSource& source, std::uint8_t* destination, std::size_t count) {
  std::uint32_t got = 0;
  if (source.Read(destination, static_cast<std::uint32_t>(count), &got) == 0) return 0;
  return std::min<std::size_t>(got, count);
}

bool Seek(ByteSource& source, std::int64_t offset) {
  return source.Seek(offset, ByteSource::kFromBegin) == offset;
}

bool SameFormat(const Mp3FrameHeader& a, const Mp3FrameHeader& b) {
  return a.sampleRate == b.sampleRate && a.channels == b.channels;
}

}  // namespace

std::int64_t FindFrameSync(ByteSource& source, const Mp3FrameMatch* match) {
  std::int64_t blockStart = source.Seek(0, ByteSource::kFromCurrent);
  if (blockStart == ByteSource::kSeekFailed) return kNoFrame;
  std::array<std::uint8_t, kSearchBlockBytes> block;
  std::size_t length = ReadUpTo(source, block.data(), block.size());
  std::size_t scanFrom = 0;
  if (blockStart == 0) {
    // A leading ID3v2 tag is passed by its declared length, whatever is in it.
    const std::uint32_t tagLength = Id3v2TagLength(std::span<const std::uint8_t>(block.data(), length));
    if (tagLength != 0 && tagLength < length) {
      scanFrom = tagLength;
    } else if (tagLength != 0) {
      if (!Seek(source, tagLength)) return kNoFrame;
      blockStart = tagLength;
      length = ReadUpTo(source, block.data(), block.size());
    }
  }
  for (;;) {
    if (const std::optional<std::size_t> hit = FindMp3FrameHeader(block.data(), length, scanFrom, 1, match)) {
      const std::int64_t offset = blockStart + static_cast<std::int64_t>(*hit);
      return Seek(source, offset) ? offset : kNoFrame;
    }
    // The last three bytes may begin a header whose rest is still unread.
    const std::size_t keepFrom =
        std::max(scanFrom, length - std::min<std::size_t>(length, kMp3HeaderBytes - 1));
    const std::size_t kept = length - keepFrom;
    std::memmove(block.data(), block.data() + keepFrom, kept);
    blockStart += static_cast<std::int64_t>(keepFrom);
    scanFrom = 0;
    length = kept + ReadUpTo(source, block.data() + kept, block.size() - kept);
    if (length < kMp3HeaderBytes || length == kept) return kNoFrame;
  }
}

bool IsMpegAudio(ByteSource& source) {
  if (!Seek(source, 0)) return false;
  std::array<std::uint8_t, 22> head{};
  const std::size_t got = ReadUpTo(source, head.data(), head.size());
  const auto is = [&](std::size_t offset, const char* text) {
    return got >= offset + 4 && std::memcmp(head.data() + offset, text, 4) == 0;
  };
  const bool riff = is(0, "RIFF");
  const std::uint16_t wavTag = static_cast<std::uint16_t>(head[20] | head[21] << 8);
  const bool recognised = (got >= 3 && std::memcmp(head.data(), "ID3", 3) == 0) ||
                          (got >= 4 && ParseMp3FrameHeader(head.data()).has_value()) ||
                          (riff && is(8, "RMP3")) ||
                          (riff && is(8, "WAVE") && is(12, "fmt ") && got >= 22 && wavTag == kMpegLayer3Tag);
  if (!Seek(source, 0)) return false;
  return recognised || FindFrameSync(source) != kNoFrame;
}

bool ThreeFramesFollow(ByteSource& source, const Mp3FrameHeader& format) {
  const std::int64_t position = source.Seek(0, ByteSource::kFromCurrent);
  if (position == ByteSource::kSeekFailed) return false;
  std::array<std::uint8_t, kThreeFrameWindowBytes> window;
  const std::size_t got = ReadUpTo(source, window.data(), window.size());
  if (!Seek(source, position)) return false;
  std::int64_t left = static_cast<std::int64_t>(got);
  std::size_t cursor = 0;
  for (int frame = 0; frame < 3; ++frame) {
    if (cursor + kMp3HeaderBytes > got) return false;
    const std::optional<Mp3FrameHeader> header = ParseMp3FrameHeader(window.data() + cursor);
    if (!header || header->layer != format.layer || header->channels != format.channels ||
        header->version != format.version) {
      return false;
    }
    left -= header->frameBytes;
    if (left <= 0) return false;
    cursor += header->frameBytes;
  }
  return true;
}

namespace {

// The walk of the analysis over one file.
class Analysis {
 public:
  explicit Analysis(ByteSource& file) : source(file) {}

  bool Run(Mp3FileFormat& result);

 private:
  enum class Step { kGoOn, kEnd, kFail };

  // Forgets the reference and searches on from the present position.
  Step Resynchronise();
  void Count(const Mp3FrameHeader& header, std::int64_t offset);
  bool LimitReached();
  void Finish(Mp3FileFormat& result) const;

  ByteSource& source;
  std::int64_t position = 0;
  std::uint32_t frameLimit = kCbrFrameLimit;
  std::uint32_t count = 0;
  std::uint64_t bitrateSum = 0;
  std::uint64_t lengthSum = 0;
  std::optional<Mp3FrameHeader> firstHeader;  // the header the first search found
  std::optional<Mp3FrameHeader> reference;    // what frames are counted against
  std::optional<Mp3FrameHeader> counted;      // the first frame counted
  std::int64_t measuredFrom = 0;              // its offset
};

bool Analysis::Run(Mp3FileFormat& result) {
  if (!Seek(source, 0)) return false;
  result.firstFrameOffset = position = FindFrameSync(source);
  if (position == kNoFrame) return false;
  for (;;) {
    std::array<std::uint8_t, kMp3HeaderBytes> bytes;
    if (ReadUpTo(source, bytes.data(), bytes.size()) < bytes.size()) break;
    const std::int64_t frameOffset = position;
    position += static_cast<std::int64_t>(bytes.size());
    const std::optional<Mp3FrameHeader> header = ParseMp3FrameHeader(bytes.data());
    if (!header) {
      const Step step = Resynchronise();
      if (step == Step::kGoOn) continue;
      if (step == Step::kFail) return false;
      break;
    }
    if (!firstHeader) firstHeader = header;
    if (!reference) {
      // The first frame of a run is never counted.
      reference = counted ? counted : header;
    } else if (!SameFormat(*header, *reference)) {
      const Step step = Resynchronise();
      if (step == Step::kFail) return false;
      if (step == Step::kEnd) break;
    } else {
      Count(*header, frameOffset);
    }
    if (LimitReached()) break;
    // To the next frame: from the search's hit after a mismatch, with the
    // unmatched header's length, as the player has always skipped.
    const std::int64_t next =
        source.Seek(static_cast<std::int64_t>(header->frameBytes) - 4, ByteSource::kFromCurrent);
    if (next == ByteSource::kSeekFailed) break;
    position = next;
  }
  if (!Seek(source, 0)) return false;
  Finish(result);
  return true;
}

Analysis::Step Analysis::Resynchronise() {
  reference.reset();
  position = FindFrameSync(source);
  if (position != kNoFrame) return Step::kGoOn;
  return count < 1 ? Step::kFail : Step::kEnd;
}

void Analysis::Count(const Mp3FrameHeader& header, std::int64_t offset) {
  ++count;
  bitrateSum += header.bitrate;
  lengthSum += header.frameBytes;
  if (!counted) {
    counted = header;
    measuredFrom = offset;
  }
}

bool Analysis::LimitReached() {
  if (count < frameLimit) return false;
  if (frameLimit == kVbrFrameLimit) return true;
  if (bitrateSum / count == counted->bitrate) return true;  // constant bitrate: enough
  frameLimit = kVbrFrameLimit;
  return false;
}

void Analysis::Finish(Mp3FileFormat& result) const {
  result.countedFrames = count;
  if (count == 0) {
    result.format = firstHeader.value_or(Mp3FrameHeader{});
    result.totalSamples = 0;
    return;
  }
  result.format = *counted;
  result.format.bitrate = static_cast<std::uint32_t>(bitrateSum / count);
  result.format.frameBytes = static_cast<std::uint32_t>(lengthSum / count);
  const std::int64_t size = source.GetSize();
  const std::uint64_t behind = size > measuredFrom ? static_cast<std::uint64_t>(size - measuredFrom) : 0;
  const std::uint64_t frames = behind / result.format.frameBytes;
  // A source of unknown length would overflow: its length saturates.
  const std::uint64_t limit = UINT64_MAX / result.format.samplesPerFrame;
  result.totalSamples = std::min(frames, limit) * result.format.samplesPerFrame;
}

}  // namespace

bool AnalyseMp3File(ByteSource& source, Mp3FileFormat& result) {
  result = Mp3FileFormat{};
  return Analysis(source).Run(result);
}

}  // namespace decoders
