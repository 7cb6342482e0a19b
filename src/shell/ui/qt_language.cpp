#include "shell/ui/qt_language.h"

#include <QLocale>
#include <QTranslator>

#include "platform/durable_file.h"
#include "shell/locale_ids.h"

namespace ui {
namespace {

constexpr std::size_t kMaxPackBytes = 16u << 20;

}  // namespace

std::optional<std::map<std::string, std::string, std::less<>>> QtPackReader::Read(
    const std::string& path, const std::vector<std::string>& keys) {
  const std::optional<std::string> bytes = platform::ReadWholeFile(path, kMaxPackBytes);
  if (!bytes || bytes->empty()) return std::nullopt;
  QTranslator translator;
  if (!translator.load(reinterpret_cast<const uchar*>(bytes->data()), static_cast<int>(bytes->size())))
    return std::nullopt;
  std::map<std::string, std::string, std::less<>> texts;
  for (const std::string& key : keys) {
    // Id-based messages have no context; an id the pack lacks gives nothing.
    const QString text = translator.translate(nullptr, key.c_str());
    if (!text.isEmpty()) texts.emplace(key, text.toStdString());
  }
  return texts;
}

std::optional<std::string> NativeLanguageName(std::uint32_t localeId) {
  const std::optional<std::string> tag = shell::LocaleTagForId(localeId);
  if (!tag) return std::nullopt;
  const QLocale locale(QString::fromStdString(*tag));
  if (locale.language() == QLocale::C) return std::nullopt;
  const QString name = locale.nativeLanguageName();
  if (name.isEmpty()) return std::nullopt;
  return name.toStdString();
}

}  // namespace ui
