// Microsoft ADPCM: one block to 16-bit samples.
//
// A block starts with a header, field by field across the channels: a
// predictor index byte for every channel, then iDelta (i16) for every
// channel, then sample1 (i16), then sample2 (i16). The output begins with
// sample2 of each channel, then sample1 of each channel. Every further byte
// holds two 4-bit codes, high nibble first, the channel cycling at each
// nibble. With s1 the previous and s2 the one before in the same channel:
//
//   step  = delta
//   delta = max((kAdaption[code] * step) >> 8, 16)
//   value = (code as signed 4-bit) * step + ((coef1 * s1 + coef2 * s2) >> 8)
//
// clipped to 16 bits. A predictor index beyond the table uses entry 0 and the
// block still decodes. The step is held below 2^21 so that damaged data can't
// overflow the arithmetic; a real encoder's steps stay far below.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace decoders {

struct AdpcmCoefficient {
  std::int16_t first = 0;   // weight of the previous sample, Q8
  std::int16_t second = 0;  // weight of the one before
};

// The diagnostic of a predictor index beyond the table. Nothing shows it.
inline constexpr const char* kAdpcmPredictorDiagnostic = "MSADPCM bpred >= nCoef, arbitrarily using 0\n";

// Decodes one block of `bytes` bytes into `output`, which holds channels *
// samplesPerBlock samples. The frame count is samplesPerBlock, or for a
// block too short to hold them, (bytes - 7 * channels) * 2 / channels + 2
// (the short last block of a file). Returns the frame count, 0 when the
// block can't even hold its header. `diagnostic` (may be null) gets the
// predictor diagnostic, or null.
std::uint32_t DecodeAdpcmBlock(const std::uint8_t* block, std::size_t bytes, std::uint32_t channels,
                               std::uint32_t samplesPerBlock, std::span<const AdpcmCoefficient> coefficients,
                               std::int16_t* output, const char** diagnostic);

}  // namespace decoders
