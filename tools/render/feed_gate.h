// Keeps an unpaced capture device from outrunning the decoders.
//
// The output engine's mixer waits for a starving stream's data inside its
// stream lock. A device that plays as fast as the mixer can fill it starves
// the streams all the time, and a decoder's control call made meanwhile
// (the play at the end of its prefill, a fade at the end of its track) then
// waits until underrun strikes end the stream, which costs a second and the
// stream's last samples. The capture device, given this gate, plays a
// buffer only once the engine has filled the one before (so the mixer has at
// most one buffer to fill) and only while the newest stream has a block
// queued or has ended, or no stream is left; a count that has stood still
// for kSettleMs lets the buffer go too (a hand-over to the next track). So
// the mixer waits for data outside its locks. The gate doesn't poll: it
// sleeps on the stream's queue, which the decoder's write wakes once the
// block is there.
//
// Threads: Ready runs on the devices' pump threads, Watch on the thread that
// owns the output; Watch(nullptr) must come before the output goes (it
// waits for a Ready under way, a millisecond or so).
#pragma once

#include <chrono>
#include <cstdint>
#include <mutex>

namespace playback {
class AudioOutput;
}

namespace render {

class FeedGate {
 public:
  static constexpr std::chrono::milliseconds kSettleMs{20};

  void Watch(playback::AudioOutput* output);
  // True when the device may play its next buffer; otherwise waits up to
  // `waitMs` for that (the pump's feed contract).
  bool Ready(int waitMs);

 private:
  using Clock = std::chrono::steady_clock;

  // With `lock` held: true for a block queued or a count that settled.
  bool Look(std::uint32_t newest);

  std::mutex lock;
  playback::AudioOutput* watched = nullptr;
  std::uint32_t lastHandle = 0;
  std::uint32_t lastQueued = 0;
  Clock::time_point lastMove;
};

}  // namespace render
