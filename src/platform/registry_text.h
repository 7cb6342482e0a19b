// The registry's file format: the text of Windows Registry Editor 5.00.
//
//   Windows Registry Editor Version 5.00
//
//   [HKEY_LOCAL_MACHINE\SOFTWARE\Halvorkeep\Tavrinsonic]
//   "Load"="/home/user/Music"
//   "FFSkipTime"=dword:0000000a
//   "WndSettings"=hex:00,04,c0,00,00,00,00,00
//
// Strings are written as quoted text with \\ and \" escaped; a string that a
// line can't hold (control characters, bytes that are not UTF-8, a missing
// terminator) is written as hex(1): with its UTF-16LE form, as regedit does;
// bytes that are not UTF-8 travel there as lone surrogates, so that a file
// name that isn't UTF-8 survives. Other types use hex(N):.
// Long hex lists are wrapped with a trailing backslash. The file is UTF-8.
//
// Reading is lenient: a line that can't be understood is skipped, so that a
// damaged or hand-edited file loses only what is damaged. The next write
// produces a clean file.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace platform {

enum class RegistryType : std::uint32_t {
  String = 1,  // REG_SZ: UTF-8 with its terminating zero
  Binary = 3,  // REG_BINARY
  Dword = 4,   // REG_DWORD: four bytes, little endian
};

struct RegistryValue {
  std::string name;   // empty for the key's default value
  std::uint32_t type = 0;
  std::string data;   // the bytes as stored, with their exact size
};

struct RegistryKeyEntry {
  std::string path;   // full path from the root name, e.g. HKEY_LOCAL_MACHINE\SOFTWARE
  std::vector<RegistryValue> values;
};

struct RegistryTree {
  std::vector<RegistryKeyEntry> keys;  // in file order; parents are listed too
};

RegistryTree ParseRegistryText(std::string_view text);
std::string FormatRegistryText(const RegistryTree& tree);

}  // namespace platform
