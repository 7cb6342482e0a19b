// The one contract of all decoders.
//
// Exactly one decoder object exists per format family for the whole run; the
// application re-Opens the same object for each track. A decoder owns one
// decode thread while it plays: the thread reads the source, turns it into
// 16-bit PCM and writes it into a stream of the AudioOutput. Effects run later,
// inside the output; a decoder knows nothing of them.
//
// Threads: the application calls every operation from the window thread. The
// decode thread is the only other thread inside a decoder; what it shares with
// Seek and Stop is guarded by the decoder's own locks. A decoder reports to the
// window thread only by posting to its notify target (2568 at the natural end
// of a track; 2331, 2332, 2333 for stream changes).
//
// Plain MediaDecoder is the idle decoder: it plays nothing and reports state 1,
// so that every transport command has a harmless target before any track.
//
// The virtual operations keep the system's slot order; derived decoders may
// add operations of their own behind them.
#pragma once

#include <cstdint>
#include <string>

#include "playback/format_summary.h"

namespace platform {
class MessageTarget;
}

namespace playback {

class AudioOutput;
class ByteSource;

}  // namespace playback

namespace net {
class NetStream;
}

namespace playback {

enum DecoderState : int {
  kStateStopped = 1,
  kStatePlaying = 2,
  kStatePaused = 3,
};

// Private messages a decoder posts to its notify target.
inline constexpr std::uint32_t kMessageDecoderText = 2331;     // text (owned), lParam mode
inline constexpr std::uint32_t kMessageFormatChanged = 2332;
inline constexpr std::uint32_t kMessageTitleChanged = 2333;
inline constexpr std::uint32_t kMessageTrackEnded = 2568;

class MediaDecoder {
 public:
  MediaDecoder() = default;
  MediaDecoder(const MediaDecoder&) = delete;
  MediaDecoder& operator=(const MediaDecoder&) = delete;

  // 1. The information text of a file (see TrackInfo::BuildInfoText); false
  //    and an empty text when there is none.
  virtual bool GetInfoText(const std::string& path, std::string& text);
  // 2. Gives a network-capable decoder its stream client.
  virtual void SetNetStream(net::NetStream* stream);
  // 3. False when Seek can't work (a network stream).
  virtual bool CanSeek();
  // 4. Forwards to AudioOutput::SetVolume when an output is set. 0 to 65535.
  virtual void SetVolume(std::uint32_t left, std::uint32_t right);
  // 5. Platform priority value for the decode thread (see platform/thread.h).
  virtual void SetDecodePriority(int priority);
  // 6. Text of the current track for the title line.
  virtual bool GetDisplayTitle(std::string& title);
  // 7. Technical values of the open track.
  virtual void GetFormatSummary(FormatSummary& summary);
  // 8.
  virtual void SetOutput(AudioOutput* audioOutput);
  // 9. Length of the open track in milliseconds; 0 for a stream or when unknown.
  virtual std::uint32_t GetDuration();
  // 10. Position in milliseconds: seek base plus what the device has played.
  virtual std::uint32_t GetPosition();
  // 11, 12.
  virtual void SetState(int newState);
  virtual int GetState();
  // 13. Milliseconds; a negative value means 0.
  virtual bool Seek(int positionMs);
  // 14. Ends decoding and drops the stream (or fades it out with crossfade).
  virtual void Stop();
  // 15. Playing goes to paused and back; other states do nothing.
  virtual void TogglePause();
  // 16. From stopped starts the decode thread; from paused resumes.
  virtual bool Play();
  // 17. Ends decoding as Stop does but leaves the output stream alive, then
  //     closes the source.
  virtual void Close();
  // 18. Opens a track and reads what GetDuration and GetFormatSummary need.
  virtual bool Open(const std::string& path);
  // 19. The byte source that local files are read through.
  virtual void SetSource(ByteSource* byteSource);
  // 20. Tags and values of any file, without disturbing the open track. Every
  //     out may be null. Texts are bounded as the decoder's own notes say
  //     (256 or 260 UTF-16 units); `reserved` is always written 0.
  virtual bool GetFileDetails(const std::string& path, std::string* display, std::string* album,
                              FormatSummary* summary, std::uint32_t* durationMs,
                              std::uint32_t* reserved, std::string* artist, std::string* title);
  // 21. Where the decoder posts its messages.
  virtual void SetNotifyWindow(platform::MessageTarget* target);
  // 22.
  virtual ~MediaDecoder() = default;

 protected:
  AudioOutput* output = nullptr;
  ByteSource* source = nullptr;
  platform::MessageTarget* notifyWindow = nullptr;
  int state = kStateStopped;
  int decodePriority = 3;
};

}  // namespace playback
