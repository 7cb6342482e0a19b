#include "shell/key_map.h"

#include <cstdio>
#include <optional>

#include "platform/registry.h"
#include "platform/text.h"
#include "platform/texts.h"
#include "playback/playback_settings.h"
#include "skin/skin_action_table.h"

namespace shell {
namespace {

constexpr std::uint32_t kTextUnknown = 6310;
constexpr std::size_t kActionTextUnits = 64;
constexpr std::size_t kKeyNameBytes = 128;  // the query's buffer, UTF-16 with its terminator
constexpr std::uint32_t kKeyNameRegistryBase = 16384;

struct NamedKey {
  std::uint32_t key;
  std::uint32_t textId;  // 0: `text` is the name
  const char* text;
};

constexpr NamedKey kNamedKeys[] = {
    {0, 6302, nullptr},   {13, 6301, nullptr},  {32, 6309, nullptr},  {33, 6308, nullptr},
    {34, 6307, nullptr},  {37, 6305, nullptr},  {38, 6303, nullptr},  {39, 6306, nullptr},
    {40, 6304, nullptr},  {114, 6324, nullptr}, {115, 6325, nullptr}, {117, 6322, nullptr},
    {118, 6323, nullptr}, {119, 0, "*"},        {120, 0, "#"},        {121, 6320, nullptr},
    {128, 6321, nullptr},
};

std::optional<std::string> RegistryKeyName(std::uint32_t key, platform::Registry& registry) {
  char path[64];
  std::snprintf(path, sizeof path, "\\SOFTWARE\\Microsoft\\Shell\\Keys\\%4X", key + kKeyNameRegistryBase);
  const auto value = registry.GetValue(platform::RegistryRoot::LocalMachine, path, "Name");
  if (!value) return std::nullopt;
  std::string name = value->data;
  if (const auto zero = name.find('\0'); zero != std::string::npos) name.resize(zero);
  if ((platform::Utf16Length(name) + 1) * 2 > kKeyNameBytes) return std::nullopt;
  if (name.empty()) return std::nullopt;
  return name;
}

KeyFilterState& FilterState() {
  static KeyFilterState state;
  return state;
}

}  // namespace

int RowOfKey(std::uint32_t key) {
  if (key == 0) return -1;
  const skin::SkinActionTable& rows = skin::Actions();
  for (int row = 0; row < skin::kActionRowCount; ++row) {
    const skin::SkinAction& action = rows[static_cast<std::size_t>(row)];
    if (action.key == key && action.message != 0) return row;
  }
  return -1;
}

std::string KeyName(std::uint32_t key, platform::Registry* registry) {
  for (const NamedKey& named : kNamedKeys) {
    if (named.key == key) return named.textId != 0 ? platform::LoadText(named.textId) : named.text;
  }
  if ((key >= '0' && key <= '9') || (key >= 'A' && key <= 'Z')) return std::string(1, static_cast<char>(key));
  if (key >= 112 && key <= 129) return "F" + std::to_string(key - 111);
  if (registry != nullptr) {
    if (auto name = RegistryKeyName(key, *registry)) return *name;
  }
  return platform::LoadText(kTextUnknown);
}

KeyMappingModel::KeyMappingModel(bool bookmarksExist, platform::Registry* keyNames) : registry(keyNames) {
  const skin::SkinActionTable& rows = skin::Actions();
  for (int row = 0; row < skin::kActionRowCount; ++row) {
    if (rows[static_cast<std::size_t>(row)].message == 0) continue;
    if (row == skin::kRowSetBookmark && !bookmarksExist) continue;
    lines.push_back(row);
  }
}

int KeyMappingModel::RowOfLine(int line) const {
  if (line < 0 || line >= LineCount()) return -1;
  return lines[static_cast<std::size_t>(line)];
}

int KeyMappingModel::LineOfRow(int row) const {
  for (int line = 0; line < LineCount(); ++line) {
    if (lines[static_cast<std::size_t>(line)] == row) return line;
  }
  return -1;
}

std::string KeyMappingModel::ActionText(int line) const {
  const int row = RowOfLine(line);
  if (row < 0) return {};
  return platform::TruncateToUtf16Units(
      platform::LoadText(skin::Actions()[static_cast<std::size_t>(row)].textId), kActionTextUnits);
}

std::string KeyMappingModel::KeyText(int line) const {
  const int row = RowOfLine(line);
  if (row < 0) return {};
  return KeyName(skin::Actions()[static_cast<std::size_t>(row)].key, registry);
}

std::vector<int> KeyMappingModel::Assign(int selectedLine, std::uint32_t key) {
  std::vector<int> changed;
  if (selectedLine < 0 || selectedLine >= LineCount()) return changed;
  skin::SkinActionTable& rows = skin::Actions();
  int counted = 0;
  for (int row = 0; row < skin::kActionRowCount; ++row) {
    skin::SkinAction& action = rows[static_cast<std::size_t>(row)];
    if (action.message == 0 || action.enabled == 0) continue;
    if (counted != selectedLine && action.key == key) {
      action.key = 0;
      if (const int line = LineOfRow(row); line >= 0) changed.push_back(line);
    }
    ++counted;
  }
  // The selected row is counted under the gapless flag, not the row's own
  // `enabled`: with gapless off it is never found.
  const bool gapless = playback::PlaybackSettings::Read(playback::Playback().gapless);
  counted = 0;
  for (int row = 0; row < skin::kActionRowCount; ++row) {
    skin::SkinAction& action = rows[static_cast<std::size_t>(row)];
    if (action.message == 0 || !gapless) continue;
    if (counted++ != selectedLine) continue;
    if (action.key != key) {
      action.key = static_cast<std::uint16_t>(key & 0xFFFF);
      if (const int line = LineOfRow(row); line >= 0) changed.push_back(line);
    }
    break;
  }
  return changed;
}

bool KeyMappingModel::Unmap(int selectedLine) {
  const int row = RowOfLine(selectedLine);
  if (row < 0) return false;
  skin::SkinAction& action = skin::Actions()[static_cast<std::size_t>(row)];
  if (action.key == 0) return false;
  action.key = 0;
  return true;
}

const KeyFilterState& KeyFilter() {
  return FilterState();
}

void SetKeyTarget(platform::MessageTarget* target, bool dialogMode) {
  FilterState().target = target;
  FilterState().dialogMode = dialogMode;
}

void SetInactive(bool inactive) {
  FilterState().inactive = inactive;
}

void SetButtonLock(bool locked, bool lockKeepsDisplayKey) {
  FilterState().locked = locked;
  FilterState().lockKeepsDisplayKey = lockKeepsDisplayKey;
}

}  // namespace shell
