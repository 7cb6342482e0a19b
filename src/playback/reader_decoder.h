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
  // False when the thread must leave because of a stop or a dead stream;
  // `finished` then says whether it counts as the end of the track.
  bool WaitForQueueRoom(std::uint32_t samples, bool& finished);
  void DecodeLoop(std::int16_t* block, std::uint32_t blockSamples, bool& finished);
  void FinishTrack();
  void WaitUntilDrained();
  bool StopRequested() const { return stopFlag.load(std::memory_order_relaxed) != 0; }

  // Two seconds of samples at the stream's rate and channels.
  std::uint32_t StreamCapacity() const;

  // Set on the window thread while no thread runs.
  std::string path;  // of the open track; empty after Close
  FormatReader* reader = nullptr;
  AudioOutput* threadOutput = nullptr;              // `output` as Play found it
  platform::MessageTarget* threadNotify = nullptr;  // `notifyWindow` as Play found it
  bool closing = false;                             // Stop runs inside Close: leave the stream alone
  platform::Thread thread;

  // Lock order: sourceLock, then outputLock; never the other way.
  // sourceLock guards the reader's position: Open, Read, Seek, Close and
  // GetFormat of the reader.
  std::mutex sourceLock;
  // outputLock guards the calls that write or change the current stream,
  // and the switch of `handle`; `prefilling` and `loopEnded` change under it.
  std::mutex outputLock;
  // The atomics are also read without a lock (GetPosition, the waits).
  std::atomic<std::uint32_t> handle{0xFFFFFFFFu};
  std::atomic<std::uint32_t> sampleRate{0};  // of the stream; 0 until the thread has opened it
  std::atomic<std::uint32_t> channels{0};
  std::atomic<std::uint32_t> seekGuard{0};
  std::atomic<std::uint32_t> seekBase{0};  // milliseconds at which the current stream began
  std::atomic<std::uint32_t> stopFlag{0};  // set by the window thread; the thread polls it
  bool prefilling = false;
  bool loopEnded = false;  // the thread has left its loop: Seek has nothing to feed
  // Counts seeks; written with both locks held, so either lock suffices to
  // read it. A block read before a seek is not written after it.
  std::uint32_t seekCount = 0;
};

}  // namespace playback
