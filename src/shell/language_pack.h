// The language layer: the only way to texts, dialog texts and menu texts.
//
// The program is built in English: numbered texts (res/strings/english.txt,
// reached through platform::LoadText) and keyed texts, the menus'
// ("menu.<menu>.<item>", english_menus.txt) and the dialogs'
// ("dlg.<dialog>.<control>", english_dialogs.txt). A language pack is a Qt
// translation file "mui.%04X.qm" in the install directory, with id-based
// messages under the same ids: "6313", "menu.101.40041", "dlg.133.1039".
// Whatever a pack lacks falls back on the built-in English text, so a pack
// can be partial; a pack that can't be read at all means English.
//
// A LanguagePackReader reads a pack file (TranslationFileReader, or a fake in
// tests); the pack it yields is plain data, a map from key to text, taken
// once, when the pack is loaded.
//
// Threads: packs are loaded and installed on the window thread. Texts may be
// looked up from any thread: an installed pack is never changed, and a pack
// that is replaced stays alive until the LanguageLayer ends.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/texts.h"

namespace platform {
class Registry;
}

namespace shell {

// The generated table of keyed English texts, sorted by key.
struct KeyedTextRow {
  std::string_view key;
  const char* text;
};
extern const KeyedTextRow kBuiltInKeyedTexts[];
extern const std::size_t kBuiltInKeyedTextsCount;

// The English text of a menu or dialog key; nullopt when there is none.
std::optional<std::string> BuiltInKeyedText(std::string_view key);
// The installed pack's text of a key, else the English one; nullopt if neither has it.
std::optional<std::string> FindKeyedText(std::string_view key);
// As FindKeyedText, with "" for a key nobody has.
std::string KeyedText(std::string_view key);
// A dialog's text: control is an id ("1039"), "title", or a name.
std::string DialogText(std::uint32_t dialog, std::string_view control);
std::string DialogText(std::uint32_t dialog, std::uint32_t control);

// Every key a pack may translate: each numbered text (its number in decimal)
// and each menu and dialog key.
std::vector<std::string> TranslatableKeys();

class LanguagePack : public platform::TextSource {
 public:
  explicit LanguagePack(std::map<std::string, std::string, std::less<>> texts);
  std::optional<std::string> Find(std::uint32_t id) const override;
  std::optional<std::string> FindKey(std::string_view key) const;
  std::size_t Size() const { return texts.size(); }

 private:
  std::map<std::string, std::string, std::less<>> texts;
};

class LanguagePackReader {
 public:
  virtual ~LanguagePackReader() = default;
  // The texts the pack at `path` has for `keys` (keys it lacks are left
  // out); nullopt when the file is missing or isn't a pack.
  virtual std::optional<std::map<std::string, std::string, std::less<>>> Read(
      const std::string& path, const std::vector<std::string>& keys) = 0;
};

// Reads packs as compiled translation files (translation_file.h). A file of
// more than 16 MiB isn't taken.
class TranslationFileReader : public LanguagePackReader {
 public:
  std::optional<std::map<std::string, std::string, std::less<>>> Read(
      const std::string& path, const std::vector<std::string>& keys) override;
};

// The file name of a pack: "mui.%04X.qm", as mui.0407.qm for locale 1031.
std::string PackFileName(std::uint32_t localeId);

// True for the ids of the built-in language: 0 and 1033.
inline bool IsBuiltInLanguage(std::uint32_t localeId) {
  return localeId == 0 || localeId == 1033;
}

// Loads, installs and unloads packs.
class LanguageLayer {
 public:
  LanguageLayer(LanguagePackReader& reader, platform::Registry& registry);
  ~LanguageLayer();  // unloads the pack
  LanguageLayer(const LanguageLayer&) = delete;
  LanguageLayer& operator=(const LanguageLayer&) = delete;

  // Unloads the current pack. For 0 or 1033 that is all, and the result is
  // true. Otherwise loads PackFileName(localeId) from the install directory
  // (read anew from the registry) and returns whether that worked; on failure
  // the program runs in English.
  bool LoadLanguage(std::uint32_t localeId);
  // The loaded pack, null for English.
  const LanguagePack* Pack() const { return current; }

 private:
  void Install(const LanguagePack* pack);

  LanguagePackReader& reader;
  platform::Registry& registry;
  const LanguagePack* current = nullptr;
  // Every pack loaded during the run, kept so that a thread still reading a
  // replaced one never reads freed memory.
  std::vector<std::unique_ptr<LanguagePack>> loaded;
};

}  // namespace shell
