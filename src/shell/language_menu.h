// The Language submenu: one entry per pack found in the install directory.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "shell/menu.h"

namespace shell {

// The native name of a language ("Deutsch" for 1031), as the platform's
// locale database gives it; nullopt when it has none.
using NativeLanguageNames = std::function<std::optional<std::string>(std::uint32_t localeId)>;

// The locale id in a pack's file name: the text after the first dot, read as
// hexadecimal without regard to case up to the first character that isn't a
// hexadecimal digit; an empty reading gives 0 ("mui.zz.qm" gives 0,
// "mui.0407.qm" 0x407). nullopt for a name without a dot.
std::optional<std::uint32_t> LocaleIdFromFileName(std::string_view name);

// The names of the pack files in `folder` ("mui.*.qm", case ignored), sorted.
std::vector<std::string> ListPackFiles(const std::string& folder);

// Fills the Language popup, which holds "English" (40060) already: checks
// 40060 when `language` is built-in English, then appends one entry per file
// name with an id (40061, 40062...), labelled with the native name of its
// locale, or "Locale %#X" when the platform knows none. An entry whose id
// reads as 0 keeps the label of the entry before it (or an empty one).
// Returns the language table: the locale id of each entry, from entry 0
// (English, 0) on.
std::vector<std::uint32_t> BuildLanguageMenu(MenuItem& languagePopup, std::uint32_t language,
                                             const std::vector<std::string>& packFiles,
                                             const NativeLanguageNames& nativeNames);

}  // namespace shell
