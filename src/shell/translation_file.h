// The compiled Qt translation file (.qm) that language packs are made of.
//
// lrelease writes it; this reads it, checking every length against the data,
// because a pack is a file like any other and may be damaged. (Qt's own
// reader trusts the lengths it finds and reads past the end of a damaged
// file.) The layout, as lrelease writes it:
//   16 bytes of magic: 3C B8 64 18 CA EF 9C 95 CD 21 1C BF 60 A1 BD DD;
//   blocks of a tag byte, a big-endian u32 length and that many bytes; the
//   block with tag 0x69 holds the messages, one after the other;
//   a message is a run of fields ended by the tag byte 1; field 5 is four
//   bytes, every other field a big-endian u32 length and that many bytes:
//   3 a translation (UTF-16 big endian; length 0xFFFFFFFF for none),
//   6 the source text, 7 the context, 8 the comment.
// An id-based message (lrelease -idbased) carries its id as source text and
// an empty context; its first translation is the text.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace shell {

using TranslationTexts = std::map<std::string, std::string, std::less<>>;

// The texts of the id-based messages in `bytes`, by id, as UTF-8. Messages
// without a translation, with an empty one, or with a context are left out.
// A damaged message ends the reading, keeping the messages before it;
// nullopt when the data doesn't begin as a translation file.
std::optional<TranslationTexts> ReadTranslationFile(std::string_view bytes);

}  // namespace shell
