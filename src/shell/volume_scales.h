// The three scales of the volume, and the conversions between them. The
// conversions truncate, and a way through the slider scale and back loses
// about 2.4%: slider 1000 gives 63999. That is how the program has always
// behaved, and each start takes that way once.
#pragma once

#include <cstdint>

namespace shell {

inline constexpr std::uint32_t kDeviceVolumeMaximum = 65535;  // wave device, per channel
inline constexpr std::int32_t kSliderMaximum = 1000;          // the skin's VOLUME control

inline std::int32_t DeviceToSlider(std::uint32_t device) {
  return static_cast<std::int32_t>(static_cast<std::uint64_t>(device) * 1000 / kDeviceVolumeMaximum);
}

inline std::uint32_t SliderToDevice(std::int32_t slider) {
  return static_cast<std::uint32_t>(static_cast<std::int64_t>(slider) * 65535 >> 10);
}

inline std::int32_t DeviceToPercent(std::uint32_t device) {
  const auto percent = static_cast<std::int64_t>(device) * 100 / kDeviceVolumeMaximum;
  return static_cast<std::int32_t>(percent < 0 ? 0 : percent > 100 ? 100 : percent);
}

}  // namespace shell
