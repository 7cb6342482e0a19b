#include "decoders/id3_text.h"

#include <limits>

namespace decoders {

std::int32_t DecimalValue(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  constexpr std::int64_t kLimit = std::int64_t{std::numeric_limits<std::int32_t>::max()} + 1;
  std::int64_t value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = value * 10 + (text[i] - '0');
    if (value > kLimit) value = kLimit;  // saturated; further digits change nothing
  }
  if (negative) return static_cast<std::int32_t>(-value);
  return value >= kLimit ? std::numeric_limits<std::int32_t>::max() : static_cast<std::int32_t>(value);
}

}  // namespace decoders
