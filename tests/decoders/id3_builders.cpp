#include "decoders/id3_builders.h"

namespace decoders_test {
namespace {

std::string Utf16Bytes(std::u16string_view text, bool bigEndian) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char high = static_cast<char>(unit >> 8), low = static_cast<char>(unit & 0xFF);
    bytes += bigEndian ? std::string{high, low} : std::string{low, high};
  }
  return bytes;
}

std::string Field(std::string_view text, std::size_t size) {
  std::string field(text.substr(0, size));
  field.resize(size, '\0');
  return field;
}

}  // namespace

Id3v2Builder::Id3v2Builder(std::uint8_t majorVersion, std::uint8_t headerFlags, std::uint8_t revisionNumber)
    : major(majorVersion), flags(headerFlags), revision(revisionNumber) {}

Id3v2Builder& Id3v2Builder::Frame(std::string_view id, std::string_view payload) {
  FrameHeader(id, static_cast<std::uint32_t>(payload.size()));
  body += payload;
  return *this;
}

Id3v2Builder& Id3v2Builder::FrameHeader(std::string_view id, std::uint32_t size) {
  if (major < 3) {
    body += std::string(id.substr(0, 3)) + SizeBytes(size, 3);
  } else {
    body += std::string(id.substr(0, 4)) + SizeBytes(size, 4) + std::string(2, '\0');
  }
  return *this;
}

Id3v2Builder& Id3v2Builder::Bytes(std::string_view bytes) {
  body += bytes;
  return *this;
}

std::string Id3v2Builder::SizeBytes(std::uint32_t size, int count) const {
  const int bits = (flags & 0x80) != 0 ? 7 : 8;
  std::string bytes(static_cast<std::size_t>(count), '\0');
  for (int i = count - 1; i >= 0; --i, size >>= bits) {
    bytes[static_cast<std::size_t>(i)] = static_cast<char>(size & ((1u << bits) - 1));
  }
  return bytes;
}

std::string Id3v2Builder::Build(std::optional<std::uint32_t> declaredSize) const {
  const std::uint32_t size = declaredSize.value_or(static_cast<std::uint32_t>(body.size()));
  std::string tag = "ID3";
  tag += static_cast<char>(major);
  tag += static_cast<char>(revision);
  tag += static_cast<char>(flags);
  for (int shift = 21; shift >= 0; shift -= 7) tag += static_cast<char>((size >> shift) & 0x7F);
  return tag + body;
}

std::string WithAudioBehind(const std::string& tag) { return tag + std::string("\xFF\xFB\x90\x44") + std::string(400, '\0'); }

std::string Latin1Text(std::string_view bytes) { return std::string(1, '\0') + std::string(bytes); }
std::string Utf8Text(std::string_view utf8) { return std::string(1, '\3') + std::string(utf8); }

std::string Utf16Text(std::u16string_view text, bool bigEndianMark) {
  return std::string(1, '\1') + (bigEndianMark ? "\xFE\xFF" : "\xFF\xFE") + Utf16Bytes(text, bigEndianMark);
}

std::string Utf16BigEndianText(std::u16string_view text) { return std::string(1, '\2') + Utf16Bytes(text, true); }

decoders::MemoryTagSource SourceOf(const std::string& bytes) {
  return decoders::MemoryTagSource(
      std::span<const std::uint8_t>(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()));
}

std::string Id3v1Record(const Id3v1Fields& fields) {
  std::string comment = Field(fields.comment, 30);
  if (fields.track != 0) comment[29] = static_cast<char>(fields.track);
  return "TAG" + Field(fields.title, 30) + Field(fields.artist, 30) + Field(fields.album, 30) +
         Field(fields.year, 4) + comment + std::string(1, static_cast<char>(fields.genre));
}

}  // namespace decoders_test
