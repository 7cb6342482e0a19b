#include "platform/texts.h"

#include <algorithm>
#include <atomic>

namespace platform {
namespace {

std::atomic<const TextSource*> installedSource{nullptr};

}  // namespace

std::optional<std::string> BuiltInText(std::uint32_t id) {
  const BuiltInTextRow* end = kBuiltInEnglish + kBuiltInEnglishCount;
  const BuiltInTextRow* found = std::lower_bound(
      kBuiltInEnglish, end, id, [](const BuiltInTextRow& row, std::uint32_t key) { return row.id < key; });
  if (found == end || found->id != id) return std::nullopt;
  return std::string(found->text);
}

std::optional<std::string> FindText(std::uint32_t id) {
  if (const TextSource* source = installedSource.load(std::memory_order_acquire)) {
    if (auto text = source->Find(id)) return text;
  }
  return BuiltInText(id);
}

std::string LoadText(std::uint32_t id) { return FindText(id).value_or(std::string()); }

void SetTextSource(const TextSource* source) { installedSource.store(source, std::memory_order_release); }

}  // namespace platform
