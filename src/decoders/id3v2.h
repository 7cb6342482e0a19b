// The ID3v2 tag at the start of an MPEG audio file: versions 2.2 and 2.3,
// and 2.4 in so far as its frames look like those of 2.3.
//
// Header (10 bytes): "ID3", major version, revision, flags, and the size of
// the tag behind the header as four bytes of 7 bits, high byte first.
// Frame header: major 2: id (3 bytes), size (3 bytes); major 3 and up: id
// (4 bytes), size (4 bytes), flags (2 bytes, ignored).
//
// The reader is lenient and literal; these behaviours are the player's own
// and are kept on purpose:
// - Only the unsynchronisation flag decides how frame sizes are read (7 bits
//   per byte when set, else 8); unsynchronised data isn't undone, and the
//   synchsafe frame sizes of a 2.4 tag without the flag are read as plain
//   numbers, which is the same below 128.
// - Frames are matched by the table in id3v2.cpp, first row first, on four
//   bytes of the long name or three of the short one whatever the version, so
//   a 2.3 "TCOP" counts as genre and "COMR" as comment.
// - Text encodings: 0 is narrow text (UTF-8 when valid, else Windows-1252),
//   1 skips the byte-order mark unread and 2 is taken as it is, both as
//   little-endian UTF-16 (a big-endian text comes out byte-swapped); 3
//   (UTF-8) gives no value. Text runs to its first terminator, so a comment
//   shows its language code and short description, not the comment proper.
// - A genre "(n)" with n from 0 to 147 becomes the table's name for n.
//
// Bounds: nothing is read outside the source; a frame's text is read up to
// kMaxId3v2TextBytes and the rest of it skipped, so an absurd frame size
// can't make the reader allocate without limit.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>

#include "decoders/tag_source.h"

namespace decoders {

inline constexpr std::size_t kMaxId3v2TextBytes = 1 << 20;

// The texts of the frames the player uses, as UTF-8; a field is empty
// (nullopt) when its frame wasn't met or its last frame gave no text. A
// later frame of the same field replaces the earlier.
struct Id3v2Info {
  std::optional<std::string> title;
  std::optional<std::string> artist;
  std::optional<std::string> album;
  std::optional<std::string> comment;
  std::optional<std::string> year;
  std::optional<std::string> genre;
  std::optional<std::string> encodedBy;
  std::optional<std::string> composer;
  std::optional<std::string> track;
};

// True when the source begins with a good tag header: "ID3", a major version
// under 5, a revision under 255, the five low flag bits clear, and the tag
// ending before the end of the file (10 + size under the file's length).
// The frames are then read as far as they make sense; a damaged or
// truncated frame ends the walk and keeps what was read before it. `info`
// is cleared first. The path is opened by the reader itself, read-only.
bool ReadId3v2(const std::string& path, Id3v2Info& info);
bool ReadId3v2(const TagSource& source, Id3v2Info& info);

// Clears every field.
void FreeId3v2Info(Id3v2Info& info);

// The whole length of an ID3v2 tag, header included (10 + the 28-bit size
// of bytes 6 to 9), when `bytes` begins with "ID3" and holds the 10 header
// bytes; 0 otherwise. Nothing else of the header is checked: this is how far
// a frame search skips a leading tag.
std::uint32_t Id3v2TagLength(std::span<const std::uint8_t> bytes);

}  // namespace decoders
