// The volume of the wave device, one value for the whole process and kept
// across runs, as a phone keeps its volume.
//
// The value is packed as the platform packs it: the left channel in the low
// 16 bits, the right in the high ones, each 0 to 65535. It lives in the
// registry as HKEY_LOCAL_MACHINE\Platform\WaveVolume (REG_DWORD); a missing
// or malformed value means full volume. The wave back-ends apply it to every
// sample they play, as an integer gain (see VolumeGain).
//
// Threads: Get, Set and Reload from any thread; the back-ends' audio threads
// only call Get, which never touches the registry.
#pragma once

#include <atomic>
#include <cstdint>

namespace platform {

class Registry;

// Unity in both channels.
inline constexpr std::uint32_t kFullVolume = 0xFFFFFFFFu;

inline constexpr char kDeviceVolumeKey[] = "Platform";
inline constexpr char kDeviceVolumeValue[] = "WaveVolume";

class DeviceVolume {
 public:
  // Reads the kept value from `registry`, which must outlive this object.
  explicit DeviceVolume(Registry& registry);

  // waveOutGetVolume: the packed value.
  std::uint32_t Get() const { return volume.load(std::memory_order_relaxed); }
  // waveOutSetVolume: takes effect at once and is stored durably. False if
  // the registry could not be written; the volume applies all the same.
  bool Set(std::uint32_t packed);
  // Reads the kept value again, as a new run would.
  void Reload();

 private:
  Registry& registry;
  std::atomic<std::uint32_t> volume;
};

// The device volume of this process, over Registry::Process(), read on
// first use.
DeviceVolume& ProcessDeviceVolume();

// The integer gain of a channel volume (0 to 65535): 0 to 65536, where 65535
// gives exactly 65536, unity. A sample plays as (sample * gain) >> 16.
constexpr std::uint32_t VolumeGain(std::uint32_t channelVolume) {
  channelVolume &= 0xFFFFu;
  return channelVolume + (channelVolume >> 15);
}

// The product of two gains, still 0 to 65536.
constexpr std::uint32_t CombineGains(std::uint32_t first, std::uint32_t second) {
  return static_cast<std::uint32_t>((static_cast<std::uint64_t>(first) * second) >> 16);
}

}  // namespace platform
