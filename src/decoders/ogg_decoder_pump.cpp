// OggDecoder: the decode thread.
//
// The file pump:
//  1. Under sourceLock, back to the start of the file if a run before left
//     it elsewhere. A held output stream (StreamFeed step 1); then Play
//     learns that playback has begun.
//     If the stream doesn't open the thread ends and Play fails.
//  2. Each pass: wait until 2048 more samples fit below two seconds less
//     100 samples (1 to 10 ms looks), outside the lock. Then under
//     sourceLock, held through the write: one read of 4096 bytes of PCM and
//     its write (StreamFeed steps 2 and 3: a block read before a seek is
//     dropped; the prefill).
//  3. Tremor's answers: data is written; a hole in the data is passed over
//     silently (corrupt pages cost only what the library drops); the end of
//     the file or an error ends the track, as does a write that fails. When
//     a chained file goes on into its next link, the tags are read anew and
//     2333 is posted, so the title line follows.
//  4. At the end, unless a stop came: a stream still held in prefill starts
//     (step 4: a file shorter than a second sounds too), then the end of the
//     track (step 5), which posts 2568.
//
// The stream pump differs in these points:
//  1. Play learns at once that playback has begun, then NetStream::Connect and Tremor's open, which
//     reads the headers from the network. Either failing ends the thread
//     without a message; the client's status texts have said why.
//  2. 2332 and 2333 are posted, then playback begins as in a file.
//  3. The read callback holds the output and prefills again (step 3) when
//     the client has fewer bytes than Tremor asks for, unless paused: a
//     stall anywhere in Tremor's reading holds the sound, with no message.
//  4. The end of one logical stream doesn't end the track: the next read
//     goes on into the next one, whose tags are read with 2333 posted.
//  5. The end of the server's data (the client fails a read once its buffer
//     is empty) ends the track as in a file; a stop ends it quietly. The
//     client is disconnected whenever the thread ends.
#include <algorithm>
#include <array>

#include "decoders/ogg_decoder.h"
#include "net/net_stream.h"
#include "platform/message_target.h"

namespace decoders {
namespace {

constexpr std::uint32_t kQueueHeadroom = 100;

// A stream can't seek, has nothing for Tremor to close (the thread
// disconnects) and tells 0.
int SeekNetwork(void* /*decoder*/, ogg_int64_t /*offset*/, int /*origin*/) {
  return -1;
}
int CloseNetwork(void* /*decoder*/) {
  return 0;
}
long TellNetwork(void* /*decoder*/) {
  return 0;
}
constexpr auto kRelaxed = std::memory_order_relaxed;

}  // namespace

void OggDecoder::FilePump() {
  {
    std::lock_guard guard(sourceLock);
    if (handle->Tell() != 0 && !handle->SeekPage(0)) return;
  }
  if (!BeginPlayback()) return;
  thread.Begun();
  const PumpEnd end = PumpBlocks();
  feed.EndLoop();
  if (end == PumpEnd::kEnded) feed.FinishTrack(threadNotify);
}

void OggDecoder::StreamPump() {
  thread.Begun();
  struct DisconnectOnExit {
    net::NetStream& stream;
    ~DisconnectOnExit() { stream.Disconnect(); }
  } disconnect{*netStream};
  if (!netStream->Connect()) return;
  {
    std::lock_guard guard(sourceLock);
    // Read without holding the output: there is none yet.
    handle = OggHandle::Open(this, {ReadNetwork, SeekNetwork, CloseNetwork, TellNetwork});
    if (!handle || !NoteTrackShape()) {
      handle.reset();
      return;
    }
  }
  if (threadNotify != nullptr) {
    threadNotify->Post(playback::kMessageFormatChanged, 0, 0);
    threadNotify->Post(playback::kMessageTitleChanged, 0, 0);
  }
  if (!BeginPlayback()) return;
  const PumpEnd end = PumpBlocks();
  feed.EndLoop();
  if (end == PumpEnd::kEnded) feed.FinishTrack(threadNotify);
}

// Under sourceLock: the rate, channels and bitrate of the present link,
// and its tags.
bool OggDecoder::NoteTrackShape() {
  OggStreamInfo info;
  if (!handle->Info(info)) return false;
  OggTags linkTags = handle->ReadTags();
  {
    std::lock_guard guard(infoLock);
    tags = std::move(linkTags);
  }
  sampleRate.store(info.sampleRate, kRelaxed);
  channels.store(info.channels, kRelaxed);
  bitrate.store(info.bitrate, kRelaxed);
  hasTrack.store(true, kRelaxed);
  return true;
}

bool OggDecoder::BeginPlayback() {
  if (!feed.OpenStream(sampleRate.load(kRelaxed), channels.load(kRelaxed))) return false;
  watchUnderrun.store(true, kRelaxed);
  return true;
}

OggDecoder::PumpEnd OggDecoder::PumpBlocks() {
  std::array<std::int16_t, kOggMinimumBlock / 2> pcm{};
  while (!feed.StopRequested()) {
    if (!feed.WaitForRoom(static_cast<std::uint32_t>(pcm.size()), kQueueHeadroom)) return PumpEnd::kStopped;
    std::lock_guard guard(sourceLock);
    const std::uint32_t seekStamp = feed.SeekStamp();
    std::uint32_t bytes = 0;
    const OggReadResult result = handle->ReadPcm(pcm.data(), kOggMinimumBlock, bytes);
    if (handle->TagsChanged()) {
      const OggTags linkTags = handle->ReadTags();
      std::lock_guard infoGuard(infoLock);
      tags = linkTags;
      if (threadNotify != nullptr) threadNotify->Post(playback::kMessageTitleChanged, 0, 0);
    }
    if (bytes != 0) {
      switch (feed.WriteSamples(pcm.data(), bytes / 2, seekStamp)) {
        case playback::StreamFeed::WriteResult::kWritten:
        case playback::StreamFeed::WriteResult::kStale:
          break;
        case playback::StreamFeed::WriteResult::kStopped:
          return PumpEnd::kStopped;
        case playback::StreamFeed::WriteResult::kFailed:
          return PumpEnd::kEnded;
      }
    }
    if (result == OggReadResult::kError) return PumpEnd::kEnded;
    if (result == OggReadResult::kEnd) {
      // A stream may go on into its next logical stream; its data's end
      // shows as the client's end with nothing left to read.
      if (!isStream || (netStream->HasEnded() && netStream->BytesAvailable() == 0)) return PumpEnd::kEnded;
    }
  }
  return PumpEnd::kStopped;
}

// Tremor's read callback of a stream, on the decode thread under sourceLock.
std::size_t OggDecoder::ReadNetwork(void* destination, std::size_t size, std::size_t count, void* decoder) {
  auto& self = *static_cast<OggDecoder*>(decoder);
  if (size == 0 || count == 0) return 0;
  const std::size_t wanted = size * count;
  const auto asked = static_cast<std::uint32_t>(std::min<std::size_t>(wanted, 0x7FFFFFFF));
  net::NetStream& stream = *self.netStream;
  if (self.watchUnderrun.load(kRelaxed) && !stream.HasEnded() && stream.BytesAvailable() < asked) {
    self.feed.HoldForPrefill();
  }
  std::uint32_t got = 0;
  if (!stream.Read(destination, asked, &got)) return 0;
  return got / size;
}

}  // namespace decoders
