// Equalizer presets: the ".eqf" files in the folder "presets/" below the
// program's folder, and the conversions between their values and the
// equalizer dialog's slider positions.
//
// A preset file is 31 bytes:
//   0   20 bytes  the preset's name, zero padded, not necessarily terminated
//   20  10 bytes  the band values, band 0 first
//   30  1 byte    the preamp value
// A value is on a scale where 31 is the centre and 0 the strongest gain. The
// reader takes exactly the 11 bytes at offset 20 and ignores the rest, so a
// longer file with the same head loads too, and a shorter one doesn't. The
// name inside the file is never shown: a preset is called by its file name.
//
// Threads: window thread only.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "effects/equalizer_values.h"

namespace effects {

inline constexpr std::size_t kEqfNameBytes = 20;
inline constexpr std::size_t kEqfValueOffset = kEqfNameBytes;
inline constexpr std::size_t kEqfValueCount = kBandCount + 1;  // ten bands, then the preamp
inline constexpr std::size_t kEqfFileBytes = kEqfNameBytes + kEqfValueCount;
inline constexpr std::uint8_t kEqfCentre = 31;
inline constexpr std::size_t kMaximumPresets = 200;

// Ten band values, then the preamp, as a file holds them.
using EqfValues = std::array<std::uint8_t, kEqfValueCount>;

// The slider position of a file's value: 31 is the centre 14, any other
// value v is v * 27 / 62, truncated, so 0 gives 0 and 62 and 63 give 27.
// Values above 63, which no slider writes, give 27 as well.
std::int32_t SliderFromEqf(std::uint8_t value);
// The smallest value that SliderFromEqf turns back into `position` (31 for
// the centre); positions outside 0 to 27 count as the nearest end.
std::uint8_t EqfFromSlider(std::int32_t position);

// The 31 bytes of a preset file: `name` cut to 20 bytes (never inside a
// UTF-8 character) in a zeroed field, then the values.
std::array<std::uint8_t, kEqfFileBytes> EqfFileBytes(std::string_view name, const EqfValues& values);
// The values of a file's contents: false when they are shorter than 31 bytes.
bool ParseEqf(std::string_view contents, EqfValues& values);

class PresetStore {
 public:
  // Forgets all presets.
  void Clear() { names.clear(); }
  // Adds the ".eqf" files (extension in any case) of `folder`/presets to the
  // list, sorted by name without regard to case; the list is not cleared
  // first. A missing folder adds nothing. At most kMaximumPresets are kept.
  // Returns the count.
  int Scan(const std::string& folder);
  int Count() const { return static_cast<int>(names.size()); }

  // The index of the preset called `name` (without extension), compared
  // without regard to case; -1 when there is none.
  int Find(std::string_view name) const;
  // The display name of preset `index`: its file name cut at the first ".",
  // with the first letter upper case ("My.Set.eqf" is "My"). Empty for an
  // index out of range.
  std::string NameAt(int index) const;
  // The file name of preset `index`, or empty.
  std::string FileNameAt(int index) const;

  // Reads the 11 values of preset `index`; false when there is no such
  // preset, or the file can't be read or is shorter than 31 bytes.
  bool Load(int index, EqfValues& values, const std::string& folder) const;

  // The path of the preset file `name` would be saved to.
  static std::string PathFor(std::string_view name, const std::string& folder);
  // Whether `name` can be a preset's name: not empty, without path
  // separators or control characters, and not starting with a dot.
  static bool IsValidName(std::string_view name);
  // Writes `folder`/presets/`name`.eqf, replacing a file of that name, and
  // makes the folder when it is missing. False for a name that
  // IsValidName refuses or a file that can't be written. The list is not
  // changed: Scan again to see the new preset.
  static bool Save(std::string_view name, const EqfValues& values, const std::string& folder);

 private:
  std::vector<std::string> names;  // file names, without the folder
};

}  // namespace effects
