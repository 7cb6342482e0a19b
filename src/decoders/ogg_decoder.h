// The MediaDecoder of Ogg Vorbis: files (format 2, "ogg") and, with the
// stream client, internet radio (format 5: "http://" addresses).
//
// Decoding is Tremor's file layer (ogg_handle.h) over the player's own
// callbacks: the shared byte source for files, the NetStream for streams.
// PCM goes in blocks of 4096 bytes into a stream of the AudioOutput through
// a playback::StreamFeed, as in the MP3 decoder. The Vorbis comments and
// their text are read by ogg_comments.h.
//
// Threads: the window thread calls every operation but GetFileDetails and
// GetInfoText, which open the path by themselves and may run on any thread.
// The decode thread (ogg_decoder_pump.cpp) runs at priority 3 whatever
// SetDecodePriority says (the player never raised Ogg's), reads under
// sourceLock and writes through the feed, holding sourceLock through the
// write, so a Seek waits for one block at most. Lock order: sourceLock, then
// the feed's outputLock; infoLock stands alone. A stream's read may block
// in the network inside sourceLock: nothing the window thread calls on a
// stream takes that lock before Stop has disconnected the client.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>

#include "decoders/ogg_comments.h"
#include "decoders/ogg_handle.h"
#include "playback/decode_thread.h"
#include "playback/media_decoder.h"
#include "playback/stream_feed.h"

namespace decoders {

class OggDecoder : public playback::MediaDecoder {
 public:
  OggDecoder() = default;
  // Ends a decode thread that still runs, without touching the output.
  ~OggDecoder() override;

  // Title, artist, play time, bitrate, rate, channels, then album, genre,
  // date, track and comment when present; false for an address or a file
  // that isn't Ogg Vorbis.
  bool GetInfoText(const std::string& path, std::string& text) override;
  void SetNetStream(net::NetStream* stream) override;
  // False without an open track; "artist - title" (either side may be
  // empty), or the file's name when both are empty.
  bool GetDisplayTitle(std::string& title) override;
  void GetFormatSummary(playback::FormatSummary& summary) override;
  std::uint32_t GetDuration() override;
  std::uint32_t GetPosition() override;
  // Files only, while playing or paused, to a time before the end; lands on
  // the start of the page that holds the time, and the position says so.
  bool Seek(int positionMs) override;
  void Stop() override;
  void TogglePause() override;
  bool Play() override;
  void Close() override;
  bool Open(const std::string& path) override;
  bool GetFileDetails(const std::string& path, std::string* display, std::string* album,
                      playback::FormatSummary* summary, std::uint32_t* durationMs, std::uint32_t* reserved,
                      std::string* artist, std::string* title) override;

 private:
  enum class PumpEnd { kStopped, kEnded };

  // The decode thread (ogg_decoder_pump.cpp).
  void FilePump();
  void StreamPump();
  bool BeginPlayback();
  PumpEnd PumpBlocks();
  bool NoteTrackShape();
  static std::size_t ReadNetwork(void* destination, std::size_t size, std::size_t count, void* decoder);

  // Set on the window thread while no decode thread runs.
  net::NetStream* netStream = nullptr;  // not owned
  platform::MessageTarget* threadNotify = nullptr;
  std::string path;
  bool isStream = false;
  bool sourceOpen = false;  // Open opened the shared source
  bool closing = false;     // Stop runs inside Close: leave the stream alone
  playback::DecodeThread thread;
  std::atomic<bool> watchUnderrun{false};  // a stream's read may hold the output

  // sourceLock guards the handle: its position and its decoding.
  std::mutex sourceLock;
  std::unique_ptr<OggHandle> handle;

  // What the window thread shows; written by Open or by a stream's thread.
  std::atomic<bool> hasTrack{false};
  std::atomic<std::uint32_t> sampleRate{0};
  std::atomic<std::uint32_t> channels{0};
  std::atomic<std::uint32_t> bitrate{0};       // kbit/s
  std::atomic<std::uint64_t> totalSamples{0};  // per channel; 0 for a stream
  std::atomic<std::uint64_t> seekBase{0};      // where the current output stream began
  std::mutex infoLock;
  OggTags tags;  // guarded by infoLock

  playback::StreamFeed feed;  // the stream the thread writes
};

}  // namespace decoders
