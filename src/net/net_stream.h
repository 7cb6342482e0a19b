// NetStream: the internet radio client, HTTP/1.0 with the ICY extensions.
//
// One object lives for the whole run; the MP3 and the Ogg decoder share it,
// one at a time. A receive thread fills one linear buffer from the socket;
// the decoder's thread takes bytes out with Read, which strips the ICY
// metadata (metadata_filter.h) and waits until enough is buffered: before
// the first read prebufferPercent of the buffer, after an underrun
// rebufferPercent (playback::Playback(); 25 and 50 of 0x20000 bytes).
//
// How a decoder reads a stream:
//   Open (window thread)   SetUrl(path); false unless it begins with "http://"
//   decode thread          Connect(): blocks until the server's header is in,
//                          the connection fails, or Disconnect is called
//                          Read(buffer, n, &got) as often as it likes:
//                          blocks until n bytes are there (n at most the
//                          buffer's size less 2048); `got` falls short of
//                          n only at the end of the stream
//                          BytesAvailable() and HasEnded() to decide how
//                          much to ask for; Disconnect() when it is done
//   Stop (window thread)   Disconnect(): breaks every wait above at once
//   titles (window thread) GetStreamTitle, GetStationInfo
//
// Status reaches the main window as message 2331 (status_text.h): "Resolving
// host...", "Connecting <host>", "Connected to server", "Prebuffering:N%"
// while a Read waits, an empty status when it waits no longer,
// "Disconnected" when the receive thread ends, and the failures "Can't
// resolve host name" and "Can't establish connection". A new title from the
// metadata is 2331 with mode 0 and the title. Ten seconds without a byte
// from the server post 2563 with wParam 1, which moves the player on.
//
// Disconnect from any state returns at once, give or take a scheduler's
// moment: it raises the session's stop signal first, which every wait of
// the receive thread and of Read watches (the host lookup, the connect, the
// send, the header, the data, the room in the buffer, the pause after a
// large read), and only then takes apiLock and joins the thread. A Connect
// that starts while a Disconnect waits for apiLock gives up at once.
//
// When the server closes the stream, what is already buffered can still be
// read: Read then delivers what is left, possibly fewer bytes than asked,
// and fails once the buffer is empty. There is no reconnection.
//
// Threads: SetUrl, Reset, SetNotifyWindow, GetStationInfo, GetStreamTitle,
// IsConnected, HasEnded, BytesAvailable and Disconnect from any thread (in
// practice the window thread); Connect and Read from the decoder's thread.
// Locks: apiLock keeps Connect and Disconnect apart; bufferLock guards the
// session, its buffer and counters, the metadata filter and the station
// texts, and is never held across a wait. Order: apiLock, then bufferLock;
// urlLock stands alone.
//
// The virtual operations keep the system's slot order.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "net/host_lookup.h"
#include "net/metadata_filter.h"
#include "net/status_text.h"
#include "platform/message_target.h"
#include "platform/thread.h"

namespace net {

struct OpenedStream;
struct StreamSession;

// Posted when the server has sent nothing for the timeout: play the next entry.
inline constexpr std::uint32_t kMessageNextTrack = 2563;

inline constexpr int kDefaultTimeoutMs = 10000;
inline constexpr std::uint32_t kFallbackBufferSize = 32768;
// Buffer sizes outside these bounds are taken as the nearest bound.
inline constexpr std::uint32_t kMinimumBufferSize = 32768;
inline constexpr std::uint32_t kMaximumBufferSize = 64 * 1024 * 1024;
// The url and the station texts keep at most this many UTF-16 units.
inline constexpr std::size_t kUrlUnits = 259;

class NetStream {
 public:
  NetStream();

  // 1. Bytes held in the buffer, metadata included; 0 when not connected.
  virtual std::uint32_t BytesAvailable();
  // 2. Disconnects.
  virtual ~NetStream();
  // 3. Keeps the address for the next Connect. False unless it begins with
  //    "http://" exactly (small letters). Cut to kUrlUnits UTF-16 units.
  virtual bool SetUrl(const std::string& url);
  // 4. Decoder's thread. Sizes the buffer from the settings, starts the
  //    receive thread and waits until the server's header has been read.
  //    False when the connection fails or Disconnect breaks it.
  virtual bool Connect();
  // 5. Any thread. Ends the connection in whatever state it is and frees the
  //    buffer; a Read or Connect waiting on another thread returns false.
  virtual void Disconnect();
  // 6. Disconnect, then forgets the url, the station texts and the title.
  virtual void Reset();
  // 7. Where status and titles go; null for nowhere.
  virtual void SetNotifyWindow(platform::MessageTarget* window);
  // 8. True from Connect until Disconnect, unless the connection failed.
  virtual bool IsConnected();
  // 9. True once the server has closed the stream.
  virtual bool HasEnded();
  // 10. Decoder's thread. Delivers `count` audio bytes, without metadata,
  //     and sets `got`; fewer only after the stream's end, and never more
  //     than the buffer's size less kMinimumRoom (2048) in one call. Waits
  //     while the buffer holds too little (see above). False with `got` 0
  //     after a Disconnect or when nothing is left; a null `got` fails.
  virtual bool Read(void* destination, std::uint32_t count, std::uint32_t* got);
  // 11. The header's icy-name, icy-genre and icy-url; each destination may be
  //     null and gets "" first. False when all three are empty.
  virtual bool GetStationInfo(std::string* name, std::string* genre, std::string* url);
  // 12. The title of the last whole metadata block; false and "" when none.
  virtual bool GetStreamTitle(std::string& title);

  // Not of the system's table. The timeout of the connect, of the header and
  // of silence from the server, for the next Connect (10 s; tests shorten it).
  void SetTimeout(int milliseconds);
  // How host names are looked up from the next Connect on (tests).
  void SetHostLookup(HostLookup lookup);

 private:
  std::shared_ptr<StreamSession> MakeSession();
  std::shared_ptr<StreamSession> CurrentSession();
  void DisconnectLocked();  // apiLock held

  // The receive thread (net_stream_receive.cpp).
  void Receive(const std::shared_ptr<StreamSession>& session);
  void BeginStream(StreamSession& session, OpenedStream& opened);
  void ReceiveLoop(StreamSession& session, int socket);
  bool WaitForRoom(StreamSession& session);
  enum class Received { kData, kLarge, kAgain, kClosed, kFailed };
  Received ReceiveOnce(StreamSession& session, int socket);

  // Read's side.
  bool WaitForData(StreamSession& session, std::uint32_t need);
  bool Deliver(StreamSession& session, std::uint8_t* out, std::uint32_t want, std::uint32_t& delivered);

  void PostStatus(const std::string* text, StatusMode mode);
  void PostStatusText(std::uint32_t textId, StatusMode mode, std::string_view value = {});
  void PostTitles(std::vector<std::string>& titles);
  void PostNextTrack();

  const std::string userAgent = "Tavrinsonic";
  std::atomic<platform::MessageTarget*> window{nullptr};
  std::atomic<int> timeoutMs{kDefaultTimeoutMs};

  // Guarded by urlLock.
  std::mutex urlLock;
  std::string url;
  HostLookup hostLookup;

  // Guarded by apiLock.
  std::mutex apiLock;
  platform::Thread thread;

  // Guarded by bufferLock.
  std::mutex bufferLock;
  std::shared_ptr<StreamSession> session;
  int pendingDisconnects = 0;  // Disconnect calls waiting for apiLock
  MetadataFilter metadata;
  std::string stationName;
  std::string stationGenre;
  std::string stationUrl;
};

}  // namespace net
