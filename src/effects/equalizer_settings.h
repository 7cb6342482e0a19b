// The user's equalizer: the values the equalizer dialog edits and the
// settings store keeps, held by the application for the whole run. The
// filters themselves are the Equalizer; the application hands these values to
// it whenever they change.
//
// Threads: window thread only.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <utility>

#include "effects/equalizer_values.h"
#include "effects/preset_store.h"

namespace effects {

class EqualizerSettings {
 public:
  // Ten band positions then the preamp, as the dialog's sliders hold them.
  using SliderValues = std::array<std::int32_t, kBandCount + 1>;

  // All positions flat, the equalizer off, the preset "User defined".
  EqualizerSettings();

  void GetValues(std::uint32_t& enabled, std::array<std::int32_t, kBandCount>& bands,
                 std::int32_t& preamp) const;
  void SetValues(std::uint32_t enabled, const SliderValues& values);
  const EqualizerValues& Values() const { return values; }

  std::uint32_t GetEnabled() const { return values.enabled; }
  void SetEnabled(std::uint32_t enabled) { values.enabled = enabled; }

  // The text of the selected preset; "User defined" when the sliders were
  // moved by hand.
  const std::string& PresetName() const { return presetName; }
  void SetPresetName(std::string name) { presetName = std::move(name); }

  // The preset files the dialog lists; it scans them anew each time it opens.
  PresetStore& Presets() { return presets; }

 private:
  EqualizerValues values;
  std::string presetName;
  PresetStore presets;
};

}  // namespace effects
