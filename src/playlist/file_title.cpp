#include "playlist/file_title.h"

#include "platform/text.h"

namespace playlist {
namespace {

// Length of `text` without its last character; a UTF-8 sequence counts as one
// character, a stray byte as one too.
std::size_t WithoutLastCharacter(std::string_view text) {
  std::size_t end = text.size() - 1;
  const auto isContinuation = [](char c) { return (static_cast<unsigned char>(c) & 0xC0) == 0x80; };
  std::size_t start = end;
  while (start > 0 && end - start < 3 && isContinuation(text[start])) --start;
  const unsigned char lead = static_cast<unsigned char>(text[start]);
  const std::size_t expected = lead >= 0xF0 ? 4 : lead >= 0xE0 ? 3 : lead >= 0xC0 ? 2 : 1;
  return expected == text.size() - start ? start : end;
}

}  // namespace

std::string FileTitle(std::string_view path) {
  if (platform::StartsWithIgnoreCase(path, "http://")) return std::string(path);
  if (path.empty() || path.back() == '/') return {};
  const std::size_t slash = path.rfind('/');
  const std::size_t dot = path.rfind('.');
  const std::size_t start = slash == std::string_view::npos ? 0 : slash + 1;
  const bool dotEndsName = dot != std::string_view::npos &&
                           (slash == std::string_view::npos ? dot >= 1 : dot > start);
  const std::size_t end = dotEndsName ? dot : WithoutLastCharacter(path);
  if (end <= start) return {};
  return std::string(path.substr(start, end - start));
}

}  // namespace playlist
