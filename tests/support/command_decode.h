// Reference decodes by the command-line tools the sound tests compare with.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace testing_support {

// The 16-bit little-endian samples a shell command writes to its output;
// empty when the command fails.
std::vector<std::int16_t> DecodeWith(const std::string& command);

}  // namespace testing_support
