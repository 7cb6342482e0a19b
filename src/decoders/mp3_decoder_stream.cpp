// Mp3Decoder: the decode thread of an internet stream (format 4).
//
//  1. Play learns at once that playback has begun, so it never waits for
//     the network; then NetStream::Connect. Failing, the thread ends without a message (the
//     client's status texts have said why).
//  2. The format: in the first 2048 bytes, the first header whose frame is
//     followed by another header. None: the thread ends. These 2048 bytes
//     are never heard: decoding starts with fresh bytes. 2332 is posted.
//  3. Playback begins as for a file (StreamFeed step 1), with an input block
//     of 2048 bytes. Each pass tops the block up from the client: when it
//     holds fewer bytes than are wanted, a live stream holds the output and
//     prefills again (a stall is heard as a pause, with no message), and an
//     ended one with fewer than 512 bytes left is over once those bytes and
//     the ones the block kept back are decoded: no frame of a finished
//     stream goes unheard.
//  4. Frames are decoded while the block holds them: a frame the back-end
//     refuses sends the search to the next header of the same version and
//     layer (one byte on when the refused header is at the front); a
//     back-end that wants more input (a frame not yet whole) ends the pass
//     and keeps the frame's bytes for the next. While more can come, a pass
//     keeps more than 512 bytes back; once the server has finished and its
//     last bytes are read, the block is decoded to its end.
//  5. The end of the server's data, or a read that fails, ends the track
//     (StreamFeed steps 4 and 5: the end mark, the drain, 2568); a stop ends
//     it quietly. The client is disconnected and the back-end closed
//     whenever the thread ends.
#include <algorithm>
#include <memory>
#include <new>

#include "decoders/mp3_back_end.h"
#include "decoders/mp3_decoder.h"
#include "net/net_stream.h"
#include "platform/message_target.h"

