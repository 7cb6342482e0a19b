// The record a desktop component reads to show what the player does
// (message 2654). It is refreshed on each request and handed out by address;
// the reader copies it at once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace shell {

inline constexpr std::size_t kInformationTitleUnits = 260;  // UTF-16, terminator included

// The product's name and web address: the title when the list has none.
inline constexpr std::string_view kProductText = "Tavrinsonic - www.halvorkeep.example";

struct InformationBlock {
  std::int32_t state = 0;     // 1 stopped, 2 playing, 3 paused
  std::int32_t position = 0;  // milliseconds
  std::int32_t length = 0;    // milliseconds
  std::int32_t repeat = 0;    // repeat enabled
  std::int32_t shuffle = 0;   // shuffle enabled
  char16_t title[kInformationTitleUnits] = {};

  // Stores `text` as the title, cut to whole characters so that the
  // terminator fits.
  void SetTitle(std::string_view text);
  std::string Title() const;
};

}  // namespace shell
