#include "decoders/bare_libmad.h"

#include <mad.h>

#include <algorithm>
#include <cstdlib>

namespace decoders_test {
namespace {

// The rounding of libmad's example player (minimad): round, clip, shift.
std::int16_t Scale(mad_fixed_t sample) {
  sample += mad_fixed_t{1} << (MAD_F_FRACBITS - 16);
  if (sample >= MAD_F_ONE) sample = MAD_F_ONE - 1;
  if (sample < -MAD_F_ONE) sample = -MAD_F_ONE;
  return static_cast<std::int16_t>(sample >> (MAD_F_FRACBITS + 1 - 16));
}

}  // namespace

std::vector<std::int16_t> BareLibmadDecode(const Bytes& file) {
  Bytes guarded(file);
  guarded.resize(file.size() + MAD_BUFFER_GUARD, 0);
  mad_stream stream;
  mad_frame frame;
  mad_synth synth;
  mad_stream_init(&stream);
  mad_frame_init(&frame);
  mad_synth_init(&synth);
  mad_stream_options(&stream, MAD_OPTION_IGNORECRC);
  mad_stream_buffer(&stream, guarded.data(), guarded.size());
  std::vector<std::int16_t> pcm;
  for (;;) {
    if (mad_frame_decode(&frame, &stream) != 0) {
      if (MAD_RECOVERABLE(stream.error)) continue;
      break;  // MAD_ERROR_BUFLEN: the end
    }
    mad_synth_frame(&synth, &frame);
    for (unsigned i = 0; i < synth.pcm.length; ++i) {
      for (unsigned channel = 0; channel < synth.pcm.channels; ++channel) {
        pcm.push_back(Scale(synth.pcm.samples[channel][i]));
      }
    }
  }
  mad_synth_finish(&synth);
  mad_frame_finish(&frame);
  mad_stream_finish(&stream);
  return pcm;
}

std::size_t KeptEnd(const std::vector<std::int16_t>& decoded) {
  const auto loud = std::find_if(decoded.rbegin(), decoded.rend(), [](std::int16_t s) { return std::abs(s) >= 500; });
  return loud == decoded.rend() ? decoded.size() : static_cast<std::size_t>(decoded.rend() - loud) - 1;
}

std::vector<std::int16_t> AsQueued(const std::vector<std::int16_t>& decoded, int channels) {
  const auto end = decoded.begin() + static_cast<std::ptrdiff_t>(KeptEnd(decoded));
  auto first = std::find_if(decoded.begin(), end, [](std::int16_t s) { return s != 0; });
  const auto start = static_cast<std::size_t>(first - decoded.begin()) / channels * channels;
  return std::vector<std::int16_t>(decoded.begin() + static_cast<std::ptrdiff_t>(start), end);
}

}  // namespace decoders_test
