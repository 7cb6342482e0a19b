// A complete MediaDecoder around a FormatReader.
//
// Simple formats need no decoder of their own: ReaderDecoder owns the decode
// thread, the locks and the output protocol, and asks a FormatReader
// (tavrinsonic/format_reader.h) for everything about the file. The program
// has two: one over the WAV reader and one over the AAC plug-in's reader.
// The reader is not owned; the application destroys it.
//
// Threads: the window thread calls every MediaDecoder operation; the decode
// thread (one while playing) reads and writes the stream; the playlist's
// info reader calls GetFileDetails. The decode thread posts
// kMessageTrackEnded (2568) to the notify target at the natural end of a
// track and reaches the window thread in no other way. See
// reader_decoder.cpp for the protocols and the locks.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "platform/thread.h"
#include "playback/media_decoder.h"
#include "playback/stream_feed.h"
#include "tavrinsonic/format_reader.h"

namespace playback {

class ReaderDecoder : public MediaDecoder {
 public:
  ReaderDecoder() = default;
  // Ends a decode thread that still runs (without touching the output).
  ~ReaderDecoder() override;

  // The reader to drive; set once, right after construction.
  void SetReader(FormatReader* formatReader) { reader = formatReader; }

  bool GetInfoText(const std::string& path, std::string& text) override;
  // The value is dropped: the thread runs at normal priority.
  void SetDecodePriority(int priority) override;
  bool GetDisplayTitle(std::string& title) override;
  void GetFormatSummary(FormatSummary& summary) override;
  std::uint32_t GetDuration() override;
  std::uint32_t GetPosition() override;
  bool Seek(int positionMs) override;
  void Stop() override;
  void TogglePause() override;
  bool Play() override;
  void Close() override;
  bool Open(const std::string& path) override;
  // Display texts are cut to 256 UTF-16 units, the path's name to 256 too.
  bool GetFileDetails(const std::string& path, std::string* display, std::string* album,
                      FormatSummary* summary, std::uint32_t* durationMs, std::uint32_t* reserved,
                      std::string* artist, std::string* title) override;

 private:
  // The decode thread (reader_decoder_thread.cpp).
  void DecodeThread();
  bool StartStream();
  void DecodeLoop(std::int16_t* block, std::uint32_t blockSamples, bool& finished);

  // Set on the window thread while no thread runs.
  std::string path;  // of the open track; empty after Close
  FormatReader* reader = nullptr;
  platform::MessageTarget* threadNotify = nullptr;  // `notifyWindow` as Play found it
  bool closing = false;                             // Stop runs inside Close: leave the stream alone
  platform::Thread thread;

  // Lock order: sourceLock, then the feed's outputLock; never the other way.
  // sourceLock guards the reader's position: Open, Read, Seek, Close and
  // GetFormat of the reader.
  std::mutex sourceLock;
  StreamFeed feed;                         // the stream the thread writes (output as Play found it)
  std::atomic<std::uint32_t> seekBase{0};  // milliseconds at which the current stream began
};

}  // namespace playback
