// The ID3v1 record: 128 bytes at the very end of an MPEG audio file.
//
//   offset  size  field
//        0     3  "TAG"
//        3    30  title
//       33    30  artist
//       63    30  album
//       93     4  year, ASCII digits
//       97    30  comment; ID3v1.1 keeps a track number in its last byte
//      127     1  genre number (see id3_genres.h)
//
// The texts have no declared character set: each is taken as UTF-8 when it
// is valid UTF-8, otherwise as Windows-1252. Nothing here writes a tag.
#pragma once

#include <cstdint>
#include <string>

#include "decoders/tag_source.h"

namespace decoders {

// Texts are UTF-8 of at most kId3v1TextUnits UTF-16 units: a 30-byte field
// never needs more.
inline constexpr std::size_t kId3v1TextUnits = 30;

struct Id3v1Info {
  std::string title;
  std::string artist;
  std::string album;
  std::string comment;      // all 30 bytes, the track byte included if it isn't 0
  std::int32_t track = 0;   // byte 126 when it is from 1 to 31, else 0
  std::int32_t year = 0;    // decimal value of the year field
  std::int32_t genre = -1;  // the genre byte 0 to 255; -1 when no tag was read
};

// True if the last 128 bytes of the file hold a tag. `info` is cleared first
// (genre -1) and filled only when a tag is found. Opens the path by itself,
// read-only, and leaves any other reader of the file alone.
bool ReadId3v1(const std::string& path, Id3v1Info& info);
bool ReadId3v1(const TagSource& source, Id3v1Info& info);

// True when the record carries an ID3v1.1 track number: a track from 1 to 31
// behind a comment whose 29th character (UTF-16 unit) is empty.
bool Id3v1HasTrackNumber(const Id3v1Info& info);

}  // namespace decoders
