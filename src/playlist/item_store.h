// The storage of the playlist's entries.
//
// Entries live in blocks of kGrowStep records that never move once made, so
// the capacity grows 100 entries at a time, as the list always has, without
// ever copying the records already there: adding 100 000 entries allocates a
// thousand blocks and moves nothing. Indexes run over the blocks as over one
// array. The capacity only grows; Clear gives everything back.
//
// Threads: not synchronised; PlaylistView guards it with its lock.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <vector>

#include "playlist/playlist_item.h"

namespace playlist {

class ItemStore {
 public:
  static constexpr int kGrowStep = 100;

  int Count() const { return count; }
  int Capacity() const { return static_cast<int>(blocks.size()) * kGrowStep; }

  // Index from 0 to Capacity() - 1; records at Count() and above are zero.
  PlaylistItem& operator[](int index) { return (*blocks[BlockOf(index)])[SlotOf(index)]; }
  const PlaylistItem& operator[](int index) const { return (*blocks[BlockOf(index)])[SlotOf(index)]; }

  // Adds room for at least `extra` records, in whole blocks; false when memory
  // runs out (the store is then as it was).
  bool Grow(int extra);
  // Appends an entry with this path and no flags. Needs Count() < Capacity();
  // false when the copy of the path can't be allocated.
  bool Append(std::string_view path);
  void Swap(int a, int b);
  // Releases the records from `newCount` to Count() and makes newCount the count.
  void ReleaseFrom(int newCount);
  // Releases everything; the capacity returns to 0.
  void Clear();

 private:
  using Block = std::array<PlaylistItem, kGrowStep>;
  static std::size_t BlockOf(int index) { return static_cast<std::size_t>(index / kGrowStep); }
  static std::size_t SlotOf(int index) { return static_cast<std::size_t>(index % kGrowStep); }

  std::vector<std::unique_ptr<Block>> blocks;
  int count = 0;
};

}  // namespace playlist
