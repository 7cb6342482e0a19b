// Small text helpers shared by the ID3 readers and their users.
#pragma once

#include <cstdint>
#include <string_view>

namespace decoders {

// The decimal value at the start of `text`, read as C's atoi reads it: leading
// white space, an optional sign, then digits up to the first other character.
// No digits give 0; values beyond the 32-bit range saturate to its ends.
std::int32_t DecimalValue(std::string_view text);

}  // namespace decoders
