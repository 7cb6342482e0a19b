#include "decoders/ogg_comments.h"

#include <array>

#include "platform/text.h"

namespace decoders {

std::u16string DecodeOggCommentText(std::string_view bytes, std::size_t limit) {
  std::u16string text;
  std::size_t at = 0;
  const auto byteAt = [&](std::size_t index) {
    return static_cast<unsigned>(static_cast<unsigned char>(bytes[index]));
  };
  while (at < bytes.size() && text.size() < limit) {
    const unsigned lead = byteAt(at);
    if (lead == 0) break;
    if (lead < 0x80) {
      text.push_back(static_cast<char16_t>(lead));
      at += 1;
    } else if ((lead & 0xE0) == 0xC0) {
      if (at + 1 >= bytes.size()) break;
      text.push_back(static_cast<char16_t>(((lead & 0x1F) << 6) | (byteAt(at + 1) & 0x3F)));
      at += 2;
    } else if ((lead & 0xE0) == 0xE0) {
      if (at + 2 >= bytes.size()) break;
      const unsigned value = (lead << 12) | ((byteAt(at + 1) & 0x3F) << 6) | (byteAt(at + 2) & 0x3F);
      text.push_back(static_cast<char16_t>(value & 0xFFFF));
      at += 3;
    } else {
      break;  // a stray continuation byte: the text ends here
    }
  }
  return text;
}

OggTags ReadOggTags(const std::vector<std::string_view>& comments) {
  OggTags tags;
  const std::array<std::pair<std::string_view, std::string*>, 7> fields{{
      {"DATE=", &tags.date},
      {"TRACKNUMBER=", &tags.trackNumber},
      {"TITLE=", &tags.title},
      {"ARTIST=", &tags.artist},
      {"ALBUM=", &tags.album},
      {"GENRE=", &tags.genre},
      {"COMMENT=", &tags.comment},
  }};
  for (const std::string_view comment : comments) {
    for (const auto& [name, field] : fields) {
      if (!platform::StartsWithIgnoreCase(comment, name)) continue;
      *field = platform::Utf16ToUtf8(DecodeOggCommentText(comment.substr(name.size())));
      break;
    }
  }
  return tags;
}

}  // namespace decoders
