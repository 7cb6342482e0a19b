// The process-wide playback settings.
//
// One record that decode threads and the stream client read without a lock:
// the words change only while a dialog is open on the window thread, and a
// reader that sees the old value for one more block does no harm. They are
// relaxed atomics for that reason, not for ordering.
//
// `crossfade`, `gapless`, `trimSilence`, `startOnLaunch` and
// `continueFromLastPosition` are kept in the settings (WndSettings). The
// stream values have no control anywhere and keep their initial values.
#pragma once

#include <atomic>
#include <cstdint>
#include <string>

namespace playback {

struct PlaybackSettings {
  std::atomic<std::uint32_t> crossfade{1};
  std::atomic<std::uint32_t> gapless{1};
  std::atomic<std::uint32_t> trimSilence{1};
  std::atomic<std::uint32_t> prebufferPercent{25};
  std::atomic<std::uint32_t> rebufferPercent{50};
  std::atomic<std::uint32_t> streamBufferSize{0x20000};
  // Proxy as "host:port", empty for none. Set before any stream connects.
  std::string proxyAddress;
  std::atomic<std::uint32_t> useDeviceVolume{1};
  std::atomic<std::uint32_t> startOnLaunch{0};
  std::atomic<std::uint32_t> continueFromLastPosition{0};

  static bool Read(const std::atomic<std::uint32_t>& word) {
    return word.load(std::memory_order_relaxed) != 0;
  }
  static void Write(std::atomic<std::uint32_t>& word, bool on) {
    word.store(on ? 1 : 0, std::memory_order_relaxed);
  }
};

// The one record of the process.
PlaybackSettings& Playback();

}  // namespace playback
