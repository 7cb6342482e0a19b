#include "shell/language_pack.h"

#include <algorithm>
#include <atomic>
#include <cstdio>

#include "platform/durable_file.h"
#include "platform/paths.h"
#include "platform/registry.h"
#include "shell/translation_file.h"

namespace shell {
namespace {

std::atomic<const LanguagePack*> installedPack{nullptr};
constexpr std::size_t kMaxPackBytes = 16u << 20;

}  // namespace

std::optional<std::string> BuiltInKeyedText(std::string_view key) {
  const KeyedTextRow* end = kBuiltInKeyedTexts + kBuiltInKeyedTextsCount;
  const KeyedTextRow* found =
      std::lower_bound(kBuiltInKeyedTexts, end, key,
                       [](const KeyedTextRow& row, std::string_view wanted) { return row.key < wanted; });
  if (found == end || found->key != key) return std::nullopt;
  return std::string(found->text);
}

std::optional<std::string> FindKeyedText(std::string_view key) {
  if (const LanguagePack* pack = installedPack.load(std::memory_order_acquire)) {
    if (auto text = pack->FindKey(key)) return text;
  }
  return BuiltInKeyedText(key);
}

std::string KeyedText(std::string_view key) {
  return FindKeyedText(key).value_or(std::string());
}

std::string DialogText(std::uint32_t dialog, std::string_view control) {
  return KeyedText("dlg." + std::to_string(dialog) + "." + std::string(control));
}

std::string DialogText(std::uint32_t dialog, std::uint32_t control) {
  return DialogText(dialog, std::to_string(control));
}

std::vector<std::string> TranslatableKeys() {
  std::vector<std::string> keys;
  keys.reserve(platform::kBuiltInEnglishCount + kBuiltInKeyedTextsCount);
  for (std::size_t i = 0; i < platform::kBuiltInEnglishCount; ++i)
    keys.push_back(std::to_string(platform::kBuiltInEnglish[i].id));
  for (std::size_t i = 0; i < kBuiltInKeyedTextsCount; ++i) keys.emplace_back(kBuiltInKeyedTexts[i].key);
  return keys;
}

LanguagePack::LanguagePack(std::map<std::string, std::string, std::less<>> packTexts)
    : texts(std::move(packTexts)) {}

std::optional<std::string> LanguagePack::Find(std::uint32_t id) const {
  return FindKey(std::to_string(id));
}

std::optional<std::string> LanguagePack::FindKey(std::string_view key) const {
  const auto found = texts.find(key);
  if (found == texts.end()) return std::nullopt;
  return found->second;
}

std::optional<std::map<std::string, std::string, std::less<>>> TranslationFileReader::Read(
    const std::string& path, const std::vector<std::string>& keys) {
  const std::optional<std::string> bytes = platform::ReadWholeFile(path, kMaxPackBytes);
  if (!bytes) return std::nullopt;
  std::optional<TranslationTexts> all = ReadTranslationFile(*bytes);
  if (!all) return std::nullopt;
  std::map<std::string, std::string, std::less<>> texts;
  for (const std::string& key : keys) {
    if (auto found = all->find(key); found != all->end()) texts.emplace(key, std::move(found->second));
  }
  return texts;
}

std::string PackFileName(std::uint32_t localeId) {
  char name[32];
  std::snprintf(name, sizeof name, "mui.%04X.qm", localeId);
  return name;
}

LanguageLayer::LanguageLayer(LanguagePackReader& packReader, platform::Registry& store)
    : reader(packReader), registry(store) {}

LanguageLayer::~LanguageLayer() {
  Install(nullptr);
}

void LanguageLayer::Install(const LanguagePack* pack) {
  current = pack;
  installedPack.store(pack, std::memory_order_release);
  platform::SetTextSource(pack);
}

bool LanguageLayer::LoadLanguage(std::uint32_t localeId) {
  Install(nullptr);
  if (IsBuiltInLanguage(localeId)) return true;
  const std::string folder = platform::ReadInstallDirectory(registry);
  const std::string path =
      platform::JoinPath(folder.empty() ? platform::HomeDirectory() : folder, PackFileName(localeId));
  auto texts = reader.Read(path, TranslatableKeys());
  if (!texts) return false;
  loaded.push_back(std::make_unique<LanguagePack>(std::move(*texts)));
  Install(loaded.back().get());
  return true;
}

}  // namespace shell
