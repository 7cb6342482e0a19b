#include "playlist/list_entry.h"

#include <algorithm>
#include <cctype>
#include <climits>

#include "platform/text.h"

namespace playlist {
namespace {

bool IsControl(unsigned char c) { return (c < 0x20 && c != '\t') || c == 0x7F; }

bool HasControlCharacters(std::string_view text) {
  return std::any_of(text.begin(), text.end(), [](char c) { return IsControl(static_cast<unsigned char>(c)); });
}

bool IsBlank(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return c == ' ' || c == '\t'; });
}

int HexValue(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  c = platform::AsciiLower(c);
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

}  // namespace

std::string ListDirectory(std::string_view listPath) {
  const std::size_t slash = listPath.rfind('/');
  return slash == std::string_view::npos ? std::string() : std::string(listPath.substr(0, slash + 1));
}

bool IsAddress(std::string_view text) {
  if (text.empty() || !std::isalpha(static_cast<unsigned char>(text[0]))) return false;
  for (std::size_t i = 1; i < text.size(); ++i) {
    const unsigned char c = static_cast<unsigned char>(text[i]);
    if (c == ':') return text.substr(i).starts_with("://");
    if (!std::isalnum(c) && c != '+' && c != '-' && c != '.') return false;
  }
  return false;
}

std::optional<std::string> FileAddressToPath(std::string_view address) {
  std::string_view rest = address.substr(std::string_view("file://").size());
  if (platform::StartsWithIgnoreCase(rest, "localhost/")) rest.remove_prefix(std::string_view("localhost").size());
  if (!rest.starts_with('/')) return std::nullopt;
  std::string path;
  path.reserve(rest.size());
  for (std::size_t i = 0; i < rest.size(); ++i) {
    const int high = rest[i] == '%' && i + 2 < rest.size() ? HexValue(rest[i + 1]) : -1;
    const int low = high >= 0 ? HexValue(rest[i + 2]) : -1;
    if (low >= 0) {
      path.push_back(static_cast<char>(high * 16 + low));
      i += 2;
    } else {
      path.push_back(rest[i]);
    }
  }
  if (HasControlCharacters(path) || path.find('\0') != std::string::npos) return std::nullopt;
  return path;
}

std::optional<std::string> EntryPath(std::string_view text, std::string_view directory, EntryRule rule) {
  if (IsBlank(text)) return std::nullopt;
  if (rule == EntryRule::kNativeList) {
    if (text.front() == '/' || IsAddress(text)) return std::string(text);
    return std::string(directory) + std::string(text);
  }
  std::string entry = platform::NarrowToUtf8(text);
  if (HasControlCharacters(entry)) return std::nullopt;
  if (platform::StartsWithIgnoreCase(entry, "file://")) {
    auto local = FileAddressToPath(entry);
    if (!local) return std::nullopt;
    entry = std::move(*local);
  } else if (IsAddress(entry)) {
    if (rule == EntryRule::kAsx) return std::string(directory) + entry;
    return entry;
  }
  std::replace(entry.begin(), entry.end(), '\\', '/');
  if (entry.front() == '/' || rule == EntryRule::kPls) return entry;
  return std::string(directory) + entry;
}

std::string EntryTitle(std::string_view text, std::size_t maxUnits) {
  std::string title = platform::NarrowToUtf8(text);
  for (char& c : title) {
    if (IsControl(static_cast<unsigned char>(c))) c = ' ';
  }
  std::size_t end = title.size();
  while (end > 1 && (title[end - 1] == ' ' || title[end - 1] == '\t')) --end;
  title.resize(end);
  return platform::TruncateToUtf16Units(title, maxUnits);
}

int LeadingInteger(std::string_view text) {
  std::size_t i = 0;
  while (i < text.size() && (text[i] == ' ' || (text[i] >= '\t' && text[i] <= '\r'))) ++i;
  bool negative = false;
  if (i < text.size() && (text[i] == '+' || text[i] == '-')) negative = text[i++] == '-';
  long long value = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i) {
    value = std::min<long long>(value * 10 + (text[i] - '0'), static_cast<long long>(INT_MAX) + 1);
  }
  if (negative) value = -value;
  return static_cast<int>(std::clamp<long long>(value, INT_MIN, INT_MAX));
}

}  // namespace playlist
