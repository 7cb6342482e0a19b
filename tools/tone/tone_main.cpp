// tavrinsonic-tone: plays a sine tone through the output engine, the way a
// decoder feeds it: a held stream, half a queue of prefill, play, the rest,
// the end mark. By default through the sound device (SDL), so that a person
// hears whether the output works; with --capture through the capture device,
// and then it prints what the device was given and whether that is exactly
// the tone that was written.
#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

#include "platform/wave_out.h"
#include "platform/wave_out_capture.h"
#include "playback/audio_output.h"

namespace {

struct Options {
  bool capture = false;
  double frequency = 440.0;
  std::uint32_t sampleRate = 44100;
  double seconds = 1.0;
};

constexpr double kLevel = 0.3;  // about -10 dB below full scale

void PrintUsage() {
  std::printf(
      "Usage: tavrinsonic-tone [--capture] [--frequency HZ] [--rate HZ] [--seconds S]\n"
      "Plays a tone (440 Hz, 1 s, 44100 Hz stereo by default) through the sound device,\n"
      "or with --capture through the capture device, and says what was played.\n");
}

bool ParseOptions(int argc, char** argv, Options& options) {
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    const bool hasValue = i + 1 < argc;
    if (argument == "--capture") {
      options.capture = true;
    } else if (argument == "--frequency" && hasValue) {
      options.frequency = std::atof(argv[++i]);
    } else if (argument == "--rate" && hasValue) {
      options.sampleRate = static_cast<std::uint32_t>(std::atol(argv[++i]));
    } else if (argument == "--seconds" && hasValue) {
      options.seconds = std::atof(argv[++i]);
    } else {
      return false;
    }
  }
  return options.frequency > 0 && options.sampleRate >= 1000 && options.sampleRate <= 384000 &&
         options.seconds > 0 && options.seconds <= 60;
}

std::vector<std::int16_t> MakeTone(const Options& options) {
  const auto frames = static_cast<std::size_t>(options.seconds * options.sampleRate);
  std::vector<std::int16_t> tone(2 * frames);
  for (std::size_t frame = 0; frame < frames; ++frame) {
    const double phase = 2 * std::numbers::pi * options.frequency * static_cast<double>(frame) / options.sampleRate;
    const auto sample = static_cast<std::int16_t>(std::lround(kLevel * 32767 * std::sin(phase)));
    tone[2 * frame] = sample;
    tone[2 * frame + 1] = sample;
  }
  return tone;
}

