#include "platform/texts.h"

#include <gtest/gtest.h>

#include <map>

namespace {

class PartialPack : public platform::TextSource {
 public:
  std::optional<std::string> Find(std::uint32_t id) const override {
    const auto found = texts.find(id);
    if (found == texts.end()) return std::nullopt;
    return found->second;
  }
  std::map<std::uint32_t, std::string> texts;
};

TEST(TextsTest, AnInstalledSourceComesFirstAndEnglishFillsItsGaps) {
  EXPECT_EQ(platform::LoadText(6336), "Volume: %d%%");
  EXPECT_FALSE(platform::FindText(1)) << "an id nobody has";
  EXPECT_EQ(platform::LoadText(1), "");

  PartialPack german;
  german.texts[6336] = "Lautstärke: %d%%";
  platform::SetTextSource(&german);
  EXPECT_EQ(platform::LoadText(6336), "Lautstärke: %d%%");
  EXPECT_EQ(platform::LoadText(6313), "Seek to %s");
  EXPECT_EQ(platform::BuiltInText(6336), "Volume: %d%%");
  platform::SetTextSource(nullptr);
  EXPECT_EQ(platform::LoadText(6336), "Volume: %d%%");
}

TEST(TextsTest, TheBuiltInTableIsSortedWithoutDuplicates) {
  for (std::size_t i = 1; i < platform::kBuiltInEnglishCount; ++i) {
    EXPECT_LT(platform::kBuiltInEnglish[i - 1].id, platform::kBuiltInEnglish[i].id);
  }
}

}  // namespace
