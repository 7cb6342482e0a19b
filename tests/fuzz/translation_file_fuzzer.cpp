// Language packs are files the user puts in place: any bytes must read as a
// pack, part of one, or none, without reading past the data.
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "shell/translation_file.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto texts = shell::ReadTranslationFile(std::string_view(reinterpret_cast<const char*>(data), size));
  if (texts) {
    for (const auto& [key, text] : *texts) {
      if (key.empty() || text.empty()) __builtin_trap();
    }
  }
  return 0;
}
