#include "effects/equalizer_settings.h"

#include <algorithm>

#include "platform/texts.h"

namespace effects {

namespace {
constexpr std::uint32_t kTextUserDefined = 6326;
}  // namespace

EqualizerSettings::EqualizerSettings() : presetName(platform::LoadText(kTextUserDefined)) {}

void EqualizerSettings::GetValues(std::uint32_t& enabled, std::array<std::int32_t, kBandCount>& bands,
                                  std::int32_t& preamp) const {
  enabled = values.enabled;
  bands = values.bands;
  preamp = values.preamp;
}

void EqualizerSettings::SetValues(std::uint32_t enabled, const SliderValues& sliders) {
  values.enabled = enabled;
  std::copy_n(sliders.begin(), kBandCount, values.bands.begin());
  values.preamp = sliders[kBandCount];
}

}  // namespace effects
