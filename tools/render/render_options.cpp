#include "render_options.h"

#include <charconv>
#include <cmath>
#include <cstdlib>

namespace render {

const char* const kUsage =
    "Usage: tavrinsonic-render [options] INPUT OUTPUT.wav\n"
    "\n"
    "Plays INPUT (a media file, a playlist, or an http:// address) through the\n"
    "player's own decoders, list, mixer and equalizer into OUTPUT.wav, as fast\n"
    "as the machine allows, and prints each track, its length and the speed.\n"
    "The options replace the stored sound settings for this run only; nothing\n"
    "is written to the player's settings. The input plays once, in its order\n"
    "(shuffle and repeat are off for the run).\n"
    "\n"
    "Options:\n"
    "  --crossfade on|off      crossfade between tracks\n"
    "  --gapless on|off        gapless play (no effect while crossfade is on)\n"
    "  --trim-silence on|off   remove silence at the start and end of tracks\n"
    "  --equalizer on|off      the equalizer (on also overrides the option that\n"
    "                          keeps it off for WMA and Ogg)\n"
    "  --eq B0,B1,...,B9,PREAMP\n"
    "                          the eleven slider positions, 0 to 27 (14 is flat)\n"
    "  --extra-bass 0..4       extra bass strength, 0 off\n"
    "  --seconds N             stop after N seconds of audio (for radio streams)\n"
    "  --help                  this text\n"
    "\n"
    "The file holds what the sound card would have played, the short silence\n"
    "of each change of track included. With crossfade, gapless and trimming\n"
    "off the sounding parts are the tracks' samples one after the other.\n"
    "Tracks at another sample rate than the first go to OUTPUT-<rate>.wav.\n";

namespace {

bool ParseSwitch(const std::string& text, std::optional<bool>& target) {
  if (text == "on") {
    target = true;
  } else if (text == "off") {
    target = false;
  } else {
    return false;
  }
  return true;
}

bool ParseInteger(const std::string& text, std::int32_t low, std::int32_t high, std::int32_t& value) {
  const char* end = text.data() + text.size();
  const auto [stop, result] = std::from_chars(text.data(), end, value);
  return result == std::errc() && stop == end && !text.empty() && value >= low && value <= high;
}

bool ParseSliders(const std::string& text, std::array<std::int32_t, kEqualizerSliders>& sliders) {
  std::size_t start = 0;
  for (int i = 0; i < kEqualizerSliders; ++i) {
    const std::size_t comma = text.find(',', start);
    const bool last = i == kEqualizerSliders - 1;
    if (last != (comma == std::string::npos)) return false;
    const std::string part = text.substr(start, last ? std::string::npos : comma - start);
    if (!ParseInteger(part, 0, 27, sliders[static_cast<std::size_t>(i)])) return false;
    start = comma + 1;
  }
  return true;
}

bool ParseSeconds(const std::string& text, std::optional<double>& seconds) {
  char* end = nullptr;
  const double value = std::strtod(text.c_str(), &end);
  if (text.empty() || end != text.c_str() + text.size() || !std::isfinite(value) || value <= 0) return false;
  seconds = value;
  return true;
}

// Stores `value` as the value of `option`; false for an unknown option or a bad value.
bool TakeValue(const std::string& option, const std::string& value, RenderOptions& options) {
  if (option == "--crossfade") return ParseSwitch(value, options.crossfade);
  if (option == "--gapless") return ParseSwitch(value, options.gapless);
  if (option == "--trim-silence") return ParseSwitch(value, options.trimSilence);
  if (option == "--equalizer") return ParseSwitch(value, options.equalizer);
  if (option == "--seconds") return ParseSeconds(value, options.seconds);
  if (option == "--extra-bass") {
    std::int32_t strength = 0;
    if (!ParseInteger(value, 0, 4, strength)) return false;
    options.extraBass = strength;
    return true;
  }
  if (option == "--eq") {
    std::array<std::int32_t, kEqualizerSliders> sliders{};
    if (!ParseSliders(value, sliders)) return false;
    options.equalizerSliders = sliders;
    return true;
  }
  return false;
}

}  // namespace

std::optional<RenderOptions> ParseRenderOptions(const std::vector<std::string>& arguments,
                                                std::string& error) {
  RenderOptions options;
  std::vector<std::string> positional;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    const std::string& argument = arguments[i];
    if (argument == "--help") {
      options.help = true;
      return options;
    }
    if (argument.rfind("--", 0) != 0) {
      positional.push_back(argument);
      continue;
    }
    if (i + 1 >= arguments.size()) {
      error = argument + " needs a value";
      return std::nullopt;
    }
    if (!TakeValue(argument, arguments[i + 1], options)) {
      error = "bad option: " + argument + " " + arguments[i + 1];
      return std::nullopt;
    }
    ++i;
  }
  if (positional.size() != 2) {
    error = "expected INPUT and OUTPUT.wav";
    return std::nullopt;
  }
  options.input = positional[0];
  options.output = positional[1];
  return options;
}

}  // namespace render
