#include "gui_app.h"

#include <QCoreApplication>
#include <QTimer>
#include <filesystem>

#include "platform/paths.h"

namespace testing_support {

void GuiAppTest::SetUp() {
  IsolatedEnvironmentTest::SetUp();
  // As a session's runtime folder is: Qt in the player complains otherwise.
  std::filesystem::permissions(Root().File("runtime"), std::filesystem::perms::owner_all);
  registry = std::make_unique<platform::Registry>(platform::ConfigDirectory() + "/registry.reg");
  deviceVolume = std::make_unique<platform::DeviceVolume>(*registry);
  settingsKey = std::make_unique<shell::RegistryKey>(*registry);
  ASSERT_TRUE(settingsKey->Bind(platform::RegistryRoot::LocalMachine, shell::kSettingsKeyPath));
  windows = std::make_unique<ui::QtWindowSystem>();
  link =
      std::make_unique<ui::LocalInstanceLink>(platform::JoinPath(platform::RuntimeDirectory(), "instance"));
}

void GuiAppTest::TearDown() {
  // A close asks Qt's loops to end even when none runs, and Qt then ends every
  // loop at once until its main loop starts; one turn of it clears that.
  QTimer::singleShot(0, [] { QCoreApplication::exit(0); });
  QCoreApplication::exec();
  app.reset();
  link.reset();
  windows.reset();
  IsolatedEnvironmentTest::TearDown();
}

SpyApp& GuiAppTest::Start() {
  app = std::make_unique<SpyApp>(shell::ShellServices{*registry, *settingsKey, *windows, *link, packReader,
                                                      ui::NativeLanguageName, nullptr, deviceVolume.get()});
  EXPECT_FALSE(app->HandOffToRunningInstance("")) << "no other instance runs";
  EXPECT_TRUE(app->Init());
  const shell::Rect area = windows->WorkArea();
  EXPECT_TRUE(app->CreateMainWindow(area.x, area.y, area.width, area.height));
  app->Window()->Show();
  return *app;
}

bool GuiAppTest::Stored(const char* name) {
  return registry->GetValue(platform::RegistryRoot::LocalMachine, shell::kSettingsKeyPath, name).has_value();
}

}  // namespace testing_support
