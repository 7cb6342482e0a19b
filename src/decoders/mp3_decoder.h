// The MediaDecoder of MPEG audio: files (format 1: "mp3", "mp2", "mpa",
// also inside RIFF) and, with the stream client, internet radio (format 4).
//
// The decoder finds frames; an Mp3BackEnd (mp3_back_end.h) decodes them one
// at a time into 16-bit PCM, which goes into a stream of the AudioOutput
// through a playback::StreamFeed. No Xing, VBRI or other VBR header is read:
// the length comes from the headers of up to 512 frames (mp3_frame_search.h)
// and the average frame length.
//
// One object serves files and streams; Open chooses by the path ("http://",
// any case, is a stream). Temporary decoders without back-end, output or
// thread read the details of other files (GetFileDetails, GetInfoText), so
// those two may run on any thread.
//
// Threads: the window thread calls every other operation. The decode
// thread (mp3_decoder_pump.cpp, at the priority the application sets) reads
// the file and drives the back-end under seekLock, and writes the stream
// through the feed; it reaches the window thread only by posting 2568 at the
// natural end of a track. Lock order: seekLock, then the feed's outputLock.
//
// Streams: SetNetStream keeps the stream client; an "http://" path opens
// as a stream when there is one. The stream's decode thread
// (mp3_decoder_stream.cpp) shares the frame search (mp3_frame_header.h),
// the input buffer and its Decode call, and the feed.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "decoders/mp3_frame_header.h"
#include "decoders/mp3_input_buffer.h"
#include "playback/decode_thread.h"
#include "playback/media_decoder.h"
#include "playback/stream_feed.h"

namespace decoders {

class Mp3BackEnd;

class Mp3Decoder : public playback::MediaDecoder {
 public:
  Mp3Decoder() = default;
  // Ends a decode thread that still runs, without touching the output.
  ~Mp3Decoder() override;

  // The lines of the file's tags and format, "<b>Label:</b> value<br>"
  // each; false for an address or a file that doesn't open as MPEG audio.
  bool GetInfoText(const std::string& path, std::string& text) override;
  void SetNetStream(net::NetStream* stream) override;
  bool CanSeek() override;
  // Applied at once to a decode thread that runs.
  void SetDecodePriority(int priority) override;
  // From the tags: ID3v2 first, else ID3v1; false without either. At most
  // 259 UTF-16 units.
  bool GetDisplayTitle(std::string& title) override;
  void GetFormatSummary(playback::FormatSummary& summary) override;
  std::uint32_t GetDuration() override;
  std::uint32_t GetPosition() override;
  bool Seek(int positionMs) override;
  void Stop() override;
  void TogglePause() override;
  bool Play() override;
  void Close() override;
  bool Open(const std::string& path) override;
  // Texts are cut to 259 UTF-16 units; the bitrate is in kbit/s.
  bool GetFileDetails(const std::string& path, std::string* display, std::string* album,
                      playback::FormatSummary* summary, std::uint32_t* durationMs, std::uint32_t* reserved,
                      std::string* artist, std::string* title) override;

  // Not of the contract: the frame back-end, not owned. The application
  // sets it at start-up and sets it again ("rebinds" the decoder) before it
  // plays a track; a decode thread keeps the back-end it started with, so
  // this is safe at any moment on the window thread.
  void SetBackEnd(Mp3BackEnd* frameBackEnd) { backEnd = frameBackEnd; }

 private:
  // The decode thread (mp3_decoder_pump.cpp).
  enum class FrameStep { kGoOn, kEnd };
  void FilePump();
  bool FindFirstFrame();
  bool BeginPlayback(std::unique_ptr<std::int16_t[]>& pcm);
  bool PumpFile(std::int16_t* pcm);
  FrameStep DecodeNextFrame(std::uint8_t* pcm, std::uint32_t& pcmBytes);
  bool Recover();
  // The stream's decode thread (mp3_decoder_stream.cpp).
  enum class StreamStep { kGoOn, kEnded, kStopped };
  void StreamPump();
  bool FindStreamFormat();
  bool PumpStream(std::int16_t* pcm);
  StreamStep DecodeStreamBlock(Mp3InputBuffer& block, std::int16_t* pcm, bool ended);
  bool DecodeStreamTail(Mp3InputBuffer& block, std::int16_t* pcm, std::uint32_t available);
  std::uint32_t PcmBufferBytes() const { return format.channels * 9216; }
  Mp3FrameMatch FormatMatch() const { return {format.version, format.layer}; }

  // Seek's search: a frame at or behind the file's position that passes the
  // three-frame test.
  bool FindCheckedFrame();

  // Set on the window thread; the thread reads them only while it runs,
  // under seekLock where Open may write them.
  Mp3BackEnd* backEnd = nullptr;         // as set; taken by the next Play
  Mp3BackEnd* threadBackEnd = nullptr;   // the one the thread drives
  playback::ByteSource* file = nullptr;  // the source Open opened; null when closed
  platform::MessageTarget* threadNotify = nullptr;
  net::NetStream* netStream = nullptr;  // not owned
  std::string path;
  bool isStream = false;
  bool closing = false;  // Stop runs inside Close: leave the stream alone
  playback::DecodeThread thread;

  // Lock order: seekLock, then the feed's outputLock.
  // seekLock guards the file's position, the back-end, the input buffer and
  // the discard count; the format fields are written under it too.
  std::mutex seekLock;
  Mp3FrameHeader format;  // after Open: averages of bitrate and frameBytes
  std::int64_t firstFrameOffset = 0;
  std::uint64_t totalSamples = 0;  // per channel
  Mp3InputBuffer input;
  bool discardingAfterSeek = false;  // the PCM of the next frames is dropped
  std::uint32_t discardedFrames = 0;

  playback::StreamFeed feed;               // the stream the thread writes
  std::atomic<std::uint32_t> seekBase{0};  // samples per channel where the current stream began
};

}  // namespace decoders
