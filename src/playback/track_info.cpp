#include "playback/track_info.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string_view>

#include "platform/text.h"
#include "platform/texts.h"

namespace playback {
namespace {

constexpr std::size_t kMaxContentUnits = kTrackTextUnits - 1;

// Labels of the information text, by string id.
enum LabelId : std::uint32_t {
  kLabelTitle = 6352,
  kLabelArtist = 6353,
  kLabelAlbum = 6354,
  kLabelGenre = 6355,
  kLabelYear = 6356,
  kLabelTrackNumber = 6357,
  kLabelFileInformation = 6358,
  kLabelCodec = 6359,
  kLabelSampleRate = 6360,
  kLabelBitRate = 6361,
  kLabelDuration = 6362,
  kLabelDescription = 6363,
  kLabelStereo = 6364,
  kTextYes = 6365,
  kTextNo = 6366,
};

// The longest prefix of `text` of at most `maxUnits` units that doesn't end
// inside a surrogate pair.
std::u16string_view CutUtf16(std::u16string_view text, std::size_t maxUnits) {
  if (text.size() <= maxUnits) return text;
  std::size_t length = maxUnits;
  if (length > 0 && text[length - 1] >= 0xD800 && text[length - 1] <= 0xDBFF) --length;
  return text.substr(0, length);
}

std::u16string FromAscii(const char* text) {
  std::u16string wide;
  for (; *text != '\0'; ++text) wide.push_back(static_cast<char16_t>(static_cast<unsigned char>(*text)));
  return wide;
}

__attribute__((format(printf, 1, 2))) std::u16string Format(const char* format, ...) {
  char buffer[64];
  std::va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(buffer, sizeof buffer, format, arguments);
  va_end(arguments);
  return FromAscii(buffer);
}

// A label as the string table of the active language has it, cut to the
// 256-unit buffer it is loaded into; nullopt when it can't be loaded.
std::optional<std::u16string> Label(std::uint32_t id) {
  const std::optional<std::string> text = platform::FindText(id);
  if (!text) return std::nullopt;
  return std::u16string(CutUtf16(platform::Utf8ToUtf16(*text), kMaxContentUnits));
}

// Appends "<b>" label "</b> " value "<br>" to *text. The block grows by the
// lengths of label and value plus 13 units (the markup and a terminator). A
// failed allocation drops the line and leaves *text as it was.
void AppendLine(char16_t** text, std::uint32_t labelId, const std::u16string* value) {
  if (value == nullptr) return;
  const std::optional<std::u16string> label = Label(labelId);
  if (!label) return;
  const bool first = *text == nullptr;
  const std::size_t oldLength = first ? 0 : std::char_traits<char16_t>::length(*text);
  const std::size_t units = oldLength + label->size() + value->size() + 13;
  auto* grown = static_cast<char16_t*>(std::realloc(*text, units * sizeof(char16_t)));
  if (grown == nullptr) return;
  if (first) grown[0] = u'\0';
  *text = grown;
  const std::u16string line = u"<b>" + *label + u"</b> " + *value + u"<br>";
  std::memcpy(grown + oldLength, line.data(), line.size() * sizeof(char16_t));
  grown[oldLength + line.size()] = u'\0';
}

std::u16string DurationText(std::uint32_t durationMs) {
  const std::uint32_t seconds = durationMs / 1000;
  const std::uint32_t hours = seconds / 3600;
  if (hours != 0) {
    return Format("%d:%02d:%02d", static_cast<int>(hours), static_cast<int>(seconds / 60 - hours * 60),
                  static_cast<int>(seconds % 60));
  }
  return Format("%02d:%02d", static_cast<int>(seconds / 60), static_cast<int>(seconds % 60));
}

}  // namespace

void TrackInfo::Clear() {
  for (auto& text : texts) text.clear();
  sampleRate = 0;
  bitRate = 0;
  stereo = 0;
  durationMs = 0;
  trackNumber = kNoTrackNumber;
}

TrackInfo::~TrackInfo() {
  Clear();
}

void TrackInfo::SetSampleRate(std::uint32_t hz) {
  sampleRate = hz;
}
std::uint32_t TrackInfo::GetSampleRate() {
  return sampleRate;
}
void TrackInfo::SetBitRate(std::uint32_t bitsPerSecond) {
  bitRate = bitsPerSecond;
}
std::uint32_t TrackInfo::GetBitRate() {
  return bitRate;
}
void TrackInfo::SetStereo(std::uint32_t isStereo) {
  stereo = isStereo;
}
std::uint32_t TrackInfo::GetStereo() {
  return stereo;
}
void TrackInfo::SetTrackNumber(std::uint32_t number) {
  trackNumber = number;
}
std::uint32_t TrackInfo::GetTrackNumber() {
  return trackNumber;
}
void TrackInfo::SetDuration(std::uint32_t milliseconds) {
  durationMs = milliseconds;
}
std::uint32_t TrackInfo::GetDuration() {
  return durationMs;
}
void TrackInfo::SetYear(std::uint32_t newYear) {
  year = newYear;
}
std::uint32_t TrackInfo::GetYear() {
  return year;
}

int TrackInfo::SetGenreA(const char* text) {
  return SetNarrow(kGenre, text);
}
int TrackInfo::SetGenre(const char16_t* text) {
  return SetWide(kGenre, text);
}
int TrackInfo::GetGenre(char16_t* destination) {
  return Get(kGenre, destination);
}
int TrackInfo::SetDescriptionA(const char* text) {
  return SetNarrow(kDescription, text);
}
int TrackInfo::SetDescription(const char16_t* text) {
  return SetWide(kDescription, text);
}
int TrackInfo::GetDescription(char16_t* destination) {
  return Get(kDescription, destination);
}
int TrackInfo::SetAlbumA(const char* text) {
  return SetNarrow(kAlbum, text);
}
int TrackInfo::SetAlbum(const char16_t* text) {
  return SetWide(kAlbum, text);
}
int TrackInfo::GetAlbum(char16_t* destination) {
  return Get(kAlbum, destination);
}
int TrackInfo::SetArtistA(const char* text) {
  return SetNarrow(kArtist, text);
}
int TrackInfo::SetArtist(const char16_t* text) {
  return SetWide(kArtist, text);
}
int TrackInfo::GetArtist(char16_t* destination) {
  return Get(kArtist, destination);
}
int TrackInfo::SetTitleA(const char* text) {
  return SetNarrow(kTitle, text);
}
int TrackInfo::SetTitle(const char16_t* text) {
  return SetWide(kTitle, text);
}
int TrackInfo::GetTitle(char16_t* destination) {
  return Get(kTitle, destination);
}
int TrackInfo::SetCodecA(const char* text) {
  return SetNarrow(kCodec, text);
}
int TrackInfo::SetCodec(const char16_t* text) {
  return SetWide(kCodec, text);
}
int TrackInfo::GetCodec(char16_t* destination) {
  return Get(kCodec, destination);
}

int TrackInfo::SetNarrow(TextSlot slot, const char* text) {
  if (text == nullptr) return 0;
  // The conversion goes through a buffer of kTrackTextUnits units, which cuts
  // a longer text; the wide setter then stores what is left.
  const std::u16string wide = platform::Utf8ToUtf16(platform::NarrowToUtf8(text));
  const std::u16string cut(CutUtf16(wide, kMaxContentUnits));
  return SetWide(slot, cut.c_str());
}

int TrackInfo::SetWide(TextSlot slot, const char16_t* text) {
  texts[slot].clear();
  if (text == nullptr) return 0;
  const std::u16string_view value(text);
  if (value.empty()) return 0;
  texts[slot] = std::u16string(CutUtf16(value, kMaxContentUnits));
  return 1;
}

int TrackInfo::Get(TextSlot slot, char16_t* destination) const {
  if (destination == nullptr) return 0;
  destination[0] = u'\0';
  if (texts[slot].empty()) return 0;
  std::memcpy(destination, texts[slot].c_str(), (texts[slot].size() + 1) * sizeof(char16_t));
  return 1;
}

std::string TrackInfo::TextUtf8(TextSlot slot) const {
  return platform::Utf16ToUtf8(texts[slot]);
}

// The lines, in this order, each "<b>label</b> value<br>"; a line whose
// value is absent, or whose label the language can't give, is left out:
//   Title, Artist, Album, Description, Genre   when present
//   Year                  when strictly between 1600 and 3000
//   Track Number          unless kNoTrackNumber (0 is shown)
//   "<hr>File Information" with an empty value, always
//   Codec                 when present
//   Sample Rate  "%d kHz" (truncated) and Bitrate "%d kbps"  when not 0
//   Stereo       Yes or No, always
//   Duration     "%d:%02d:%02d" from one hour on, else "%02d:%02d"; when not 0
int TrackInfo::BuildInfoText(char16_t** text) {
  if (text == nullptr) return 0;
  const auto present = [this](TextSlot slot) { return texts[slot].empty() ? nullptr : &texts[slot]; };
  AppendLine(text, kLabelTitle, present(kTitle));
  AppendLine(text, kLabelArtist, present(kArtist));
  AppendLine(text, kLabelAlbum, present(kAlbum));
  AppendLine(text, kLabelDescription, present(kDescription));
  AppendLine(text, kLabelGenre, present(kGenre));
  if (year > 1600 && year < 3000) {
    const std::u16string value = Format("%d", static_cast<int>(year));
    AppendLine(text, kLabelYear, &value);
  }
  if (trackNumber != kNoTrackNumber) {
    const std::u16string value = Format("%d", static_cast<int>(trackNumber));
    AppendLine(text, kLabelTrackNumber, &value);
  }
  const std::u16string empty;
  AppendLine(text, kLabelFileInformation, &empty);
  AppendLine(text, kLabelCodec, present(kCodec));
  if (sampleRate != 0) {
    const std::u16string value = Format("%d kHz", static_cast<int>(sampleRate / 1000));
    AppendLine(text, kLabelSampleRate, &value);
  }
  if (bitRate != 0) {
    const std::u16string value = Format("%d kbps", static_cast<int>(bitRate / 1000));
    AppendLine(text, kLabelBitRate, &value);
  }
  const std::u16string stereoText =
      platform::Utf8ToUtf16(platform::LoadText(stereo != 0 ? kTextYes : kTextNo));
  AppendLine(text, kLabelStereo, &stereoText);
  if (durationMs != 0) {
    const std::u16string value = DurationText(durationMs);
    AppendLine(text, kLabelDuration, &value);
  }
  return 1;
}

}  // namespace playback
