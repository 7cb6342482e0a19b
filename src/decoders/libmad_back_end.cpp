#include "decoders/libmad_back_end.h"

#include <mad.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "decoders/mp3_frame_header.h"

namespace decoders {

static_assert(MAD_BUFFER_GUARD == 8, "the guard copy is sized for libmad's guard");

// libmad's three stages, alive from init to close.
struct LibmadBackEnd::Codec {
  mad_stream stream;
  mad_frame frame;
  mad_synth synth;

  Codec() {
    mad_stream_init(&stream);
    mad_frame_init(&frame);
    mad_synth_init(&synth);
    mad_stream_options(&stream, MAD_OPTION_IGNORECRC);
  }
  ~Codec() {
    mad_synth_finish(&synth);
    mad_frame_finish(&frame);
    mad_stream_finish(&stream);
  }
  Codec(const Codec&) = delete;
  Codec& operator=(const Codec&) = delete;
};

namespace {

constexpr mad_fixed_t kHalfStep = mad_fixed_t{1} << (MAD_F_FRACBITS - 16);

// libmad's samples are fixed point with MAD_F_FRACBITS fraction bits, full
// scale at +-MAD_F_ONE. Rounded to nearest with halves upward, then clipped.
// The tests compare with mpg123's floating-point decoder.
inline std::int16_t ToPcm16(mad_fixed_t sample) {
  if (sample >= MAD_F_ONE - kHalfStep) return 32767;
  if (sample < -MAD_F_ONE) return -32768;
  return static_cast<std::int16_t>((sample + kHalfStep) >> (MAD_F_FRACBITS + 1 - 16));
}

inline void Store(std::uint8_t* output, std::size_t index, std::int16_t sample) {
  std::memcpy(output + index * sizeof(std::int16_t), &sample, sizeof(sample));
}

// Interleaves the synthesized frame into `channels` channels at `output`.
void ConvertPcm(const mad_pcm& pcm, unsigned channels, std::uint8_t* output) {
  const mad_fixed_t* left = pcm.samples[0];
  const mad_fixed_t* right = pcm.channels > 1 ? pcm.samples[1] : pcm.samples[0];
  const std::size_t length = pcm.length;
  if (channels == 2) {
    for (std::size_t i = 0; i < length; ++i) {
      Store(output, 2 * i, ToPcm16(left[i]));
      Store(output, 2 * i + 1, ToPcm16(right[i]));
    }
  } else if (pcm.channels == 1) {
    for (std::size_t i = 0; i < length; ++i) Store(output, i, ToPcm16(left[i]));
  } else {  // a stereo frame into a mono stream
    for (std::size_t i = 0; i < length; ++i) Store(output, i, ToPcm16(left[i] / 2 + right[i] / 2));
  }
}

// Errors of libmad's layer decoders (0x02xx) come after a sound header, so
// the frame's length is known; the 0x01xx errors are the header's own.
bool IsFrameDataError(mad_error error) { return (error & 0xff00) == 0x0200; }

}  // namespace

LibmadBackEnd::LibmadBackEnd() = default;
LibmadBackEnd::~LibmadBackEnd() = default;

int LibmadBackEnd::decompress(const std::uint8_t* input, std::uint32_t inputBytes, std::uint8_t* output,
                              std::uint32_t outputSize, std::uint32_t* outputBytes,
                              std::uint32_t* consumedBytes, int bitsPerSample) {
  if (!codec) return kNoCodec;
  if (consumedBytes) *consumedBytes = 0;
  if (!outputBytes) return kDecoded;
  *outputBytes = 0;
  if (!output) outputSize = 0;
  if (heldBytes != 0) {
    *outputBytes = TakeHeldOutput(output, outputSize);
    return kDecoded;
  }
  if (bitsPerSample != 16 || !input || inputBytes == 0) return kUndecodable;

  std::uint32_t frameBytes = 0;
  switch (DecodeFrame(input, inputBytes, frameBytes)) {
    case Outcome::kDecoded:
      break;
    case Outcome::kDamaged:
      mad_frame_mute(&codec->frame);
      break;
    case Outcome::kShort:
      // A sound header whose frame runs past the input: the rest is still to
      // come (a stream between two reads). The reservoir stays, since the
      // same frame comes back whole.
      if (inputBytes >= kMp3HeaderBytes) {
        const std::optional<Mp3FrameHeader> header = ParseMp3FrameHeader(input);
        if (header && header->frameBytes > inputBytes) return kNeedsInput;
      }
      codec->stream.md_len = 0;
      return kUndecodable;
    case Outcome::kRefused:
      // The caller will go on elsewhere; what libmad kept of the bit
      // reservoir belongs to frames that won't follow.
      codec->stream.md_len = 0;
      return kUndecodable;
  }
  mad_synth_frame(&codec->synth, &codec->frame);
  *outputBytes = DeliverPcm(output, outputSize);
  if (consumedBytes) *consumedBytes = frameBytes;
  return kDecoded;
}

LibmadBackEnd::Outcome LibmadBackEnd::DecodeFrame(const std::uint8_t* input, std::uint32_t inputBytes,
                                                  std::uint32_t& frameBytes) {
  const Outcome outcome = DecodeBuffer(input, inputBytes, frameBytes);
  if (outcome != Outcome::kShort || inputBytes > kGuardedInputLimit) return outcome;
  // Perhaps the frame is whole and only the guard behind it is missing.
  std::memcpy(guardedInput.data(), input, inputBytes);
  std::memset(guardedInput.data() + inputBytes, 0, kGuardBytes);
  return DecodeBuffer(guardedInput.data(), inputBytes + kGuardBytes, frameBytes);
}

LibmadBackEnd::Outcome LibmadBackEnd::DecodeBuffer(const std::uint8_t* bytes, std::uint32_t length,
                                                   std::uint32_t& frameBytes) {
  mad_stream& stream = codec->stream;
  mad_stream_buffer(&stream, bytes, length);
  const bool decoded = mad_frame_decode(&codec->frame, &stream) == 0;
  if (!decoded && stream.error == MAD_ERROR_BUFLEN) return Outcome::kShort;
  if (!decoded && !IsFrameDataError(stream.error)) return Outcome::kRefused;
  const std::ptrdiff_t taken = stream.next_frame - bytes;
  if (stream.this_frame != bytes || taken <= 0 || taken > static_cast<std::ptrdiff_t>(length)) {
    return Outcome::kRefused;
  }
  frameBytes = static_cast<std::uint32_t>(taken);
  return decoded ? Outcome::kDecoded : Outcome::kDamaged;
}

std::uint32_t LibmadBackEnd::DeliverPcm(std::uint8_t* output, std::uint32_t outputSize) {
  const mad_pcm& pcm = codec->synth.pcm;
  const unsigned channels = outputChannels != 0 ? outputChannels : std::min<unsigned>(pcm.channels, 2);
  const std::uint32_t bytes = pcm.length * channels * sizeof(std::int16_t);
  if (bytes > heldOutput.size()) return 0;  // libmad makes at most 1152 samples a frame
  if (bytes <= outputSize) {
    ConvertPcm(pcm, channels, output);
    return bytes;
  }
  ConvertPcm(pcm, channels, heldOutput.data());
  heldBytes = bytes;
  heldOffset = 0;
  return TakeHeldOutput(output, outputSize);
}

std::uint32_t LibmadBackEnd::TakeHeldOutput(std::uint8_t* output, std::uint32_t outputSize) {
  const std::uint32_t count = std::min(outputSize, heldBytes - heldOffset);
  if (count != 0) std::memcpy(output, heldOutput.data() + heldOffset, count);
  heldOffset += count;
  if (heldOffset == heldBytes) heldBytes = heldOffset = 0;
  return count;
}

void LibmadBackEnd::seteq(int /*on*/, int /*preamp*/, const std::array<int, kEqualizerBands>& /*bands*/) {}

bool LibmadBackEnd::close(int /*flag*/) {
  codec.reset();
  outputChannels = 0;
  heldBytes = heldOffset = 0;
  return true;
}

bool LibmadBackEnd::init(int /*flag*/) {
  if (!codec) codec.reset(new (std::nothrow) Codec());
  return codec != nullptr;
}

bool LibmadBackEnd::setformat(const Mp3WaveFormat& format) {
  if (!codec) return false;
  if (format.formatTag != kMpegLayer3FormatTag || format.channels == 0 || format.samplesPerSecond == 0) {
    close(0);
    return false;
  }
  outputChannels = std::min<unsigned>(format.channels, 2);
  return true;
}

void LibmadBackEnd::reset() {
  if (!codec) return;
  codec.reset();
  codec.reset(new (std::nothrow) Codec());
  heldBytes = heldOffset = 0;
}

}  // namespace decoders
