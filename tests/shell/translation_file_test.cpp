#include "shell/translation_file.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/registry.h"
#include "platform/texts.h"
#include "shell/language_pack.h"
#include "support/test_environment.h"

namespace {

using shell::ReadTranslationFile;
using shell::TranslationTexts;

const std::string kPartialPack = std::string(TS_TEST_DATA_DIR) + "/shell/partial.qm";
const std::string kMagic = "\x3C\xB8\x64\x18\xCA\xEF\x9C\x95\xCD\x21\x1C\xBF\x60\xA1\xBD\xDD";

std::string Word(std::uint32_t value) {
  return {static_cast<char>(value >> 24), static_cast<char>(value >> 16), static_cast<char>(value >> 8),
          static_cast<char>(value)};
}
std::string Field(char tag, const std::string& bytes) {
  return std::string(1, tag) + Word(bytes.size()) + bytes;
}
std::string Utf16Be(const std::string& ascii) {
  std::string bytes;
  for (const char c : ascii) bytes += std::string{'\0', c};
  return bytes;
}
// A message as lrelease writes an id-based one, with room for variations.
std::string Message(const std::string& id, const std::string& text, const std::string& context = "") {
  return Field(3, Utf16Be(text)) + Field(8, "") + Field(6, id) + Field(7, context) + "\x01";
}
std::string File(const std::string& messages) {
  return kMagic + Field(0x69, messages);
}

TEST(TranslationFileTest, ReadsThePacksLreleaseWrites) {
  const auto texts = ReadTranslationFile(testing_support::ReadFile(kPartialPack));
  ASSERT_TRUE(texts.has_value());
  EXPECT_EQ(*texts, (TranslationTexts{{"6313", "Springe zu %s"},
                                      {"6336", "Volume: %d%%"},
                                      {"6365", "Ja \xE2\x9C\x93"},
                                      {"menu.101.p1.6", "Optionen"}}));
}

TEST(TranslationFileTest, OnlyIdBasedMessagesWithATranslationCount) {
  const std::string none = std::string("\x03") + Word(0xFFFFFFFF) + Field(6, "6002") + "\x01";
  const std::string plural = Field(3, Utf16Be("one")) + Field(3, Utf16Be("many")) + Field(6, "6341") + "\x01";
  const std::string obsolete =
      std::string("\x05") + "abcd" + Field(3, Utf16Be("Aus")) + Field(6, "6001") + "\x01";
  const auto texts =
      ReadTranslationFile(File(Message("6000", "Spielen") + Message("6003", "in context", "Ctx") +
                               Message("6004", "") + none + plural + obsolete));
  ASSERT_TRUE(texts.has_value());
  EXPECT_EQ(*texts, (TranslationTexts{{"6000", "Spielen"}, {"6001", "Aus"}, {"6341", "one"}}));
}

TEST(TranslationFileTest, ADamagedMessageEndsTheReadingAndKeepsWhatCameBefore) {
  const std::string good = Message("6000", "Spielen");
  const std::string oddLength = Field(3, "abc") + Field(6, "6001") + "\x01";
  const std::string unknownTag = std::string("\x0A") + Word(0) + "\x01";
  const std::string tooLong = std::string("\x06") + Word(1000) + "6002\x01";
  for (const std::string& damage :
       {oddLength, unknownTag, tooLong, std::string("\x03\x00\x00"), std::string()}) {
    const auto texts = ReadTranslationFile(File(good + damage + Message("6005", "Lauter")));
    ASSERT_TRUE(texts.has_value());
    EXPECT_EQ(texts->count("6000"), 1u);
  }
  const auto unended = ReadTranslationFile(File(Field(3, Utf16Be("x")) + Field(6, "6000")));
  ASSERT_TRUE(unended.has_value());
  EXPECT_TRUE(unended->empty()) << "a message without its end tag isn't taken";
}

TEST(TranslationFileTest, DataThatIsntATranslationFileGivesNothing) {
  EXPECT_FALSE(ReadTranslationFile(""));
  EXPECT_FALSE(ReadTranslationFile("not a translation file at all"));
  EXPECT_FALSE(ReadTranslationFile(kMagic)) << "no messages";
  EXPECT_FALSE(ReadTranslationFile(kMagic + Field(0x42, "hash"))) << "no messages";
  EXPECT_FALSE(ReadTranslationFile(kMagic + "\x69" + Word(100) + "short")) << "a block longer than the file";
  EXPECT_FALSE(ReadTranslationFile(kMagic.substr(0, 10)));
}

TEST(TranslationFileTest, EveryCutAndEveryChangedByteOfARealPackReadsSafely) {
  const std::string pack = testing_support::ReadFile(kPartialPack);
  const auto whole = ReadTranslationFile(pack);
  ASSERT_TRUE(whole.has_value());
  for (std::size_t cut = 0; cut < pack.size(); ++cut) {
    const auto texts = ReadTranslationFile(pack.substr(0, cut));
    if (!texts) continue;
    for (const auto& [key, text] : *texts) EXPECT_EQ(whole->at(key), text) << "cut at " << cut;
  }
  for (std::size_t at = 0; at < pack.size(); ++at) {
    for (const unsigned char value : {0x00, 0x01, 0x7F, 0xFF}) {
      std::string changed = pack;
      changed[at] = static_cast<char>(value);
      if (const auto texts = ReadTranslationFile(changed)) {
        for (const auto& [key, text] : *texts) EXPECT_FALSE(key.empty() || text.empty());
      }
    }
  }
}

class TranslationFileReaderTest : public testing_support::IsolatedEnvironmentTest {};

TEST_F(TranslationFileReaderTest, APartialPackFallsBackOnEnglishForWhatItLacks) {
  platform::Registry registry(Root().File("config/registry.reg"));
  const std::string folder = Root().File("data/install");
  std::filesystem::create_directories(folder);
  registry.CreateKey(platform::RegistryRoot::LocalMachine, "Security\\AppInstall\\Halvorkeep Tavrinsonic");
  registry.SetString(platform::RegistryRoot::LocalMachine, "Security\\AppInstall\\Halvorkeep Tavrinsonic",
                     "InstallDir", folder);
  std::filesystem::copy_file(kPartialPack, folder + "/mui.0407.qm");
  testing_support::WriteFile(folder + "/mui.0419.qm", std::string(300, '\xCD'));

  shell::TranslationFileReader reader;
  EXPECT_FALSE(reader.Read(folder + "/mui.0C0A.qm", shell::TranslatableKeys())) << "missing";
  {
    shell::LanguageLayer language(reader, registry);
    ASSERT_TRUE(language.LoadLanguage(1031));
    EXPECT_EQ(platform::LoadText(6313), "Springe zu %s");
    EXPECT_EQ(platform::LoadText(6366), "No");
    EXPECT_EQ(shell::KeyedText("menu.101.p1.6"), "Optionen");
    EXPECT_EQ(shell::KeyedText("menu.101.p1.1"), "Order");
    EXPECT_EQ(shell::DialogText(133, 1039), "Sort files on load");
    EXPECT_FALSE(language.LoadLanguage(1049)) << "a damaged pack";
    EXPECT_EQ(language.Pack(), nullptr);
    EXPECT_EQ(platform::LoadText(6313), "Seek to %s");
    ASSERT_TRUE(language.LoadLanguage(1031));
  }
  EXPECT_EQ(platform::LoadText(6313), "Seek to %s") << "the layer's end unloads the pack";
}

}  // namespace
