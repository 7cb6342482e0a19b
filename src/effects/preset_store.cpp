#include "effects/preset_store.h"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>

namespace effects {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kPresetFolder = "presets";
constexpr std::string_view kExtension = ".eqf";
constexpr std::int32_t kEqfScaleTop = 62;

char AsciiLower(char c) {
  return (c >= 'A' && c <= 'Z') ? static_cast<char>(c - 'A' + 'a') : c;
}

bool SameIgnoringCase(std::string_view a, std::string_view b) {
  return a.size() == b.size() && std::equal(a.begin(), a.end(), b.begin(),
                                            [](char x, char y) { return AsciiLower(x) == AsciiLower(y); });
}

bool LessIgnoringCase(const std::string& a, const std::string& b) {
  return std::lexicographical_compare(a.begin(), a.end(), b.begin(), b.end(),
                                      [](char x, char y) { return AsciiLower(x) < AsciiLower(y); });
}

bool HasEqfExtension(const std::string& fileName) {
  return fileName.size() > kExtension.size() &&
         SameIgnoringCase(std::string_view(fileName).substr(fileName.size() - kExtension.size()), kExtension);
}

fs::path PresetFolder(const std::string& folder) {
  return fs::path(folder) / kPresetFolder;
}

// The length of `text` cut to at most `limit` bytes without splitting a
// UTF-8 character.
std::size_t Utf8Prefix(std::string_view text, std::size_t limit) {
  if (text.size() <= limit) return text.size();
  std::size_t cut = limit;
  while (cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80) --cut;
  return cut;
}

}  // namespace

std::int32_t SliderFromEqf(std::uint8_t value) {
  if (value == kEqfCentre) return kSliderFlat;
  return std::min<std::int32_t>(value * kSliderMaximum / kEqfScaleTop, kSliderMaximum);
}

std::uint8_t EqfFromSlider(std::int32_t position) {
  position = std::clamp(position, 0, kSliderMaximum);
  if (position == kSliderFlat) return kEqfCentre;
  // The smallest v with v * 27 / 62 == position, so that SliderFromEqf gives it back.
  return static_cast<std::uint8_t>((position * kEqfScaleTop + kSliderMaximum - 1) / kSliderMaximum);
}

std::array<std::uint8_t, kEqfFileBytes> EqfFileBytes(std::string_view name, const EqfValues& values) {
  std::array<std::uint8_t, kEqfFileBytes> bytes{};
  const std::size_t length = Utf8Prefix(name, kEqfNameBytes);
  std::copy_n(name.begin(), length, bytes.begin());
  std::copy(values.begin(), values.end(), bytes.begin() + kEqfValueOffset);
  return bytes;
}

bool ParseEqf(std::string_view contents, EqfValues& values) {
  if (contents.size() < kEqfFileBytes) return false;
  std::copy_n(contents.begin() + kEqfValueOffset, kEqfValueCount, values.begin());
  return true;
}

int PresetStore::Scan(const std::string& folder) {
  std::error_code error;
  std::vector<std::string> found;
  for (fs::directory_iterator entry(PresetFolder(folder), error), end; !error && entry != end;
       entry.increment(error)) {
    std::string fileName = entry->path().filename().string();
    if (HasEqfExtension(fileName) && !entry->is_directory(error)) found.push_back(std::move(fileName));
  }
  std::sort(found.begin(), found.end(), LessIgnoringCase);
  for (std::string& fileName : found) {
    if (names.size() >= kMaximumPresets) break;
    names.push_back(std::move(fileName));
  }
  return Count();
}

int PresetStore::Find(std::string_view name) const {
  const std::string fileName = std::string(name) + std::string(kExtension);
  for (std::size_t index = 0; index < names.size(); ++index) {
    if (SameIgnoringCase(names[index], fileName)) return static_cast<int>(index);
  }
  return -1;
}

std::string PresetStore::FileNameAt(int index) const {
  if (index < 0 || index >= Count()) return {};
  return names[static_cast<std::size_t>(index)];
}

std::string PresetStore::NameAt(int index) const {
  std::string name = FileNameAt(index);
  if (const std::size_t dot = name.find('.'); dot != std::string::npos) name.resize(dot);
  if (!name.empty() && name[0] >= 'a' && name[0] <= 'z') name[0] = static_cast<char>(name[0] - 'a' + 'A');
  return name;
}

bool PresetStore::Load(int index, EqfValues& values, const std::string& folder) const {
  const std::string fileName = FileNameAt(index);
  if (fileName.empty()) return false;
  std::ifstream file(PresetFolder(folder) / fileName, std::ios::binary);
  if (!file) return false;
  char head[kEqfFileBytes] = {};
  file.read(head, sizeof head);
  return ParseEqf(std::string_view(head, static_cast<std::size_t>(file.gcount())), values);
}

std::string PresetStore::PathFor(std::string_view name, const std::string& folder) {
  return (PresetFolder(folder) / (std::string(name) + std::string(kExtension))).string();
}

bool PresetStore::IsValidName(std::string_view name) {
  if (name.empty() || name.front() == '.') return false;
  return std::none_of(name.begin(), name.end(), [](char c) {
    return c == '/' || c == '\\' || static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
  });
}

bool PresetStore::Save(std::string_view name, const EqfValues& values, const std::string& folder) {
  if (!IsValidName(name)) return false;
  std::error_code error;
  fs::create_directories(PresetFolder(folder), error);
  if (error) return false;
  std::ofstream file(PathFor(name, folder), std::ios::binary | std::ios::trunc);
  if (!file) return false;
  const auto bytes = EqfFileBytes(name, values);
  file.write(reinterpret_cast<const char*>(bytes.data()), static_cast<std::streamsize>(bytes.size()));
  file.close();
  return !file.fail();
}

}  // namespace effects
