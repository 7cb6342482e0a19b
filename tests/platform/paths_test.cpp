#include "platform/paths.h"

#include <gtest/gtest.h>

#include <filesystem>

#include "platform/registry.h"
#include "support/test_environment.h"

namespace {

using testing_support::ReadFile;
using testing_support::WriteFile;

class PathsTest : public testing_support::IsolatedEnvironmentTest {};

TEST_F(PathsTest, FoldersFollowTheXdgVariables) {
  EXPECT_EQ(platform::HomeDirectory(), Root().File("home"));
  EXPECT_EQ(platform::ConfigDirectory(), Root().File("config") + "/tavrinsonic");
  EXPECT_EQ(platform::DefaultInstallDirectory(), Root().File("data") + "/tavrinsonic");
  EXPECT_EQ(platform::RuntimeDirectory(), Root().File("runtime") + "/tavrinsonic");
  EXPECT_TRUE(std::filesystem::is_directory(Root().File("runtime") + "/tavrinsonic"));
  EXPECT_EQ(platform::JoinPath("/a/", "b"), "/a/b");
  EXPECT_EQ(platform::JoinPath("/a", "b"), "/a/b");
}

TEST_F(PathsTest, TheFirstStartInstallsAndLaterStartsKeepTheUsersChanges) {
  namespace fs = std::filesystem;
  const std::string shipped = Root().File("shipped");
  fs::create_directories(shipped + "/BaseSkin");
  fs::create_directories(shipped + "/presets");
  WriteFile(shipped + "/BaseSkin/layout.xml", "<skin/>");
  WriteFile(shipped + "/presets/Rock.eqf", "rock");
  WriteFile(shipped + "/mui.0407.qm", "de");
  WriteFile(shipped + "/unrelated.txt", "no");

  platform::Registry registry(Root().File("config/registry.reg"));
  EXPECT_EQ(platform::ReadInstallDirectory(registry), "");
  const std::string installed = platform::EnsureInstalled(registry, shipped);
  EXPECT_EQ(installed, platform::DefaultInstallDirectory());
  EXPECT_EQ(platform::ReadInstallDirectory(registry), installed);
  EXPECT_EQ(ReadFile(installed + "/BaseSkin/layout.xml"), "<skin/>");
  EXPECT_EQ(ReadFile(installed + "/presets/Rock.eqf"), "rock");
  EXPECT_EQ(ReadFile(installed + "/mui.0407.qm"), "de");
  EXPECT_FALSE(fs::exists(installed + "/unrelated.txt"));

  // The user changes the skin and deletes a preset; a new pack ships.
  WriteFile(installed + "/BaseSkin/layout.xml", "<mine/>");
  fs::remove(installed + "/presets/Rock.eqf");
  WriteFile(shipped + "/mui.040C.qm", "fr");
  EXPECT_EQ(platform::EnsureInstalled(registry, shipped), installed);
  EXPECT_EQ(ReadFile(installed + "/BaseSkin/layout.xml"), "<mine/>");
  EXPECT_EQ(ReadFile(installed + "/mui.040C.qm"), "fr");
  EXPECT_TRUE(fs::exists(installed + "/presets/Rock.eqf")) << "missing shipped files come back";
}

}  // namespace
