#include "plugins/aac/aac_reader.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "decoders/id3_text.h"
#include "decoders/id3v2.h"

namespace plugins::aac {
namespace {

constexpr std::uint32_t kMaxChannels = 2;
constexpr int kMaxLeadingTags = 4;

// Bytes taken by ID3v2 tags at the start of the file.
std::uint64_t LeadingTagLength(const decoders::TagSource& source) {
  std::uint64_t offset = 0;
  for (int tags = 0; tags < kMaxLeadingTags; ++tags) {
    std::array<std::uint8_t, 10> header{};
    if (source.ReadAt(offset, header.data(), header.size()) != header.size()) break;
    const std::uint32_t length = decoders::Id3v2TagLength(header);
    if (length == 0) break;
    offset += length;
  }
  return offset;
}

const char* CodecName(std::uint8_t profile) {
  static constexpr std::array<const char*, 4> kNames = {"AAC Main", "AAC LC", "AAC SSR", "AAC LTP"};
  return kNames[profile & 3];
}

void SetTags(const decoders::TagSource& source, playback::TrackInfo& info) {
  decoders::Id3v2Info tags;
  if (!decoders::ReadId3v2(source, tags)) return;
  if (tags.title) info.SetTitleA(tags.title->c_str());
  if (tags.artist) info.SetArtistA(tags.artist->c_str());
  if (tags.album) info.SetAlbumA(tags.album->c_str());
  if (tags.genre) info.SetGenreA(tags.genre->c_str());
  if (tags.comment) info.SetDescriptionA(tags.comment->c_str());
  if (tags.year) info.SetYear(static_cast<std::uint32_t>(std::max(decoders::DecimalValue(*tags.year), 0)));
  if (tags.track) {
    const std::int32_t track = decoders::DecimalValue(*tags.track);
    if (track > 0) info.SetTrackNumber(static_cast<std::uint32_t>(track));
  }
}

}  // namespace

void AacReader::SetSource(playback::ByteSource* /*source*/, const char* /*path*/) {}

int AacReader::Open(const char* path) {
  Close();
  if (path == nullptr) return 0;
  auto opened = std::make_unique<decoders::FileTagSource>();
  if (!opened->Open(path) || !index.Build(*opened, LeadingTagLength(*opened))) return 0;
  file = std::move(opened);
  std::uint32_t rate = 0;
  std::uint32_t count = 0;
  if (!ReadFrame(0, frameBytes) || !decoder.Open(frameBytes.data(), frameBytes.size(), rate, count) ||
      rate == 0 || count == 0) {
    Close();
    return 0;
  }
  sampleRate = rate;
  channels = std::min(count, kMaxChannels);
  durationMs = index.DurationMs();
  return 1;
}

int AacReader::Seek(int milliseconds) {
  if (!file) return -1;
  std::uint64_t target = static_cast<std::uint64_t>(std::max(milliseconds, 0));
  if (target > durationMs) target = durationMs > 1000 ? durationMs - 1000 : 0;
  const std::size_t frame = index.FrameForBlock(target * index.CoreSampleRate() / 1000 / kSamplesPerBlock);
  pending.clear();
  pendingStart = 0;
  if (frame == 0) {
    // From the start exactly as a fresh open plays it.
    std::uint32_t rate = 0;
    std::uint32_t count = 0;
    if (!ReadFrame(0, frameBytes) || !decoder.Open(frameBytes.data(), frameBytes.size(), rate, count))
      return -1;
  } else if (ReadFrame(frame - 1, frameBytes)) {
    // The frame before fills the filter bank; its output is dropped.
    FaadDecoder::Output output;
    decoder.Decode(frameBytes.data(), frameBytes.size(), output);
  }
  nextFrame = frame;
  return static_cast<int>(
      std::min<std::uint64_t>(index.BlockMs(index.Frames()[frame].firstBlock), 0x7FFFFFFF));
}

void AacReader::Close() {
  file.reset();
  decoder.Close();
  index.Clear();
  sampleRate = 0;
  channels = 0;
  durationMs = 0;
  nextFrame = 0;
  pending.clear();
  pendingStart = 0;
}

int AacReader::GetFormat(std::uint32_t* rate, std::uint32_t* count) {
  if (!file) return 0;
  if (rate != nullptr) *rate = sampleRate;
  if (count != nullptr) *count = channels;
  return 1;
}

int AacReader::GetTrackInfo(const char* path, playback::TrackInfo* info) {
  if (path == nullptr || info == nullptr) return 0;
  decoders::FileTagSource source;
  AdtsIndex fileIndex;
  if (!source.Open(path) || !fileIndex.Build(source, LeadingTagLength(source))) return 0;
  info->Clear();
  const AdtsHeader& first = fileIndex.First();
  info->SetCodecA(CodecName(first.profile));
  info->SetSampleRate(fileIndex.CoreSampleRate());
  info->SetStereo(first.channelConfiguration >= 2 ? 1 : 0);
  const std::uint64_t samples = fileIndex.TotalBlocks() * kSamplesPerBlock;
  const std::uint64_t bitRate = fileIndex.TotalBytes() * 8 * fileIndex.CoreSampleRate() / samples;
  info->SetBitRate(static_cast<std::uint32_t>(std::min<std::uint64_t>(bitRate, 0xFFFFFFFFu)));
  info->SetDuration(fileIndex.DurationMs());
  SetTags(source, *info);
  return 1;
}

std::uint32_t AacReader::GetDuration() {
  return durationMs;
}

int AacReader::Read(std::int16_t* destination, std::uint32_t wanted, std::uint32_t* got) {
  std::uint32_t delivered = 0;
  while (destination != nullptr && file && delivered < wanted) {
    if (pendingStart == pending.size() && !DecodeNextFrame()) break;
    const auto taken =
        static_cast<std::uint32_t>(std::min<std::size_t>(wanted - delivered, pending.size() - pendingStart));
    std::memcpy(destination + delivered, pending.data() + pendingStart, taken * sizeof(std::int16_t));
    pendingStart += taken;
    delivered += taken;
  }
  if (got != nullptr) *got = delivered;
  return 1;
}

bool AacReader::DecodeNextFrame() {
  pending.clear();
  pendingStart = 0;
  while (nextFrame < index.Frames().size()) {
    if (!ReadFrame(nextFrame++, frameBytes)) return false;
    FaadDecoder::Output output;
    // A damaged frame is skipped; so is the first, which only fills the filter bank.
    if (!decoder.Decode(frameBytes.data(), frameBytes.size(), output) || output.count == 0 ||
        output.channels == 0) {
      continue;
    }
    const std::uint32_t frames = output.count / output.channels;
    pending.resize(static_cast<std::size_t>(frames) * channels);
    for (std::uint32_t frame = 0; frame < frames; ++frame) {
      for (std::uint32_t channel = 0; channel < channels; ++channel) {
        const std::uint32_t from = std::min(channel, output.channels - 1);
        pending[static_cast<std::size_t>(frame) * channels + channel] =
            output.samples[frame * output.channels + from];
      }
    }
    return true;
  }
  return false;
}

bool AacReader::ReadFrame(std::size_t frameIndex, std::vector<std::uint8_t>& bytes) {
  const AdtsFrame& frame = index.Frames()[frameIndex];
  bytes.resize(frame.length);
  return file->ReadAt(frame.offset, bytes.data(), bytes.size()) == bytes.size();
}

}  // namespace plugins::aac
