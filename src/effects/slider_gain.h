// From the equalizer dialog's slider positions to filter gains.
//
// A slider position runs from 0 (strongest) to 27, 14 being the centre. Values
// come unchecked from the settings, so every int is accepted here.
#pragma once

#include <cstdint>

namespace effects {

struct BandGain {
  std::int32_t q14 = 0;  // 14 fractional bits
  std::int32_t q28 = 0;  // 28 fractional bits
};

// The gain of one band: (27 - position) * 0.0444... - 0.2, from -0.2 at 27 to
// 1.0 at 0, rounded through single precision as the gains were tuned.
// Positions outside 0 to 27 count as the nearest end.
BandGain GainForSlider(std::int32_t position);

// The preamp value 27 - position, clipped to 0 to 27. The factor it gives is
// (preamp + 2) / 16, so unity (14) comes from slider position 13, one step
// away from the slider's centre; the centre gives 15/16.
std::int32_t PreampForSlider(std::int32_t position);

}  // namespace effects
