// One entry of the playlist, and the flags it carries.
//
// Threads: the window thread owns every entry. The info reader writes
// `title`, `durationMs`, `trackNumber` and the ITEM_HAS_INFO bit of entries
// while it runs; the three words are relaxed atomics, and `title` is written
// and read only under the list's lock (see PlaylistView). `path` and
// `playStamp` belong to the window thread alone.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace playlist {

enum ItemFlag : std::uint32_t {
  ITEM_SELECTED = 2,
  ITEM_CURRENT = 8,
  ITEM_HAS_INFO = 16,  // `title` is to be used and `durationMs` trusted
  ITEM_PLAYED = 32,    // taken in the present shuffle cycle
};

// TrackInfo's default track number; like 0 it means "none".
inline constexpr std::uint32_t NO_TRACK_NUMBER = 100000;
// The duration that the re-read command leaves behind: read this entry again.
inline constexpr std::uint32_t kDurationReadAgain = 0xFFFFFFFFu;

struct PlaylistItem {
  std::string path;   // file path or URL as entered; never empty in a live entry
  std::string title;  // display title; meaningful only with ITEM_HAS_INFO
  std::atomic<std::uint32_t> flags{0};
  std::atomic<std::uint32_t> durationMs{0};  // 0 unknown
  std::uint32_t playStamp = 0;               // see PlaylistView::NextTrack; 0 none
  std::atomic<std::uint32_t> trackNumber{0};  // 0 or NO_TRACK_NUMBER: none

  bool Has(std::uint32_t flag) const { return (flags.load(std::memory_order_relaxed) & flag) != 0; }
  void Set(std::uint32_t flag) { flags.fetch_or(flag, std::memory_order_relaxed); }
  void Clear(std::uint32_t flag) { flags.fetch_and(~flag, std::memory_order_relaxed); }
  std::uint32_t Duration() const { return durationMs.load(std::memory_order_relaxed); }
  std::uint32_t TrackNumber() const { return trackNumber.load(std::memory_order_relaxed); }
};

// Exchanges everything two records hold; strings move, no text is copied.
void SwapItems(PlaylistItem& a, PlaylistItem& b);
// Frees both strings and zeroes the record.
void ResetItem(PlaylistItem& item);

}  // namespace playlist
