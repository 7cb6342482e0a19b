// printf-style formatting of texts that come from outside the program.
//
// Language packs translate formats such as "Seek to %s" or "Volume: %d%%".
// A pack is input like any file, so its formats are never handed to printf:
// FormatText understands the conversions d, i, u, x, X, c and s with the
// flags "-", "0", "#" and a width, takes each argument as what it is, and
// copies anything it doesn't understand as it stands. A conversion without
// an argument left gives nothing.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

namespace platform {

using TextArgument = std::variant<std::int64_t, std::string_view>;

std::string FormatText(std::string_view format, std::initializer_list<TextArgument> arguments);

}  // namespace platform
