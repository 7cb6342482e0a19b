// The memory of the equalizer's filters.
//
// Every filter remembers its last three inputs and outputs in three slots that
// are never moved: a HistoryIndex names which slot holds sample n, n-1 and
// n-2, and advancing by one sample turns the names instead of the values. The
// slot of sample n is always written before it is read, so the fast loops
// carry only n-1 and n-2 (a BiquadState) and hand them back at the end of a
// pass; the outputs are the same as if every sample had gone through the
// slots.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "effects/equalizer_values.h"

namespace effects {

inline constexpr int kChannelCount = 2;

struct FilterHistory {
  std::array<std::int32_t, 3> x{};
  std::array<std::int32_t, 3> y{};
};

// One history per band and channel: 10 x 2 x 24 = 480 bytes.
using BankHistory = std::array<std::array<FilterHistory, kChannelCount>, kBandCount>;

// Slots of sample n, n-1 and n-2. Starts as (0, 2, 1); advancing one sample
// gives (1, 0, 2), then (2, 1, 0), then (0, 2, 1) again.
struct HistoryIndex {
  std::int32_t current = 0;
  std::int32_t previous = 2;
  std::int32_t beforePrevious = 1;

  void Advance(std::size_t samples) {
    const auto step = static_cast<std::int32_t>(samples % 3);
    current = (current + step) % 3;
    previous = (previous + step) % 3;
    beforePrevious = (beforePrevious + step) % 3;
  }
};

// The two latest inputs and outputs of one filter.
struct BiquadState {
  std::int32_t x1 = 0;
  std::int32_t x2 = 0;
  std::int32_t y1 = 0;
  std::int32_t y2 = 0;
};

inline BiquadState LoadState(const FilterHistory& history, const HistoryIndex& index) {
  return {history.x[index.previous], history.x[index.beforePrevious], history.y[index.previous],
          history.y[index.beforePrevious]};
}

// `index` is the index after the pass, so its n-1 slot takes the latest sample.
inline void StoreState(FilterHistory& history, const HistoryIndex& index, const BiquadState& state) {
  history.x[index.previous] = state.x1;
  history.x[index.beforePrevious] = state.x2;
  history.y[index.previous] = state.y1;
  history.y[index.beforePrevious] = state.y2;
}

}  // namespace effects
