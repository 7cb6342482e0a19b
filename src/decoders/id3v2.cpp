#include "decoders/id3v2.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <string_view>
#include <vector>

#include "decoders/id3_genres.h"
#include "decoders/id3_text.h"
#include "platform/text.h"

namespace decoders {
namespace {

constexpr std::size_t kHeaderBytes = 10;
constexpr std::uint8_t kFlagUnsynchronised = 0x80;
constexpr std::uint8_t kFlagExtendedHeader = 0x40;
constexpr std::uint8_t kFlagsThatRefuse = 0x1F;

using Field = std::optional<std::string> Id3v2Info::*;

// Frames the player reads, tested from the top. Each row matches a frame
// whose first four header bytes are the long name or whose first three are
// the short name, in a tag of any version.
struct FrameRow {
  const char* longName;
  const char* shortName;
  Field field;
};

constexpr std::array<FrameRow, 9> kFrameTable = {{
    {"TALB", "TAL", &Id3v2Info::album},
    {"COMM", "COM", &Id3v2Info::comment},
    {"TCOM", "TCM", &Id3v2Info::composer},
    {"TENC", "TEN", &Id3v2Info::encodedBy},
    {"TIT2", "TT2", &Id3v2Info::title},
    {"TPE1", "TP1", &Id3v2Info::artist},
    {"TRCK", "TRK", &Id3v2Info::track},
    {"TYER", "TYE", &Id3v2Info::year},
    {"TCON", "TCO", &Id3v2Info::genre},
}};

const FrameRow* LookUpFrame(const std::uint8_t* header) {
  for (const FrameRow& row : kFrameTable) {
    if (std::memcmp(header, row.longName, 4) == 0 || std::memcmp(header, row.shortName, 3) == 0) return &row;
  }
  return nullptr;
}

// Reads forward from a position in the source through a window, so that a
// walk over many small frames costs few reads of the source.
class Cursor {
 public:
  Cursor(const TagSource& from, std::uint64_t start) : source(from), position(start) {}

  // Copies up to `count` bytes and moves past them; returns how many came.
  std::size_t Read(std::uint8_t* destination, std::size_t count) {
    std::size_t got = 0;
    while (got < count) {
      if (position < windowStart || position >= windowStart + windowFill) {
        windowStart = position;
        windowFill = source.ReadAt(position, window.data(), window.size());
        if (windowFill == 0) break;
      }
      const std::size_t offset = static_cast<std::size_t>(position - windowStart);
      const std::size_t step = std::min(count - got, windowFill - offset);
      std::memcpy(destination + got, window.data() + offset, step);
      got += step;
      position += step;
    }
    return got;
  }

  void Skip(std::uint64_t count) { position += count; }

  std::uint64_t Remaining() const {
    const std::uint64_t size = source.Size();
    return position < size ? size - position : 0;
  }

