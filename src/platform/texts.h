// Texts by numeric id: the only way code reaches a user-visible string.
//
// The built-in English table (res/strings/english.txt, compiled in) answers
// every id the program uses. The shell installs a TextSource that consults the
// selected language pack first and falls back on English for what it lacks;
// the core only calls LoadText.
//
// Threads: LoadText may be called from any thread; the source is installed on
// the window thread before any worker starts and not changed while they run.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

namespace platform {

class TextSource {
 public:
  virtual ~TextSource() = default;
  // The text of `id`, or nullopt when the source has none.
  virtual std::optional<std::string> Find(std::uint32_t id) const = 0;
};

// The text of `id` from the installed source, else from the built-in English
// table; nullopt when neither has it (a label that can't be loaded).
std::optional<std::string> FindText(std::uint32_t id);
// As FindText, with "" for a text that doesn't exist.
std::string LoadText(std::uint32_t id);
// The English text of `id`, ignoring any installed source.
std::optional<std::string> BuiltInText(std::uint32_t id);

// Installs the source consulted before the built-in table; null removes it.
void SetTextSource(const TextSource* source);

struct BuiltInTextRow {
  std::uint32_t id;
  const char* text;
};
// The generated table, sorted by id.
extern const BuiltInTextRow kBuiltInEnglish[];
extern const std::size_t kBuiltInEnglishCount;

}  // namespace platform
