#include "net/status_text.h"

#include "platform/text.h"

namespace net {

std::string FillIn(std::string_view format, std::string_view value) {
  std::string text;
  text.reserve(format.size() + value.size());
  bool filled = false;
  for (std::size_t i = 0; i < format.size(); ++i) {
    const char c = format[i];
    const char next = i + 1 < format.size() ? format[i + 1] : '\0';
    if (c == '%' && next == '%') {
      text += '%';
      ++i;
    } else if (c == '%' && !filled && (next == 's' || next == 'd')) {
      text += value;
      filled = true;
      ++i;
    } else {
      text += c;
    }
  }
  return platform::TruncateToUtf16Units(text, kStatusTextUnits);
}

}  // namespace net
