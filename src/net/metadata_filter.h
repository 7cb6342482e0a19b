// ICY metadata: the titles a radio server interleaves with its audio.
//
// A server asked for metadata ("Icy-MetaData:1") that answers with
// "icy-metaint: N" sends, after every N audio bytes, one block: a length byte
// L, then L * 16 bytes of text such as
//
//   StreamTitle='Artist - Title';StreamUrl='';\0\0\0
//
// padded with zero bytes. L = 0 is a block of that one byte; servers send it
// whenever the title hasn't changed. Decoders must never see these bytes.
//
// MetadataFilter sits between the receive buffer and the decoder: Filter runs
// on the bytes about to be delivered, moves their audio bytes to the front,
// and says how many were metadata. It is a state machine that lives from one
// call to the next, so a block may straddle any number of calls, and one
// call may hold any number of blocks. Every block is stored whole (at most
// 255 * 16 + 1 bytes), so no title is ever cut by the store.
//
// Threads: none of its own; NetStream calls it under its bufferLock.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace net {

inline constexpr std::size_t kMaxMetadataBlockBytes = 255 * 16 + 1;
// A title keeps at most this many bytes of the block, then at most as many
// UTF-16 units as the title field holds without its terminator.
inline constexpr std::size_t kTitleBytes = 259;
inline constexpr std::size_t kTitleUnits = 259;

// The StreamTitle of one whole block (length byte first), as UTF-8. The text
// ends at its first zero byte. The title begins 13 characters behind
// "StreamTitle=" (that is, behind "StreamTitle='") and ends before the next
// "';", or, when there is none, before the next "'". False when the block is
// not whole or holds no such title; "StreamTitle='';" is an empty title.
bool ExtractStreamTitle(const std::uint8_t* block, std::size_t length, std::string& title);

class MetadataFilter {
 public:
  // A new connection: `metaInterval` audio bytes come before the first block;
  // 0 turns the filter off. The last whole block is kept, so the last title
  // stays known until the next one arrives.
  void Start(std::uint32_t interval);
  // Forgets the stored block as well.
  void Clear();

  // Removes the metadata from the `count` bytes at `bytes`, in place: their
  // audio bytes end up at the start, in order. Returns how many of the
  // `count` bytes were metadata. Each block that ends here with a title adds
  // the title to `titles` (may be null), oldest first.
  std::size_t Filter(std::uint8_t* bytes, std::size_t count, std::vector<std::string>* titles);

  // The title of the last whole block; false when it has none.
  bool GetStreamTitle(std::string& title) const;

  std::uint32_t MetaInterval() const { return metaInterval; }
  // Positive or 0: audio bytes until the next block; negative: minus the
  // bytes still missing of the block in progress.
  std::int64_t MetaCountdown() const { return metaCountdown; }

 private:
  void BlockComplete(std::vector<std::string>* titles);

  std::uint32_t metaInterval = 0;
  std::int64_t metaCountdown = 0;
  std::array<std::uint8_t, kMaxMetadataBlockBytes> pendingBlock{};  // the block in progress
  std::size_t pendingLength = 0;
  std::array<std::uint8_t, kMaxMetadataBlockBytes> metaBlock{};  // the last whole block
  std::size_t metaLength = 0;
};

}  // namespace net
