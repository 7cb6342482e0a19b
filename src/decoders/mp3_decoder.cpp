// Mp3Decoder: the window thread's side. The decode thread is in
// mp3_decoder_pump.cpp, the texts of tags in mp3_decoder_tags.cpp.
//
// Seek, in a file that plays (not in a stream, not when stopped, and only
// to a time before the end):
//  1. Under seekLock: the back-end's reset and setformat; the frame at
//     sample (rate × ms ÷ 1000) ÷ samplesPerFrame × average frame length
//     behind the first frame.
//  2. From there, the format-locked search for a frame that passes the
//     three-frame test (three frames of the file's version, layer and
//     channels in a row, with bytes behind them); a candidate that fails is
//     passed by four bytes.
//  3. None: the file goes back to the computed offset and the seek fails.
//     Playback carries on from there in the old stream, audibly jumping,
//     and the position display doesn't move.
//  4. Found: the stream hand-over (StreamFeed step 6); the input buffer is
//     emptied, the next two frames give no sound (their bit reservoir lies
//     before the seek), and the position is the target at once.
//
// Play waits for the thread to say that playback has begun, or for its end,
// whichever comes first; it succeeds only in the first case, so a worker
// that dies early never hangs the window.
#include "decoders/mp3_decoder.h"

#include <algorithm>

#include "decoders/mp3_back_end.h"
#include "decoders/mp3_frame_search.h"
#include "net/net_stream.h"
#include "platform/text.h"
#include "playback/audio_output.h"
#include "playback/byte_source.h"