namespace decoders {
namespace {

constexpr std::size_t kStreamBlock = 2048;
constexpr std::size_t kLeastLeft = 512;
constexpr std::uint32_t kQueueHeadroom = 100;

// The first header in `bytes` whose frame is followed by another header.
std::optional<Mp3FrameHeader> FindFramePair(const std::uint8_t* bytes, std::size_t length) {
  for (std::size_t at = 0; at + kMp3HeaderBytes <= length; ++at) {
    const std::optional<Mp3FrameHeader> header = ParseMp3FrameHeader(bytes + at);
    if (!header || at + header->frameBytes + kMp3HeaderBytes > length) continue;
    if (ParseMp3FrameHeader(bytes + at + header->frameBytes)) return header;
  }
  return std::nullopt;
}

}  // namespace

void Mp3Decoder::StreamPump() {
  struct DisconnectOnExit {
    net::NetStream& stream;
    ~DisconnectOnExit() { stream.Disconnect(); }
  } disconnect{*netStream};
  thread.Begun();
  if (!netStream->Connect() || !FindStreamFormat()) return;
  if (threadNotify != nullptr) threadNotify->Post(playback::kMessageFormatChanged, 0, 0);
  std::unique_ptr<std::int16_t[]> pcm;
  if (!BeginPlayback(pcm)) return;
  const bool ended = PumpStream(pcm.get());
  feed.EndLoop();
  {
    std::lock_guard guard(seekLock);
    threadBackEnd->close(1);
  }
  if (ended) feed.FinishTrack(threadNotify);
}

bool Mp3Decoder::FindStreamFormat() {
  std::uint8_t head[kStreamBlock];
  std::uint32_t got = 0;
  if (!netStream->Read(head, sizeof head, &got) || got < sizeof head) return false;
  const std::optional<Mp3FrameHeader> found = FindFramePair(head, got);
  if (!found) return false;
  std::lock_guard guard(seekLock);
  format = *found;
  return true;
}

bool Mp3Decoder::PumpStream(std::int16_t* pcm) {
  Mp3InputBuffer block(kStreamBlock);
  while (!feed.StopRequested()) {
    if (!feed.WaitForRoom(PcmBufferBytes() / 2, kQueueHeadroom)) return false;
    const std::size_t wanted = block.Room();
    const std::uint32_t available = netStream->BytesAvailable();
    const bool ended = netStream->HasEnded();
    std::size_t asked = wanted;
    if (available < wanted) {
      if (!ended) {
        feed.HoldForPrefill();
      } else if (available < kLeastLeft) {
        return DecodeStreamTail(block, pcm, available);
      } else {
        asked = available;
      }
    }
    std::uint8_t fresh[kStreamBlock];
    std::uint32_t got = 0;
    if (!netStream->Read(fresh, static_cast<std::uint32_t>(asked), &got) || got == 0) return true;
    block.Append(fresh, got);
    // Only once nothing more can come are the last bytes of the block decoded.
    const bool exhausted = netStream->HasEnded() && netStream->BytesAvailable() == 0;
    switch (DecodeStreamBlock(block, pcm, exhausted)) {
      case StreamStep::kGoOn:
        break;
      case StreamStep::kEnded:
        return true;
      case StreamStep::kStopped:
        return false;
    }
  }
  return false;
}

// The server has finished and less than a pass is left: the bytes still
// buffered and those the block kept back are the stream's last frames. They
// are decoded to the end (the back-end supplies the guard behind the last
// frame) before the stream is over. False when a stop came meanwhile.
bool Mp3Decoder::DecodeStreamTail(Mp3InputBuffer& block, std::int16_t* pcm, std::uint32_t available) {
  const auto asked = static_cast<std::uint32_t>(std::min<std::size_t>(available, block.Room()));
  std::uint8_t rest[kStreamBlock];
  std::uint32_t got = 0;
  if (asked != 0 && netStream->Read(rest, asked, &got)) block.Append(rest, got);
  if (block.Fill() == 0) return true;
  return DecodeStreamBlock(block, pcm, true) != StreamStep::kStopped;
}

Mp3Decoder::StreamStep Mp3Decoder::DecodeStreamBlock(Mp3InputBuffer& block, std::int16_t* pcm, bool ended) {
  const Mp3FrameMatch match = FormatMatch();
  while (block.Fill() != 0) {
    std::uint32_t pcmBytes = 0;
    int answer = 0;
    std::uint32_t seekStamp = 0;
    {
      std::lock_guard guard(seekLock);
      seekStamp = feed.SeekStamp();
      answer = block.Decode(*threadBackEnd, reinterpret_cast<std::uint8_t*>(pcm), PcmBufferBytes(), pcmBytes);
    }
    if (answer == Mp3BackEnd::kNoCodec) return StreamStep::kEnded;
    if (answer == Mp3BackEnd::kNeedsInput) return ended ? StreamStep::kEnded : StreamStep::kGoOn;
    if (answer == Mp3BackEnd::kUndecodable) {
      const auto hit = FindMp3FrameHeader(block.Data(), block.Fill(), 0, 1, &match);
      if (!hit) {
        block.Clear();
        return StreamStep::kGoOn;
      }
      // A sound header whose frame doesn't decode: step past its first byte.
      block.Consume(*hit == 0 ? 1 : *hit);
      if (*hit == 0 && block.Fill() < kLeastLeft) return StreamStep::kGoOn;
      continue;
    }
    if (pcmBytes != 0) {
      if (!feed.WaitForRoom(pcmBytes / 2, kQueueHeadroom)) return StreamStep::kStopped;
      switch (feed.WriteSamples(pcm, pcmBytes / 2, seekStamp)) {
        case playback::StreamFeed::WriteResult::kWritten:
        case playback::StreamFeed::WriteResult::kStale:
          break;
        case playback::StreamFeed::WriteResult::kStopped:
          return StreamStep::kStopped;
        case playback::StreamFeed::WriteResult::kFailed:
          return StreamStep::kEnded;
      }
    }
    if (!ended && block.Fill() <= kLeastLeft) return StreamStep::kGoOn;
  }
  return StreamStep::kGoOn;
}

}  // namespace decoders
