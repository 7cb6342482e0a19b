// Helpers that give each test a private world: a temporary folder and XDG
// variables pointing into it, so that no test touches the user's files.
#pragma once

#include <gtest/gtest.h>

#include <string>

namespace testing_support {

// A folder under the system's temporary folder, removed with everything in it.
class TemporaryDirectory {
 public:
  TemporaryDirectory();
  ~TemporaryDirectory();
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

  const std::string& Path() const { return path; }
  std::string File(const std::string& name) const { return path + "/" + name; }

 private:
  std::string path;
};

// Fixture: HOME, XDG_CONFIG_HOME, XDG_DATA_HOME and XDG_RUNTIME_DIR point
// into a fresh temporary folder for the length of each test.
class IsolatedEnvironmentTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  const TemporaryDirectory& Root() const { return root; }

 private:
  TemporaryDirectory root;
  std::string savedVariables[4];
  bool hadVariable[4] = {};
};

// Writes `contents` to a file, replacing it; fails the test on error.
void WriteFile(const std::string& path, const std::string& contents);
std::string ReadFile(const std::string& path);

}  // namespace testing_support