namespace decoders {

Mp3Decoder::~Mp3Decoder() {
  feed.RequestStop();
  if (isStream && netStream != nullptr) netStream->Disconnect();  // a read may wait in the network
  thread.Join();
}

void Mp3Decoder::SetNetStream(net::NetStream* stream) {
  netStream = stream;
}

bool Mp3Decoder::CanSeek() {
  return !isStream;
}

void Mp3Decoder::SetDecodePriority(int priority) {
  decodePriority = priority;
  thread.SetPriority(priority);
}

std::uint32_t Mp3Decoder::GetDuration() {
  if (isStream || file == nullptr || format.sampleRate == 0) return 0;
  const double ms = static_cast<double>(totalSamples) / format.sampleRate * 1000.0;
  return ms >= 4294967295.0 ? 0xFFFFFFFFu : static_cast<std::uint32_t>(ms);
}

std::uint32_t Mp3Decoder::GetPosition() {
  const std::uint64_t played = feed.PlayedFrames();
  // A stream's thread finds its format: the feed's copy is the one to read.
  const std::uint32_t rate = isStream ? feed.SampleRate() : format.sampleRate;
  if ((!isStream && format.samplesPerFrame == 0) || rate == 0) return 0;
  const double ms = static_cast<double>(seekBase.load(std::memory_order_relaxed) + played) * 1000.0 / rate;
  return static_cast<std::uint32_t>(std::min(ms, 4294967295.0));
}

bool Mp3Decoder::Seek(int positionMs) {
  if (isStream || file == nullptr || state == playback::kStateStopped || threadBackEnd == nullptr)
    return false;
  const int ms = std::max(positionMs, 0);
  if (static_cast<std::uint32_t>(ms) >= GetDuration()) return false;

  std::lock_guard guard(seekLock);
  threadBackEnd->reset();
  threadBackEnd->setformat(MakeMp3WaveFormat(static_cast<std::uint16_t>(format.channels), format.sampleRate));
  const auto target = static_cast<std::uint32_t>(static_cast<double>(format.sampleRate) * ms * 0.001);
  const std::uint64_t frameIndex = target / format.samplesPerFrame;
  const auto offset = static_cast<std::int64_t>(frameIndex * format.frameBytes) + firstFrameOffset;
  if (file->Seek(offset, playback::ByteSource::kFromBegin) != offset) return false;
  if (!FindCheckedFrame()) {
    file->Seek(offset, playback::ByteSource::kFromBegin);
    return false;
  }
  const playback::StreamFeed::HandOverResult handOver = feed.HandOver();
  if (handOver == playback::StreamFeed::HandOverResult::kLoopEnded ||
      handOver == playback::StreamFeed::HandOverResult::kRefused) {
    return false;
  }
  input.Clear();
  discardingAfterSeek = true;
  discardedFrames = 0;
  seekBase.store(target, std::memory_order_relaxed);
  return true;
}

bool Mp3Decoder::FindCheckedFrame() {
  const Mp3FrameMatch match = FormatMatch();
  for (;;) {
    const std::int64_t candidate = FindFrameSync(*file, &match);
    if (candidate == kNoFrame) return false;
    if (ThreeFramesFollow(*file, format)) return true;
    const std::int64_t next = file->Seek(candidate + 4, playback::ByteSource::kFromBegin);
    if (next == 0 || next == playback::ByteSource::kSeekFailed) return false;
  }
}

void Mp3Decoder::Stop() {
  if (state == playback::kStatePaused && output != nullptr) output->Pause(0);
  feed.Stop(closing);
  // With a stream open, a stop also disconnects the stream client, which
  // breaks a connection or a read still under way.
  if (isStream && netStream != nullptr) netStream->Disconnect();
  thread.Join();
  state = playback::kStateStopped;
  seekBase.store(0, std::memory_order_relaxed);
}

void Mp3Decoder::TogglePause() {
  if (file == nullptr && !isStream) return;
  if (state == playback::kStatePlaying) {
    state = playback::kStatePaused;
    if (output != nullptr) output->Pause(1);
  } else if (state == playback::kStatePaused) {
    state = playback::kStatePlaying;
    if (output != nullptr) output->Pause(0);
  }
}

bool Mp3Decoder::Play() {
  closing = false;
  if (state == playback::kStatePaused) {
    TogglePause();
    return true;
  }
  if (state != playback::kStateStopped) return false;
  // A stream's pump signals at once that playback has begun, so Play
  // doesn't wait for the network.
  if ((isStream ? netStream == nullptr : file == nullptr) || backEnd == nullptr) return false;
  thread.Join();  // before the fields an old thread read change
  threadBackEnd = backEnd;
  threadNotify = notifyWindow;
  seekBase.store(0, std::memory_order_relaxed);
  feed.Arm(output);
  const bool begun = isStream ? thread.Start([this] { StreamPump(); }, decodePriority)
                              : thread.Start([this] { FilePump(); }, decodePriority);
  if (!begun) return false;
  state = playback::kStatePlaying;
  return true;
}

void Mp3Decoder::Close() {
  closing = true;
  Stop();
  thread.Join();
  std::lock_guard guard(seekLock);
  if (file != nullptr) file->Close();
  file = nullptr;
  isStream = false;
  path.clear();
}

bool Mp3Decoder::Open(const std::string& newPath) {
  closing = false;
  if (platform::StartsWithIgnoreCase(newPath, "http://")) {
    if (netStream == nullptr || !netStream->SetUrl(newPath)) return false;
    std::lock_guard guard(seekLock);
    isStream = true;
    path = newPath;
    file = nullptr;
    format = {};  // the stream's thread finds it; a stream without frames fails
    return true;
  }
  std::lock_guard guard(seekLock);
  if (source == nullptr || source->Open(newPath.c_str()) == 0) return false;
  Mp3FileFormat analysed;
  if (!IsMpegAudio(*source) || !AnalyseMp3File(*source, analysed)) {
    source->Close();
    return false;
  }
  file = source;
  isStream = false;
  path = newPath;
  format = analysed.format;
  firstFrameOffset = analysed.firstFrameOffset;
  totalSamples = analysed.totalSamples;
  return true;
}

}  // namespace decoders
