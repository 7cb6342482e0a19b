// The user's equalizer values: ten band positions, the preamp and the on/off
// flag. Slider positions run from 0 to 27, 14 being flat. Values loaded from
// the settings are not checked; whoever turns them into gains must.
#pragma once

#include <array>
#include <cstdint>

namespace effects {

inline constexpr int kBandCount = 10;
inline constexpr int kSliderMaximum = 27;
inline constexpr int kSliderFlat = 14;

struct EqualizerValues {
  std::uint32_t enabled = 0;
  std::array<std::int32_t, kBandCount> bands = {14, 14, 14, 14, 14, 14, 14, 14, 14, 14};
  std::int32_t preamp = kSliderFlat;
};

}  // namespace effects
