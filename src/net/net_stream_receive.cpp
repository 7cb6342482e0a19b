// NetStream's receive thread: from the socket into the linear buffer.
//
//  1. Open the connection (stream_connection.h). A failure or a stop ends
//     the thread at once; Connect sees it end and returns false.
//  2. Under bufferLock: take the station texts and the metadata interval
//     from the header, and put the audio bytes that came with it into the
//     buffer. "Connected to server"; Connect may return.
//  3. Loop:
//     a. While less than kMinimumRoom is free, wait for Read to make room.
//     b. Wait for the socket to be readable, at most the timeout. Silence
//        for that long posts 2563 (next track) and ends the loop.
//     c. Under bufferLock, one non-blocking recv into the free space behind
//        `fill`. A close marks serverClosed; an error posts 2563; both end
//        the loop. While a Read waits for its target, report
//        "Prebuffering:N%" or, once the target is reached, wake it.
//     d. After more than 1000 bytes at once, pause 100 ms, so that a fast
//        link doesn't keep the processor from the decoder.
//  4. "Disconnected", mark the session finished and wake any reader, close.
//
// Every wait in this file also watches the session's stop signal.
#include <poll.h>
#include <sys/socket.h>

#include <algorithm>
#include <cerrno>

#include "net/net_stream.h"
#include "net/stream_session.h"
#include "platform/event.h"

namespace net {
namespace {

constexpr std::uint32_t kLargeReceive = 1000;
constexpr int kPauseAfterLargeReceiveMs = 100;

}  // namespace

void NetStream::Receive(const std::shared_ptr<StreamSession>& current) {
  StreamSession& s = *current;
  OpenedStream opened;
  const StatusReport report = [this](const std::string* text, StatusMode mode) { PostStatus(text, mode); };
  if (OpenStreamConnection(s.request, s.stop, report, opened) != OpenResult::kOpened) {
    s.endedEvent.Set();
    return;
  }
  BeginStream(s, opened);
  s.connectedEvent.Set();
  ReceiveLoop(s, opened.socket.Descriptor());
  {
    std::lock_guard guard(bufferLock);
    s.finished = true;
  }
  PostStatusText(kTextDisconnected, kModeStatusForASecond);
  s.endedEvent.Set();
}

void NetStream::BeginStream(StreamSession& s, OpenedStream& opened) {
  {
    std::lock_guard guard(bufferLock);
    stationName = opened.header.stationName;
    stationGenre = opened.header.stationGenre;
    stationUrl = opened.header.stationUrl;
    metadata.Start(opened.header.metaInterval);
    // The header area is far smaller than any buffer, so these always fit.
    const std::size_t first = std::min<std::size_t>(opened.firstBytes.size(), s.bufferSize);
    std::copy_n(opened.firstBytes.data(), first, s.buffer.get());
    s.fill = static_cast<std::uint32_t>(first);
  }
  PostStatusText(kTextConnectedToServer, kModeStatus);
}

void NetStream::ReceiveLoop(StreamSession& s, int socket) {
  for (;;) {
    if (!WaitForRoom(s)) return;
    switch (WaitForSocket(socket, POLLIN, s.stop, s.request.timeoutMs)) {
      case WaitResult::kReady:
        break;
      case WaitResult::kTimeout:
        PostNextTrack();  // the server has gone quiet
        return;
      case WaitResult::kStopped:
      case WaitResult::kFailed:
        return;
    }
    switch (ReceiveOnce(s, socket)) {
      case Received::kData:
      case Received::kAgain:
        break;
      case Received::kLarge:
        if (s.stop.Event().Wait(kPauseAfterLargeReceiveMs)) return;
        break;
      case Received::kClosed:
        return;
      case Received::kFailed:
        PostNextTrack();
        return;
    }
  }
}

bool NetStream::WaitForRoom(StreamSession& s) {
  {
    std::lock_guard guard(bufferLock);
    if (s.bufferSize - s.fill >= kMinimumRoom) return !s.stop.Raised();
    s.roomEvent.Reset();
  }
  platform::WaitForAny({&s.roomEvent, &s.stop.Event()});
  return !s.stop.Raised();
}

NetStream::Received NetStream::ReceiveOnce(StreamSession& s, int socket) {
  ssize_t got;
  std::uint64_t percent = 0;
  bool reportProgress = false;
  {
    std::lock_guard guard(bufferLock);
    got = ::recv(socket, s.buffer.get() + s.fill, s.bufferSize - s.fill, MSG_DONTWAIT);
    if (got == 0) {
      s.serverClosed = true;
      return Received::kClosed;
    }
    if (got < 0) {
      return errno == EINTR || errno == EAGAIN || errno == EWOULDBLOCK ? Received::kAgain : Received::kFailed;
    }
    s.fill += static_cast<std::uint32_t>(got);
    if (s.buffering) {
      if (s.fill < s.waitTarget) {
        percent = std::uint64_t{s.fill} * 100 / s.waitTarget;
        reportProgress = true;
      } else {
        s.dataEvent.Set();
      }
    }
  }
  if (reportProgress) PostStatusText(kTextPrebuffering, kModeStatus, std::to_string(percent));
  return static_cast<std::uint32_t>(got) > kLargeReceive ? Received::kLarge : Received::kData;
}

void NetStream::PostNextTrack() {
  if (platform::MessageTarget* target = window.load()) target->Post(kMessageNextTrack, 1, 0);
}

}  // namespace net
