#include "platform/registry_text.h"

#include <cstdio>

#include "platform/text.h"

namespace platform {
namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::size_t kWrapColumn = 76;

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  c = AsciiLower(c);
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return -1;
}

std::string_view Trim(std::string_view text) {
  while (!text.empty() && (text.front() == ' ' || text.front() == '\t')) text.remove_prefix(1);
  while (!text.empty() && (text.back() == ' ' || text.back() == '\t' || text.back() == '\r'))
    text.remove_suffix(1);
  return text;
}

// Reads a quoted string starting at text[0] == '"'. On success stores the
// unescaped text and the rest of the line after the closing quote.
bool ReadQuoted(std::string_view text, std::string& out, std::string_view& rest) {
  if (text.empty() || text.front() != '"') return false;
  out.clear();
  for (std::size_t i = 1; i < text.size(); ++i) {
    const char c = text[i];
    if (c == '\\' && i + 1 < text.size()) {
      out.push_back(text[++i]);
    } else if (c == '"') {
      rest = text.substr(i + 1);
      return true;
    } else {
      out.push_back(c);
    }
  }
  return false;
}

bool ParseHexList(std::string_view text, std::string& out) {
  out.clear();
  text = Trim(text);
  if (text.empty()) return true;
  std::size_t i = 0;
  for (;;) {
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    const int high = i < text.size() ? HexDigit(text[i]) : -1;
    const int low = i + 1 < text.size() ? HexDigit(text[i + 1]) : -1;
    if (high < 0 || low < 0) return false;
    out.push_back(static_cast<char>(high * 16 + low));
    i += 2;
    while (i < text.size() && (text[i] == ' ' || text[i] == '\t')) ++i;
    if (i == text.size()) return true;
    if (text[i] != ',') return false;
    ++i;
  }
}

bool ParseValueData(std::string_view text, RegistryValue& value) {
  text = Trim(text);
  if (!text.empty() && text.front() == '"') {
    std::string_view rest;
    std::string unescaped;
    if (!ReadQuoted(text, unescaped, rest) || !Trim(rest).empty()) return false;
    value.type = static_cast<std::uint32_t>(RegistryType::String);
    value.data = std::move(unescaped);
    value.data.push_back('\0');
    return true;
  }
  if (text.substr(0, 6) == "dword:") {
    const std::string_view digits = text.substr(6);
    if (digits.empty() || digits.size() > 8) return false;
    std::uint32_t number = 0;
    for (char c : digits) {
      const int digit = HexDigit(c);
      if (digit < 0) return false;
      number = number * 16 + static_cast<std::uint32_t>(digit);
    }
    value.type = static_cast<std::uint32_t>(RegistryType::Dword);
    value.data.assign(4, '\0');
    for (int k = 0; k < 4; ++k) value.data[k] = static_cast<char>((number >> (8 * k)) & 0xFF);
    return true;
  }
  std::uint32_t type = static_cast<std::uint32_t>(RegistryType::Binary);
  std::string_view list;
  if (text.substr(0, 4) == "hex:") {
    list = text.substr(4);
  } else if (text.substr(0, 4) == "hex(") {
    const auto close = text.find("):");
    if (close == std::string_view::npos || close == 4 || close > 12) return false;
    type = 0;
    for (char c : text.substr(4, close - 4)) {
      const int digit = HexDigit(c);
      if (digit < 0) return false;
      type = type * 16 + static_cast<std::uint32_t>(digit);
    }
    list = text.substr(close + 2);
  } else {
    return false;
  }
  std::string bytes;
  if (!ParseHexList(list, bytes)) return false;
  if (type == static_cast<std::uint32_t>(RegistryType::String)) {
    // Strings in hex form are UTF-16LE, as regedit writes them; lone
    // surrogates carry bytes that were not UTF-8 (see BytesToUtf16Lossless).
    std::u16string units;
    for (std::size_t i = 0; i + 1 < bytes.size(); i += 2)
      units.push_back(static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                            static_cast<unsigned char>(bytes[i + 1]) << 8));
    std::string utf8 = Utf16ToBytesLossless(units);
    if (!utf8.empty() && utf8.back() == '\0') utf8.pop_back();
    utf8.push_back('\0');
    bytes = std::move(utf8);
  }
  value.type = type;
  value.data = std::move(bytes);
  return true;
}

std::string Escape(std::string_view text) {
  std::string out;
  out.reserve(text.size() + 2);
  for (char c : text) {
    if (c == '\\' || c == '"') out.push_back('\\');
    out.push_back(c);
  }
  return out;
}

bool FitsQuotedForm(std::string_view data) {
  if (data.empty() || data.back() != '\0') return false;
  data.remove_suffix(1);
  for (char c : data) {
    if (static_cast<unsigned char>(c) < 0x20 || c == 0x7F) return false;
  }
  return IsValidUtf8(data);
}

