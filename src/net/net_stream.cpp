#include "net/net_stream.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "net/stream_session.h"
#include "net/stream_url.h"
#include "platform/event.h"
#include "platform/text.h"
#include "platform/texts.h"
#include "playback/media_decoder.h"
#include "playback/playback_settings.h"

namespace net {

NetStream::NetStream() = default;

NetStream::~NetStream() {
  Disconnect();
}

std::uint32_t NetStream::BytesAvailable() {
  std::lock_guard guard(bufferLock);
  return session ? session->fill : 0;
}

bool NetStream::SetUrl(const std::string& address) {
  if (address.compare(0, kHttpPrefix.size(), kHttpPrefix) != 0) return false;
  std::lock_guard guard(urlLock);
  url = platform::TruncateToUtf16Units(address, kUrlUnits);
  return true;
}

void NetStream::SetNotifyWindow(platform::MessageTarget* target) {
  window.store(target);
}

void NetStream::SetTimeout(int milliseconds) {
  timeoutMs.store(std::max(milliseconds, 1));
}

void NetStream::SetHostLookup(HostLookup lookup) {
  std::lock_guard guard(urlLock);
  hostLookup = std::move(lookup);
}

std::shared_ptr<StreamSession> NetStream::CurrentSession() {
  std::lock_guard guard(bufferLock);
  return session;
}

bool NetStream::IsConnected() {
  return CurrentSession() != nullptr;
}

bool NetStream::HasEnded() {
  std::lock_guard guard(bufferLock);
  return session && session->serverClosed;
}

// The buffer's size and targets come from the settings; an allocation that
// fails falls back to kFallbackBufferSize with both targets at half of it.
std::shared_ptr<StreamSession> NetStream::MakeSession() {
  const playback::PlaybackSettings& settings = playback::Playback();
  auto fresh = std::make_shared<StreamSession>();
  if (!fresh->stop.Valid()) return nullptr;
  std::uint64_t size = std::clamp(settings.streamBufferSize.load(std::memory_order_relaxed),
                                  kMinimumBufferSize, kMaximumBufferSize);
  const std::uint64_t prebuffer =
      std::min<std::uint32_t>(settings.prebufferPercent.load(std::memory_order_relaxed), 100);
  const std::uint64_t rebuffer =
      std::min<std::uint32_t>(settings.rebufferPercent.load(std::memory_order_relaxed), 100);
  fresh->prebufferBytes = static_cast<std::uint32_t>(prebuffer * size / 100);
  fresh->rebufferBytes = static_cast<std::uint32_t>(rebuffer * size / 100);
  fresh->buffer.reset(new (std::nothrow) std::uint8_t[size]());
  if (!fresh->buffer && size > kFallbackBufferSize) {
    size = kFallbackBufferSize;
    fresh->prebufferBytes = fresh->rebufferBytes = kFallbackBufferSize / 2;
    fresh->buffer.reset(new (std::nothrow) std::uint8_t[size]());
  }
  if (!fresh->buffer) return nullptr;
  fresh->bufferSize = static_cast<std::uint32_t>(size);
  {
    std::lock_guard guard(urlLock);
    fresh->request.url = url;
    fresh->request.lookup = hostLookup;
  }
  fresh->request.proxyAddress = settings.proxyAddress;
  fresh->request.userAgent = userAgent;
  fresh->request.timeoutMs = timeoutMs.load();
  return fresh;
}

bool NetStream::Connect() {
  std::lock_guard api(apiLock);
  DisconnectLocked();
  std::shared_ptr<StreamSession> fresh = MakeSession();
  if (!fresh) return false;
  {
    std::lock_guard guard(bufferLock);
    session = fresh;
    if (pendingDisconnects > 0) fresh->stop.Raise();  // a Disconnect is waiting: give way
  }
  if (!thread.Start([this, fresh] { Receive(fresh); }, platform::kPriorityNormal)) {
    DisconnectLocked();
    return false;
  }
  if (platform::WaitForAny({&fresh->connectedEvent, &fresh->endedEvent}) == 0) return true;
  DisconnectLocked();
  return false;
}

void NetStream::Disconnect() {
  {
    std::lock_guard guard(bufferLock);
    ++pendingDisconnects;
    if (session) session->stop.Raise();
  }
  std::lock_guard api(apiLock);
  DisconnectLocked();
  std::lock_guard guard(bufferLock);
  --pendingDisconnects;
}

void NetStream::DisconnectLocked() {
  std::shared_ptr<StreamSession> old = CurrentSession();
  if (!old) return;
  old->stop.Raise();
  thread.Join();
  std::lock_guard guard(bufferLock);
  session.reset();  // a reader still inside Read keeps the buffer until it leaves
}

void NetStream::Reset() {
  Disconnect();
  {
    std::lock_guard guard(urlLock);
    url.clear();
  }
  std::lock_guard guard(bufferLock);
  stationName.clear();
  stationGenre.clear();
  stationUrl.clear();
  metadata.Clear();
}

bool NetStream::GetStationInfo(std::string* name, std::string* genre, std::string* address) {
  std::lock_guard guard(bufferLock);
  if (name != nullptr) *name = stationName;
  if (genre != nullptr) *genre = stationGenre;
  if (address != nullptr) *address = stationUrl;
  return !stationName.empty() || !stationGenre.empty() || !stationUrl.empty();
}

bool NetStream::GetStreamTitle(std::string& title) {
  std::lock_guard guard(bufferLock);
  return metadata.GetStreamTitle(title);
}

// Read, in steps:
//  1. The first read of a session, and the first after an underrun, waits
//     until the buffer holds its target (WaitForData).
//  2. Under bufferLock, the bytes wanted are run through the metadata filter
//     at the head of the buffer; the audio among them is copied out and the
//     rest of the buffer moves down. The metadata among them is made up for
//     from the bytes behind, so a read delivers as many audio bytes as asked.
//  3. Too little in the buffer is an underrun: wait again, for the rebuffer
//     target. After the stream's end, what is left is delivered instead.
bool NetStream::Read(void* destination, std::uint32_t count, std::uint32_t* got) {
  if (got == nullptr) return false;
  *got = 0;
  std::shared_ptr<StreamSession> current = CurrentSession();
  if (!current || (destination == nullptr && count > 0)) return false;
  StreamSession& s = *current;
  const std::uint32_t want = std::min(count, s.bufferSize - kMinimumRoom);
  bool buffering;
  {
    std::lock_guard guard(bufferLock);
    buffering = s.buffering;
  }
  if (buffering && !WaitForData(s, 0)) return false;
  std::uint32_t delivered = 0;
  if (!Deliver(s, static_cast<std::uint8_t*>(destination), want, delivered)) return false;
  *got = delivered;
  return delivered > 0 || want == 0;
}

bool NetStream::Deliver(StreamSession& s, std::uint8_t* out, std::uint32_t want, std::uint32_t& delivered) {
  std::vector<std::string> titles;
  while (delivered < want) {
    std::unique_lock guard(bufferLock);
    if (s.stop.Raised()) return false;
    const std::uint32_t need = want - delivered;
    if (s.fill < need && !s.finished) {
      ++s.underrunCount;
      s.buffering = true;
      guard.unlock();
      if (!WaitForData(s, need)) return false;
      continue;
    }
    const std::uint32_t take = std::min(need, s.fill);
    if (take == 0) break;  // the stream has ended and nothing is left
    const auto audio = static_cast<std::uint32_t>(take - metadata.Filter(s.buffer.get(), take, &titles));
    std::memcpy(out + delivered, s.buffer.get(), audio);
    delivered += audio;
    std::memmove(s.buffer.get(), s.buffer.get() + take, s.fill - take);
    s.fill -= take;
    if (s.bufferSize - s.fill >= kMinimumRoom) s.roomEvent.Set();
    guard.unlock();
    PostTitles(titles);
  }
  return true;
}

// Waits, without bufferLock, until the buffer holds the target: the rebuffer
// target after an underrun, else the prebuffer target, and at least `need`.
// False after a Disconnect; true at once when there is nothing to wait for.
bool NetStream::WaitForData(StreamSession& s, std::uint32_t need) {
  {
    std::lock_guard guard(bufferLock);
    if (s.stop.Raised()) return false;
    const std::uint32_t target =
        std::min(std::max(s.underrunCount != 0 ? s.rebufferBytes : s.prebufferBytes, need),
                 s.bufferSize - kMinimumRoom);
    if (target <= s.fill || s.finished) return true;
    s.buffering = true;
    s.dataEvent.Reset();
    s.waitTarget = target;
  }
  platform::WaitForAny({&s.dataEvent, &s.stop.Event(), &s.endedEvent});
  {
    std::lock_guard guard(bufferLock);
    s.buffering = false;
    s.waitTarget = 0;
  }
  PostStatus(nullptr, kModeStatus);
  return !s.stop.Raised();
}

void NetStream::PostStatus(const std::string* text, StatusMode mode) {
  platform::MessageTarget* target = window.load();
  if (target == nullptr) return;
  target->Post(platform::Message{playback::kMessageDecoderText, 0, mode,
                                 text != nullptr ? std::make_unique<std::string>(*text) : nullptr});
}

void NetStream::PostStatusText(std::uint32_t textId, StatusMode mode, std::string_view value) {
  const std::string text = FillIn(platform::LoadText(textId), value);
  PostStatus(&text, mode);
}

void NetStream::PostTitles(std::vector<std::string>& titles) {
  for (const std::string& title : titles) PostStatus(&title, kModeTitle);
  titles.clear();
}

}  // namespace net
