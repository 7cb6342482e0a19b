#include "playlist/item_store.h"

#include <climits>
#include <cstdint>
#include <new>
#include <utility>

namespace playlist {

void SwapItems(PlaylistItem& a, PlaylistItem& b) {
  constexpr auto kRelaxed = std::memory_order_relaxed;
  std::swap(a.path, b.path);
  std::swap(a.title, b.title);
  a.flags.store(b.flags.exchange(a.flags.load(kRelaxed), kRelaxed), kRelaxed);
  a.durationMs.store(b.durationMs.exchange(a.durationMs.load(kRelaxed), kRelaxed), kRelaxed);
  std::swap(a.playStamp, b.playStamp);
  a.trackNumber.store(b.trackNumber.exchange(a.trackNumber.load(kRelaxed), kRelaxed), kRelaxed);
}

void ResetItem(PlaylistItem& item) {
  std::string().swap(item.path);
  std::string().swap(item.title);
  item.flags.store(0, std::memory_order_relaxed);
  item.durationMs.store(0, std::memory_order_relaxed);
  item.playStamp = 0;
  item.trackNumber.store(0, std::memory_order_relaxed);
}

bool ItemStore::Grow(int extra) {
  if (extra <= 0) return true;
  const auto newBlocks = static_cast<std::size_t>((std::int64_t{extra} + kGrowStep - 1) / kGrowStep);
  if (static_cast<std::int64_t>(blocks.size() + newBlocks) * kGrowStep > INT_MAX) return false;
  try {
    std::vector<std::unique_ptr<Block>> added;
    added.reserve(newBlocks);
    for (std::size_t i = 0; i < newBlocks; ++i) added.push_back(std::make_unique<Block>());
    blocks.reserve(blocks.size() + newBlocks);
    for (auto& block : added) blocks.push_back(std::move(block));
  } catch (const std::bad_alloc&) {
    return false;
  }
  return true;
}

bool ItemStore::Append(std::string_view path) {
  if (count >= Capacity()) return false;
  try {
    (*this)[count].path.assign(path);
  } catch (const std::bad_alloc&) {
    return false;
  }
  ++count;
  return true;
}

void ItemStore::Swap(int a, int b) {
  if (a != b) SwapItems((*this)[a], (*this)[b]);
}

void ItemStore::ReleaseFrom(int newCount) {
  if (newCount < 0) newCount = 0;
  for (int i = newCount; i < count; ++i) ResetItem((*this)[i]);
  if (newCount < count) count = newCount;
}

void ItemStore::Clear() {
  blocks.clear();
  blocks.shrink_to_fit();
  count = 0;
}

}  // namespace playlist
