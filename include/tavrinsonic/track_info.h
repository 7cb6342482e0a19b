// The record through which a format reader hands over what it knows of a file.
//
// Six numbers and six texts behind a fixed table of 33 virtual operations.
// The table is a binary contract with the format readers, the AAC plug-in
// among them, which is a separately built shared library: the operations keep
// their order, and every argument is a plain C type (integers, `const char*`,
// `const char16_t*`, buffers the caller owns), so that host and plug-in built
// by the same compiler agree on them. New operations go behind the last one.
//
// Texts:
//  - A "wide" text is UTF-16, terminated by a zero unit.
//  - A "narrow" text (the setters ending in A, which stand first in each
//    triple) is UTF-8 when it is valid UTF-8, otherwise Windows-1252.
//  - A stored text holds at most kTrackTextUnits UTF-16 units counting its
//    terminator, so 255 units of content; longer values are cut at the last
//    whole character that fits. An empty value is never stored: the slot is
//    absent then.
//  - A getter's destination must hold kTrackTextUnits units.
//
// Threads: a record lives with one caller and isn't shared.
//
// This header is public: the AAC plug-in and any other format reader built
// apart from the program include it (see tavrinsonic/format_reader.h). A
// plug-in only calls the virtual operations of a record the program hands
// it; it never makes or destroys one.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace playback {

// Track number that means "unknown".
inline constexpr std::uint32_t kNoTrackNumber = 100000;
// UTF-16 units a text of the record holds, terminator included.
inline constexpr std::size_t kTrackTextUnits = 256;

class TrackInfo {
 public:
  enum TextSlot : int { kGenre = 0, kDescription, kAlbum, kArtist, kTitle, kCodec, kTextSlotCount };

  TrackInfo() = default;
  TrackInfo(const TrackInfo&) = delete;
  TrackInfo& operator=(const TrackInfo&) = delete;

  // 1. Drops every text and zeroes the numbers, except that the track number
  //    becomes kNoTrackNumber and the year keeps its value.
  virtual void Clear();
  // 2. Does what Clear does.
  virtual ~TrackInfo();
  // 3 to 12. Hz; bits per second; non-zero for stereo; kNoTrackNumber when
  //    unknown; milliseconds.
  virtual void SetSampleRate(std::uint32_t hz);
  virtual std::uint32_t GetSampleRate();
  virtual void SetBitRate(std::uint32_t bitsPerSecond);
  virtual std::uint32_t GetBitRate();
  virtual void SetStereo(std::uint32_t stereo);
  virtual std::uint32_t GetStereo();
  virtual void SetTrackNumber(std::uint32_t number);
  virtual std::uint32_t GetTrackNumber();
  virtual void SetDuration(std::uint32_t milliseconds);
  virtual std::uint32_t GetDuration();
  // 13 to 27, and 30 to 32: per text a narrow setter, a wide setter and a
  // getter. Setters return 1 when a text was stored, 0 for a null or empty
  // value; a wide setter drops the old text first, even when it then stores
  // nothing, while a null narrow value leaves the slot alone. Getters clear
  // the destination's first unit and return 1 when they copied a text, 0 for
  // a null destination or an absent text.
  virtual int SetGenreA(const char* text);
  virtual int SetGenre(const char16_t* text);
  virtual int GetGenre(char16_t* destination);
  virtual int SetDescriptionA(const char* text);
  virtual int SetDescription(const char16_t* text);
  virtual int GetDescription(char16_t* destination);
  virtual int SetAlbumA(const char* text);
  virtual int SetAlbum(const char16_t* text);
  virtual int GetAlbum(char16_t* destination);
  virtual int SetArtistA(const char* text);
  virtual int SetArtist(const char16_t* text);
  virtual int GetArtist(char16_t* destination);
  virtual int SetTitleA(const char* text);
  virtual int SetTitle(const char16_t* text);
  virtual int GetTitle(char16_t* destination);
  // 28, 29.
  virtual void SetYear(std::uint32_t year);
  virtual std::uint32_t GetYear();
  virtual int SetCodecA(const char* text);
  virtual int SetCodec(const char16_t* text);
  virtual int GetCodec(char16_t* destination);
  // 33. Appends the information text to the UTF-16 string in *text (null to
  //     start a new one), growing it with realloc; the caller frees it with
  //     free. Returns 0 for a null `text`, else 1. See track_info.cpp.
  virtual int BuildInfoText(char16_t** text);

  // For the host's own code, outside the contract: a text as UTF-8, empty
  // when absent.
  std::string TextUtf8(TextSlot slot) const;

 private:
  int SetNarrow(TextSlot slot, const char* text);
  int SetWide(TextSlot slot, const char16_t* text);
  int Get(TextSlot slot, char16_t* destination) const;

  std::uint32_t sampleRate = 0;
  std::uint32_t bitRate = 0;
  std::uint32_t stereo = 0;
  std::uint32_t trackNumber = kNoTrackNumber;
  std::uint32_t durationMs = 0;
  std::uint32_t year = 0;
  std::u16string texts[kTextSlotCount];  // empty: absent
};

}  // namespace playback
