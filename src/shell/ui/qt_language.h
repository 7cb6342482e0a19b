// The native names of languages, from Qt's locale database.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace ui {

// "Deutsch" for 1031; nullopt for a locale id Qt doesn't know.
std::optional<std::string> NativeLanguageName(std::uint32_t localeId);

}  // namespace ui
