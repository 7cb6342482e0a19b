// The Vorbis comments the player shows, and its own reading of them.
//
// Seven fields are kept: DATE, TRACKNUMBER, TITLE, ARTIST, ALBUM, GENRE and
// COMMENT, names compared without regard to case. A later comment of the
// same name replaces an earlier one; other names are ignored.
//
// The values are decoded from UTF-8 by the player's own small decoder into
// at most 63 UTF-16 units (a field of 64 with its terminator), and kept as
// UTF-8 text inside the program. The decoder is lenient and short: a byte
// below 0x80 is one character, a lead byte 110xxxxx takes two bytes, any
// lead byte 111xxxxx three (a four-byte sequence keeps its low 16 bits and
// its last byte then ends the text), and the bytes behind a lead byte are
// not tested. A stray continuation byte ends the text there, deliberately
// short, as does a zero byte or a sequence cut off by the value's end.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace decoders {

inline constexpr std::size_t kOggTagUnits = 63;

struct OggTags {
  std::string date;
  std::string trackNumber;
  std::string title;
  std::string artist;
  std::string album;
  std::string genre;
  std::string comment;

  bool operator==(const OggTags&) const = default;
};

// The UTF-16 text of one value, as described above.
std::u16string DecodeOggCommentText(std::string_view bytes, std::size_t limit = kOggTagUnits);

// The tags of a list of "NAME=value" comments, in their order.
OggTags ReadOggTags(const std::vector<std::string_view>& comments);

}  // namespace decoders