void AppendHexList(std::string& line, std::string_view bytes) {
  std::size_t column = line.size();
  char pair[4];
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    std::snprintf(pair, sizeof pair, "%02x", static_cast<unsigned char>(bytes[i]));
    line += pair;
    column += 2;
    if (i + 1 < bytes.size()) {
      line.push_back(',');
      ++column;
      if (column >= kWrapColumn) {
        line += "\\\n  ";
        column = 2;
      }
    }
  }
}

std::string FormatValue(const RegistryValue& value) {
  std::string line = value.name.empty() ? "@=" : "\"" + Escape(value.name) + "\"=";
  const auto type = value.type;
  if (type == static_cast<std::uint32_t>(RegistryType::String) && FitsQuotedForm(value.data)) {
    line += "\"" + Escape(std::string_view(value.data).substr(0, value.data.size() - 1)) + "\"";
  } else if (type == static_cast<std::uint32_t>(RegistryType::Dword) && value.data.size() == 4) {
    std::uint32_t number = 0;
    for (int k = 3; k >= 0; --k) number = (number << 8) | static_cast<unsigned char>(value.data[k]);
    char digits[16];
    std::snprintf(digits, sizeof digits, "dword:%08x", number);
    line += digits;
  } else if (type == static_cast<std::uint32_t>(RegistryType::String)) {
    std::string_view text = value.data;
    if (!text.empty() && text.back() == '\0') text.remove_suffix(1);
    std::string bytes;
    for (char16_t unit : BytesToUtf16Lossless(text)) {
      bytes.push_back(static_cast<char>(unit & 0xFF));
      bytes.push_back(static_cast<char>(unit >> 8));
    }
    bytes.append(2, '\0');
    line += "hex(1):";
    AppendHexList(line, bytes);
  } else {
    if (type == static_cast<std::uint32_t>(RegistryType::Binary)) {
      line += "hex:";
    } else {
      char prefix[24];
      std::snprintf(prefix, sizeof prefix, "hex(%x):", type);
      line += prefix;
    }
    AppendHexList(line, value.data);
  }
  return line;
}

}  // namespace

RegistryTree ParseRegistryText(std::string_view text) {
  RegistryTree tree;
  std::size_t current = 0;  // index of the key being read, plus one; 0 before any
  std::size_t position = 0;
  while (position < text.size()) {
    // Gather one logical line: a line ending in a backslash continues.
    std::string line;
    for (;;) {
      const auto end = text.find('\n', position);
      std::string_view physical =
          text.substr(position, end == std::string_view::npos ? std::string_view::npos : end - position);
      position = end == std::string_view::npos ? text.size() : end + 1;
      physical = Trim(physical);
      // Hex lists wrap after a comma; nothing else ends in ",\".
      if (physical.size() >= 2 && physical.substr(physical.size() - 2) == ",\\") {
        physical.remove_suffix(1);
        line += physical;
        if (position < text.size()) continue;
      } else {
        line += physical;
      }
      break;
    }
    const std::string_view view = Trim(line);
    if (view.empty() || view.front() == ';' || view == kHeader) continue;
    if (view.front() == '[') {
      current = 0;
      if (view.back() != ']' || view.size() < 3 || view[1] == '-') continue;
      const std::string_view path = view.substr(1, view.size() - 2);
      // A key that appears twice is one key, as an import would make it.
      for (std::size_t k = 0; k < tree.keys.size() && current == 0; ++k) {
        if (EqualsIgnoreCase(tree.keys[k].path, path)) current = k + 1;
      }
      if (current == 0) {
        tree.keys.push_back({std::string(path), {}});
        current = tree.keys.size();
      }
      continue;
    }
    if (current == 0) continue;
    RegistryKeyEntry& key = tree.keys[current - 1];
    RegistryValue value;
    std::string_view rest;
    if (view.front() == '@') {
      rest = view.substr(1);
    } else if (!ReadQuoted(view, value.name, rest)) {
      continue;
    }
    rest = Trim(rest);
    if (rest.empty() || rest.front() != '=') continue;
    if (!ParseValueData(rest.substr(1), value)) continue;
    // A later line with the same name replaces the earlier one, as an import would.
    bool replaced = false;
    for (auto& existing : key.values) {
      if (EqualsIgnoreCase(existing.name, value.name)) {
        existing = value;
        replaced = true;
        break;
      }
    }
    if (!replaced) key.values.push_back(std::move(value));
  }
  return tree;
}

std::string FormatRegistryText(const RegistryTree& tree) {
  std::string out(kHeader);
  out += "\n";
  for (const auto& key : tree.keys) {
    out += "\n[" + key.path + "]\n";
    for (const auto& value : key.values) out += FormatValue(value) + "\n";
  }
  return out;
}

}  // namespace platform
