// One step of each filter in the system's integer arithmetic.
//
// Histories and accumulators are 32-bit words that wrap on overflow, as the
// registers of the processor the filters were tuned on do; products in the
// precise filters are 64-bit and only their low 32 bits are kept after the
// shift. Wrapping is written through unsigned arithmetic so that it is
// defined behaviour.
#pragma once

#include <algorithm>
#include <cstdint>

#include "effects/filter_history.h"
#include "effects/filter_tables.h"

namespace effects {

inline constexpr std::int32_t kUnityPreamp = 14;
inline constexpr std::int32_t kPlainOffset = 12500;

inline std::int32_t WrapAdd(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

inline std::int32_t WrapSubtract(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

inline std::int32_t WrapMultiply(std::int32_t a, std::int32_t b) {
  return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

// (value * factor) >> 28 with a 64-bit product, keeping the low 32 bits.
inline std::int32_t MultiplyQ28(std::int32_t factor, std::int32_t value) {
  return static_cast<std::int32_t>((static_cast<std::int64_t>(factor) * value) >> 28);
}

// One sample through a filter with 28 fractional bits.
inline std::int32_t StepQ28(const BandCoefficients& k, BiquadState& state, std::int32_t x) {
  const std::int64_t sum = static_cast<std::int64_t>(k.alpha) * WrapSubtract(x, state.x2) +
                           static_cast<std::int64_t>(k.gamma) * state.y1 -
                           static_cast<std::int64_t>(k.beta) * state.y2;
  const auto y = static_cast<std::int32_t>(sum >> 28);
  state.x2 = state.x1;
  state.x1 = x;
  state.y2 = state.y1;
  state.y1 = y;
  return y;
}

// One sample through a filter with 14 fractional bits, all in 32 bits.
inline std::int32_t StepQ14(const BandCoefficients& k, BiquadState& state, std::int32_t x) {
  const std::int32_t sum = WrapAdd(WrapSubtract(WrapMultiply(k.alpha, WrapSubtract(x, state.x2)),
                                                WrapMultiply(k.beta, state.y2)),
                                   WrapMultiply(k.gamma, state.y1));
  const std::int32_t y = sum >> 14;
  state.x2 = state.x1;
  state.x1 = x;
  state.y2 = state.y1;
  state.y1 = y;
  return y;
}

inline std::int16_t ClipToSample(std::int64_t value) {
  return static_cast<std::int16_t>(std::clamp<std::int64_t>(value, INT16_MIN, INT16_MAX));
}

// The preamp factor (preamp + 2) / 16, applied after filtering on the precise path.
inline std::int32_t ApplyPreamp(std::int32_t value, std::int32_t preamp) {
  return preamp == kUnityPreamp ? value : (value * (preamp + 2)) >> 4;
}

}  // namespace effects
