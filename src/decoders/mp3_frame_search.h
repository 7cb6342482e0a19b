// Finding MPEG audio frames in a byte source, and what the MP3 decoder
// learns of a file when it opens it.
//
// Every operation reads through the source's own position (Read and Seek),
// as the decoder's file is shared with the window thread: the caller holds
// the decoder's seekLock around them. Nothing here reads the whole file
// unless the file gives no frame to stop at: opening a long MP3 reads its
// leading tag header and the headers of at most 512 frames.
#pragma once

#include <cstdint>

#include "decoders/mp3_frame_header.h"

namespace playback {
class ByteSource;
}

namespace decoders {

// What the sync searches return when nothing is found (ByteSource's
// kSeekFailed).
inline constexpr std::int64_t kNoFrame = 0x7FFFFFFFFFFFFFFF;

// The sync search. From the source's present position, reads blocks of
// 4096 bytes and stops at the first byte that begins a header (with
// `match`: a header of that version and layer). At position 0 a leading
// ID3v2 tag is skipped by its declared length. Returns the header's offset
// with the source moved there, or kNoFrame (the source is then somewhere
// behind where the search began).
std::int64_t FindFrameSync(playback::ByteSource& source, const Mp3FrameMatch* match = nullptr);

// Whether the source holds MPEG audio: it begins with "ID3" or a frame
// header, or is a RIFF file of form "RMP3", or a RIFF "WAVE" whose "fmt "
// chunk comes first with format tag 85; failing all that, any header in the
// whole file is enough. Leaves the source at 0, or at the header found.
bool IsMpegAudio(playback::ByteSource& source);

// The seek's check of a candidate frame: from the source's position, three
// frames of `format`'s version, layer and channels follow each other within
// the next 16384 bytes, with bytes still behind the third. The position is
// left where it was.
bool ThreeFramesFollow(playback::ByteSource& source, const Mp3FrameHeader& format);

// What the analysis of a file gives.
struct Mp3FileFormat {
  // The first frame counted against the reference format, with its
  // bitrate and frameBytes replaced by the averages of the frames counted.
  // Without any frame counted (a file of one frame): the first header.
  Mp3FrameHeader format;
  std::int64_t firstFrameOffset = 0;  // where the first header lies
  std::uint64_t totalSamples = 0;     // per channel; 0 without statistics
  std::uint32_t countedFrames = 0;
};

// The analysis: finds the first frame, then reads the headers of 128 frames
// (512 when their bitrates differ: a VBR file), following the frames by
// their lengths and resynchronising where the bytes aren't a header. The
// length is the bytes behind the first counted frame divided by the average
// frame length: no VBR header is read, and a trailing ID3v1 tag isn't
// subtracted. False when no frame is found, or when resynchronising finds
// nothing before any frame was counted. Leaves the source at 0.
bool AnalyseMp3File(playback::ByteSource& source, Mp3FileFormat& result);

}  // namespace decoders
