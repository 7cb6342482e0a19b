// The output side of a decode thread: the one AudioOutput stream it feeds,
// and the steps of the PCM push path that every decoder takes the same way.
//
// A decoder owns one StreamFeed beside its own source lock. The feed holds
// `outputLock`, which guards every call that writes or changes the current
// stream and the switch of the handle; a decoder takes its source lock
// before it, never the other way (HandOver runs with the source lock held).
//
// The protocol (numbered as the decoders' own comments refer to it):
//  1. OpenStream: a held stream whose queue holds two seconds, the newest
//     stream of the same shape again when gapless is on and crossfade off;
//     with crossfade a fade-in of 2000 ms, with trimSilence the silence
//     threshold 500.
//  2. WaitForRoom, then WriteSamples. A block decoded before a seek is
//     dropped (its seek stamp is old), so no sound from before a seek
//     reaches the new stream.
//  3. Prefill: once the queue is half full the stream plays, and the silence
//     threshold is armed again, trimming on or off, so a quiet stretch after
//     the first second is dropped once. The player has always done so.
//  4. EndLoop: a stream still held in prefill starts, so a track shorter
//     than one second sounds (with crossfade only after step 5 has faded
//     it); from now on a seek has nothing to feed.
//  5. FinishTrack, at the natural end only: with trimSilence arm the
//     threshold, and without gapless write the end mark (which trims the
//     tail); with crossfade fade out all that is queued; otherwise, without
//     gapless, write the end mark and wait until the queue has drained. Then
//     post 2568. With gapless the stream stays open for the next track.
//  6. HandOver (a seek): a new held stream, the same one again with gapless
//     and no crossfade, fading in over 1000 ms with crossfade. The old one
//     fades out over 1000 ms and plays on by itself (crossfade, and no
//     seek within the last four position polls), or is flushed (the reused
//     stream) or removed. seekGuard = 4, and the thread prefills again.
//  7. Stop: the stop flag first, then the stream fades out and plays
//     (crossfade; one held in prefill is heard fading too), is removed, or
//     inside Close is left alone for the next track (one still held in
//     prefill starts, as at step 4); the handle is forgotten.
//
// Threads: Arm, HandOver, Stop and PlayedFrames on the window thread; the
// rest on the decode thread. The handle, the stream's shape, the seek guard
// and the stop flag are relaxed atomics, so a position poll takes no lock.
#pragma once

#include <atomic>
#include <cstdint>
#include <mutex>

namespace platform {
class MessageTarget;
}

namespace playback {

class AudioOutput;

class StreamFeed {
 public:
  enum class WriteResult {
    kWritten,
    kStale,    // decoded before a seek: dropped
    kStopped,  // a stop came: nothing was written
    kFailed,   // the stream has ended or is gone
  };
  enum class HandOverResult {
    kNoStream,    // the thread hasn't opened its stream yet: nothing to hand over
    kHandedOver,  // the new stream is current
    kRefused,     // the output refused a new stream; the old one plays on
    kLoopEnded,   // the thread has left its loop: nothing would feed a new stream
  };

  // --- Window thread, while no decode thread runs ---------------------------
  // A new decode thread will feed `output` (null: it opens nothing).
  void Arm(AudioOutput* output);
  AudioOutput* Output() const { return output; }

  // --- Decode thread -----------------------------------------------------------
  // Step 1. False after a stop, without an output, or when it refuses.
  bool OpenStream(std::uint32_t sampleRate, std::uint32_t channels);
  // Waits until `samples` more fit below the queue's capacity less
  // `headroom` (16-bit values), or the queue is empty. Looks again after
  // 1 ms, then 2, 4, 8 and every 10 ms: a device that plays faster than real
  // time is fed at once, a real one costs a few looks per device buffer.
  // A stream that has gone reads as empty, so the write that follows fails.
  // False when a stop came.
  bool WaitForRoom(std::uint32_t samples, std::uint32_t headroom);
  // The count of hand-overs so far; take it with the decoder's source lock
  // held when the block is read, and give it to WriteSamples.
  std::uint32_t SeekStamp() const { return seekCount.load(std::memory_order_relaxed); }
  // Step 2 and 3. `count` is in 16-bit values.
  WriteResult WriteSamples(const std::int16_t* samples, std::uint32_t count, std::uint32_t seekStamp);
  // Step 4.
  void EndLoop();
  // A network source ran short: the stream is held and prefills again,
  // playing on once its queue is half full (step 3). Nothing before the
  // stream is open, after a stop, or while it prefills anyway.
  void HoldForPrefill();
  // Step 5. Does nothing once a stop has come.
  void FinishTrack(platform::MessageTarget* notify);
  bool StopRequested() const { return stopFlag.load(std::memory_order_relaxed) != 0; }

  // --- Window thread -----------------------------------------------------------
  // Step 6, with the decoder's source lock held. Every result but
  // kLoopEnded and kRefused counts as a seek: guard, prefill and stamp.
  HandOverResult HandOver();
  // Step 7. `closing`: inside Close, the stream stays for the next track.
  void Stop(bool closing);
  // Only the stop flag: the thread leaves and the output isn't touched (a
  // decoder's destructor).
  void RequestStop() { stopFlag.store(1, std::memory_order_relaxed); }
  // Frames the device has played of the current stream; 0 without one.
  // Each call also counts the seek guard down.
  std::uint32_t PlayedFrames();
  // Of the current stream; 0 until the thread has opened it.
  std::uint32_t SampleRate() const { return sampleRate.load(std::memory_order_relaxed); }
  std::uint32_t Channels() const { return channels.load(std::memory_order_relaxed); }

 private:
  std::uint32_t OpenHeldStream(bool reuse) const;
  void WaitUntilDrained();

  AudioOutput* output = nullptr;  // set by Arm while no thread runs

  std::mutex outputLock;
  // Guarded by outputLock.
  bool prefilling = false;
  bool loopEnded = false;
  bool startAfterFade = false;  // a short track with crossfade: EndLoop left it held
  // The atomics are also read without the lock; seekCount changes only
  // under both the decoder's source lock and outputLock.
  std::atomic<std::uint32_t> handle{0xFFFFFFFFu};
  std::atomic<std::uint32_t> sampleRate{0};
  std::atomic<std::uint32_t> channels{0};
  std::atomic<std::uint32_t> capacity{0};  // samples: two seconds
  std::atomic<std::uint32_t> seekGuard{0};
  std::atomic<std::uint32_t> seekCount{0};
  std::atomic<std::uint32_t> stopFlag{0};
};

}  // namespace playback
