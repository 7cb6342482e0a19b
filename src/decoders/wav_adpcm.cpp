#include "decoders/wav_adpcm.h"

#include <algorithm>
#include <array>
#include <memory>

namespace decoders {
namespace {

constexpr std::array<std::int64_t, 16> kAdaption = {230, 230, 230, 230, 307, 409, 512, 614,
                                                    768, 614, 512, 409, 307, 230, 230, 230};
constexpr std::int64_t kMinStep = 16;
constexpr std::int64_t kMaxStep = (1 << 21) - 1;
constexpr std::size_t kHeaderBytesPerChannel = 7;

struct ChannelState {
  std::int64_t coefficient1 = 0;
  std::int64_t coefficient2 = 0;
  std::int64_t delta = 0;
  std::int64_t sample1 = 0;  // the previous sample
  std::int64_t sample2 = 0;  // the one before
};

std::int16_t ReadI16(const std::uint8_t* bytes) {
  return static_cast<std::int16_t>(static_cast<std::uint16_t>(bytes[0] | bytes[1] << 8));
}

std::int16_t Clip(std::int64_t value) {
  return static_cast<std::int16_t>(std::clamp<std::int64_t>(value, -32768, 32767));
}

std::int16_t DecodeNibble(ChannelState& channel, unsigned code) {
  const std::int64_t step = channel.delta;
  channel.delta = std::clamp<std::int64_t>((kAdaption[code] * step) >> 8, kMinStep, kMaxStep);
  const std::int64_t signedCode = code >= 8 ? static_cast<std::int64_t>(code) - 16 : code;
  const std::int64_t predicted =
      (channel.coefficient1 * channel.sample1 + channel.coefficient2 * channel.sample2) >> 8;
  const std::int16_t value = Clip(signedCode * step + predicted);
  channel.sample2 = channel.sample1;
  channel.sample1 = value;
  return value;
}

}  // namespace

std::uint32_t DecodeAdpcmBlock(const std::uint8_t* block, std::size_t bytes, std::uint32_t channels,
                               std::uint32_t samplesPerBlock, std::span<const AdpcmCoefficient> coefficients,
                               std::int16_t* output, const char** diagnostic) {
  if (diagnostic != nullptr) *diagnostic = nullptr;
  const std::size_t headerBytes = kHeaderBytesPerChannel * channels;
  if (channels == 0 || samplesPerBlock < 2 || coefficients.empty() || bytes < headerBytes) return 0;
  // Frames the block holds; a short block (the last of a file) holds fewer.
  const std::uint64_t fitting = (bytes - headerBytes) * 2 / channels + 2;
  const auto frames = static_cast<std::uint32_t>(std::min<std::uint64_t>(samplesPerBlock, fitting));

  std::array<ChannelState, 2> few;
  std::unique_ptr<ChannelState[]> many;
  ChannelState* state = few.data();
  if (channels > few.size()) {
    many = std::make_unique<ChannelState[]>(channels);
    state = many.get();
  }
  for (std::uint32_t c = 0; c < channels; ++c) {
    std::size_t predictor = block[c];
    if (predictor >= coefficients.size()) {
      predictor = 0;
      if (diagnostic != nullptr) *diagnostic = kAdpcmPredictorDiagnostic;
    }
    state[c].coefficient1 = coefficients[predictor].first;
    state[c].coefficient2 = coefficients[predictor].second;
    state[c].delta = ReadI16(block + channels + 2 * c);
    state[c].sample1 = ReadI16(block + 3 * channels + 2 * c);
    state[c].sample2 = ReadI16(block + 5 * channels + 2 * c);
  }
  std::int16_t* out = output;
  for (std::uint32_t c = 0; c < channels; ++c) *out++ = static_cast<std::int16_t>(state[c].sample2);
  for (std::uint32_t c = 0; c < channels; ++c) *out++ = static_cast<std::int16_t>(state[c].sample1);

  const std::uint8_t* codes = block + headerBytes;
  const std::uint64_t nibbles = static_cast<std::uint64_t>(frames - 2) * channels;
  std::uint32_t channel = 0;
  for (std::uint64_t i = 0; i < nibbles; ++i) {
    const std::uint8_t byte = codes[i >> 1];
    const unsigned code = (i & 1) == 0 ? byte >> 4 : byte & 0x0F;
    *out++ = DecodeNibble(state[channel], code);
    if (++channel == channels) channel = 0;
  }
  return frames;
}

}  // namespace decoders
