// What the fuzz targets check of a parser's results: a broken promise stops
// the run with a crash that libFuzzer reports and keeps the input of.
#pragma once

#include <cstdlib>
#include <string>

#include "platform/text.h"

namespace fuzz_checks {

inline void Require(bool promise) {
  if (!promise) std::abort();
}

// Text the program shows: valid UTF-8 within a bound of UTF-16 units.
inline void RequireText(const std::string& text, std::size_t units) {
  Require(platform::IsValidUtf8(text) && platform::Utf16Length(text) <= units);
}

}  // namespace fuzz_checks
