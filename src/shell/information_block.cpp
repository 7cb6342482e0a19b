#include "shell/information_block.h"

#include <algorithm>
#include <cstring>

#include "platform/text.h"

namespace shell {

void InformationBlock::SetTitle(std::string_view text) {
  const std::u16string wide =
      platform::Utf8ToUtf16(platform::TruncateToUtf16Units(text, kInformationTitleUnits - 1));
  const std::size_t units = std::min(wide.size(), kInformationTitleUnits - 1);
  std::memset(title, 0, sizeof title);
  std::memcpy(title, wide.data(), units * sizeof(char16_t));
}

std::string InformationBlock::Title() const {
  std::size_t units = 0;
  while (units < kInformationTitleUnits && title[units] != u'\0') ++units;
  return platform::Utf16ToUtf8(std::u16string_view(title, units));
}

}  // namespace shell
