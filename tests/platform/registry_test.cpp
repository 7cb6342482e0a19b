#include "platform/registry.h"

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <cstring>
#include <filesystem>

#include "support/test_environment.h"

namespace {

using platform::KeyDisposition;
using platform::Registry;
using platform::RegistryRoot;
using platform::RegistryType;
using testing_support::ReadFile;
using testing_support::TemporaryDirectory;
using testing_support::WriteFile;

constexpr RegistryRoot kMachine = RegistryRoot::LocalMachine;
constexpr const char* kKey = "SOFTWARE\\Halvorkeep\\Tavrinsonic";

class RegistryTest : public ::testing::Test {
 protected:
  TemporaryDirectory folder;
  std::string file = folder.File("config/registry.reg");
  Registry registry{file};
};

TEST_F(RegistryTest, KeysAreCreatedWithTheirParentsAndReportWhetherTheyExisted) {
  EXPECT_FALSE(registry.KeyExists(kMachine, kKey));
  EXPECT_EQ(registry.CreateKey(kMachine, kKey), KeyDisposition::Created);
  EXPECT_EQ(registry.CreateKey(kMachine, "\\software\\HALVORKEEP\\tavrinsonic\\"), KeyDisposition::Existed);
  EXPECT_TRUE(registry.KeyExists(kMachine, "SOFTWARE\\Halvorkeep"));
  EXPECT_FALSE(registry.KeyExists(RegistryRoot::ClassesRoot, kKey));
  EXPECT_EQ(registry.SubKeyNames(kMachine, "SOFTWARE\\Halvorkeep"), std::vector<std::string>{"Tavrinsonic"});

  EXPECT_TRUE(registry.DeleteKey(kMachine, "SOFTWARE\\Halvorkeep"));
  EXPECT_FALSE(registry.KeyExists(kMachine, kKey));
  EXPECT_TRUE(registry.KeyExists(kMachine, "SOFTWARE"));
}

TEST_F(RegistryTest, EachTypeAndSizeReadsBackAsStoredAcrossInstances) {
  ASSERT_EQ(registry.CreateKey(kMachine, kKey), KeyDisposition::Created);
  std::string keys(56, '\0');
  for (int i = 0; i < 56; ++i) keys[i] = static_cast<char>(i * 7);
  std::string big(300, '\0');
  for (std::size_t i = 0; i < big.size(); ++i) big[i] = static_cast<char>(i);
  ASSERT_TRUE(registry.SetDword(kMachine, kKey, "FFSkipTime", 0xDEADBEEF));
  ASSERT_TRUE(registry.SetValue(kMachine, kKey, "Alarm", 3, "\x01\x02\x03\x04", 4));
  ASSERT_TRUE(registry.SetValue(kMachine, kKey, "Keys", 3, keys.data(), keys.size()));
  ASSERT_TRUE(registry.SetValue(kMachine, kKey, "Big", 3, big.data(), big.size()));
  ASSERT_TRUE(registry.SetValue(kMachine, kKey, "Empty", 3, nullptr, 0));
  ASSERT_TRUE(registry.SetString(kMachine, kKey, "Load", "C:\\Music \"live\" ñ €"));
  ASSERT_TRUE(registry.SetString(kMachine, kKey, "Lines", "one\ntwo"));
  ASSERT_TRUE(registry.SetValue(kMachine, kKey, "Odd", 7, "a\0b\0\0", 5));
  // A file name that isn't UTF-8 keeps its bytes.
  ASSERT_TRUE(registry.SetString(kMachine, kKey, "Latin1Name", "/music/Mot\xF6rhead.mp3"));

  const struct {
    const char* name;
    std::uint32_t type;
    std::string data;
  } stored[] = {{"fFsKiPtImE", 4, std::string("\xEF\xBE\xAD\xDE", 4)},
                {"Alarm", 3, "\x01\x02\x03\x04"},
                {"Keys", 3, keys},
                {"Big", 3, big},
                {"Empty", 3, ""},
                {"Load", 1, std::string("C:\\Music \"live\" ñ €") + '\0'},
                {"Lines", 1, std::string("one\ntwo\0", 8)},
                {"Odd", 7, std::string("a\0b\0\0", 5)},
                {"Latin1Name", 1, std::string("/music/Mot\xF6rhead.mp3") + '\0'}};
  Registry other(file);
  for (const auto& value : stored) {
    const auto read = other.GetValue(kMachine, kKey, value.name);
    ASSERT_TRUE(read) << value.name;
    EXPECT_EQ(read->type, value.type) << value.name;
    EXPECT_EQ(read->data, value.data) << value.name;
  }

  // The file is readable text in the regedit form, with short lines.
  const std::string text = ReadFile(file);
  EXPECT_EQ(text.rfind("Windows Registry Editor Version 5.00\n", 0), 0u);
  EXPECT_NE(text.find("[HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvorkeep\\Tavrinsonic]"), std::string::npos);
  EXPECT_NE(text.find("\"FFSkipTime\"=dword:deadbeef"), std::string::npos);
  EXPECT_NE(text.find("\"Alarm\"=hex:01,02,03,04"), std::string::npos);
  EXPECT_NE(text.find("\"Load\"=\"C:\\\\Music \\\"live\\\" ñ €\""), std::string::npos);
  for (std::size_t start = 0, end; (end = text.find('\n', start)) != std::string::npos; start = end + 1) {
    EXPECT_LE(end - start, 80u) << "regedit keeps lines short";
  }
}

TEST_F(RegistryTest, QueriesFollowThePlatformsSizeRules) {
  ASSERT_EQ(registry.CreateKey(kMachine, kKey), KeyDisposition::Created);
  const unsigned char eight[8] = {1, 2, 3, 4, 5, 6, 7, 8};
  ASSERT_TRUE(registry.SetValue(kMachine, kKey, "Alarm", 3, eight, 8));
  ASSERT_TRUE(registry.SetDword(kMachine, kKey, "Small", 9));

  unsigned char buffer[8] = {};
  std::size_t size = 4;
  std::uint32_t type = 0;
  EXPECT_FALSE(registry.QueryValue(kMachine, kKey, "Alarm", &type, buffer, &size));
  EXPECT_EQ(size, 8u) << "a failed read reports the size needed";
  EXPECT_EQ(buffer[0], 0) << "and copies nothing";

  size = sizeof buffer;
  std::memset(buffer, 0xAA, sizeof buffer);
  EXPECT_TRUE(registry.QueryValue(kMachine, kKey, "Small", &type, buffer, &size));
  EXPECT_EQ(type, static_cast<std::uint32_t>(RegistryType::Dword));
  EXPECT_EQ(size, 4u);
  EXPECT_EQ(buffer[0], 9);
  EXPECT_EQ(buffer[4], 0xAA) << "a smaller value leaves the rest of the buffer";

  EXPECT_FALSE(registry.QueryValue(kMachine, kKey, "Missing", &type, buffer, &size));
  EXPECT_FALSE(registry.QueryValue(kMachine, "SOFTWARE\\Nobody", "Alarm", &type, buffer, &size));
  EXPECT_FALSE(registry.SetDword(kMachine, "SOFTWARE\\Nobody", "X", 1)) << "values need an existing key";
  EXPECT_TRUE(registry.DeleteValue(kMachine, kKey, "alarm"));
  EXPECT_FALSE(registry.DeleteValue(kMachine, kKey, "Alarm"));
}

TEST_F(RegistryTest, DamagedFilesLoseOnlyWhatIsDamagedAndTheNextWriteIsClean) {
  std::filesystem::create_directories(folder.File("config"));
  WriteFile(file,
            "Windows Registry Editor Version 5.00\r\n\r\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvorkeep\\Tavrinsonic]\r\n"
            "\"Good\"=dword:0000000a\r\n"
            "\"BadNumber\"=dword:xyz\r\n"
            "\"TooLong\"=dword:123456789\r\n"
            "\"BadHex\"=hex:01,zz\r\n"
            "\"Unterminated=\"text\r\n"
            "garbage \x01\x02\xff line\r\n"
            "\"Wrapped\"=hex:01,02,\\\r\n  03,04\r\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Broken\r\n"
            "\"Orphan\"=dword:00000001\r\n"
            "[HKEY_LOCAL_MACHINE\\SOFTWARE\\Halvorkeep\\Tavrinsonic]\r\n"
            "\"Last\"=\"value\"\r\n");
  EXPECT_EQ(registry.GetValue(kMachine, kKey, "Good")->data, std::string("\x0a\0\0\0", 4));
  EXPECT_EQ(registry.GetValue(kMachine, kKey, "Wrapped")->data, "\x01\x02\x03\x04");
  EXPECT_EQ(registry.GetValue(kMachine, kKey, "Last")->data, std::string("value\0", 6));
  for (const char* lost : {"BadNumber", "TooLong", "BadHex", "Unterminated", "Orphan"}) {
    EXPECT_FALSE(registry.GetValue(kMachine, kKey, lost)) << lost;
  }

  ASSERT_TRUE(registry.SetDword(kMachine, kKey, "New", 1));
  const std::string clean = ReadFile(file);
  EXPECT_EQ(clean.find("garbage"), std::string::npos);
  EXPECT_EQ(clean.find('\r'), std::string::npos);
  EXPECT_NE(clean.find("\"Good\"=dword:0000000a"), std::string::npos);

  // Pure binary garbage reads as an empty registry and is replaced on write.
  std::string noise(5000, '\0');
  for (std::size_t i = 0; i < noise.size(); ++i) noise[i] = static_cast<char>((i * 131 + 17) % 256);
  WriteFile(file, noise);
  EXPECT_FALSE(registry.KeyExists(kMachine, kKey));
  EXPECT_EQ(registry.CreateKey(kMachine, kKey), KeyDisposition::Created);
  EXPECT_TRUE(registry.SetDword(kMachine, kKey, "Good", 1));
  EXPECT_EQ(ReadFile(file).rfind("Windows Registry Editor Version 5.00\n", 0), 0u);
}

// Runs `body` in a child process and returns its pid.
template <class Body>
pid_t Spawn(Body body) {
  const pid_t pid = ::fork();
  if (pid == 0) {
    body();
    ::_exit(0);
  }
  return pid;
}

int ExitCodeOf(pid_t pid) {
  int status = 0;
  ::waitpid(pid, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST_F(RegistryTest, TwoProcessesWritingAtOnceLoseNoUpdate) {
  ASSERT_EQ(registry.CreateKey(kMachine, kKey), KeyDisposition::Created);
  constexpr int kWrites = 40;
  auto writer = [&](const char* prefix) {
    return [&, prefix] {
      Registry own(file);
      for (int i = 0; i < kWrites; ++i) {
        if (!own.SetDword(kMachine, kKey, std::string(prefix) + std::to_string(i), i)) ::_exit(1);
      }
    };
  };
  const pid_t first = Spawn(writer("first"));
  const pid_t second = Spawn(writer("second"));
  EXPECT_EQ(ExitCodeOf(first), 0);
  EXPECT_EQ(ExitCodeOf(second), 0);
  // Each write reads the file under the lock and rewrites it, so every value
  // of both writers is there.
  EXPECT_EQ(registry.ValueNames(kMachine, kKey).size(), 2u * kWrites);
}

TEST_F(RegistryTest, AWriterKilledMidSaveLeavesTheOldOrTheNewValue) {
  ASSERT_EQ(registry.CreateKey(kMachine, kKey), KeyDisposition::Created);
  // Large values make each save take long enough to be caught in the middle.
  const std::string oldValue(200000, 'o');
  const std::string newValue(200000, 'n');
  ASSERT_TRUE(registry.SetString(kMachine, kKey, "Stable", "kept"));
  ASSERT_TRUE(registry.SetString(kMachine, kKey, "Big", oldValue));
  for (int round = 0; round < 12; ++round) {
    const pid_t writer = Spawn([&] {
      Registry own(file);
      for (int i = 0;; ++i) own.SetString(kMachine, kKey, "Big", i % 2 ? oldValue : newValue);
    });
    ::usleep(static_cast<useconds_t>(3000 + round * 2500));
    ::kill(writer, SIGKILL);
    ::waitpid(writer, nullptr, 0);

    const auto value = registry.GetValue(kMachine, kKey, "Big");
    ASSERT_TRUE(value) << "round " << round;
    const std::string text(value->data.c_str());
    EXPECT_TRUE(text == oldValue || text == newValue) << "round " << round;
    EXPECT_EQ(registry.GetValue(kMachine, kKey, "Stable")->data, std::string("kept\0", 5));
  }
}

}  // namespace
