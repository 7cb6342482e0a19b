#include "decoders/track_texts.h"

#include <cstdio>

#include "platform/text.h"

namespace decoders {

std::string CutText(std::string_view text, std::size_t units) {
  return platform::TruncateToUtf16Units(text, units);
}

std::string FileNameOf(const std::string& path) {
  const std::size_t slash = path.find_last_of('/');
  std::string name = CutText(slash == std::string::npos ? path : path.substr(slash + 1), 260);
  const std::size_t dot = name.find_last_of('.');
  if (dot != std::string::npos) name.resize(dot);
  return name;
}

std::string JoinedTitle(const std::string& first, const std::string& second) {
  return CutText(first + " - " + second);
}

void InfoText::Line(const char* label, std::string_view value) {
  if (full) return;
  const std::string prefix = std::string("<b>") + label + "</b> ";
  const std::size_t markup = platform::Utf16Length(prefix) + 4;
  const std::size_t valueUnits = platform::Utf16Length(value);
  if (units + markup + valueUnits > kInfoTextUnits) {
    full = true;
    if (units + markup > kInfoTextUnits) return;
    const std::string cut = CutText(value, kInfoTextUnits - units - markup);
    text += prefix + cut + "<br>";
    units += markup + platform::Utf16Length(cut);
    return;
  }
  text += prefix;
  text += value;
  text += "<br>";
  units += markup + valueUnits;
}

void InfoText::Number(const char* label, long long value, const char* unit) {
  Line(label, std::to_string(value) + unit);
}

void InfoText::Format(std::uint32_t durationMs, const playback::FormatSummary& summary,
                      std::uint32_t channelCount) {
  const std::uint32_t seconds = durationMs / 1000;
  char time[48];
  std::snprintf(time, sizeof time, "%02u:%02u:%02u", seconds / 3600, seconds / 60 % 60, seconds % 60);
  Line("Total play time:", time);
  Number("Bitrate:", summary.bitRate, " kbps");
  Number("Sampling Rate:", summary.sampleRate, " Hz");
  Number("Channels:", channelCount != 0 ? channelCount : summary.stereo != 0 ? 2 : 1);
}

}  // namespace decoders
