#include "shell/language_menu.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

#include "platform/text.h"
#include "shell/language_pack.h"
#include "shell/window_messages.h"

namespace shell {

std::optional<std::uint32_t> LocaleIdFromFileName(std::string_view name) {
  const auto dot = name.find('.');
  if (dot == std::string_view::npos) return std::nullopt;
  std::uint32_t id = 0;
  for (const char c : name.substr(dot + 1)) {
    const char upper = (c >= 'a' && c <= 'z') ? static_cast<char>(c - 'a' + 'A') : c;
    std::uint32_t digit;
    if (upper >= '0' && upper <= '9')
      digit = static_cast<std::uint32_t>(upper - '0');
    else if (upper >= 'A' && upper <= 'F')
      digit = static_cast<std::uint32_t>(upper - 'A' + 10);
    else
      break;
    id = id * 16 + digit;
  }
  return id;
}

std::vector<std::string> ListPackFiles(const std::string& folder) {
  std::vector<std::string> names;
  std::error_code error;
  for (const auto& entry : std::filesystem::directory_iterator(folder, error)) {
    const std::string name = entry.path().filename().string();
    if (platform::StartsWithIgnoreCase(name, "mui.") && platform::EndsWithIgnoreCase(name, ".qm") &&
        name.size() >= 7)
      names.push_back(name);
  }
  std::sort(names.begin(), names.end());
  return names;
}

std::vector<std::uint32_t> BuildLanguageMenu(MenuItem& languagePopup, std::uint32_t language,
                                             const std::vector<std::string>& packFiles,
                                             const NativeLanguageNames& nativeNames) {
  std::vector<std::uint32_t> table{0};
  if (IsBuiltInLanguage(language)) {
    if (MenuItem* english = FindItem(languagePopup, kCommandLanguageFirst)) english->checked = true;
  }
  std::string name;  // kept from entry to entry, as the platform's buffer is
  for (const std::string& file : packFiles) {
    const std::optional<std::uint32_t> id = LocaleIdFromFileName(file);
    if (!id) continue;
    if (*id != 0) {
      std::optional<std::string> native = nativeNames ? nativeNames(*id) : std::nullopt;
      if (native && !native->empty()) {
        name = *native;
      } else {
        char fallback[32];
        std::snprintf(fallback, sizeof fallback, "Locale %#X", *id);
        name = fallback;
      }
    }
    const auto entry = static_cast<std::uint32_t>(table.size());
    AppendCommand(languagePopup, kCommandLanguageFirst + entry, name, *id == language);
    table.push_back(*id);
  }
  return table;
}

}  // namespace shell
