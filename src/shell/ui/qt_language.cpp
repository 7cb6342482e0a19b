#include "shell/ui/qt_language.h"

#include <QLocale>

#include "shell/locale_ids.h"

namespace ui {

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
