// Text at the boundaries of the program.
//
// Inside the program text is UTF-8 in std::string. File names are kept as the
// bytes the file system gave, so a name that is not valid UTF-8 still plays.
// Formats that store UTF-16 are converted where they are read or written, and
// "narrow" text from files (ID3v1, m3u, pls, asx, ICY titles)
// is taken as UTF-8 when it is valid UTF-8, otherwise as Windows-1252.
//
// Bounds that the system gives in "wide characters" are bounds in UTF-16 code
// units of the text; Utf16Length and TruncateToUtf16Units measure and cut by them.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace platform {

bool IsValidUtf8(std::string_view bytes);

// UTF-8 as it is when valid, otherwise each byte read as Windows-1252.
std::string NarrowToUtf8(std::string_view bytes);

// Each byte read as Windows-1252; the five bytes that the code page leaves
// undefined keep the C1 control of the same value, as Windows does.
std::string Windows1252ToUtf8(std::string_view bytes);

// ISO-8859-1: each byte is the code point of the same value.
std::string Latin1ToUtf8(std::string_view bytes);

// UTF-16 to UTF-8. Unpaired surrogates become U+FFFD. Stops at nothing: a zero
// code unit is kept; callers cut at the terminator first.
std::string Utf16ToUtf8(std::u16string_view text);

// UTF-16 stored as bytes, little or big endian; an odd last byte is ignored.
std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian);

// UTF-8 to UTF-16. Invalid bytes are taken as Windows-1252, as NarrowToUtf8 does.
std::u16string Utf8ToUtf16(std::string_view text);

// Byte strings that may not be valid UTF-8 (file names) as UTF-16 and back,
// without loss: each byte that is not part of a valid sequence becomes the
// lone surrogate U+DC00 + byte, and such surrogates become bytes again.
std::u16string BytesToUtf16Lossless(std::string_view bytes);
std::string Utf16ToBytesLossless(std::u16string_view text);

// Number of UTF-16 code units the text needs.
std::size_t Utf16Length(std::string_view utf8);

// The longest prefix of whole characters that fits in maxUnits UTF-16 code
// units. Invalid bytes count as one unit each and are kept as they are.
std::string TruncateToUtf16Units(std::string_view utf8, std::size_t maxUnits);

// ASCII-only case folding, as the platform's string compares do for the
// names and extensions the system compares.
char AsciiLower(char c);
bool EqualsIgnoreCase(std::string_view a, std::string_view b);
bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix);
bool EndsWithIgnoreCase(std::string_view text, std::string_view suffix);

}  // namespace platform
