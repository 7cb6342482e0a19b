#include "decoders/id3v1.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>

#include "decoders/id3_text.h"
#include "platform/text.h"

namespace decoders {
namespace {

constexpr std::size_t kRecordBytes = 128;
constexpr std::size_t kFieldBytes = 30;

// One text field: a last byte that is a blank ends the text there, together
// with the blanks before it; a field that doesn't end in a blank keeps its
// inner trailing blanks. The text runs to the first zero byte.
std::string FieldText(const std::uint8_t* field) {
  std::array<char, kFieldBytes> bytes{};
  std::memcpy(bytes.data(), field, kFieldBytes);
  if (bytes[kFieldBytes - 1] == ' ') {
    std::size_t end = kFieldBytes - 1;
    while (end > 0 && bytes[end - 1] == ' ') --end;
    std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(end), bytes.end(), '\0');
  }
  const std::string_view raw(bytes.data(), strnlen(bytes.data(), kFieldBytes));
  return platform::TruncateToUtf16Units(platform::NarrowToUtf8(raw), kId3v1TextUnits);
}

}  // namespace

bool ReadId3v1(const std::string& path, Id3v1Info& info) {
  info = Id3v1Info{};
  FileTagSource file;
  if (!file.Open(path)) return false;
  return ReadId3v1(file, info);
}

bool ReadId3v1(const TagSource& source, Id3v1Info& info) {
  info = Id3v1Info{};
  const std::uint64_t size = source.Size();
  if (size < kRecordBytes) return false;
  std::array<std::uint8_t, kRecordBytes> record{};
  if (source.ReadAt(size - kRecordBytes, record.data(), kRecordBytes) != kRecordBytes) return false;
  if (std::memcmp(record.data(), "TAG", 3) != 0) return false;

  info.genre = record[127];
  info.year = DecimalValue(std::string_view(reinterpret_cast<const char*>(record.data() + 93),
                                            strnlen(reinterpret_cast<const char*>(record.data() + 93), 4)));
  info.title = FieldText(record.data() + 3);
  info.artist = FieldText(record.data() + 33);
  info.album = FieldText(record.data() + 63);
  info.comment = FieldText(record.data() + 97);
  if (record[126] >= 1 && record[126] <= 31) info.track = record[126];
  return true;
}

bool Id3v1HasTrackNumber(const Id3v1Info& info) {
  return info.track != 0 && platform::Utf16Length(info.comment) < 29;
}

}  // namespace decoders