template <class Condition>
bool WaitFor(Condition condition, int limitMs) {
  for (int waited = 0; !condition(); waited += 5) {
    if (waited >= limitMs) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  return true;
}

// Writes the tone as a decoder does. False if the stream failed on the way.
bool Play(playback::AudioOutput& output, std::uint32_t stream, const std::vector<std::int16_t>& tone) {
  const std::uint32_t prefill = std::min<std::uint32_t>(output.QueueCapacity(stream) / 2,
                                                        static_cast<std::uint32_t>(tone.size()));
  std::uint32_t position = 0;
  bool playing = false;
  while (position < tone.size()) {
    if (!playing && position >= prefill) {
      output.ControlStream(stream, playback::kStreamPlay, 0);
      playing = true;
    }
    const std::uint32_t chunk = std::min<std::uint32_t>(8192, static_cast<std::uint32_t>(tone.size()) - position);
    if (!output.WaitForRoom(stream, chunk)) {
      std::this_thread::sleep_for(std::chrono::milliseconds(10));
      continue;
    }
    if (!output.WriteStream(stream, tone.data() + position, chunk)) return false;
    position += chunk;
  }
  output.WriteStream(stream, nullptr, 0);
  if (!playing) output.ControlStream(stream, playback::kStreamPlay, 0);
  return true;
}

void Report(const platform::CaptureTap& tap, const std::vector<std::int16_t>& tone, const Options& options) {
  const std::vector<std::int16_t> played = tap.Samples();
  std::printf("captured %zu frames at %u Hz, %d channels\n", played.size() / 2, tap.SampleRate(), tap.Channels());
  const auto firstSound = std::find_if(played.begin(), played.end(), [](std::int16_t s) { return s != 0; });
  if (firstSound == played.end()) {
    std::printf("the capture is silent\n");
    return;
  }
  // A stream starts on a device block, and the tone's first frame is 0.
  const std::size_t start = static_cast<std::size_t>(firstSound - played.begin()) / playback::kBlockSamples *
                            playback::kBlockSamples;
  const bool whole = played.size() - start >= tone.size();
  const bool exact = whole && std::equal(tone.begin(), tone.end(), played.begin() + static_cast<std::ptrdiff_t>(start));
  double sumOfSquares = 0;
  int peak = 0;
  // Rising zero crossings of the left channel give the frequency.
  std::size_t crossings = 0;
  std::size_t firstCrossing = 0;
  std::size_t lastCrossing = 0;
  const std::size_t end = std::min(played.size(), start + tone.size());
  for (std::size_t i = start; i < end; i += 2) {
    const int left = played[i];
    sumOfSquares += static_cast<double>(left) * left;
    peak = std::max(peak, std::abs(left));
    if (i >= start + 2 && played[i - 2] < 0 && left >= 0) {
      if (crossings++ == 0) firstCrossing = i;
      lastCrossing = i;
    }
  }
  const double frames = static_cast<double>(end - start) / 2;
  const double rms = std::sqrt(sumOfSquares / frames) / 32768.0;
  const double cycleFrames = crossings > 1 ? static_cast<double>(lastCrossing - firstCrossing) / 2 / (crossings - 1) : 0;
  std::printf("tone starts at frame %zu, after %.3f s of the device's silence\n", start / 2,
              static_cast<double>(start / 2) / tap.SampleRate());
  std::printf("left channel: peak %d, level %.1f dBFS, %.1f Hz\n", peak, 20 * std::log10(rms),
              cycleFrames > 0 ? tap.SampleRate() / cycleFrames : 0.0);
  std::printf("the captured samples %s the %.0f Hz tone that was written\n",
              exact ? "are exactly" : "differ from", options.frequency);
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  if (!ParseOptions(argc, argv, options)) {
    PrintUsage();
    return 2;
  }
  std::shared_ptr<platform::CaptureDriver> capture;
  if (options.capture) {
    capture = std::make_shared<platform::CaptureDriver>(
        platform::CaptureOptions{platform::CapturePace::kUnpaced, false, 1});
    platform::SetWaveOutDriver(capture);
  }

  const std::vector<std::int16_t> tone = MakeTone(options);
  auto output = std::make_unique<playback::AudioOutput>();
  const std::uint32_t capacity = 2 * options.sampleRate * 2;  // two seconds, as a decoder asks
  const std::uint32_t stream = output->OpenStream(0, 1, options.sampleRate, 2, capacity);
  if (stream == playback::kInvalidHandle) {
    std::fprintf(stderr, "tavrinsonic-tone: no sound device could be opened\n");
    return 1;
  }
  std::shared_ptr<platform::CaptureTap> tap = capture ? capture->Tap(0) : nullptr;
  const int resets = tap ? tap->Resets() : 0;
  if (!Play(*output, stream, tone)) {
    std::fprintf(stderr, "tavrinsonic-tone: the stream ended early\n");
    return 1;
  }
  const int limitMs = static_cast<int>(options.seconds * 1000) + 10000;
  WaitFor([&] { return output->StreamCount() == 0; }, limitMs);
  if (tap) {
    // The device goes idle once it has played everything it was given.
    WaitFor([&] { return tap->Resets() > resets; }, 10000);
    Report(*tap, tone, options);
  } else {
    // What the device still holds: its buffers, about 1.1 s at 44100 Hz.
    const int bufferMs = playback::AudioOutput::BuffersForRate(options.sampleRate) *
                         static_cast<int>(playback::kBlockSamples / 2 * 1000 / options.sampleRate);
    std::this_thread::sleep_for(std::chrono::milliseconds(bufferMs + 200));
    std::printf("played %.1f s of %.0f Hz at %u Hz through the sound device\n", options.seconds,
                options.frequency, options.sampleRate);
  }
  output.reset();
  return 0;
}
