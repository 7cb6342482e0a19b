// The MP3 frame back-end over libmad.
//
// The player on the phone had two back-ends: one that drove the platform's
// MPEG audio decoder through its DirectX Media Object interface (media types,
// media buffers, COM), and one that loaded an outside library, "mp3mad", at
// run time. Neither has a counterpart here. libmad is linked into the player
// and always present, so there is nothing to load or to probe, and no object
// model to speak to: this one back-end calls libmad directly.
//
// How the contract of Mp3BackEnd maps onto libmad:
// - One whole frame per decompress. Each call hands libmad the caller's bytes
//   as a fresh buffer that starts at the frame, so the caller's position is
//   the one that counts and libmad never searches on its own.
// - libmad reads up to MAD_BUFFER_GUARD bytes behind a frame. When the input
//   holds the whole frame but not those bytes (the last frame of a file), the
//   frame is decoded from a copy followed by zeros. Give the bytes behind a
//   frame whenever there are any: libmad reads the next frame's header to
//   learn how much of this frame's data the next one borrows.
// - The bit reservoir of layer III lives in libmad's stream between calls.
//   When a call refuses its input (-1), the caller goes on somewhere else, so
//   the reservoir no longer fits what follows and is emptied: a frame that
//   borrows from missing data then plays as silence instead of as noise.
// - A frame whose header is sound but whose data is damaged (or borrows from
//   data that isn't there, as after a seek) is concealed: the frame is
//   consumed and gives a frame's length of silence, so timing holds. Only
//   input without a decodable header at its start gives -1, consuming
//   nothing.
// - A sound header whose frame isn't whole in the input answers 1 (more
//   input wanted), consuming nothing: a stream's pump keeps those bytes for
//   its next read. A file's pump, which always holds a whole frame but at
//   the end of the file, takes it as a refusal.
// - CRC words are not checked (MAD_OPTION_IGNORECRC), as common decoders
//   don't: a frame with a wrong CRC still plays.
// - Output has the channels of the format given to setformat (cut to two):
//   a mono frame is copied to both sides, a stereo frame into a mono stream
//   is the mean of its sides. Without setformat, each frame keeps its own.
// - Samples are rounded to the nearest 16-bit value (halves upward) and
//   clipped at full scale; no dither. That keeps the result within about one
//   unit of a floating-point reference decoder.
// - seteq does nothing: the output engine's equalizer filters the PCM of
//   every format, MP3 included.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "decoders/mp3_back_end.h"

namespace decoders {

class LibmadBackEnd final : public Mp3BackEnd {
 public:
  LibmadBackEnd();
  ~LibmadBackEnd() override;

  int decompress(const std::uint8_t* input, std::uint32_t inputBytes, std::uint8_t* output,
                 std::uint32_t outputSize, std::uint32_t* outputBytes, std::uint32_t* consumedBytes,
                 int bitsPerSample) override;
  void seteq(int on, int preamp, const std::array<int, kEqualizerBands>& bands) override;
  bool close(int flag) override;
  bool init(int flag) override;
  // Accepts format tag 85 with at least one channel and a rate; anything else
  // is refused and closes the back-end, so that decompress answers -2 and the
  // track ends instead of playing in a format nobody asked for.
  bool setformat(const Mp3WaveFormat& format) override;
  // Keeps the format; the caller gives it again anyway.
  void reset() override;

 private:
  struct Codec;
  enum class Outcome { kDecoded, kDamaged, kShort, kRefused };

  Outcome DecodeFrame(const std::uint8_t* input, std::uint32_t inputBytes, std::uint32_t& frameBytes);
  Outcome DecodeBuffer(const std::uint8_t* bytes, std::uint32_t length, std::uint32_t& frameBytes);
  std::uint32_t DeliverPcm(std::uint8_t* output, std::uint32_t outputSize);
  std::uint32_t TakeHeldOutput(std::uint8_t* output, std::uint32_t outputSize);

  static constexpr std::uint32_t kMaxFrameSamples = 1152;
  static constexpr std::uint32_t kMaxOutputBytes = kMaxFrameSamples * 2 * sizeof(std::int16_t);
  static constexpr std::uint32_t kGuardedInputLimit = 8192;
  static constexpr std::uint32_t kGuardBytes = 8;  // MAD_BUFFER_GUARD

  std::unique_ptr<Codec> codec;  // null while closed
  unsigned outputChannels = 0;   // 0: each frame's own
  std::array<std::uint8_t, kMaxOutputBytes> heldOutput{};
  std::uint32_t heldBytes = 0;
  std::uint32_t heldOffset = 0;
  std::array<std::uint8_t, kGuardedInputLimit + kGuardBytes> guardedInput{};
};

}  // namespace decoders
