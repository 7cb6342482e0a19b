// The fixed coefficients of the equalizer's ten band-pass filters.
//
// Each band is the biquad
//     y[n] = alpha * (x[n] - x[n-2]) + gamma * y[n-1] - beta * y[n-2]
// with alpha = (1 - beta) / 2 and gamma = (1 + beta) * cos(w0), which has a
// gain of exactly 1 at its centre. The tables are designed for 44100 Hz and
// serve every sample rate unchanged, so at other rates the centres slide with
// the rate. The plain filter bank uses the table with 14 fractional bits, the
// precise bank and extra bass the one with 28.
#pragma once

#include <array>
#include <cstdint>

#include "effects/equalizer_values.h"

namespace effects {

struct BandCoefficients {
  std::int32_t beta;
  std::int32_t alpha;
  std::int32_t gamma;
};

using CoefficientTable = std::array<BandCoefficients, kBandCount>;

// Centre of each band at 44100 Hz.
inline constexpr std::array<int, kBandCount> kBandCentreHz = {60,   170,  310,   600,   1000,
                                                              3000, 6000, 12000, 14000, 16000};

inline constexpr CoefficientTable kCoefficientsQ14 = {{
    {16289, 47, 32672},
    {16111, 136, 32485},
    {15885, 249, 32238},
    {15427, 478, 31695},
    {14819, 782, 30887},
    {12114, 2134, 25934},
    {8961, 3711, 16635},
    {5082, 5650, -2972},
    {4377, 6003, -8538},
    {3965, 6209, -13245},
}};

inline constexpr CoefficientTable kCoefficientsQ28 = {{
    {266882570, 776442, 535298466},
    {263966111, 2234672, 532245407},
    {260269902, 4082776, 528189750},
    {252769356, 7833049, 519301549},
    {242802136, 12816659, 506057464},
    {198481413, 34977021, 424910744},
    {146827934, 60803760, 272548910},
    {83277296, 92579079, -48700827},
    {71722302, 98356576, -139902499},
    {64964713, 101735371, -217022329},
}};

}  // namespace effects
