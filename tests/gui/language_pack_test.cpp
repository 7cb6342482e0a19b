#include "shell/language_pack.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QDialog>
#include <QMenu>
#include <QPushButton>
#include <fstream>
#include <regex>
#include <set>

#include "gui_app.h"
#include "platform/texts.h"
#include "shell/menu.h"
#include "shell/ui/dialog_frame.h"
#include "shell/ui/menu_renderer.h"
#include "shell/ui/qt_language.h"
#include "shell/ui/soft_key_bar.h"

namespace {

const std::string kGermanSource = std::string(TS_SOURCE_DIR) + "/res/lang/mui.0407.ts";

std::string Contents(const std::string& path) {
  return testing_support::ReadFile(path);
}

TEST(ShippedPackTest, EveryIdOfTheShippedPackIsATextOfTheProgram) {
  const std::vector<std::string> keys = shell::TranslatableKeys();
  const std::set<std::string> known(keys.begin(), keys.end());
  const std::string source = Contents(kGermanSource);
  const std::regex id("<message id=\"([^\"]+)\">");
  int count = 0;
  for (auto it = std::sregex_iterator(source.begin(), source.end(), id); it != std::sregex_iterator(); ++it) {
    EXPECT_EQ(known.count((*it)[1]), 1u) << (*it)[1];
    ++count;
  }
  EXPECT_GT(count, 20);
}

TEST(NativeLanguageNameTest, KnownLocalesHaveTheirOwnNamesAndUnknownOnesNone) {
  EXPECT_EQ(ui::NativeLanguageName(0x0407), "Deutsch");
  EXPECT_EQ(ui::NativeLanguageName(0x040C), "français");
  EXPECT_EQ(ui::NativeLanguageName(0x1234), std::nullopt);
  EXPECT_EQ(ui::NativeLanguageName(0), std::nullopt);
}

using LanguagePackTest = testing_support::GuiAppTest;

TEST_F(LanguagePackTest, TheShippedPackIsInstalledListedAndTranslatesWhatItHas) {
  ASSERT_TRUE(settingsKey->WriteDword("Language", 1031));
  Start();
  EXPECT_EQ(Window().SoftKeys()->RightKey()->text(), "Menü");
  EXPECT_EQ(Window().SoftKeys()->LeftKey()->text(), "Wiedergabeliste");
  std::unique_ptr<QMenu> menu = ui::RenderMenu(app->Menu().RightKey());
  EXPECT_EQ(menu->actions()[6]->text(), "Optionen");
  EXPECT_EQ(menu->actions()[1]->text(), "Reihenfolge");
  QMenu* languages = menu->actions()[6]->menu()->actions()[6]->menu();
  ASSERT_NE(languages, nullptr);
  ASSERT_EQ(languages->actions().size(), 2);
  EXPECT_EQ(languages->actions()[1]->text(), "Deutsch");
  EXPECT_TRUE(languages->actions()[1]->isChecked());
  EXPECT_EQ(languages->actions()[0]->text(), "English") << "not in the pack: English";
  EXPECT_EQ(platform::LoadText(6313), "Springe zu %s");
  EXPECT_EQ(platform::LoadText(6311), "Selected file path is \"%s\"");

  QDialog dialog;
  auto* sort = new QCheckBox(&dialog);
  sort->setObjectName("1039");
  auto* byNumber = new QCheckBox(&dialog);
  byNumber->setObjectName("1041");
  auto* unnamed = new QCheckBox("as it was", &dialog);
  ui::ApplyDialogTexts(dialog, 133);
  EXPECT_EQ(dialog.windowTitle(), "TS-Optionen");
  EXPECT_EQ(sort->text(), "Dateien beim Laden sortieren");
  EXPECT_EQ(byNumber->text(), "Sort by track number (in tag)");
  EXPECT_EQ(unnamed->text(), "as it was");
  ui::DialogSoftKeys keys(dialog, 157);
  EXPECT_EQ(keys.LeftKey()->text(), "Fertig");
  EXPECT_EQ(keys.RightKey()->text(), "Abbrechen");
}

}  // namespace
