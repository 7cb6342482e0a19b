// The language layer's Qt side: packs are Qt translation files, and the
// native names of languages come from Qt's locale database.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "shell/language_pack.h"

namespace ui {

// Reads "mui.%04X.qm" files with QTranslator. The file is read whole (at
// most 16 MiB) and handed to Qt from memory, so that no other file is ever
// looked for in its place; a file Qt doesn't accept as a translation gives
// nothing, and so English.
class QtPackReader : public shell::LanguagePackReader {
 public:
  std::optional<std::map<std::string, std::string, std::less<>>> Read(const std::string& path,
                                                                       const std::vector<std::string>& keys) override;
};

// "Deutsch" for 1031; nullopt for a locale id Qt doesn't know.
std::optional<std::string> NativeLanguageName(std::uint32_t localeId);

}  // namespace ui
