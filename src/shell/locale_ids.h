// Locale ids, the numbers by which language packs are named, and the
// language tags (BCP 47) that a platform's locale database knows them by.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace shell {

// "de-DE" for 0x0407 and so on; nullopt for an id the table doesn't hold.
std::optional<std::string> LocaleTagForId(std::uint32_t localeId);

}  // namespace shell
