// The frame back-end of the MP3 decoder.
//
// Mp3Decoder finds MPEG audio frames in a file or stream; it doesn't decode
// them. An Mp3BackEnd does: handed bytes that begin at a frame header, it
// decodes that one frame into interleaved 16-bit PCM and says how many bytes
// the frame took.
//
// Protocol, per track:
//   1. init(0), then setformat with the stream's Mp3WaveFormat.
//   2. decompress, repeatedly. The caller removes the consumed bytes from the
//      front of its buffer and calls again at the next frame.
//   3. At a seek: reset, then setformat again.
//   4. close(1) at the end of the track. init opens the back-end again.
//
// Threads: a back-end has no lock of its own. Its owner calls it from the
// decode thread, and from the window thread only while holding the lock
// that also guards the decode thread's calls.
//
// The operations keep the system's slot order; their names are the system's.
#pragma once

#include <array>
#include <cstdint>

namespace decoders {

inline constexpr std::uint16_t kMpegLayer3FormatTag = 85;

// The wave format record the decoder passes to setformat: the 30 bytes of the
// platform's MPEGLAYER3WAVEFORMAT, all fields given (a wire format for a
// codec). Built by MakeMp3WaveFormat.
#pragma pack(push, 2)
struct Mp3WaveFormat {
  std::uint16_t formatTag;              // 85
  std::uint16_t channels;               // the stream's channels
  std::uint32_t samplesPerSecond;       // the stream's rate, Hz
  std::uint32_t averageBytesPerSecond;  // 1000, whatever the file's bitrate
  std::uint16_t blockAlign;             // 1
  std::uint16_t bitsPerSample;          // 0
  std::uint16_t extraSize;              // 12: the bytes that follow
  std::uint16_t id;                     // 1
  std::uint32_t flags;                  // 2
  std::uint16_t blockSize;              // 417
  std::uint16_t framesPerBlock;         // 1
  std::uint16_t codecDelay;             // 0
};
#pragma pack(pop)
static_assert(sizeof(Mp3WaveFormat) == 30);

Mp3WaveFormat MakeMp3WaveFormat(std::uint16_t channels, std::uint32_t sampleRate);

inline constexpr int kEqualizerBands = 10;

class Mp3BackEnd {
 public:
  // Results of decompress.
  static constexpr int kDecoded = 0;       // a frame was decoded (or held output handed out)
  static constexpr int kNeedsInput = 1;    // the back-end wants more input
  static constexpr int kUndecodable = -1;  // no decodable frame at the start of the input
  static constexpr int kNoCodec = -2;      // not open: ends the track

  Mp3BackEnd() = default;
  Mp3BackEnd(const Mp3BackEnd&) = delete;
  Mp3BackEnd& operator=(const Mp3BackEnd&) = delete;

  // 1. Decodes the frame at input[0]. `outputBytes` receives the PCM bytes
  //    written to `output` (interleaved 16-bit samples, at most `outputSize`
  //    bytes), `consumedBytes` the input bytes used; both are zeroed first.
  //    PCM that doesn't fit comes with the next call, before any new frame is
  //    decoded, and that call consumes nothing. `bitsPerSample` is always 16.
  //    A block of channels * 9216 bytes always holds a frame's output.
  virtual int decompress(const std::uint8_t* input, std::uint32_t inputBytes, std::uint8_t* output,
                         std::uint32_t outputSize, std::uint32_t* outputBytes, std::uint32_t* consumedBytes,
                         int bitsPerSample) = 0;
  // 2. An equalizer inside the back-end: `on` 0 or 1, `preamp` and the ten
  //    bands 0 to 62 with 31 neutral. A back-end without one ignores it.
  virtual void seteq(int on, int preamp, const std::array<int, kEqualizerBands>& bands) = 0;
  // 3. Ends decoding and releases the codec; `flag` has no meaning. True.
  virtual bool close(int flag) = 0;
  // 4. Makes the codec ready (`flag` is 0); true when it is.
  virtual bool init(int flag) = 0;
  // 5. Tells the back-end the stream's format; true when accepted.
  virtual bool setformat(const Mp3WaveFormat& format) = 0;
  // 6. Drops all state of the stream that was being decoded.
  virtual void reset() = 0;
  // 7.
  virtual ~Mp3BackEnd() = default;
};

}  // namespace decoders
