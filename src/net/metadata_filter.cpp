#include "net/metadata_filter.h"

#include <algorithm>
#include <cstring>

#include "platform/text.h"

namespace net {
namespace {

constexpr std::string_view kTitleKey = "StreamTitle=";
constexpr std::size_t kTitleSkip = 13;  // "StreamTitle='"

// At most kTitleBytes bytes; a valid UTF-8 title is cut at a character's start.
std::string_view CutTitleBytes(std::string_view raw) {
  if (raw.size() <= kTitleBytes) return raw;
  std::size_t cut = kTitleBytes;
  if (platform::IsValidUtf8(raw)) {
    while (cut > 0 && (static_cast<unsigned char>(raw[cut]) & 0xC0) == 0x80) --cut;
  }
  return raw.substr(0, cut);
}

}  // namespace

bool ExtractStreamTitle(const std::uint8_t* block, std::size_t length, std::string& title) {
  title.clear();
  if (block == nullptr || length == 0 || length != static_cast<std::size_t>(block[0]) * 16 + 1) return false;
  std::string_view text(reinterpret_cast<const char*>(block + 1), length - 1);
  text = text.substr(0, text.find('\0'));
  const std::size_t key = text.find(kTitleKey);
  if (key == std::string_view::npos || key + kTitleSkip > text.size()) return false;
  const std::size_t start = key + kTitleSkip;
  // The title ends at the next apostrophe, so one that holds an apostrophe
  // itself is cut there ("Guns N' Roses" shows as "Guns N"). Servers don't
  // escape it, and the player has always shown titles this way.
  const std::size_t end = text.find('\'', start);
  if (end == std::string_view::npos) return false;
  const std::string_view raw = CutTitleBytes(text.substr(start, end - start));
  title = platform::TruncateToUtf16Units(platform::NarrowToUtf8(raw), kTitleUnits);
  return true;
}

void MetadataFilter::Start(std::uint32_t interval) {
  metaInterval = interval;
  metaCountdown = interval;
  pendingLength = 0;
}

void MetadataFilter::Clear() {
  Start(0);
  metaLength = 0;
}

std::size_t MetadataFilter::Filter(std::uint8_t* bytes, std::size_t count, std::vector<std::string>* titles) {
  if (metaInterval == 0 || bytes == nullptr) return 0;
  std::size_t read = 0;
  std::size_t write = 0;
  while (read < count) {
    const std::size_t left = count - read;
    if (metaCountdown > 0) {  // audio
      const std::size_t take = std::min(static_cast<std::size_t>(metaCountdown), left);
      if (write != read) std::memmove(bytes + write, bytes + read, take);
      write += take;
      read += take;
      metaCountdown -= static_cast<std::int64_t>(take);
    } else if (metaCountdown == 0) {  // a block begins with its length byte
      pendingBlock[0] = bytes[read++];
      pendingLength = 1;
      metaCountdown = -static_cast<std::int64_t>(pendingBlock[0]) * 16;
      if (metaCountdown == 0) metaCountdown = metaInterval;  // an empty block changes nothing
    } else {                                                 // the block in progress
      const std::size_t take = std::min(static_cast<std::size_t>(-metaCountdown), left);
      std::memcpy(pendingBlock.data() + pendingLength, bytes + read, take);
      pendingLength += take;
      read += take;
      metaCountdown += static_cast<std::int64_t>(take);
      if (metaCountdown == 0) BlockComplete(titles);
    }
  }
  return count - write;
}

void MetadataFilter::BlockComplete(std::vector<std::string>* titles) {
  metaBlock = pendingBlock;
  metaLength = pendingLength;
  pendingLength = 0;
  metaCountdown = metaInterval;
  std::string title;
  if (titles != nullptr && ExtractStreamTitle(metaBlock.data(), metaLength, title))
    titles->push_back(std::move(title));
}

bool MetadataFilter::GetStreamTitle(std::string& title) const {
  return ExtractStreamTitle(metaBlock.data(), metaLength, title);
}

}  // namespace net
