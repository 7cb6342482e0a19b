// Feeds arbitrary bytes to the registry file reader, and checks that what it
// read survives a write and a second read unchanged.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "platform/registry_text.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const platform::RegistryTree first = platform::ParseRegistryText(text);
  const std::string written = platform::FormatRegistryText(first);
  const platform::RegistryTree second = platform::ParseRegistryText(written);
  if (platform::FormatRegistryText(second) != written) std::abort();
  return 0;
}
