#include "playlist/line_reader.h"

#include <algorithm>

namespace playlist {

bool LineReader::Fill() {
  position = 0;
  filled = std::fread(buffer.get(), 1, kBufferBytes, file);
  return filled > 0;
}

void LineReader::Take(const char* begin, const char* end, std::string& line, bool& overlong) const {
  if (overlong) return;
  const auto length = static_cast<std::size_t>(end - begin);
  if (line.size() + length > kMaxLineBytes) {
    overlong = true;
    line.clear();
    return;
  }
  line.append(begin, length);
}

bool LineReader::Next(std::string& line, bool& overlong) {
  line.clear();
  overlong = false;
  bool any = false;
  for (;;) {
    if (position == filled && !Fill()) break;
    if (skipLineFeed) {
      skipLineFeed = false;
      if (buffer[position] == '\n') {
        ++position;
        continue;
      }
    }
    any = true;
    const char* begin = buffer.get() + position;
    const char* end = buffer.get() + filled;
    const char* stop = std::find_if(begin, end, [](char c) { return c == '\n' || c == '\r'; });
    Take(begin, stop, line, overlong);
    position = static_cast<std::size_t>(stop - buffer.get());
    if (stop != end) {
      skipLineFeed = *stop == '\r';
      ++position;
      break;
    }
  }
  if (atStart && any) {
    atStart = false;
    if (line.starts_with("\xEF\xBB\xBF")) line.erase(0, 3);
  }
  return any;
}

}  // namespace playlist
