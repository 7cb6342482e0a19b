#include "shell/settings_store.h"

#include <algorithm>
#include <array>
#include <cstring>

#include "platform/paths.h"
#include "platform/text.h"
#include "shell/registry_key.h"

namespace shell {
namespace {

using platform::Registry;
using platform::RegistryRoot;
using platform::RegistryType;

constexpr RegistryRoot kRoot = RegistryRoot::LocalMachine;

// WndSettings, two little-endian u32. Bits of `flags` (others are written 0
// and ignored when read); "inverted" bits are set when the field is 0.
enum FlagBit : std::uint32_t {
  kSpareA = 1u << 6,
  kKeepKeysWhenInactive = 1u << 7,
  kEqualizerEnabled = 1u << 8,
  kKeepDisplayOn = 1u << 10,
  kEnqueueOnOpen = 1u << 11,
  kPickerOption = 1u << 12,
  kDisplayTags = 1u << 14,
  kDisplayFileName = 1u << 15,
  kDisplayFullPath = 1u << 16,
  kShowNumbers = 1u << 18,
  kLockKeepsDisplayKey = 1u << 19,
  kSpareD = 1u << 20,
  kSpareCOff = 1u << 21,
  kSpareEOff = 1u << 22,
  kSortOnLoadOff = 1u << 23,
  kSortByTrackNumber = 1u << 24,
  kExtraBassEnabled = 1u << 25,
  kLoadLocalContent = 1u << 26,
  kLoadFolderContents = 1u << 27,
  kDisableEqForWmaOgg = 1u << 28,
  kAlarmEnabled = 1u << 29,
  kCrossfadeOff = 1u << 30,
  kGaplessOff = 1u << 31,
};
// Bits of `flags2`.
enum Flag2Bit : std::uint32_t {
  kTrimSilenceOff = 1u << 0,
  kContinueFromLastPosition = 1u << 1,
  kStartOnLaunch = 1u << 2,
};

constexpr std::uint32_t kRepeatEnabledBit = 0x8000;
constexpr std::size_t kKeysBytes = 2 * skin::kActionRowCount;
constexpr std::size_t kEqualizerBytes = 12;
using EqualizerBytes = std::array<unsigned char, kEqualizerBytes>;

std::uint32_t ReadLe32(const unsigned char* bytes) {
  return static_cast<std::uint32_t>(bytes[0]) | static_cast<std::uint32_t>(bytes[1]) << 8 |
         static_cast<std::uint32_t>(bytes[2]) << 16 | static_cast<std::uint32_t>(bytes[3]) << 24;
}

void WriteLe32(unsigned char* bytes, std::uint32_t value) {
  for (int k = 0; k < 4; ++k) bytes[k] = static_cast<unsigned char>(value >> (8 * k));
}

// Reads a value into `buffer` of `size` bytes as the platform does: fails when
// the value is missing or larger than the buffer; a smaller value fills only
// the front of the buffer and leaves the rest as it was.
bool ReadInto(Registry& registry, std::string_view name, void* buffer, std::size_t size,
              std::size_t* got = nullptr) {
  std::size_t length = size;
  if (!registry.QueryValue(kRoot, kSettingsKeyPath, name, nullptr, buffer, &length)) return false;
  if (got != nullptr) *got = length;
  return true;
}

// A DWORD into `target`, or `fallback` when it can't be read.
std::uint32_t ReadDword(Registry& registry, std::string_view name, std::uint32_t fallback) {
  unsigned char bytes[4] = {};
  if (!ReadInto(registry, name, bytes, sizeof bytes)) return fallback;
  return ReadLe32(bytes);
}

void WriteDword(Registry& registry, std::string_view name, std::uint32_t value) {
  registry.SetDword(kRoot, kSettingsKeyPath, name, value);
}

void WriteBinary(Registry& registry, std::string_view name, const void* data, std::size_t size) {
  registry.SetValue(kRoot, kSettingsKeyPath, name, static_cast<std::uint32_t>(RegistryType::Binary),
                    data, size);
}

// The stored Equalizer value: ten band positions, the preamp and a zero byte.
EqualizerBytes PackEqualizer(const effects::EqualizerValues& values) {
  EqualizerBytes bytes{};
  for (int band = 0; band < effects::kBandCount; ++band)
    bytes[band] = static_cast<unsigned char>(values.bands[band]);
  bytes[effects::kBandCount] = static_cast<unsigned char>(values.preamp);
  return bytes;
}

void SetPlaybackFlag(std::atomic<std::uint32_t>& word, bool on) {
  playback::PlaybackSettings::Write(word, on);
}

}  // namespace

void ApplyFirstRunValues(const SettingsTargets& t) {
  AppSettings& app = t.app;
  app.spareFlagA = false;
  app.keepKeysWhenInactive = false;
  app.keepDisplayOn = true;
  app.enqueueOnOpen = false;
  t.playlist.pickerOption = 1;
  t.playlist.displayMode = 1;
  t.playlist.showNumbers = 0;
  app.lockKeepsDisplayKey = false;
  app.spareFlagD = false;
  app.spareFlagC = true;
  app.spareFlagE = true;
  t.playlist.sortOnLoad = 1;
  t.playlist.sortByTrackNumber = 0;
  app.extraBassEnabled = false;
  app.loadLocalContent = false;
  app.loadFolderContents = false;
  app.disableEqForWmaOgg = false;
  app.alarmEnabled = false;
  SetPlaybackFlag(t.playback.crossfade, true);
  SetPlaybackFlag(t.playback.gapless, true);
  SetPlaybackFlag(t.playback.trimSilence, true);
  SetPlaybackFlag(t.playback.continueFromLastPosition, false);
  SetPlaybackFlag(t.playback.startOnLaunch, false);
}

void UnpackWindowFlags(const WindowFlags& packed, const SettingsTargets& t,
                       std::uint32_t& equalizerEnabled) {
  const std::uint32_t f = packed.flags;
  const auto on = [f](std::uint32_t bit) { return (f & bit) != 0; };
  AppSettings& app = t.app;
  app.spareFlagA = on(kSpareA);
  app.keepKeysWhenInactive = on(kKeepKeysWhenInactive);
  equalizerEnabled = on(kEqualizerEnabled) ? 1 : 0;
  app.keepDisplayOn = on(kKeepDisplayOn);
  app.enqueueOnOpen = on(kEnqueueOnOpen);
  t.playlist.pickerOption = on(kPickerOption) ? 1 : 0;
  // Of several display-mode bits the highest wins; none means mode 1.
  t.playlist.displayMode = on(kDisplayFullPath) ? 3 : on(kDisplayFileName) ? 2 : 1;
  t.playlist.showNumbers = on(kShowNumbers) ? 1 : 0;
  app.lockKeepsDisplayKey = on(kLockKeepsDisplayKey);
  app.spareFlagD = on(kSpareD);
  app.spareFlagC = !on(kSpareCOff);
  app.spareFlagE = !on(kSpareEOff);
  t.playlist.sortOnLoad = on(kSortOnLoadOff) ? 0 : 1;
  t.playlist.sortByTrackNumber = on(kSortByTrackNumber) ? 1 : 0;
  app.extraBassEnabled = on(kExtraBassEnabled);
  app.loadLocalContent = on(kLoadLocalContent);
  app.loadFolderContents = on(kLoadFolderContents);
  app.disableEqForWmaOgg = on(kDisableEqForWmaOgg);
  app.alarmEnabled = on(kAlarmEnabled);
  SetPlaybackFlag(t.playback.crossfade, !on(kCrossfadeOff));
  SetPlaybackFlag(t.playback.gapless, !on(kGaplessOff));
  const std::uint32_t f2 = packed.flags2;
  SetPlaybackFlag(t.playback.trimSilence, (f2 & kTrimSilenceOff) == 0);
  SetPlaybackFlag(t.playback.continueFromLastPosition, (f2 & kContinueFromLastPosition) != 0);
  SetPlaybackFlag(t.playback.startOnLaunch, (f2 & kStartOnLaunch) != 0);
}

WindowFlags PackWindowFlags(const SettingsTargets& t) {
  const AppSettings& app = t.app;
  const auto bit = [](bool on, std::uint32_t value) { return on ? value : 0u; };
  const auto read = [](const std::atomic<std::uint32_t>& word) {
    return playback::PlaybackSettings::Read(word);
  };
  WindowFlags packed;
  std::uint32_t displayBit = kDisplayTags;
  if (t.playlist.displayMode == 2) displayBit = kDisplayFileName;
  if (t.playlist.displayMode == 3) displayBit = kDisplayFullPath;
  packed.flags = bit(app.spareFlagA, kSpareA) | bit(app.keepKeysWhenInactive, kKeepKeysWhenInactive) |
                 bit(t.equalizer.GetEnabled() != 0, kEqualizerEnabled) | bit(app.keepDisplayOn, kKeepDisplayOn) |
                 bit(app.enqueueOnOpen, kEnqueueOnOpen) | bit(t.playlist.pickerOption != 0, kPickerOption) |
                 displayBit | bit(t.playlist.showNumbers != 0, kShowNumbers) |
                 bit(app.lockKeepsDisplayKey, kLockKeepsDisplayKey) | bit(app.spareFlagD, kSpareD) |
                 bit(!app.spareFlagC, kSpareCOff) | bit(!app.spareFlagE, kSpareEOff) |
                 bit(t.playlist.sortOnLoad == 0, kSortOnLoadOff) |
                 bit(t.playlist.sortByTrackNumber != 0, kSortByTrackNumber) |
                 bit(app.extraBassEnabled, kExtraBassEnabled) | bit(app.loadLocalContent, kLoadLocalContent) |
                 bit(app.loadFolderContents, kLoadFolderContents) |
                 bit(app.disableEqForWmaOgg, kDisableEqForWmaOgg) | bit(app.alarmEnabled, kAlarmEnabled) |
                 bit(!read(t.playback.crossfade), kCrossfadeOff) | bit(!read(t.playback.gapless), kGaplessOff);
  packed.flags2 = bit(!read(t.playback.trimSilence), kTrimSilenceOff) |
                  bit(read(t.playback.continueFromLastPosition), kContinueFromLastPosition) |
                  bit(read(t.playback.startOnLaunch), kStartOnLaunch);
  return packed;
}

bool LoadSettings(Registry& registry, const SettingsTargets& t, SettingsHooks* hooks) {
  // 1. Create or open the key; without it every field keeps its value.
  if (registry.CreateKey(kRoot, kSettingsKeyPath) == platform::KeyDisposition::Failed) return false;

  // 2. The media classes are registered on every start.
  if (hooks != nullptr) hooks->RegisterMediaClasses();

  // 3, 4. A missing WndSettings alone makes a first run. flags2 is taken from
  // the buffer whatever the stored length, so a 4-byte value reads it as 0.
  std::uint32_t equalizerEnabled = t.equalizer.GetEnabled();
  unsigned char windowBytes[8] = {};
  if (!ReadInto(registry, "WndSettings", windowBytes, sizeof windowBytes)) {
    if (hooks != nullptr) {
      // ".ogg" is associated twice; the second time changes nothing.
      for (const char* extension : {".mp3", ".mp2", ".mp1", ".mpa", ".m3u", ".pls", ".ogg", ".ogg"})
        hooks->AssociateExtension(extension);
    }
    ApplyFirstRunValues(t);
  } else {
    UnpackWindowFlags({ReadLe32(windowBytes), ReadLe32(windowBytes + 4)}, t, equalizerEnabled);
  }

  // 5. The single values, in this order, each with its default when missing.
  AppSettings& app = t.app;
  app.skipSeconds = static_cast<std::int32_t>(ReadDword(registry, "FFSkipTime", 10));
  {
    // Load is read with the bound of the platform's string read (520 bytes).
    RegistryKey key(registry);
    std::string folder;
    key.Bind(kRoot, kSettingsKeyPath);  // the key exists (step 1): this only names it
    app.loadPath = key.ReadString("Load", folder) ? folder : platform::HomeDirectory();
  }
  app.extraBassStrength = static_cast<std::int32_t>(ReadDword(registry, "XBS", 3));
  app.shuffleEnabled = ReadDword(registry, "Shuffle", 0) != 0;
  t.playlist.currentIndex = static_cast<std::int32_t>(ReadDword(registry, "LastPos", 0));
  app.decodePriority = static_cast<std::int32_t>(ReadDword(registry, "Priority", 3));

  // Alarm is an 8-byte FILETIME, low word first; a 4-byte DWORD written by an
  // older alarm replaces only the low half.
  unsigned char alarmBytes[8] = {};
  for (int k = 0; k < 8; ++k) alarmBytes[k] = static_cast<unsigned char>(app.alarmTime >> (8 * k));
  if (!ReadInto(registry, "Alarm", alarmBytes, sizeof alarmBytes)) std::memset(alarmBytes, 0, 8);
  app.alarmTime = static_cast<std::uint64_t>(ReadLe32(alarmBytes)) |
                  static_cast<std::uint64_t>(ReadLe32(alarmBytes + 4)) << 32;

  t.playlist.fontSize = ReadDword(registry, "PlPoint", 2);

  // Repeat: the mode in the low bits; 0x8000 turns repeat on. Without the bit
  // repeatEnabled stays as it was.
  std::uint32_t repeat = ReadDword(registry, "Repeat", 1);
  if ((repeat & kRepeatEnabledBit) != 0) {
    app.repeatEnabled = true;
    repeat &= ~kRepeatEnabledBit;
  }
  app.repeatMode = repeat;

  // Keys: as many whole u16 as are stored, up to 28; a shorter value updates
  // only the first rows.
  unsigned char keyBytes[kKeysBytes] = {};
  std::size_t keyLength = 0;
  if (ReadInto(registry, "Keys", keyBytes, sizeof keyBytes, &keyLength)) {
    for (std::size_t row = 0; row < keyLength / 2; ++row) {
      t.actions[row].key = static_cast<std::uint16_t>(keyBytes[2 * row] | keyBytes[2 * row + 1] << 8);
    }
  }

  // Equalizer: ten band positions, the preamp and a zero byte. The enabled
  // flag of WndSettings goes with it, so without this value the equalizer
  // keeps its own defaults, flag included.
  EqualizerBytes equalizerBytes = PackEqualizer(t.equalizer.Values());
  if (ReadInto(registry, "Equalizer", equalizerBytes.data(), equalizerBytes.size())) {
    effects::EqualizerSettings::SliderValues sliders{};
    std::copy_n(equalizerBytes.begin(), sliders.size(), sliders.begin());
    t.equalizer.SetValues(equalizerEnabled, sliders);
  }
  return true;
}

bool SaveSettings(Registry& registry, const SettingsTargets& t) {
  if (registry.CreateKey(kRoot, kSettingsKeyPath) == platform::KeyDisposition::Failed) return false;
  const AppSettings& app = t.app;

  const WindowFlags packed = PackWindowFlags(t);
  unsigned char windowBytes[8];
  WriteLe32(windowBytes, packed.flags);
  WriteLe32(windowBytes + 4, packed.flags2);

  WriteBinary(registry, "WndSettings", windowBytes, sizeof windowBytes);
  WriteDword(registry, "Shuffle", app.shuffleEnabled ? 1 : 0);
  WriteDword(registry, "LastPos", static_cast<std::uint32_t>(t.playlist.currentIndex));
  WriteDword(registry, "Priority", static_cast<std::uint32_t>(app.decodePriority));
  WriteDword(registry, "Language", app.language);
  WriteDword(registry, "XBS", static_cast<std::uint32_t>(app.extraBassStrength));
  WriteDword(registry, "PlPoint", t.playlist.fontSize);
  registry.SetString(kRoot, kSettingsKeyPath, "Load", app.loadPath);
  unsigned char alarmBytes[8];
  WriteLe32(alarmBytes, static_cast<std::uint32_t>(app.alarmTime));
  WriteLe32(alarmBytes + 4, static_cast<std::uint32_t>(app.alarmTime >> 32));
  WriteBinary(registry, "Alarm", alarmBytes, sizeof alarmBytes);
  WriteDword(registry, "FFSkipTime", static_cast<std::uint32_t>(app.skipSeconds));
  WriteDword(registry, "Repeat", app.repeatMode | (app.repeatEnabled ? kRepeatEnabledBit : 0));
  unsigned char keyBytes[kKeysBytes];
  for (int row = 0; row < skin::kActionRowCount; ++row) {
    keyBytes[2 * row] = static_cast<unsigned char>(t.actions[row].key);
    keyBytes[2 * row + 1] = static_cast<unsigned char>(t.actions[row].key >> 8);
  }
  WriteBinary(registry, "Keys", keyBytes, sizeof keyBytes);
  const EqualizerBytes equalizerBytes = PackEqualizer(t.equalizer.Values());
  WriteBinary(registry, "Equalizer", equalizerBytes.data(), equalizerBytes.size());
  return true;
}

}  // namespace shell