 private:
  const TagSource& source;
  std::uint64_t position;
  std::vector<std::uint8_t> window = std::vector<std::uint8_t>(64 * 1024);
  std::uint64_t windowStart = 0;
  std::size_t windowFill = 0;
};

// A big-endian number of `count` bytes of 7 or 8 bits each.
std::uint32_t SizeFromBytes(const std::uint8_t* bytes, int count, bool sevenBits) {
  std::uint32_t value = 0;
  for (int i = 0; i < count; ++i) value = sevenBits ? (value << 7) | (bytes[i] & 0x7F) : (value << 8) | bytes[i];
  return value;
}

// Up to `count` bytes of frame data, at most kMaxId3v2TextBytes of them and
// no more than the source still has; the cursor moves past all `count`.
std::vector<std::uint8_t> ReadPayload(Cursor& cursor, std::uint64_t count) {
  const std::size_t kept =
      static_cast<std::size_t>(std::min({count, cursor.Remaining(), std::uint64_t{kMaxId3v2TextBytes}}));
  std::vector<std::uint8_t> bytes(kept);
  bytes.resize(cursor.Read(bytes.data(), kept));
  cursor.Skip(count - kept);
  return bytes;
}

std::string NarrowText(const std::vector<std::uint8_t>& bytes) {
  const auto* begin = reinterpret_cast<const char*>(bytes.data());
  const std::size_t length = std::find(bytes.begin(), bytes.end(), 0) - bytes.begin();
  return platform::NarrowToUtf8(std::string_view(begin, length));
}

// Little-endian UTF-16 up to its first zero unit; an odd last byte is no unit.
std::string WideText(const std::vector<std::uint8_t>& bytes) {
  std::size_t length = 0;
  while (length + 1 < bytes.size() && (bytes[length] != 0 || bytes[length + 1] != 0)) length += 2;
  return platform::Utf16BytesToUtf8(std::string_view(reinterpret_cast<const char*>(bytes.data()), length),
                                    /*bigEndian=*/false);
}

// The text of one known frame whose header has been read. Any earlier value
// of the field is dropped first. The cursor ends where the reads of the
// encoding leave it; for an unknown encoding that is just behind the
// encoding byte, and the walk's next header then won't match (accepted).
std::optional<std::string> ReadFrameText(Cursor& cursor, std::uint32_t size) {
  if (size == 0) return std::nullopt;
  if (size == 1) {
    cursor.Skip(1);
    return std::nullopt;
  }
  std::uint8_t encoding = 0;
  if (cursor.Read(&encoding, 1) != 1) return std::nullopt;
  switch (encoding) {
    case 0:
      return NarrowText(ReadPayload(cursor, size - 1));
    case 1:  // byte-order mark skipped unread
      cursor.Skip(2);
      return WideText(ReadPayload(cursor, size >= 3 ? size - 3 : 0));
    case 2:
      return WideText(ReadPayload(cursor, size - 1));
    case 3:  // UTF-8 frames give no text
      cursor.Skip(size - 1);
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

// "(n)" genre references; negative and out-of-table numbers stay as text.
void ResolveGenreNumber(std::optional<std::string>& genre) {
  if (!genre || genre->empty() || (*genre)[0] != '(') return;
  if (genre->size() > 1 && (*genre)[1] == '(') return;
  if (const char* name = GenreName(DecimalValue(std::string_view(*genre).substr(1)))) *genre = name;
}

// A 2.2 "TCO" frame whose text is "(" and a digit always loses its text: it
// becomes the genre of that number, or no genre beyond the table.
void ResolveShortGenreFrame(std::optional<std::string>& genre) {
  if (!genre || genre->size() < 2 || (*genre)[0] != '(' || (*genre)[1] < '0' || (*genre)[1] > '9') return;
  const char* name = GenreName(DecimalValue(std::string_view(*genre).substr(1)));
  genre = name ? std::optional<std::string>(name) : std::nullopt;
}

class TagWalk {
 public:
  TagWalk(const TagSource& source, const std::uint8_t* header)
      : cursor(source, kHeaderBytes),
        major(header[3]),
        sevenBitSizes((header[5] & kFlagUnsynchronised) != 0),
        hasExtendedHeader((header[5] & kFlagExtendedHeader) != 0),
        tagSize(SizeFromBytes(header + 6, 4, true)) {}

  void Run(Id3v2Info& info) {
    std::uint64_t used = 0;
    if (hasExtendedHeader && !SkipExtendedHeader(used)) return;
    const bool shortFrames = major < 3;
    const int idBytes = shortFrames ? 3 : 4;
    const std::size_t frameHeaderBytes = shortFrames ? 6 : 10;
    while (used < tagSize) {
      std::array<std::uint8_t, 10> frame{};
      if (cursor.Read(frame.data(), frameHeaderBytes) != frameHeaderBytes) return;
      if (std::find(frame.begin(), frame.begin() + idBytes, 0) != frame.begin() + idBytes) return;
      const std::uint32_t size = SizeFromBytes(frame.data() + idBytes, idBytes, sevenBitSizes);
      if (const FrameRow* row = LookUpFrame(frame.data())) {
        std::optional<std::string>& field = info.*(row->field);
        field = ReadFrameText(cursor, size);
        if (row->field == &Id3v2Info::genre) {
          if (shortFrames && std::memcmp(frame.data(), "TCO", 3) == 0) ResolveShortGenreFrame(field);
          ResolveGenreNumber(field);
        }
      } else {
        cursor.Skip(size);
      }
      used += frameHeaderBytes + size;
    }
  }

 private:
  // Its size counts as the bytes used so far, and the cursor skips the size
  // less its own four bytes. A 2.3 extended header's size doesn't count those
  // four bytes, so there the walk goes on four bytes early, inside the
  // extended header, and usually ends at once on a zero frame id: accepted.
  bool SkipExtendedHeader(std::uint64_t& used) {
    std::array<std::uint8_t, 4> bytes{};
    if (cursor.Read(bytes.data(), bytes.size()) != bytes.size()) return false;
    const std::uint32_t size = SizeFromBytes(bytes.data(), 4, sevenBitSizes);
    used = size;
    if (size > 4) cursor.Skip(size - 4);
    return true;
  }

  Cursor cursor;
  const int major;
  const bool sevenBitSizes;
  const bool hasExtendedHeader;
  const std::uint32_t tagSize;
};

}  // namespace

bool ReadId3v2(const std::string& path, Id3v2Info& info) {
  FreeId3v2Info(info);
  FileTagSource file;
  if (!file.Open(path)) return false;
  return ReadId3v2(file, info);
}

bool ReadId3v2(const TagSource& source, Id3v2Info& info) {
  FreeId3v2Info(info);
  std::array<std::uint8_t, kHeaderBytes> header{};
  if (source.ReadAt(0, header.data(), header.size()) != header.size()) return false;
  if (std::memcmp(header.data(), "ID3", 3) != 0 || header[3] >= 5 || header[4] == 255 ||
      (header[5] & kFlagsThatRefuse) != 0) {
    return false;
  }
  if (std::uint64_t{SizeFromBytes(header.data() + 6, 4, true)} + kHeaderBytes >= source.Size()) return false;
  TagWalk(source, header.data()).Run(info);
  return true;
}

void FreeId3v2Info(Id3v2Info& info) { info = Id3v2Info{}; }

std::uint32_t Id3v2TagLength(std::span<const std::uint8_t> bytes) {
  if (bytes.size() < kHeaderBytes || std::memcmp(bytes.data(), "ID3", 3) != 0) return 0;
  return kHeaderBytes + SizeFromBytes(bytes.data() + 6, 4, true);
}

}  // namespace decoders
