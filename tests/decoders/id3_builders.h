// Builders of ID3 tags byte by byte, for the cases no tagging tool writes.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "decoders/tag_source.h"

namespace decoders_test {

// An ID3v2 tag: header, then the frames and bytes added, in order. Frame
// sizes are written as the tag's version and flags make the reader read
// them: 3 bytes for major versions under 3, else 4 bytes and 2 flag bytes;
// 7 bits per byte when the unsynchronisation flag (0x80) is set.
class Id3v2Builder {
 public:
  explicit Id3v2Builder(std::uint8_t major, std::uint8_t flags = 0, std::uint8_t revision = 0);

  Id3v2Builder& Frame(std::string_view id, std::string_view payload);
  // A frame header that declares `size` whatever follows it.
  Id3v2Builder& FrameHeader(std::string_view id, std::uint32_t size);
  Id3v2Builder& Bytes(std::string_view bytes);

  // Header and body; the header's size is the body's unless given.
  std::string Build(std::optional<std::uint32_t> declaredSize = std::nullopt) const;

 private:
  std::string SizeBytes(std::uint32_t size, int count) const;

  std::uint8_t major;
  std::uint8_t flags;
  std::uint8_t revision;
  std::string body;
};

// A tag followed by enough bytes to stand in front of audio (the reader
// refuses a tag that reaches the end of the file).
std::string WithAudioBehind(const std::string& tag);

// Frame payloads: an encoding byte and the text's bytes, no terminator.
std::string Latin1Text(std::string_view bytes);
std::string Utf8Text(std::string_view utf8);
std::string Utf16Text(std::u16string_view text, bool bigEndianMark);  // encoding 1 with a mark
std::string Utf16BigEndianText(std::u16string_view text);             // encoding 2

// A source over the bytes of a string, which must outlive it.
decoders::MemoryTagSource SourceOf(const std::string& bytes);

// A 128-byte ID3v1 record; text fields are cut or zero-padded to 30 bytes,
// the year to 4.
struct Id3v1Fields {
  std::string title = {};
  std::string artist = {};
  std::string album = {};
  std::string year = {};
  std::string comment = {};
  std::uint8_t track = 0;  // written into the comment's last byte when not 0
  std::uint8_t genre = 0;
};
std::string Id3v1Record(const Id3v1Fields& fields);

}  // namespace decoders_test
