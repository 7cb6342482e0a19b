#include "platform/text_format.h"

#include <cstdio>
#include <vector>

namespace platform {
namespace {

struct Conversion {
  bool leftAlign = false;
  bool zeroPad = false;
  bool alternate = false;
  int width = 0;
  char type = 0;
};

std::string Digits(std::int64_t value, char type, bool alternate) {
  char buffer[40];
  const auto bits = static_cast<std::uint64_t>(value);
  switch (type) {
    case 'u':
      std::snprintf(buffer, sizeof buffer, "%llu", static_cast<unsigned long long>(bits & 0xFFFFFFFFu));
      break;
    case 'x':
      std::snprintf(buffer, sizeof buffer, alternate && bits != 0 ? "%#llx" : "%llx",
                    static_cast<unsigned long long>(bits & 0xFFFFFFFFu));
      break;
    case 'X':
      std::snprintf(buffer, sizeof buffer, alternate && bits != 0 ? "%#llX" : "%llX",
                    static_cast<unsigned long long>(bits & 0xFFFFFFFFu));
      break;
    default:
      std::snprintf(buffer, sizeof buffer, "%lld", static_cast<long long>(value));
      break;
  }
  return buffer;
}

std::string Render(const Conversion& c, const TextArgument& argument) {
  std::string body;
  bool numeric = false;
  if (c.type == 's') {
    body = std::holds_alternative<std::string_view>(argument)
               ? std::string(std::get<std::string_view>(argument))
               : Digits(std::get<std::int64_t>(argument), 'd', false);
  } else if (c.type == 'c') {
    if (std::holds_alternative<std::int64_t>(argument))
      body = std::string(1, static_cast<char>(std::get<std::int64_t>(argument)));
  } else {
    numeric = true;
    const std::int64_t value =
        std::holds_alternative<std::int64_t>(argument) ? std::get<std::int64_t>(argument) : 0;
    body = Digits(value, c.type, c.alternate);
  }
  const int width = c.width > 256 ? 256 : c.width;
  if (static_cast<int>(body.size()) >= width) return body;
  const std::size_t pad = static_cast<std::size_t>(width) - body.size();
  if (c.leftAlign) return body + std::string(pad, ' ');
  if (c.zeroPad && numeric) {
    const std::size_t signLength = (!body.empty() && body[0] == '-') ? 1 : 0;
    return body.substr(0, signLength) + std::string(pad, '0') + body.substr(signLength);
  }
  return std::string(pad, ' ') + body;
}

}  // namespace

std::string FormatText(std::string_view format, std::initializer_list<TextArgument> arguments) {
  std::string out;
  const TextArgument* next = arguments.begin();
  std::size_t i = 0;
  while (i < format.size()) {
    const char ch = format[i];
    if (ch != '%') {
      out.push_back(ch);
      ++i;
      continue;
    }
    if (i + 1 < format.size() && format[i + 1] == '%') {
      out.push_back('%');
      i += 2;
      continue;
    }
    Conversion c;
    std::size_t j = i + 1;
    for (; j < format.size(); ++j) {
      if (format[j] == '-')
        c.leftAlign = true;
      else if (format[j] == '0')
        c.zeroPad = true;
      else if (format[j] == '#')
        c.alternate = true;
      else
        break;
    }
    for (; j < format.size() && format[j] >= '0' && format[j] <= '9'; ++j)
      c.width = c.width > 1000 ? c.width : c.width * 10 + (format[j] - '0');
    while (j < format.size() && (format[j] == 'l' || format[j] == 'h'))
      ++j;  // size prefixes change nothing here
    if (j >= format.size() || std::string_view("diuxXcs").find(format[j]) == std::string_view::npos) {
      out.push_back('%');  // not understood: copied as it stands
      ++i;
      continue;
    }
    c.type = format[j] == 'i' ? 'd' : format[j];
    if (next != arguments.end()) out += Render(c, *next++);
    i = j + 1;
  }
  return out;
}

}  // namespace platform
