#include "effects/slider_gain.h"

#include <algorithm>

#include "effects/equalizer_values.h"

namespace effects {

BandGain GainForSlider(std::int32_t position) {
  const std::int32_t clamped = std::clamp(position, 0, kSliderMaximum);
  // The distance from the end goes through single precision, the gain is
  // computed in double and rounded to single, and the fixed-point values are
  // truncated from single-precision products: each rounding shows in the
  // gains (position 14 gives 6189 and 101408952), so each is kept.
  const auto distance = static_cast<float>(kSliderMaximum - clamped);
  const auto gain = static_cast<float>(static_cast<double>(distance) * 0.04444444444444444 - 0.2);
  return {static_cast<std::int32_t>(gain * 16384.0f), static_cast<std::int32_t>(gain * 268435456.0f)};
}

std::int32_t PreampForSlider(std::int32_t position) {
  const std::int64_t preamp = std::int64_t{kSliderMaximum} - position;
  return static_cast<std::int32_t>(std::clamp<std::int64_t>(preamp, 0, kSliderMaximum));
}

}  // namespace effects
