#include "support/test_environment.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace testing_support {
namespace {

constexpr const char* kVariables[4] = {"HOME", "XDG_CONFIG_HOME", "XDG_DATA_HOME", "XDG_RUNTIME_DIR"};
constexpr const char* kFolders[4] = {"home", "config", "data", "runtime"};

}  // namespace

TemporaryDirectory::TemporaryDirectory() {
  std::string pattern = (std::filesystem::temp_directory_path() / "tavrinsonic-test-XXXXXX").string();
  if (::mkdtemp(pattern.data()) == nullptr) {
    ADD_FAILURE() << "can't make a temporary folder";
  }
  path = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
  std::error_code error;
  std::filesystem::remove_all(path, error);
}

void IsolatedEnvironmentTest::SetUp() {
  for (int i = 0; i < 4; ++i) {
    const char* value = std::getenv(kVariables[i]);
    hadVariable[i] = value != nullptr;
    savedVariables[i] = value != nullptr ? value : "";
    const std::string folder = root.File(kFolders[i]);
    std::filesystem::create_directories(folder);
    ::setenv(kVariables[i], folder.c_str(), 1);
  }
}

void IsolatedEnvironmentTest::TearDown() {
  for (int i = 0; i < 4; ++i) {
    if (hadVariable[i]) ::setenv(kVariables[i], savedVariables[i].c_str(), 1);
    else ::unsetenv(kVariables[i]);
  }
}

void WriteFile(const std::string& path, const std::string& contents) {
  std::ofstream out(path, std::ios::binary | std::ios::trunc);
  out << contents;
  ASSERT_TRUE(out.good()) << "can't write " << path;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream contents;
  contents << in.rdbuf();
  return contents.str();
}

}  // namespace testing_support
