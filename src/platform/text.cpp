#include "platform/text.h"

#include <array>
#include <cstdint>

namespace platform {
namespace {

// Windows-1252 code points of the bytes 0x80 to 0x9F; the rest of the page is
// Latin-1. The five bytes that Windows leaves undefined keep their C1 value.
constexpr std::array<char16_t, 32> kWindows1252High = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021,
    0x02C6, 0x2030, 0x0160, 0x2039, 0x0152, 0x008D, 0x017D, 0x008F,
    0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022, 0x2013, 0x2014,
    0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

void AppendUtf8(std::string& out, char32_t cp) {
  if (cp < 0x80) {
    out.push_back(static_cast<char>(cp));
  } else if (cp < 0x800) {
    out.push_back(static_cast<char>(0xC0 | (cp >> 6)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else if (cp < 0x10000) {
    out.push_back(static_cast<char>(0xE0 | (cp >> 12)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  } else {
    out.push_back(static_cast<char>(0xF0 | (cp >> 18)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 12) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | ((cp >> 6) & 0x3F)));
    out.push_back(static_cast<char>(0x80 | (cp & 0x3F)));
  }
}

char32_t Windows1252CodePoint(unsigned char byte) {
  if (byte >= 0x80 && byte < 0xA0) return kWindows1252High[byte - 0x80];
  return byte;
}

// Decodes one UTF-8 sequence at text[i]. Returns its length, or 0 if the bytes
// there are not a valid, shortest-form sequence of a scalar value.
std::size_t DecodeUtf8(std::string_view text, std::size_t i, char32_t& cp) {
  const auto byte = [&](std::size_t k) { return static_cast<unsigned char>(text[k]); };
  const unsigned char lead = byte(i);
  std::size_t length;
  char32_t minimum;
  if (lead < 0x80) {
    cp = lead;
    return 1;
  } else if ((lead & 0xE0) == 0xC0) {
    length = 2, minimum = 0x80, cp = lead & 0x1F;
  } else if ((lead & 0xF0) == 0xE0) {
    length = 3, minimum = 0x800, cp = lead & 0x0F;
  } else if ((lead & 0xF8) == 0xF0) {
    length = 4, minimum = 0x10000, cp = lead & 0x07;
  } else {
    return 0;
  }
  if (i + length > text.size()) return 0;
  for (std::size_t k = 1; k < length; ++k) {
    if ((byte(i + k) & 0xC0) != 0x80) return 0;
    cp = (cp << 6) | (byte(i + k) & 0x3F);
  }
  if (cp < minimum || cp > 0x10FFFF || (cp >= 0xD800 && cp <= 0xDFFF)) return 0;
  return length;
}

// UTF-8 to UTF-16; each byte that isn't part of a valid sequence becomes the
// code point `fallback` gives for it.
template <class Fallback>
std::u16string EncodeUtf16(std::string_view text, Fallback fallback) {
  std::u16string out;
  out.reserve(text.size());
  char32_t cp;
  for (std::size_t i = 0; i < text.size();) {
    std::size_t length = DecodeUtf8(text, i, cp);
    if (length == 0) {
      cp = fallback(static_cast<unsigned char>(text[i]));
      length = 1;
    }
    if (cp >= 0x10000) {
      out.push_back(static_cast<char16_t>(0xD800 + ((cp - 0x10000) >> 10)));
      out.push_back(static_cast<char16_t>(0xDC00 + ((cp - 0x10000) & 0x3FF)));
    } else {
      out.push_back(static_cast<char16_t>(cp));
    }
    i += length;
  }
  return out;
}

// UTF-16 to UTF-8. Unpaired surrogates become U+FFFD, except that with
// `bytesFromLoneSurrogates` U+DC80 to U+DCFF become the byte they carry.
std::string DecodeUtf16(std::u16string_view text, bool bytesFromLoneSurrogates) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    char32_t cp = text[i];
    if (cp >= 0xD800 && cp <= 0xDBFF && i + 1 < text.size() && text[i + 1] >= 0xDC00 &&
        text[i + 1] <= 0xDFFF) {
      cp = 0x10000 + ((cp - 0xD800) << 10) + (text[i + 1] - 0xDC00);
      ++i;
    } else if (bytesFromLoneSurrogates && cp >= 0xDC80 && cp <= 0xDCFF) {
      out.push_back(static_cast<char>(cp - 0xDC00));
      continue;
    } else if (cp >= 0xD800 && cp <= 0xDFFF) {
      cp = 0xFFFD;
    }
    AppendUtf8(out, cp);
  }
  return out;
}

}  // namespace

bool IsValidUtf8(std::string_view bytes) {
  char32_t cp;
  for (std::size_t i = 0; i < bytes.size();) {
    const std::size_t length = DecodeUtf8(bytes, i, cp);
    if (length == 0) return false;
    i += length;
  }
  return true;
}

std::string Windows1252ToUtf8(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (char c : bytes) AppendUtf8(out, Windows1252CodePoint(static_cast<unsigned char>(c)));
  return out;
}

std::string Latin1ToUtf8(std::string_view bytes) {
  std::string out;
  out.reserve(bytes.size());
  for (char c : bytes) AppendUtf8(out, static_cast<unsigned char>(c));
  return out;
}

std::string NarrowToUtf8(std::string_view bytes) {
  if (IsValidUtf8(bytes)) return std::string(bytes);
  return Windows1252ToUtf8(bytes);
}

std::string Utf16ToUtf8(std::u16string_view text) {
  return DecodeUtf16(text, /*bytesFromLoneSurrogates=*/false);
}

std::string Utf16BytesToUtf8(std::string_view bytes, bool bigEndian) {
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    const auto first = static_cast<unsigned char>(bytes[i]);
    const auto second = static_cast<unsigned char>(bytes[i + 1]);
    units.push_back(static_cast<char16_t>(bigEndian ? (first << 8) | second : (second << 8) | first));
  }
  return Utf16ToUtf8(units);
}

std::u16string Utf8ToUtf16(std::string_view text) {
  return EncodeUtf16(text, [](unsigned char byte) { return Windows1252CodePoint(byte); });
}

std::u16string BytesToUtf16Lossless(std::string_view bytes) {
  return EncodeUtf16(bytes, [](unsigned char byte) { return static_cast<char32_t>(0xDC00 + byte); });
}

std::string Utf16ToBytesLossless(std::u16string_view text) {
  return DecodeUtf16(text, /*bytesFromLoneSurrogates=*/true);
}

std::size_t Utf16Length(std::string_view utf8) {
  std::size_t units = 0;
  char32_t cp;
  for (std::size_t i = 0; i < utf8.size();) {
    const std::size_t length = DecodeUtf8(utf8, i, cp);
    if (length == 0) {
      ++units, ++i;
      continue;
    }
    units += cp >= 0x10000 ? 2 : 1;
    i += length;
  }
  return units;
}

std::string TruncateToUtf16Units(std::string_view utf8, std::size_t maxUnits) {
  std::size_t units = 0;
  std::size_t i = 0;
  char32_t cp;
  while (i < utf8.size()) {
    std::size_t length = DecodeUtf8(utf8, i, cp);
    std::size_t needed = 1;
    if (length == 0) {
      length = 1;
    } else if (cp >= 0x10000) {
      needed = 2;
    }
    if (units + needed > maxUnits) break;
    units += needed;
    i += length;
  }
  return std::string(utf8.substr(0, i));
}

char AsciiLower(char c) { return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c; }

bool EqualsIgnoreCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i) {
    if (AsciiLower(a[i]) != AsciiLower(b[i])) return false;
  }
  return true;
}

bool StartsWithIgnoreCase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && EqualsIgnoreCase(text.substr(0, prefix.size()), prefix);
}

bool EndsWithIgnoreCase(std::string_view text, std::string_view suffix) {
  return text.size() >= suffix.size() &&
         EqualsIgnoreCase(text.substr(text.size() - suffix.size()), suffix);
}

}  // namespace platform
